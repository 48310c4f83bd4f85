#include "psreport.h"

#include <algorithm>
#include <cmath>
#include <ctime>

#include "psbase.h"
#include "pscond.h"
#include "pscputick_gcc.h"
#include "psctable.h"
#include "psctrl87.h"
#include "pslib.h"
#include "pssettings.h"
#include "psstream.h"
#include "pstest.h"

namespace {

constexpr int frameColumn = psReportFormat::width - 1;

psString blanks(int n) {
    psString text;
    if (n > 0) text.resize(n, ' ');
    return text;
}

// Pads `text` so that the next item begins at `column`; an item never touches
// the one before.
void padTo(psString& text, int column, bool isFirst) {
    if (text.length() < column)
        text += blanks(column - text.length());
    else if (!isFirst)
        text += " ";
}

void replaceControls(psString& text) {
    for (int i = 0; i < text.length(); ++i) {
        if (static_cast<unsigned char>(text[i]) < ' ') text[i] = ' ';
    }
}

}  // namespace

void psReportFormat::setColumns(std::initializer_list<int> positions) {
    m_columns.fill(1);
    std::copy_n(positions.begin(), std::min(positions.size(), m_columns.size()), m_columns.begin());
}

psString psReportFormat::separator() {
    psString text("+");
    text.resize(frameColumn, '-');
    return text + "+\n";
}

psString psReportFormat::firstLine() {
    m_inside = true;
    return separator();
}

psString psReportFormat::lastLine() {
    m_inside = false;
    return separator();
}

// `content` begins at column 0, whose place the frame takes.
psString psReportFormat::frame(const psString& content) const {
    psString text = content;
    if (text.length() < frameColumn) text += blanks(frameColumn - text.length());
    replaceControls(text);
    if (!m_inside) return text + "\n";
    text[0] = '|';
    return text + "|\n";
}

void psReportFormat::keepWhole(int index) {
    m_whole = index;
}

psString psReportFormat::place(const Items& items, int count) const {
    psString text(" ");
    for (int i = 0; i < count; ++i) {
        const psString& item = items[static_cast<std::size_t>(i)];
        if (item.empty()) continue;
        const int column = m_columns[static_cast<std::size_t>(i)];
        padTo(text, column >= 0 ? column : -column - item.length(), text.length() == 1);
        text += item;
    }
    return text;
}

// The characters from an item's column to the next item's, without the blank
// that divides them.
int psReportFormat::roomOf(int index, const Items& items, int count) const {
    const auto at = static_cast<std::size_t>(index);
    if (m_columns[at] < 0) {
        const int before = index > 0 ? std::max(m_columns[at - 1], 0) + 2 : 1;
        return std::max(-m_columns[at] - before, 1);
    }
    int end = frameColumn;
    if (index + 1 < count) {
        const int next = m_columns[at + 1];
        end = (next >= 0 ? next : -next - items[at + 1].length()) - 1;
    }
    return std::max(end - m_columns[at], 1);
}

psString psReportFormat::line(std::initializer_list<psString> texts) const {
    Items rest;
    const int count = static_cast<int>(std::min(texts.size(), rest.size()));
    std::copy_n(texts.begin(), count, rest.begin());

    const psString whole = place(rest, count);
    if (whole.length() <= frameColumn) return frame(whole);

    psString lines;
    while (std::ranges::any_of(rest, [](const psString& text) { return !text.empty(); }))
        lines += frame(place(nextPieces(rest, count), count));
    return lines;
}

// What stands whole beyond its columns leaves less to the items behind it, and
// nothing to those that it covers: they begin on the next line.
psReportFormat::Items psReportFormat::nextPieces(Items& rest, int count) const {
    std::array<int, maxItems> room{};
    for (int i = 0; i < count; ++i) room[static_cast<std::size_t>(i)] = roomOf(i, rest, count);
    Items pieces;
    int free = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        const int limit = m_columns[i] >= 0 ? m_columns[i] + room[i] : -m_columns[i];
        const bool whole = static_cast<int>(i) == m_whole;
        const int left = whole ? rest[i].length() : limit - std::max(free, limit - room[i]);
        if (left <= 0 || rest[i].empty()) continue;
        pieces[i] = getPieceItem(rest[i], left);
        const int length = pieces[i].length();
        const int begin = m_columns[i] >= 0 ? m_columns[i] : limit - length;
        free = std::max(free, begin) + length + 1;
    }
    return pieces;
}

psString psReportFormat::titleItem(const psString& name, const psString& value) const {
    psString prefix = psString(" ") + psFormat(" %-9s: ", name.c_str());
    psString rest = value;
    psString lines;
    do {
        lines += frame(prefix + getPieceItem(rest, std::max(frameColumn - prefix.length(), 1)));
        prefix = blanks(prefix.length());
    } while (!rest.empty());
    return lines;
}

psString psReportFormat::getPieceItem(psString& text, int room) {
    int cut = text.length();
    if (cut > room) {
        cut = room;
        while (cut > 0 && text[cut] != ' ') --cut;
        if (cut == 0) cut = room;
    }
    psString piece = text.substr(0, cut);
    while (cut < text.length() && text[cut] == ' ') ++cut;
    text = text.substr(cut);
    return piece;
}

psString psReportFormat::getTimeStr(double seconds) {
    constexpr int longest = 128;
    const psString text = psTimeText(seconds);
    return text.length() > longest ? psString("UNKNOWN (Very large value)") : text;
}

psString cutoffNL(const psString& text) {
    return text.endsWith("\n") ? text.substr(0, text.length() - 1) : text;
}

namespace {

psString clockText() {
    psString text = psFreqText(psCpuTicker::exactFreq());
    if (const int processors = psGetNumOfProcessors(); processors >= 2)
        text = psText(processors) + "x" + text;
    if (psCpuTicker::given()) text += " (given)";
    if (g_settings.exactFrequency) text += " (exact)";
    if (g_settings.core >= 0) text += ", bound to core " + psText(g_settings.core);
    return text;
}

psString computerText() {
    const psString name = psProcessorName();
    psString text = (name.empty() ? psString("Unknown CPU") : name) + ", " + clockText();
    if (const int bytes = psMaxCacheSize(); bytes > 0)
        text += psString(", Max cache size ") + psText(bytes / 1024) + " K";
    return text;
}

psString hostText() {
    char text[psHostSize] = {};
    psHost(text);
    return text;
}

psString systemText() {
    char text[psOSSize] = {};
    psOS(text);
    return text;
}

psString codePathText() {
    const Zmo64u mask = zmo_GetEnabledCpuFeatures();
    return mask == 0 ? psString() : psCpuFeatures::codePathText(mask);
}

psString dateText(std::time_t time) {
    const char* text = std::ctime(&time);
    return cutoffNL(text ? text : "unknown");
}

void addItem(psReportItems& items, const char* name, const psString& value) {
    if (!value.empty()) items.push_back({name, value});
}

void addItems(psReportItems& items, const char* name, const psStringList* values) {
    if (!values) return;
    for (const psString& value : *values) addItem(items, name, value);
}

void addCount(psReportItems& items, const char* label, int count) {
    items.push_back({label, psText(count)});
}

// A value as field of a comma-separated line that has no quoting: commas and
// control characters become blanks, an empty one "-".
psString csvText(const psString& value) {
    psString text;
    for (int i = 0; i < value.length(); ++i) {
        const bool plain = value[i] != ',' && static_cast<unsigned char>(value[i]) >= ' ';
        const char c = plain ? value[i] : ' ';
        if (c != ' ' || !text.endsWith(" ")) text += psString(c);
    }
    text.trim();
    return text.empty() ? psString("-") : text;
}

}  // namespace

psReportTitle::psReportTitle(const psTestList& tests) {
    addItem(m_items, "Computer", computerText());
    addItem(m_items, "Host", hostText());
    addItem(m_items, "OS", systemText());
    addItems(m_items, "Library", g_pLibInfoList);
    addItems(m_items, "Library", g_pLibPathList);
    addItem(m_items, "Code path", codePathText());
    addItem(m_items, "Start", dateText(tests.startTime));
}

psReportTestTitle::psReportTestTitle(const psTest& test)
    : m_funcName(test.funcName()), m_testName(test.info().className) {
    addItem(m_items, "Function", m_funcName);
    addItem(m_items, "Test", m_testName);
    addItem(m_items, "Source", test.fileName());
    addItem(m_items, "Description", test.info().variant);
}

psReportTestResult::psReportTestResult()
    : m_fields{"Function", "Class",       "Control87", "Status87", "ControlSSX", "StatusSSX",
               "Test",     "Time (sec.)", "SrcName",   "Result",   "ExeName"} {}

psReportTestResult::psReportTestResult(const psTest& test)
    : m_header(false),
      m_measuredNothing(test.sets().measured == 0),
      m_seconds(std::difftime(test.endTime(), test.startTime())),
      m_resultName(psResultName(test.result())) {
    const psTestInfo& info = test.info();
    m_fields = {test.funcName(),
                info.className,
                test.ctrlTexts().control87,
                test.ctrlTexts().status87,
                test.ctrlTexts().controlSSX,
                test.ctrlTexts().statusSSX,
                info.variant.empty() ? info.kind : info.variant,
                psFormat("%.0f", m_seconds),
                test.fileName(),
                m_resultName,
                psCStream::m_exePath.getFileName()};
    if (test.badControl87()) m_statusText += "x87 " + test.ctrlTexts().status87;
    if (test.badControlSSX()) m_statusText += "SSE " + test.ctrlTexts().statusSSX;
    m_statusText.trim();
    const psSetCounts& sets = test.sets();
    if (sets.unprepared > 0)
        m_remarks += "-- " + psText(sets.unprepared) + " of " + psText(sets.tried) +
                     " sets could not be prepared\n";
    if (test.setsWanted() > 0)
        m_remarks += "-- Interrupted: " + psText(sets.measured) + " of " +
                     psText(test.setsWanted()) + " sets were measured\n";
}

psReportEnd::psReportEnd(const psTestList& tests) {
    const auto count = [&tests](psResult result) {
        return tests.countByResult[static_cast<std::size_t>(result)];
    };
    const int fails = count(PS_FAIL);
    const int notes = count(PS_WRN);
    addCount(m_rows, ".Number of tests", tests.numRun);
    addCount(m_rows, ".Successes      ", count(PS_OK));
    addCount(m_rows, ".Failures       ", fails + notes);
    addCount(m_rows, "...Fails        ", fails);
    addCount(m_rows, ".....-FAIL      ", fails - count(PS_EXCPTFAIL));
    addCount(m_rows, ".....-EXCPTFAIL ", count(PS_EXCPTFAIL));
    addCount(m_rows, "...Notes        ", notes);
    addCount(m_rows, ".....-NOTE      ", notes - count(PS_BADSTSWRN));
    addCount(m_rows, ".....-BADSTSWRN ", count(PS_BADSTSWRN));
    addCount(m_rows, "...Undefined    ", count(PS_UNDEFINED));
    addItem(m_rows, ".Total time     ",
            psReportFormat::getTimeStr(std::difftime(tests.endTime, tests.startTime)));
}

namespace {

bool contains(const psString& name, std::initializer_list<const char*> parts) {
    return std::ranges::any_of(parts, [&name](const char* part) { return name.contains(part); });
}

// Functions that prepare or look up what another one needs are not measured.
bool isServiceFunction(const psString& name) {
    if (contains(name, {"Init", "Close", "Alloc", "Malloc", "Free", "PutVal", "RotateCenter",
                        "ResizeShift", "DrawText"}))
        return true;
    return contains(name, {"Get", "Set"}) && !contains(name, {"Get_", "Set_"});
}

}  // namespace

psStringList psReportList::createFuncList(const psList<psTest*>& tests) {
    psStringList names;
    if (!g_pLibFuncList) return names;
    for (const psString& name : *g_pLibFuncList) {
        if (!isServiceFunction(name) || presentInTestList(name, tests)) names.push_back(name);
    }
    names.sort([](const psString& a, const psString& b) { return a.compare(b) < 0; });
    for (auto pos = names.begin(); pos != names.end();) {
        auto next = pos;
        ++next;
        if (next != names.end() && *next == *pos)
            names.erase(next);
        else
            pos = next;
    }
    return names;
}

psTest* psReportList::presentInTestList(const psString& name, const psList<psTest*>& tests) {
    const auto found = std::ranges::find_if(
        tests, [&name](const psTest* test) { return test->funcName() == name; });
    return found == tests.end() ? nullptr : *found;
}

psReportList::psReportList(const psTestList& tests, psConditions& conditions, int mode) {
    psList<psTest*> selected;
    for (psTest* test : tests) {
        if (test->tobeRun(conditions)) selected.push_back(test);
    }
    if (mode == 0) {
        for (const psTest* test : selected)
            m_rows.push_back({test->funcName(), test->info().className, test->fileName(), true});
        return;
    }
    for (const psString& name : createFuncList(tests)) {
        const psTest* test = presentInTestList(name, selected);
        if (!test)
            m_rows.push_back({name, {}, {}, false});
        else if (mode > 0)
            m_rows.push_back({name, test->info().className, test->fileName(), true});
    }
}

namespace {

psString boxOf(const psReportItems& items) {
    psReportFormat format;
    psString text = format.firstLine();
    for (const psReportItem& item : items) text += format.titleItem(item.name, item.value);
    return text + format.lastLine();
}

psString boxOf(const psReportEnd& report) {
    psReportFormat format;
    format.setColumns({1, 20});
    psString text = format.firstLine();
    text += format.line({"PS Summary"});
    text += psReportFormat::separator();
    for (const psReportItem& row : report.rows()) text += format.line({row.name, row.value});
    return text + format.lastLine();
}

psString boxOf(const psReportList& report) {
    psReportFormat format;
    format.setColumns({1, 6, 46, 62, -78});
    format.keepWhole(1);
    psString text = format.firstLine();
    text += format.line({"   #", "Function", "Test", "Source", "Exist"});
    text += psReportFormat::separator();
    int number = 0;
    for (const psReportList::Row& row : report.rows())
        text += format.line(
            {psFormat("%4d", ++number), row.function, row.test, row.source, row.exists ? "+" : ""});
    return text + format.lastLine();
}

psString linesOf(const psReportTestResult& report) {
    psReportFormat format;
    if (report.isHeader()) return {};
    psString text;
    if (report.measuredNothing())
        text += format.titleItem("Note", "No measurements have been done");
    if (!report.statusText().empty()) text += format.titleItem("Status", report.statusText());
    text += format.titleItem("Result", report.resultName());
    text += format.titleItem("Time", psReportFormat::getTimeStr(report.seconds()));
    text += "\n";
    return report.remarks().empty() ? text : text + report.remarks() + "\n";
}

void cells(psCStream& table, const psReportItems& items) {
    for (const psReportItem& item : items) {
        table.setNextColm(csvText(item.name));
        table.setNextColm(csvText(item.value));
        table.lineOut(0);
    }
}

// The value runs to the end of the line and keeps its commas.
void summaryLines(psUStream& stream, const psReportItems& items) {
    for (psReportItem item : items) {
        replaceControls(item.value);
        stream.write(item.name + "," + item.value + "\n");
    }
}

}  // namespace

psOStream& operator<<(psOStream& stream, const psReportTitle& report) {
    return stream << boxOf(report.items());
}
psOStream& operator<<(psOStream& stream, const psReportTestTitle& report) {
    return stream << boxOf(report.items());
}
psOStream& operator<<(psOStream& stream, const psReportTestResult& report) {
    return stream << linesOf(report);
}
psOStream& operator<<(psOStream& stream, const psReportEnd& report) {
    return stream << boxOf(report);
}
psOStream& operator<<(psOStream& stream, const psReportList& report) {
    return stream << boxOf(report);
}

psCStream& operator<<(psCStream& table, const psReportTitle& report) {
    cells(table, report.items());
    return table;
}
psCStream& operator<<(psCStream& table, const psReportTestTitle& report) {
    cells(table, report.items());
    return table;
}
psCStream& operator<<(psCStream& table, const psReportTestResult& report) {
    for (const psString& field : report.fields()) table.setNextColm(csvText(field));
    table.lineOut(0);
    return table;
}
psCStream& operator<<(psCStream& table, const psReportEnd& report) {
    cells(table, report.rows());
    return table;
}
psCStream& operator<<(psCStream& table, const psReportList& report) {
    for (const char* title : {"Function", "Test", "Source", "Exist"}) table.setNextColm(title);
    table.lineOut(0);
    for (const psReportList::Row& row : report.rows()) {
        for (const psString& cell : {row.function, row.test, row.source})
            table.setNextColm(csvText(cell));
        table.setNextColm(row.exists ? "+" : "");
        table.lineOut(0);
    }
    return table;
}

psUStream& operator<<(psUStream& stream, const psReportTitle& report) {
    summaryLines(stream, report.items());
    return stream;
}
psUStream& operator<<(psUStream& stream, const psReportTestTitle& report) {
    stream.write(psString("--") + report.funcName() + " " + report.testName() + "\n");
    return stream;
}
psUStream& operator<<(psUStream& stream, const psReportTestResult& report) {
    if (report.measuredNothing()) stream.write("--No measurements have been done\n");
    psString line;
    for (const psString& field : report.fields()) {
        if (!line.empty()) line += ",";
        line += csvText(field);
    }
    stream.write(line + "\n");
    return stream;
}
psUStream& operator<<(psUStream& stream, const psReportEnd& report) {
    stream.write("END_DATA\n");
    summaryLines(stream, report.rows());
    return stream;
}
psUStream& operator<<(psUStream& stream, const psReportList& report) {
    for (const psReportList::Row& row : report.rows()) {
        const psString mark = row.exists ? "+" : "-";
        stream.write(csvText(row.function) + "," + csvText(row.test) + "," + csvText(row.source) +
                     "," + mark + "\n");
    }
    return stream;
}
