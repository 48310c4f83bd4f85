// What a run reports of itself: title, each test's title and result, closing
// counts, and the list of functions. Every report can go to the message stream
// (framed box), the performance table (cells) and the summary stream (csv).
#pragma once

#include <array>
#include <initializer_list>

#include "pslist.h"
#include "psresult.h"
#include "psstring.h"

class psConditions;
class psCStream;
class psOStream;
class psTest;
class psTestList;
class psUStream;

// Lays out lines of 79 characters. Columns count from 0, where the frame stands.
class psReportFormat {
  public:
    static constexpr int width = 79;
    static constexpr int maxItems = 6;

    // Where the items of line() begin; a negative position p right-aligns its
    // item so that it ends at column -p - 1.
    void setColumns(std::initializer_list<int> positions);
    // The item of this index is never cut: what stands behind it gives way.
    void keepWhole(int index);

    static psString separator();
    psString firstLine();  // the separator; what follows is inside the box
    psString lastLine();

    // One framed line with an item at each column position, each a blank behind
    // the one before where that is long. When the items do not fit into the
    // width, each keeps to its own columns and is continued on more lines.
    psString line(std::initializer_list<psString> items) const;
    psString titleItem(const psString& name, const psString& value) const;

    // Takes the first piece of `text` that fits into `room` characters away: up
    // to the last blank that fits, or just `room` characters of a longer word.
    static psString getPieceItem(psString& text, int room);

    // "HH:MM:SS" of a number of seconds.
    static psString getTimeStr(double seconds);

  private:
    using Items = std::array<psString, maxItems>;

    psString frame(const psString& content) const;
    psString place(const Items& items, int count) const;
    int roomOf(int index, const Items& items, int count) const;
    Items nextPieces(Items& rest, int count) const;

    bool m_inside = false;
    int m_whole = -1;
    std::array<int, maxItems> m_columns{};
};

// A text without its trailing newline.
psString cutoffNL(const psString& text);

struct psReportItem {
    psString name;
    psString value;
};
using psReportItems = psList<psReportItem>;

// The machine, the library and the start time. The first one built in a process
// waits for the frequency measurement.
class psReportTitle {
  public:
    explicit psReportTitle(const psTestList& tests);
    const psReportItems& items() const { return m_items; }

  private:
    psReportItems m_items;
};

class psReportTestTitle {
  public:
    explicit psReportTestTitle(const psTest& test);
    const psReportItems& items() const { return m_items; }
    const psString& funcName() const { return m_funcName; }
    const psString& testName() const { return m_testName; }

  private:
    psString m_funcName;
    psString m_testName;
    psReportItems m_items;
};

class psReportTestResult {
  public:
    static constexpr int numFields = 11;
    using Fields = std::array<psString, numFields>;

    // Without a test it stands for the header of the result lines.
    psReportTestResult();
    explicit psReportTestResult(const psTest& test);

    bool isHeader() const { return m_header; }
    bool measuredNothing() const { return m_measuredNothing; }
    const Fields& fields() const { return m_fields; }
    const psString& resultName() const { return m_resultName; }
    const psString& statusText() const { return m_statusText; }
    // Whole lines about sets that are missing, for the console alone.
    const psString& remarks() const { return m_remarks; }
    double seconds() const { return m_seconds; }

  private:
    bool m_header = true;
    bool m_measuredNothing = false;
    double m_seconds = 0;
    psString m_resultName;
    psString m_statusText;
    psString m_remarks;
    Fields m_fields;
};

// The counts of the results, and the time of the whole run.
class psReportEnd {
  public:
    explicit psReportEnd(const psTestList& tests);
    const psReportItems& rows() const { return m_rows; }

  private:
    psReportItems m_rows;
};

// Mode 0: the selected tests; 1: the library's functions, with a mark at those
// that a selected test measures; -1: the library's functions that none measures.
class psReportList {
  public:
    struct Row {
        psString function;
        psString test;
        psString source;
        bool exists = false;
    };

    psReportList(const psTestList& tests, psConditions& conditions, int mode);
    const psList<Row>& rows() const { return m_rows; }

    // The registered library functions without those that only serve others
    // (allocate, initialise, ask for sizes), sorted, each once. What one of the
    // tests measures serves nobody, whatever its name says.
    static psStringList createFuncList(const psList<psTest*>& tests);
    // The first of the tests that measures the function, or null.
    static psTest* presentInTestList(const psString& name, const psList<psTest*>& tests);

  private:
    psList<Row> m_rows;
};

psOStream& operator<<(psOStream& stream, const psReportTitle& report);
psOStream& operator<<(psOStream& stream, const psReportTestTitle& report);
psOStream& operator<<(psOStream& stream, const psReportTestResult& report);
psOStream& operator<<(psOStream& stream, const psReportEnd& report);
psOStream& operator<<(psOStream& stream, const psReportList& report);

psCStream& operator<<(psCStream& table, const psReportTitle& report);
psCStream& operator<<(psCStream& table, const psReportTestTitle& report);
psCStream& operator<<(psCStream& table, const psReportTestResult& report);
psCStream& operator<<(psCStream& table, const psReportEnd& report);
psCStream& operator<<(psCStream& table, const psReportList& report);

// The summary is written whatever the output level. Every result line has exactly
// psReportTestResult::numFields fields, none with a comma; the lines of the title
// are a name, a comma and the value as it stands.
psUStream& operator<<(psUStream& stream, const psReportTitle& report);
psUStream& operator<<(psUStream& stream, const psReportTestTitle& report);
psUStream& operator<<(psUStream& stream, const psReportTestResult& report);
psUStream& operator<<(psUStream& stream, const psReportEnd& report);
psUStream& operator<<(psUStream& stream, const psReportList& report);
