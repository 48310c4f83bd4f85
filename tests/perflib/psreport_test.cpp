#include "psreport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "psbase.h"
#include "pscond.h"
#include "pscputick_gcc.h"
#include "psctable.h"
#include "psctrl87.h"
#include "psstream.h"
#include "pstest.h"
#include "text.h"

namespace {

using support::lines;
using Texts = std::vector<std::string>;

// The cells of a table's first line.
support::Row cells(const std::string& text) {
    return support::tableRows(text).at(0);
}

// What a report writes into a stream of the kind.
template <class Stream, class Report>
std::string written(const Report& report) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* file = open_memstream(&text, &size);
    Stream stream;
    o_stream* const sink = new o_stream(file);
    stream.push_back(sink);
    if constexpr (std::is_same_v<Stream, psOStream>) stream.setOutLevel(7);
    stream << report;
    stream.clear();
    delete sink;
    std::fclose(file);
    std::string result(text, size);
    std::free(text);
    return result;
}

// Lines of one width between two edges; gives them back.
Texts boxed(const psString& text) {
    const Texts all = lines(text.view());
    const std::string edge = "+" + std::string(77, '-') + "+";
    EXPECT_TRUE(all.size() >= 3 && all.front() == edge && all.back() == edge) << text.c_str();
    for (const std::string& line : all) {
        EXPECT_EQ(line.size(), 79U) << line;
        EXPECT_TRUE(line == edge || (line.starts_with('|') && line.ends_with('|'))) << line;
    }
    return all;
}
Texts boxed(const std::string& text) {
    return boxed(psString(text.c_str()));
}

// Text layout

TEST(ReportFormat, CutsAtTheLastBlankThatFits) {
    const std::tuple<const char*, int, std::string> rows[] = {{"", 5, "|"},
                                                              {"abc", 5, "abc|"},
                                                              {"abcde", 5, "abcde|"},
                                                              {"abcde fg", 5, "abcde|fg|"},
                                                              {"ab cd ef", 5, "ab cd|ef|"},
                                                              {"ab cdefgh", 5, "ab|cdefg|h|"},
                                                              {"abcdefghijk", 5, "abcde|fghij|k|"},
                                                              {"ab    cd", 3, "ab |cd|"},
                                                              {" abcdef", 3, " ab|cde|f|"},
                                                              {"abc", 1, "a|b|c|"}};
    for (const auto& [text, room, expected] : rows) {
        psString rest = text;
        std::string pieces;
        do {
            pieces += psReportFormat::getPieceItem(rest, room).c_str() + std::string("|");
        } while (!rest.empty());
        EXPECT_EQ(pieces, expected);
    }
}

TEST(ReportFormat, PushesItemsBehindALongOneWhileTheyFit) {
    psReportFormat format;
    format.setColumns({1, 6, 20, -78});
    format.firstLine();
    const std::string line = format.line({"a", "123456789012345", "c", "+"}).c_str();
    EXPECT_EQ(line.substr(0, 24), "|a    123456789012345 c ");
    EXPECT_EQ(line.substr(77), "+|\n");
    // Exactly up to the next column: the blank between them pushes by one.
    EXPECT_EQ(format.line({"a", "12345678901234", "c"}).substr(0, 22), "|a    12345678901234 c");
}

TEST(ReportFormat, ContinuesItemsInTheirColumnsWhenTheLineIsTooNarrow) {
    psReportFormat format;
    format.setColumns({1, 6, 46, 62, -78});
    psString text = format.firstLine();
    const std::string name(100, 'n');
    text +=
        format.line({"   1", name.c_str(), "A test with blanks in its long name", "p_source", "+"});
    text += format.lastLine();
    const Texts box = boxed(text);
    ASSERT_EQ(box.size(), 2U + 3);
    EXPECT_EQ(box[1], "|   1 " + std::string(39, 'n') + " A test with     p_source       +|");
    EXPECT_EQ(box[2].substr(46, 16), "blanks in its   ");
    EXPECT_EQ(box[3].substr(0, 50),
              "|     " + std::string(22, 'n') + std::string(18, ' ') + "long");
}

TEST(ReportFormat, TitleItemsContinueBelowTheirValue) {
    psReportFormat format;
    psString text = format.firstLine();
    text += format.titleItem("Computer",
                             psString(std::string(60, 'x')) + " " + std::string(150, 'y').c_str());
    text += format.titleItem("OS", "tab\tand\nline");
    text += format.lastLine();
    const Texts box = boxed(text);
    ASSERT_EQ(box.size(), 2U + 5);
    EXPECT_EQ(box[1].substr(0, 14), "| Computer : x");
    EXPECT_EQ(box[2].substr(0, 14), "|            y");
    EXPECT_EQ(box[5].substr(0, 27), "| OS       : tab and line  ");
}

TEST(ReportFormat, TimesOfADayAndMore) {
    const std::pair<double, const char*> rows[] = {{0, "00:00:00"},
                                                   {59.9, "00:00:59"},
                                                   {3725, "01:02:05"},
                                                   {86399, "23:59:59"},
                                                   {360000 + 61, "100:01:01"},
                                                   {-5, "00:00:00"},
                                                   {1e300, "UNKNOWN (Very large value)"}};
    for (const auto& [seconds, text] : rows)
        EXPECT_EQ(psReportFormat::getTimeStr(seconds), text) << seconds;
}

// Reports

// A test whose one set ends as told, with work that disturbs the guards.
class FakeTest : public psTest {
  public:
    FakeTest(const char* name, const char* info, psResult outcome = PS_OK,
             std::function<void()> work = {})
        : psTest(static_cast<FuncOld>(nullptr), name, "perf/p_fake", info),
          m_outcome(outcome),
          m_work(std::move(work)) {}

  protected:
    psResult runTiming() override {
        psTool::ctrlStart();
        if (m_work) m_work();
        psTool::ctrlStop();
        return m_outcome;
    }
    bool initData() override { return true; }
    bool canStart() override { return m_outcome != PS_UNDEFINED; }

  private:
    psResult m_outcome;
    std::function<void()> m_work;
};

void underflow() {
    volatile double tiny = 1e-300;
    tiny = tiny * tiny;
}

psReportTestResult resultOf(FakeTest& test) {
    psCpuTicker::m_freqMHz = 2600;
    const psOutLevelGuard shown(7);
    test.run();
    return psReportTestResult(test);
}

TEST(ReportTestResult, SummaryLineOfAMeasuredTest) {
    psCStream::m_exePath = "/opt/a, b/ps, cv";
    FakeTest test("zmoiX_8u, C1R", "TimcX//PP_REG");
    const support::Row fields = cells(written<psUStream>(resultOf(test)));
    ASSERT_EQ(fields.size(), 11U);
    EXPECT_EQ(std::ranges::count(fields, ""), 0);
    EXPECT_TRUE(fields[2].starts_with("Near 53 Invalid Denormal")) << fields[2];
    EXPECT_TRUE(fields[4].starts_with("Near Invalid")) << fields[4];
    const std::pair<std::size_t, const char*> others[] = {
        {0, "zmoiX_8u C1R"}, {1, "TimcX"}, {6, "PP_REG"}, {8, "p_fake"}, {9, "OK"}, {10, "ps cv"}};
    for (const auto& [index, text] : others) EXPECT_EQ(fields[index], text) << index;
}

TEST(ReportTestResult, TellsADisturbedStatusAfterTheGuardsAreCleared) {
    FakeTest test("zmoiX_8u_C1R", "TimcX", PS_OK, underflow);
    const psReportTestResult report = resultOf(test);
    ASSERT_TRUE(test.badControlSSX());
    const support::Row fields = cells(written<psUStream>(report));
    EXPECT_TRUE(fields[5].starts_with('?') && fields[6] == "-") << fields[5];
    EXPECT_EQ(fields[9], "BADSTSWRN");
    EXPECT_NE(written<psOStream>(report).find("Status   : SSE ?"), std::string::npos);
}

TEST(ReportTestResult, SaysWhenNothingWasMeasured) {
    FakeTest test("zmoiX_8u_C1R", "TimcX", PS_UNDEFINED);
    EXPECT_TRUE(written<psUStream>(resultOf(test))
                    .starts_with("--No measurements have been done\n"
                                 "zmoiX_8u_C1R,TimcX,-,-,-,-,-,"));
}

TEST(ReportTestTitle, BoxCommentAndCells) {
    const FakeTest test("zmoiCanny_16s8u_C1R", "TimcCanny/border/PP_REG");
    const psReportTestTitle title(test);
    const std::string box = written<psOStream>(title);
    boxed(box);
    for (const char* item : {"| Function : zmoiCanny_16s8u_C1R ", "| Test     : TimcCanny ",
                             "| Source   : p_fake ", "| Description: border "})
        EXPECT_NE(box.find(item), std::string::npos) << item;
    EXPECT_EQ(written<psUStream>(title), "--zmoiCanny_16s8u_C1R TimcCanny\n");
    EXPECT_EQ(lines(written<psCStream>(title))[0], "Function,zmoiCanny_16s8u_C1R");
}

TEST(ReportList, ModesListTestsOrFunctionsButNoServiceFunctions) {
    psStringList functions;
    for (const char* name :
         {"zmoiB_8u", "zmoiA_8u", "zmoiAGetBufferSize", "zmoiInitX", "zmoiSetX", "zmoiGet_8u",
          "zmoiB_8u", "zmoiMalloc", "zmoiRotateCenter", "zmoiC_8u"})
        functions.push_back(name);
    g_pLibFuncList = &functions;
    psTestList tests;
    tests.push_back(new FakeTest("zmoiA_8u", "TimcA"));
    tests.push_back(new FakeTest("zmoiA_8u", "Timc,A2"));
    tests.push_back(new FakeTest("zmoiC_8u", "TimcC"));
    psConditions conditions;
    const auto rows = [&](int mode) {
        return written<psUStream>(psReportList(tests, conditions, mode));
    };
    const std::string a = "zmoiA_8u,TimcA,p_fake,+\n", a2 = "zmoiA_8u,Timc A2,p_fake,+\n",
                      b = "zmoiB_8u,-,-,-\n", c = "zmoiC_8u,TimcC,p_fake,+\n",
                      get = "zmoiGet_8u,-,-,-\n";
    EXPECT_EQ(rows(0), a + a2 + c);
    EXPECT_EQ(rows(1), a + b + c + get);
    EXPECT_EQ(rows(-1), b + get);
    EXPECT_EQ(written<psCStream>(psReportList(tests, conditions, 0)),
              "Function,Test,Source,Exist\n" + a + a2 + c);
    conditions.add(psMakeCondition(RunCondition::function, "A_8u"));
    EXPECT_EQ(rows(0), a + a2);
    EXPECT_EQ(rows(-1), b + "zmoiC_8u,-,-,-\n" + get);
    g_pLibFuncList = nullptr;
}

}  // namespace
