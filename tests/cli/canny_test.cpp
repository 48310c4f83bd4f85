// A run over the Canny functions of the shipped library: console, table, and
// the methods and keys that shape the measurement.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "pscv.h"

namespace {

using support::Outcome;
using support::Row;
using testing::Test;

double number(const std::string& cell) {
    char* end = nullptr;
    const double value = std::strtod(cell.c_str(), &end);
    EXPECT_TRUE(!cell.empty() && *end == '\0') << "no number: '" << cell << "'";
    return value;
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class Canny : public Test {
  protected:
    Outcome run(const Pscv::Arguments& more = {}) { return pscv.run(Pscv::smallCanny(more)); }
    Pscv pscv;
};

TEST_F(Canny, TableHasARowASet) {
    const Outcome outcome = pscv.run({"-B", "-m=p_ccanny", "-dImageSize=64x64;32x48", "-rtable",
                                      "-dMethod=Manual", "-dNumLoops=2", "-LP"});
    EXPECT_EQ(pscv.title(), (Row{"funcBase", "funcDataType", "funcDescriptor", "Len/Size", "Parm1",
                                 "Parm2", "Parm3", "Parm4", "scaleFactor", "Comment", "Clocks",
                                 "per", "Time (usec)", "MFlops"}));
    std::vector<Row> parameters;
    for (const Row& row : pscv.rows()) {
        EXPECT_GT(number(row[colClocks]), 0.0);
        EXPECT_EQ(row[colPer], "pxch");
        EXPECT_EQ(row[colMFlops], "-");
        parameters.emplace_back(row.begin(), row.begin() + colComment);
    }
    std::vector<Row> expected;
    for (const char* type : {"16s8u", "32f8u"}) {
        for (const char* size : {"64x64", "32x48"}) {
            for (const char* figures : {"2x2", "3x3", "4x4"}) {
                expected.push_back({"zmoiCanny", type, "C1R", size, figures, "-", "-", "-", "-"});
            }
        }
    }
    EXPECT_EQ(parameters, expected);
    EXPECT_EQ(support::count(outcome.out, " clocks per pxch"), expected.size()) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "numFigures=4x4")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "PS Summary")) << outcome.out;
}

TEST_F(Canny, TimeIsClocksByFrequency) {
    pscv.environment["PSCV_FREQ_MHZ"] = "500";
    const Outcome outcome = run();
    EXPECT_TRUE(has(outcome.out, "500 MHz (given)")) << outcome.out;
    const std::vector<Row> rows = pscv.rows();
    ASSERT_EQ(rows.size(), 2U);
    for (const Row& row : rows) {
        const double expected = number(row[colClocks]) * 64 * 64 / 500;
        EXPECT_NEAR(number(row[colTime]) / expected, 1.0, 0.05);
    }
}

TEST_F(Canny, ClosingBoxCountsTests) {
    const std::string out = run().out;
    EXPECT_EQ(Pscv::summary(out, ".Number of tests"), 2) << out;
    EXPECT_EQ(Pscv::summary(out, ".Successes"), 2) << out;
    EXPECT_EQ(Pscv::summary(out, ".Failures"), 0) << out;
    EXPECT_EQ(pscv.result("zmoiCanny_16s8u_C1R"), "OK");
    EXPECT_EQ(pscv.result("zmoiCanny_32f8u_C1R"), "OK");
}

TEST_F(Canny, FramesAreOneWidth) {
    std::size_t framed = 0;
    for (const std::string& line : support::lines(run({"-LINFO"}).out)) {
        if (line.empty() || (line[0] != '|' && line[0] != '+')) continue;
        EXPECT_EQ(line.size(), 79U) << line;
        EXPECT_EQ(line.back(), line[0]) << line;
        ++framed;
    }
    EXPECT_GT(framed, 10U);
}

struct Method {
    const char* name;
    Pscv::Arguments arguments;
    std::vector<const char*> words;
    const char* comment;
    int least;  // of the number behind the comment's word
    int most;
};

void PrintTo(const Method& method, std::ostream* out) {
    *out << method.name;
}

class Methods : public Canny, public testing::WithParamInterface<Method> {};

TEST_P(Methods, ShowTheirCourseAndCountLoops) {
    const Method& method = GetParam();
    Pscv::Arguments arguments{"-B",      "-f=zmoiCanny_16s8u_C1R", "-dImageSize=64x64",
                              "-rtable", "-dnumFigures=2x2",       "-LINFO"};
    arguments.insert(arguments.end(), method.arguments.begin(), method.arguments.end());
    const Outcome outcome = pscv.run(arguments);
    for (const char* word : method.words) {
        EXPECT_TRUE(has(outcome.out, word)) << word << " is missing in\n" << outcome.out;
    }
    const std::vector<Row> rows = pscv.rows();
    ASSERT_EQ(rows.size(), 1U);
    const std::string& comment = rows[0][colComment];
    ASSERT_EQ(comment.find(method.comment), 0U) << comment;
    const int loops = std::atoi(comment.c_str() + std::string(method.comment).size());
    EXPECT_GE(loops, method.least) << comment;
    EXPECT_LE(loops, method.most) << comment;
}

INSTANTIATE_TEST_SUITE_P(
    All, Methods,
    testing::Values(
        Method{"Auto",
               {},
               {"    Auto method: start\n", "        minClocks  = 10000\n",
                "    Prior Measurement: \n        numLoops   = 1\n",
                "    Iteration Measurement: \n", "        stopLoops  = ", "        accuracy   = ",
                "        result     = successfully\n", "    Auto method: stop\n"},
               "nLps=",
               8,
               1000000},
        Method{"Manual",
               {"-dMethod=Manual", "-dNumLoops=7"},
               {"    Manual method: \n        numLoops   = 7\n        funcClocks = "},
               "nLps=7",
               0,
               0},
        Method{"Statistic",
               {"-dMethod=Statistic", "-dNumCalls=21", "-dTotalCpuClocks=1000"},
               {"    Statistical method:\n        minCalls   = 21\n        maxClocks  = 1000\n",
                "        numCalls   = ", "        funcClocks = "},
               "nCalls=",
               21,
               21},
        Method{"Iterative",
               {"-dMethod=Iterative", "-dStartNumLoops=2", "-dStopNumLoops=64",
                "-dMinCpuClocks=50000000", "-dAccuracy, %=5"},
               {"        minClocks  = 50000000\n", "        numLoops   = 2\n"},
               "nLps=",
               8,
               1 << 30}),
    [](const testing::TestParamInfo<Method>& tested) { return tested.param.name; });

struct Detail {
    const char* key;
    std::vector<const char*> shown;
    std::vector<const char*> hidden;
};

void PrintTo(const Detail& detail, std::ostream* out) {
    *out << detail.key;
}

class Details : public Canny, public testing::WithParamInterface<Detail> {};

TEST_P(Details, LevelDecidesWhatIsShown) {
    const Outcome outcome = run({GetParam().key});
    for (const char* part : GetParam().shown) {
        EXPECT_TRUE(has(outcome.out, part)) << part << " is missing in\n" << outcome.out;
    }
    for (const char* part : GetParam().hidden) {
        EXPECT_FALSE(has(outcome.out, part)) << part << " stands in\n" << outcome.out;
    }
}

constexpr const char* perfText = " clocks per pxch";
constexpr const char* infoText = "    Manual method: ";
constexpr const char* traceText = " trace into   ";
constexpr const char* mallocText = " - psMalloc: size:";
constexpr const char* dataText = "======== OBJECTS OUTPUT START === ";

INSTANTIATE_TEST_SUITE_P(
    All, Details,
    testing::Values(
        Detail{"-LERR", {}, {perfText, infoText, traceText, mallocText, dataText}},
        Detail{"-LPERF", {perfText, "numFigures=2x2"}, {infoText, traceText, mallocText, dataText}},
        Detail{"-LINFO",
               {perfText, infoText, "Test has been registered by PP_REG macro with "},
               {traceText, mallocText, dataText}},
        Detail{"-LTRACE",
               {perfText, traceText, " trace out of ", "customLoopTiming", "zmoFunctionCalls",
                "funcToCstrm", "parmsToCstrm", "resultToCstrm"},
               {infoText, mallocText, dataText}},
        Detail{"-LMALLOC",
               {perfText, mallocText, " - psFree: size:", "  alignedPointer:"},
               {infoText, traceText, dataText}},
        Detail{"-LDATA",
               {perfText, traceText,
                "======== OBJECTS OUTPUT START === before function calls === OBJECTS OUTPUT START "
                "========\n======== Object 1: ",
                "======== OBJECTS OUTPUT END === after function calls === OBJECTS OUTPUT END "
                "========\n"},
               {infoText, mallocText}}),
    [](const testing::TestParamInfo<Detail>& tested) { return std::string(tested.param.key + 2); });

TEST_F(Canny, EveryBlockIsFreed) {
    std::multiset<std::string> live;
    std::size_t blocks = 0;
    for (const std::string& line : support::lines(run({"-LM"}).out)) {
        const auto pointer = line.substr(line.find("alignedPointer:") + 1);
        if (line.find(" - psMalloc: ") == 0) {
            live.insert(pointer);
            ++blocks;
        } else if (line.find(" - psFree: ") == 0) {
            EXPECT_EQ(live.erase(pointer), 1U) << line;
        }
    }
    EXPECT_GE(blocks, 8U);  // three images and a work buffer for each function
    EXPECT_TRUE(live.empty()) << live.size() << " blocks left";
}

TEST_F(Canny, TheSameDataInEveryRun) {
    const auto dump = [&] {
        const std::string out = run({"-LD", "-dImageSize=24x16"}).out;
        const std::size_t begin = out.find(dataText);
        const std::size_t end = out.find("OBJECTS OUTPUT END");
        EXPECT_NE(end, std::string::npos);
        return out.substr(begin, end - begin);
    };
    const std::string first = dump();
    EXPECT_GT(first.size(), 24U * 16U * 3U);
    EXPECT_EQ(first, dump());
}

TEST_F(Canny, TwoRunsDifferInTimesOnly) {
    const std::string first = run({"-LP"}).out;
    EXPECT_NE(first.find(" clocks per pxch"), std::string::npos);
    EXPECT_EQ(support::masked(first), support::masked(run({"-LP"}).out));
}

TEST_F(Canny, ListingEqualsConsole) {
    const Outcome outcome = run({"-LINFO", "-olisting", "-osecond.log"});
    EXPECT_FALSE(outcome.out.empty());
    EXPECT_EQ(pscv.text("listing.txt"), outcome.out);
    EXPECT_EQ(pscv.text("second.log"), outcome.out);
    run({"-LINFO", "-Olisting"});
    EXPECT_EQ(support::count(pscv.text("listing.txt"), "PS Summary"), 2U);
    EXPECT_EQ(pscv.text("listing.txt").find(outcome.out), 0U);
}

TEST_F(Canny, AppendedTableKeepsTheOldRows) {
    run();
    const std::string before = pscv.text("table.csv");
    pscv.run({"-B", "-f=zmoiCanny_16s8u_C1R", "-dImageSize=32x32", "-dnumFigures=2x2",
              "-dMethod=Manual", "-Rtable"});
    EXPECT_EQ(pscv.text("table.csv").find(before), 0U);
    EXPECT_EQ(support::count(pscv.text("table.csv"), "\nfuncBase,"), 2U);
    EXPECT_EQ(support::count(pscv.text("table.csv"), "\nzmoiCanny,"), 3U);
}

struct Level {
    const char* label;
    const char* mask;
    bool (*supported)();
};

TEST_F(Canny, LevelIsSwitchedAndNamed) {
    const Level levels[] = {
        {"SSE42", "0xdf", [] { return __builtin_cpu_supports("sse4.2") != 0; }},
        {"AVX2", "0x81df", [] { return __builtin_cpu_supports("avx2") != 0; }},
    };
    for (const Level& level : levels) {
        const Outcome outcome = run({std::string("-T") + level.label});
        const std::string call = std::string("--calling zmoSetCpuFeatures( zmoCpuFeatures = ");
        EXPECT_TRUE(has(outcome.out, call)) << outcome.out;
        EXPECT_TRUE(has(outcome.out, std::string(level.mask) + " )\n")) << outcome.out;
        if (level.supported()) {
            EXPECT_TRUE(has(outcome.out, "--status = zmoStsNoErr\n")) << outcome.out;
            EXPECT_TRUE(has(outcome.out, std::string("Code path: ") + level.label + ","))
                << outcome.out;
        } else {
            std::cout << "this processor lacks " << level.label << ": rejection tested\n";
            EXPECT_TRUE(has(outcome.out, "--calling zmoInit()\n")) << outcome.out;
        }
        EXPECT_EQ(pscv.rows().size(), 2U);
    }
}

TEST_F(Canny, LevelThatTheProcessorLacksIsRejected) {
    // No processor has both the first and the last of the AVX-512 extensions.
    const Outcome outcome = run({"-TAVX512ER,AVX10_512"});
    EXPECT_TRUE(has(outcome.out, "--ZMO FAIL. status = -21: ")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "--calling zmoInit()\n")) << outcome.out;
    EXPECT_EQ(pscv.rows().size(), 2U);
}

struct Echo {
    const char* key;
    const char* text;
};

TEST_F(Canny, UnusableKeysAreNamedAndChangeNothing) {
    const Echo echoes[] = {
        {"-Tbad", "-Tbad: ignored: incorrect CPU features\n"},
        {"-Zfoo", "-Zfoo: ignored: incorrect option key\n"},
        {"-L", "-L: ignored: incorrect level of console output\n"},
        {"-jx", "-jx: ignored: incorrect number of loops\n"},
        {"-J0", "-J0: ignored: incorrect number of external loops\n"},
        {"-c-", "-c-: ignored: incorrect number of milliseconds\n"},
        {"-YX", "-YX: ignored: incorrect process priority value\n"},
        {"-dnothing", "-dnothing: ignored: incorrect data format\n"},
        {"-dnosuch=1", "-dnosuch=1: set PS parameter nosuch=1\n"},
    };
    Pscv::Arguments keys;
    keys.reserve(std::size(echoes));
    for (const Echo& echo : echoes) keys.emplace_back(echo.key);
    const Outcome outcome = run(keys);
    for (const Echo& echo : echoes) EXPECT_TRUE(has(outcome.out, echo.text)) << outcome.out;
    EXPECT_EQ(pscv.rows().size(), 2U);
}

TEST_F(Canny, InvalidValuesKeepTheOldOnes) {
    const Outcome outcome =
        pscv.run({"-B", "-f=zmoiCanny_16s8u_C1R", "-dImageSize=64x64", "-dnumFigures=two",
                  "-dMethod=Manual", "-dNumLoops=many", "-rtable"});
    EXPECT_TRUE(has(outcome.out, "---ZMO. Exception: Invalid value of NumLoops = many\n"))
        << outcome.out;
    const std::vector<Row> rows = pscv.rows();
    ASSERT_EQ(rows.size(), 3U);  // the three values that numFigures has by default
    for (const Row& row : rows) EXPECT_EQ(row[colComment], "nLps=10");
}

TEST_F(Canny, FiguresThatDoNotFitFailTheTest) {
    run({"-dnumFigures=100x2"});
    EXPECT_EQ(pscv.result("zmoiCanny_16s8u_C1R"), "DATAFAIL");
    EXPECT_TRUE(pscv.rows().empty());
}

TEST_F(Canny, KeysOfTheMeasurementAct) {
    const Outcome outcome =
        pscv.run({"-B", "-f=zmoiCanny_16s8u_C1R", "-dImageSize=64x64", "-dnumFigures=2x2", "-j40",
                  "-c1", "-J3", "-YHIGH", "-W", "-s-", "-rtable"});
    for (const char* text :
         {"-j40: set minimun number of measurement loops to (40)\n",
          "-c1: set measurement loop to (1) milliseconds\n",
          "-J3: set the number of external measurement loops to (3)\n",
          "-YHIGH: set high process priority\n", "-W: unmask floating-point exceptions\n",
          "-s-: don't sort functions\n"}) {
        EXPECT_TRUE(has(outcome.out, text)) << text << outcome.out;
    }
    EXPECT_FALSE(has(outcome.out, "Sorting functions..."));
    const std::vector<Row> rows = pscv.rows();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_GE(std::atoi(rows[0][colComment].c_str() + 5), 40) << rows[0][colComment];
}

TEST_F(Canny, SetAndUseMeasuresThroughThePlainCall) {
    const Outcome outcome = run({"-SU", "-LINFO"});
    EXPECT_TRUE(has(outcome.out, "funcCall with Set&Use is called for measuring.")) << outcome.out;
    for (const Row& row : pscv.rows()) EXPECT_GT(number(row[colClocks]), 0.0);
    EXPECT_EQ(pscv.rows().size(), 2U);
}

TEST_F(Canny, NoFunctionNoRow) {
    const Outcome outcome = pscv.run({"-B", "-fNoSuchFunction", "-rtable"});
    EXPECT_EQ(Pscv::summary(outcome.out, ".Number of tests"), 0) << outcome.out;
    EXPECT_TRUE(pscv.rows().empty());
}

TEST_F(Canny, OutputThatCannotBeWrittenEndsTheRun) {
    support::writeFile(pscv.file("plain"), "");
    const std::string path = pscv.file("plain") + "/table.csv";
    const Outcome outcome = pscv.run(Pscv::smallCanny({"-r" + path}));
    EXPECT_TRUE(has(outcome.out, "-- Can't open file " + path + " to write: \n")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "FATAL FAIL: can't open output file for writing\n"));
    EXPECT_FALSE(has(outcome.out, "PS Summary")) << outcome.out;
}

}  // namespace
