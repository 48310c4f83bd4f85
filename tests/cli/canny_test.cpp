// A run over the Canny functions of the shipped library: console, table, and
// the methods and keys that shape the measurement.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "pscv.h"

namespace {

using support::Outcome;
using support::Row;

class Canny : public testing::Test {
  protected:
    Outcome run(const Pscv::Arguments& more = {}) { return pscv.run(Pscv::smallCanny(more)); }
    // The 16s function alone with one set.
    Outcome runOne(const Pscv::Arguments& more) {
        return pscv.run({"-B", "-f=zmoiCanny_16s8u_C1R", "-dImageSize=64x64", "-dnumFigures=2x2",
                         "-rtable", "-LINFO"},
                        more);
    }
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
        EXPECT_GT(std::stod(row[colClocks]), 0.0);
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
    EXPECT_TRUE(has(outcome.out, "2 GHz (given)")) << outcome.out;
    EXPECT_EQ(Pscv::summary(outcome.out, ".Successes"), 2) << outcome.out;
}

TEST_F(Canny, MethodsShowTheirCourseAndCountLoops) {
    const struct {
        Pscv::Arguments arguments;
        std::vector<const char*> words;
        const char* comment;
        int least;  // of the number behind the comment's word
        int most;
    } methods[] = {
        {{},
         {"    Auto method: start\n", "        minClocks  = 10000\n",
          "    Prior Measurement: \n        numLoops   = 1\n", "    Iteration Measurement: \n",
          "        stopLoops  = ", "        accuracy   = ", "        result     = successfully\n",
          "    Auto method: stop\n"},
         "nLps=",
         8,
         1000000},
        {{"-dMethod=Manual", "-dNumLoops=7"},
         {"    Manual method: \n        numLoops   = 7\n        funcClocks = "},
         "nLps=7",
         0,
         0},
        {{"-dMethod=Statistic", "-dNumCalls=21", "-dTotalCpuClocks=1000"},
         {"    Statistical method:\n        minCalls   = 21\n        maxClocks  = 1000\n",
          "        numCalls   = ", "        funcClocks = "},
         "nCalls=",
         21,
         21},
        {{"-dMethod=Iterative", "-dStartNumLoops=2", "-dStopNumLoops=64", "-dMinCpuClocks=50000000",
          "-dAccuracy, %=5"},
         {"        minClocks  = 50000000\n", "        numLoops   = 2\n"},
         "nLps=",
         2,
         1 << 30},
        {{"-j40", "-c1", "-J3", "-YHIGH", "-W", "-s-"}, {}, "nLps=", 40, 1000000},
        {{"-SU"}, {"funcCall with Set&Use is called for measuring."}, "nLps=", 8, 1 << 30}};
    for (const auto& method : methods) {
        const Outcome outcome = runOne(method.arguments);
        for (const char* word : method.words) EXPECT_TRUE(has(outcome.out, word)) << outcome.out;
        ASSERT_EQ(pscv.rows().size(), 1U);
        const std::string comment = pscv.rows()[0][colComment];
        ASSERT_EQ(comment.find(method.comment), 0U) << comment;
        const int loops = std::atoi(comment.c_str() + std::string(method.comment).size());
        EXPECT_TRUE(loops >= method.least && loops <= method.most) << comment;
    }
}

constexpr const char* perfText = " clocks per pxch";
constexpr const char* infoText = "    Manual method: ";
constexpr const char* traceText = " trace into   ";
constexpr const char* mallocText = " - psMalloc: size:";
constexpr const char* dataText = "======== OBJECTS OUTPUT START === ";

TEST_F(Canny, LevelDecidesWhatIsShown) {
    const struct {
        const char* key;
        std::vector<const char*> shown, hidden;
    } levels[] = {
        {"-LERR", {}, {perfText, infoText, traceText, mallocText, dataText}},
        {"-LPERF", {perfText, "numFigures=2x2"}, {infoText, traceText, mallocText, dataText}},
        {"-LINFO",
         {perfText, infoText, "Test has been registered by PP_REG macro with "},
         {traceText, mallocText, dataText}},
        {"-LTRACE",
         {perfText, traceText, " trace out of ", "customLoopTiming", "zmoFunctionCalls",
          "funcToCstrm", "parmsToCstrm", "resultToCstrm"},
         {infoText, mallocText, dataText}},
        {"-LMALLOC",
         {perfText, mallocText, " - psFree: size:", "  alignedPointer:"},
         {infoText, traceText, dataText}},
        {"-LDATA",
         {perfText, traceText,
          "======== OBJECTS OUTPUT START === before function calls === OBJECTS OUTPUT START "
          "========\n======== Object 1: ",
          "======== OBJECTS OUTPUT END === after function calls === OBJECTS OUTPUT END "
          "========\n"},
         {infoText, mallocText}}};
    for (const auto& [key, shown, hidden] : levels) {
        const std::string out = run({key}).out;
        for (const char* part : shown) EXPECT_TRUE(has(out, part)) << key << part << "\n" << out;
        for (const char* part : hidden) EXPECT_FALSE(has(out, part)) << key << part << "\n" << out;
    }
}

TEST_F(Canny, EveryBlockIsFreed) {
    std::multiset<std::string> live;
    std::size_t blocks = 0;
    for (const std::string& line : support::lines(run({"-LM", "-m=p_cadd"}).out)) {
        const auto pointer = line.substr(line.find("alignedPointer:") + 1);
        if (line.find(" - psMalloc: ") == 0) {
            live.insert(pointer);
            ++blocks;
        } else if (line.find(" - psFree: ") == 0) {
            EXPECT_EQ(live.erase(pointer), 1U) << line;
        }
    }
    EXPECT_GE(blocks, 8U);  // three images and a work buffer for each function of Canny
    EXPECT_TRUE(live.empty()) << live.size() << " blocks left";
}

// A work buffer, whose bytes are one line, is dumped before all of it is written.
std::string withoutBuffers(const std::string& text) {
    std::string kept;
    bool bytes = false;
    for (const std::string& line : support::lines(text)) {
        if (!bytes) kept += line + "\n";
        bytes = has(line, ": MemoryBlock size=");
    }
    return kept;
}

// But for a block that nothing has written, of which the C library is told what it holds.
TEST_F(Canny, TwoRunsDifferInTimesOnly) {
    pscv.environment["MALLOC_PERTURB_"] = "85";
    const auto listing = [&] {
        const Outcome outcome = run({"-LD", "-dImageSize=24x16", "-olisting", "-osecond.log"});
        EXPECT_TRUE(has(outcome.out, dataText)) << outcome.out;
        EXPECT_EQ(pscv.text("listing.txt"), outcome.out);
        EXPECT_EQ(pscv.text("second.log"), outcome.out);
        return withoutBuffers(support::masked(outcome.out));
    };
    EXPECT_EQ(listing(), listing());
}

TEST_F(Canny, LevelIsSwitchedAndNamed) {
    const bool sse42 = __builtin_cpu_supports("sse4.2") != 0,
               avx = __builtin_cpu_supports("avx") != 0, avx2 = __builtin_cpu_supports("avx2") != 0,
               avx512 = __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd");
    const struct {
        std::string given;
        const char* mask;
        bool supported;
        std::string label;
    } levels[] = {{"SSE42", "0xdf", sse42, "SSE42, 128-bit"},
                  {"AVX", "0x1df", avx, "SSE42, 128-bit"},
                  {"AVX2", "0x81df", avx2, "AVX2, 256-bit"},
                  {"P_AVX2", "0x81df", avx2, "AVX2, 256-bit"},
                  {"AVX512", "0x73081df", avx512, "AVX512, 512-bit"}};
    for (const auto& [given, mask, supported, label] : levels) {
        const Outcome outcome = run({"-T" + given});
        EXPECT_TRUE(has(outcome.out, "--calling zmoSetCpuFeatures( zmoCpuFeatures = "));
        EXPECT_TRUE(has(outcome.out, std::string(mask) + " )\n")) << outcome.out;
        if (supported) {
            EXPECT_TRUE(has(outcome.out, "--status = zmoStsNoErr\n")) << outcome.out;
            EXPECT_TRUE(has(outcome.out, "| Code path: " + label)) << outcome.out;
        } else {
            std::cout << "this processor lacks " << given << ": rejection tested\n";
            EXPECT_TRUE(has(outcome.out, "--calling zmoInit()\n")) << outcome.out;
        }
        EXPECT_EQ(pscv.rows().size(), 2U);
    }
}

TEST_F(Canny, LevelThatTheProcessorLacksIsRejected) {
    // No processor has both the first and the last of the AVX-512 extensions.
    const Outcome outcome = run({"-TAVX512ER,AVX10_512", "-Tsse2"});
    EXPECT_TRUE(has(outcome.out, "--ZMO FAIL. status = -21: ")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "--calling zmoInit()\n-- The processor lacks AVX")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "-- The processor has MMX, SSE, SSE2")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "-Tsse2: ignored: incorrect CPU features\n")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "-- -T knows no processor feature sse2 (SSE2?)\n")) << outcome.out;
    EXPECT_EQ(pscv.rows().size(), 2U);
}

TEST_F(Canny, InvalidValuesKeepTheOldOnes) {
    const Outcome outcome =
        runOne({"-dnumFigures=two", "-dMethod=Manual", "-dNumLoops=many", "-dnosuch=1"});
    EXPECT_TRUE(has(outcome.out,
                    "---ZMO. Exception: Invalid value of NumLoops = many\n"
                    "-- a value is a whole number from 1 to 2147483647\n"))
        << outcome.out;
    const std::vector<Row> rows = pscv.rows();
    ASSERT_EQ(rows.size(), 3U);  // the three values that numFigures has by default
    for (const Row& row : rows) EXPECT_EQ(row[colComment], "nLps=10");
}

}  // namespace
