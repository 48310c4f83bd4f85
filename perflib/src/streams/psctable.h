// The performance table: lines of cells, written to csv files.
#pragma once

#include <array>

#include "pssettings.h"
#include "psstream.h"

// Assembles one line as an array of cell texts and writes it to all its files.
// Lines can be held back, and lines whose leading cells are equal are reported.
class psCStream : public psSinkList {
  public:
    static constexpr int maxColumns = 32;  // part of the format; a 33rd text is dropped

    static constexpr const int& m_nameMode = g_settings.nameMode;
    static constexpr const bool& m_nameExit = g_settings.nameExit;
    static constexpr const psString& m_exePath = g_settings.exePath;

    void setColm(int index, const psString& text);
    void setNextColm(const psString& text);
    bool getColm(int index, psString& text) const;
    void setFilledColms(int count);

    // Each writes `count` cells; 0 means the filled ones.
    void lineOut(int count);
    void tableOut(int count);
    void tableFlush();
    int lineCount() const { return m_lineCount; }

    void linePostpone();
    void linePostponeOut(int count);
    void linePostponeDrop() { m_postponed.clear(); }

    // Compares the first n cells of all lines written until the stop, which
    // returns whether two were equal and names the first such pair at level WARN.
    void identicalLinesStart(int n);
    bool identicalLinesStop();

    // Runs write() with the files of `other` in place of the own ones; what it
    // writes is not counted as lines of this table.
    template <class Write>
    void writeInto(psCStream& other, Write write) {
        const int counted = m_lineCount;
        swap(other);
        write();
        swap(other);
        m_lineCount = counted;
    }

  private:
    using Line = std::array<psString, maxColumns>;

    static bool identicalColms(const Line& a, const Line& b, int n);
    bool identicalLinesCheck() const;

    Line m_line;
    int m_filled = 0;
    int m_lineCount = 0;
    int m_compared = 0;  // 0: the detection is off
    psList<Line> m_kept;
    psList<Line> m_postponed;
};

// A text "\n" ends the line, any other is the next cell.
psCStream& operator<<(psCStream& table, const psString& text);

psCStream& psTableStream();
psCStream& psNameTableStream();
inline psCStream& g_cstrm = psTableStream();
inline psCStream& g_qstrm = psNameTableStream();
