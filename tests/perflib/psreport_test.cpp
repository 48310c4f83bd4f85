#include "psreport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "psbase.h"
#include "pscond.h"
#include "psctable.h"
#include "psstream.h"
#include "pstest.h"
#include "temp_dir.h"
#include "text.h"

namespace {

using support::lines;
using Texts = std::vector<std::string>;

// What a report writes into a stream of the kind.
template <class Stream, class Report>
std::string written(const Report& report) {
    const TempDir dir;
    Stream stream;
    stream.addStream(dir / "x", false);
    stream << report;
    stream.close();
    return dir.read("x");
}

// Lines of one width between two edges; gives them back.
Texts boxed(std::string_view text) {
    const Texts all = lines(text);
    const std::string edge = "+" + std::string(77, '-') + "+";
    EXPECT_TRUE(all.size() >= 3 && all.front() == edge && all.back() == edge) << text;
    for (const std::string& line : all) {
        EXPECT_EQ(line.size(), 79U) << line;
        EXPECT_TRUE(line == edge || (line.starts_with('|') && line.ends_with('|'))) << line;
    }
    return all;
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
    const Texts box = boxed(text.view());
    ASSERT_EQ(box.size(), 2U + 3);
    EXPECT_EQ(box[1], "|   1 " + std::string(39, 'n') + " A test with     p_source       +|");
    EXPECT_EQ(box[2].substr(46, 16), "blanks in its   ");
    EXPECT_EQ(box[3].substr(0, 50),
              "|     " + std::string(22, 'n') + std::string(18, ' ') + "long");
}

// The name stays whole; of the rest that stays in the line which still fits.
TEST(ReportFormat, AnItemThatIsNeverCutDisplacesTheOthers) {
    psReportFormat format;
    format.setColumns({1, 6, 46, 62, -78});
    format.keepWhole(1);
    const auto box = [&](int length) {
        const std::string name(static_cast<std::size_t>(length), 'n');
        psString text = format.firstLine();
        text += format.line({"   1", name.c_str(), "TestOfTheFamily", "p_of_the_source", "+"});
        return boxed((text + format.lastLine()).view());
    };
    const std::string behind = "|" + std::string(45, ' ');
    const std::pair<int, Texts> rows[] = {
        {40, {" TestOfTheFamil p_of_the_sourc +|", behind + "y               e               |"}},
        {62, {" p_of_th +|", behind + "TestOfTheFamily e_source        |"}},
        {71,
         {" |", behind + "TestOfTheFamily p_of_the_sourc +|",
          "|" + std::string(61, ' ') + "e               |"}}};
    for (const auto& [length, expected] : rows) {
        Texts lines = box(length);
        lines.erase(lines.begin());
        lines.pop_back();
        Texts wanted = expected;
        wanted[0] = "|   1 " + std::string(static_cast<std::size_t>(length), 'n') + wanted[0];
        EXPECT_EQ(lines, wanted);
    }
}

TEST(ReportFormat, TitleItemsContinueBelowTheirValue) {
    psReportFormat format;
    psString text = format.firstLine();
    text += format.titleItem("Computer",
                             psString(std::string(60, 'x')) + " " + std::string(150, 'y').c_str());
    text += format.titleItem("OS", "tab\tand\nline");
    text += format.lastLine();
    const Texts box = boxed(text.view());
    ASSERT_EQ(box.size(), 2U + 5);
    EXPECT_EQ(box[1].substr(0, 14), "| Computer : x");
    EXPECT_EQ(box[2].substr(0, 14), "|            y");
    EXPECT_EQ(box[5].substr(0, 27), "| OS       : tab and line  ");
}

TEST(ReportFormat, TimesOfADayAndMore) {
    const std::pair<double, const char*> rows[] = {
        {0, "00:00:00"},     {59.9, "00:00:59"},
        {86399, "23:59:59"}, {360000 + 61, "100:01:01"},
        {-5, "00:00:00"},    {1e300, "UNKNOWN (Very large value)"}};
    for (const auto& [seconds, text] : rows)
        EXPECT_EQ(psReportFormat::getTimeStr(seconds), text) << seconds;
}

TEST(ReportList, ModesListTestsOrFunctionsButNoServiceFunctions) {
    psStringList functions;
    for (const char* name :
         {"zmoiB_8u", "zmoiA_8u", "zmoiAGetBufferSize", "zmoiInitX", "zmoiSetX", "zmoiGet_8u",
          "zmoiB_8u", "zmoiMalloc", "zmoiRotateCenter", "zmoiC_8u", "zmoiCClose", "zmoiBClose"})
        functions.push_back(name);
    g_pLibFuncList = &functions;
    psTestList tests;
    for (const auto& [function, info] : {std::pair{"zmoiA_8u", "TimcA"},
                                         {"zmoiA_8u", "Timc,A2"},
                                         {"zmoiC_8u", "TimcC"},
                                         {"zmoiCClose", "TimcC"}})
        tests.push_back(
            new psTest(static_cast<psTest::FuncOld>(nullptr), function, "p_fake", info));
    psConditions conditions;
    const auto rows = [&](int mode) {
        return written<psUStream>(psReportList(tests, conditions, mode));
    };
    const std::string a = "zmoiA_8u,TimcA,p_fake,+\n", a2 = "zmoiA_8u,Timc A2,p_fake,+\n",
                      b = "zmoiB_8u,-,-,-\n", c = "zmoiC_8u,TimcC,p_fake,+\n",
                      close = "zmoiCClose,TimcC,p_fake,+\n", get = "zmoiGet_8u,-,-,-\n";
    EXPECT_EQ(rows(0), a + a2 + c + close);
    EXPECT_EQ(rows(1), a + b + close + c + get);
    EXPECT_EQ(rows(-1), b + get);
    EXPECT_EQ(written<psCStream>(psReportList(tests, conditions, 0)),
              "Function,Test,Source,Exist\n" + a + a2 + c + close);
    conditions.add(psMakeCondition(RunCondition::function, "A_8u"));
    EXPECT_EQ(rows(0), a + a2);
    EXPECT_EQ(rows(-1), b + "zmoiCClose,-,-,-\nzmoiC_8u,-,-,-\n" + get);
    g_pLibFuncList = nullptr;
}

}  // namespace
