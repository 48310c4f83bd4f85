#include "psreport.h"

#include "psbase.h"
#include "pscond.h"
#include "psctable.h"
#include "psstream.h"
#include "pstest.h"
#include "unit.h"

namespace {

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

// What stands in a box of lines of one width, blanks at the end cut.
Texts inBox(const psString& text) {
    Texts all = support::lines(text.view());
    const std::string edge = "+" + std::string(77, '-') + "+";
    EXPECT_TRUE(all.size() >= 3 && all.front() == edge && all.back() == edge) << str(text);
    all = Texts(all.begin() + 1, all.end() - 1);
    for (std::string& line : all) {
        EXPECT_TRUE(line.size() == 79 && line.front() == '|' && line.back() == '|') << line;
        line = line.substr(1, line.find_last_not_of(' ', 77));
    }
    return all;
}

// Text layout

TEST(ReportFormat, CutsAtTheLastBlankThatFits) {
    const std::tuple<const char*, int, std::string> rows[] = {
        {"abc", 1, "a|b|c|"},         {"", 5, "|"},           {"ab cdefgh", 5, "ab|cdefg|h|"},
        {"ab cd ef", 5, "ab cd|ef|"}, {"abc", 5, "abc|"},     {"abcdefghijk", 5, "abcde|fghij|k|"},
        {" abcdef", 3, " ab|cde|f|"}, {"abcde", 5, "abcde|"}, {"ab    cd", 3, "ab |cd|"},
        {"abcde fg", 5, "abcde|fg|"}};
    for (const auto& [text, room, expected] : rows) {
        psString rest = text;
        std::string pieces;
        do {
            pieces += psReportFormat::getPieceItem(rest, room).c_str() + std::string("|");
        } while (!rest.empty());
        EXPECT_EQ(pieces, expected);
    }
}

// What stands between the edges, blanks at the end cut.
TEST(ReportFormat, ItemsThatAreTooLongContinueOrPushTheOthers) {
    const auto n = [](std::size_t length) { return std::string(length, 'n'); };
    const auto behind = [](std::size_t column) { return std::string(column - 1, ' '); };
    const struct {
        int whole;  // the item that is never cut; -1: none
        std::size_t name;
        Texts lines;
        const char *test = "TestOfTheFamily", *source = "p_of_the_source";
    } cases[] = {
        {-1,
         100,
         {n(39) + " A test with     p_source       +", n(39) + " blanks in its",
          n(22) + std::string(18, ' ') + "long name"},
         "A test with blanks in its long name",
         "p_source"},
        {-1, 41, {n(41) + " Test          p_s            +"}, "Test", "p_s"},
        // The name stays whole; of the rest that stays in the line which still fits.
        {1, 40, {n(40) + " TestOfTheFamil p_of_the_sourc +", behind(41) + "y               e"}},
        {1, 62, {n(62) + " p_of_th +", behind(41) + "TestOfTheFamily e_source"}},
        {1, 71, {n(71), behind(41) + "TestOfTheFamily p_of_the_sourc +", behind(57) + "e"}}};
    for (const auto& [whole, name, expected, test, source] : cases) {
        psReportFormat format;
        format.setColumns({1, 6, 46, 62, -78});
        if (whole >= 0) format.keepWhole(whole);
        psString text = format.firstLine();
        text += format.line({"   1", n(name).c_str(), test, source, "+"});
        Texts lines = inBox(text + format.lastLine());
        for (std::string& line : lines) {
            EXPECT_EQ(line.substr(0, 5), &line == &lines[0] ? "   1 " : "     ");
            line = line.substr(5);
        }
        EXPECT_EQ(lines, expected);
    }
}

TEST(ReportFormat, TitleItemsContinueBelowTheirValue) {
    psReportFormat format;
    psString text = format.firstLine();
    const std::string x(60, 'x'), y(150, 'y'), below(12, ' ');
    text += format.titleItem("Computer", (x + " " + y).c_str());
    text += format.titleItem("OS", "tab\tand\nline");
    EXPECT_EQ(inBox(text + format.lastLine()),
              (Texts{" Computer : " + x, below + y.substr(0, 65), below + y.substr(0, 65),
                     below + y.substr(0, 20), " OS       : tab and line"}));
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
    psString(
        "zmoiB_8u zmoiA_8u zmoiAGetBufferSize zmoiInitX zmoiSetX zmoiGet_8u zmoiB_8u zmoiMalloc "
        "zmoiRotateCenter zmoiC_8u zmoiCClose zmoiBClose")
        .parse(functions, " ");
    g_pLibFuncList = &functions;
    psTestList tests;
    for (const auto& [function, info] : {std::pair{"zmoiA_8u", "TimcA"},
                                         {"zmoiA_8u", "Timc,A2"},
                                         {"zmoiC_8u", "TimcC"},
                                         {"zmoiCClose", "TimcC"}})
        tests.push_back(new psTest(psTest::FuncOld(), function, "p_fake", info));
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
