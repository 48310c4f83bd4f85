#include "psctable.h"

#include <algorithm>

using enum MessageLevel;

namespace {

std::size_t slot(int index) {
    return static_cast<std::size_t>(index);
}

}  // namespace

void psCStream::setColm(int index, const psString& text) {
    if (index < 0 || index >= maxColumns) return;
    m_line[slot(index)] = text;
    m_filled = std::max(m_filled, index + 1);
}

void psCStream::setNextColm(const psString& text) {
    setColm(m_filled, text);
}

bool psCStream::getColm(int index, psString& text) const {
    if (index < 0 || index >= maxColumns) return false;
    text = m_line[slot(index)];
    return true;
}

void psCStream::setFilledColms(int count) {
    m_filled = std::clamp(count, 0, maxColumns);
}

void psCStream::lineOut(int count) {
    tableOut(count);
    ++m_lineCount;
    if (m_compared > 0) m_kept.push_back(m_line);
    tableFlush();
}

void psCStream::tableOut(int count) {
    const int cells = count == 0 ? m_filled : std::min(count, maxColumns);
    psString text;
    for (int i = 0; i < cells; ++i) {
        if (i > 0) text += ",";
        const psString& cell = m_line[slot(i)];
        text += i < m_filled && !cell.empty() ? cell : psString("-");
    }
    write(text + "\n");
    flush();
}

void psCStream::tableFlush() {
    m_line.fill(psString());
    m_filled = 0;
}

void psCStream::linePostpone() {
    m_postponed.push_back(m_line);
    tableFlush();
}

void psCStream::linePostponeOut(int count) {
    while (!m_postponed.empty()) {
        m_line = m_postponed.front();
        m_filled = maxColumns;
        while (m_filled > 0 && m_line[slot(m_filled - 1)].empty()) --m_filled;
        m_postponed.erase(m_postponed.begin());
        lineOut(count);
    }
}

void psCStream::identicalLinesStart(int n) {
    m_compared = std::min(n, maxColumns);
    m_kept.clear();
}

bool psCStream::identicalLinesStop() {
    if (m_compared <= 0) return false;
    const bool found = identicalLinesCheck();
    m_compared = 0;
    m_kept.clear();
    return found;
}

bool psCStream::identicalColms(const Line& a, const Line& b, int n) {
    return std::equal(a.begin(), a.begin() + n, b.begin());
}

bool psCStream::identicalLinesCheck() const {
    int number = m_lineCount - m_kept.size() + 1;
    for (auto a = m_kept.begin(); a != m_kept.end(); ++a, ++number) {
        int other = number + 1;
        for (auto b = std::next(a); b != m_kept.end(); ++b, ++other) {
            if (!identicalColms(*a, *b, m_compared)) continue;
            g_ostrm << WARN << " Performance table note:\n"
                    << " Lines " << number << " & " << other << " have identical parameters\n"
                    << END_FLUSH;
            return true;
        }
    }
    return false;
}

psCStream& operator<<(psCStream& table, const psString& text) {
    if (text == "\n")
        table.lineOut(0);
    else
        table.setNextColm(text);
    return table;
}

psCStream& psTableStream() {
    static psCStream table;
    return table;
}

psCStream& psNameTableStream() {
    static psCStream table;
    return table;
}
