#include "pstool.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "capture.h"
#include "pscputick_gcc.h"
#include "psctrl87.h"
#include "psexcept.h"

namespace {

using Numbers = std::vector<int>;

// The tested function and its wrappers: each run is written down, and a script
// tells the clocks and the outcome.
struct Script {
    Numbers loops;  // n of each loop run
    Numbers stats;  // n of each statistic run
    Numbers inner;
    std::vector<long long> budgets;
    int calls = 0;
    int inits = 0;
    std::function<long long(int)> loopClocks = [](int n) { return 300LL * n; };
    std::function<psResult()> outcome = [] { return PS_OK; };
    std::function<int(int)> status = [](int) { return 0; };
    int statCalls = 0;  // what a statistic run makes of n; 0: as asked
    long long statClocks = 40;
    std::function<void()> fault = [] {};
} script;

psResult funcLoop(int n, long long* clocks) {
    script.loops.push_back(n);
    script.fault();
    *clocks = script.loopClocks(n);
    return script.outcome();
}

psResult funcStat(int* n, long long* clocks, int inner) {
    script.stats.push_back(*n);
    script.inner.push_back(inner);
    script.budgets.push_back(*clocks);
    script.fault();
    if (script.statCalls) *n = script.statCalls;
    *clocks = script.statClocks;
    return script.outcome();
}

int funcCall() {
    ++script.calls;
    script.fault();
    return script.status(script.calls);
}

int funcInit() {
    return ++script.inits, 0;
}

long long fakeNow = 0;

// x87 and SSE state in memory; `raised` flags appear while a function is measured.
unsigned fakeMxcsr = 0;
unsigned fakeControl = 0;
unsigned fakeStatus = 0;
unsigned fakeAccess(int op, unsigned value, unsigned mask) {
    if (op == 1) fakeControl = (fakeControl & ~mask) | (value & mask);
    if (op == 4) fakeStatus = 0;
    if (op == 5) fakeMxcsr = (fakeMxcsr & ~mask) | (value & mask);
    if (op == 7) fakeMxcsr &= ~0x3fu;
    return op < 3 ? fakeControl : op < 5 ? fakeStatus : fakeMxcsr;
}

class Engine : public testing::Test {
  protected:
    void SetUp() override {
        script = {};
        fakeNow = 0;
        m_start = zmo_StartCpuClocks;
        m_stop = zmo_StopCpuClocks;
        zmo_StartCpuClocks = [] { return fakeNow += 10; };
        zmo_StopCpuClocks = zmo_StartCpuClocks;
        psCpuTicker::m_freqMHz = 2600;
        psTool::numIntLoops = 1;
        psInitCtrlStatus();
    }
    void TearDown() override {
        zmo_StartCpuClocks = m_start;
        zmo_StopCpuClocks = m_stop;
        zmo_FpuSsx4TS = psFpuSsx4TS;
        psTool::m_pCheckStatus = nullptr;
        psTool::m_priority = 0;
        psCpuTicker::m_freqMHz = 0;
        psClearCtrlStatus();
        psMaskExceptions();
    }
    psTool tool;

  private:
    psCpuClocks m_start = nullptr;
    psCpuClocks m_stop = nullptr;
};

TEST_F(Engine, NothingToMeasure) {
    Capture out(1);
    EXPECT_EQ(tool.timing(nullptr, nullptr, nullptr, funcInit), PS_FAIL);
    EXPECT_EQ(out.take(),
              " Internal test problem: The test cannot execute standard timing.\n"
              " No one of funcLoop, funcStat or funcCall is registered in the test.\n");
    EXPECT_STREQ(tool.message().c_str(), "fail");
}

TEST_F(Engine, Manual) {
    Capture out(15);
    tool.setMethodLoop(0);
    int n = 0;
    EXPECT_TRUE(tool.getMethodLoop(n));
    EXPECT_EQ(n, 1);
    tool.setMethodLoop(20);
    EXPECT_EQ(tool.timing(funcLoop, funcStat, funcCall, nullptr), PS_OK);
    EXPECT_EQ(script.loops, Numbers{20});
    EXPECT_EQ(tool.funcClocks(), 6000);  // of the run, not of a loop
    EXPECT_EQ(tool.numLoops(), 20);
    EXPECT_STREQ(tool.perfInfo().c_str(), "nLps=20");
    EXPECT_TRUE(tool.message().empty());
    EXPECT_EQ(out.take(),
              "    Manual method: \n"
              "        numLoops   = 20\n"
              "        funcClocks = 6000\n"
              "        result     = successfully\n");
}

TEST_F(Engine, Statistic) {
    Capture out(15);
    tool.setMethodStat(16, 5'000'000'000);
    script.statCalls = 20;
    script.statClocks = 800;
    EXPECT_EQ(tool.timing(funcLoop, funcStat, funcCall, nullptr), PS_OK);
    EXPECT_EQ(script.stats, Numbers{16});
    EXPECT_EQ(script.budgets.at(0), 5'000'000'000);
    EXPECT_EQ(tool.funcClocks(), 40);
    EXPECT_STREQ(tool.perfInfo().c_str(), "nCalls=20");
    EXPECT_EQ(out.take(),
              "    Statistical method:\n"
              "        minCalls   = 16\n"
              "        maxClocks  = 5000000000\n"
              "        numCalls   = 20\n"
              "        funcClocks = 40\n"
              "        result     = successfully\n");
    script.statCalls = INT_MIN;
    script.statClocks = 0;
    tool.timing(funcLoop, funcStat, funcCall, nullptr);
    EXPECT_EQ(tool.funcClocks(), 0);  // no call was made
}

TEST_F(Engine, MethodsReplaceEachOther) {
    Capture out(3);
    tool.setMethodLoop(5);
    tool.timing(nullptr, funcStat, nullptr, nullptr);
    EXPECT_EQ(script.stats, Numbers{12});
    EXPECT_EQ(script.budgets.at(0), 0);
    EXPECT_EQ(out.take(),
              " ATTENTION! The test cannot execute Manual loop timing.\n"
              " Statistic timing will be run instead.\n");
    tool.setMethodStat(1, 100);
    tool.timing(funcLoop, nullptr, nullptr, nullptr);
    EXPECT_EQ(script.loops, Numbers{1});
    EXPECT_EQ(out.take(),
              " ATTENTION! The test cannot execute Statistic timing.\n"
              " Manual loop timing will be run instead.\n");
    tool.setMethod(9);
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), PS_FAIL);
    EXPECT_EQ(out.take().rfind("PS internal fail: file perflib/src/pstool.cpp, line ", 0), 0u);
}

TEST_F(Engine, AutoTellsItsCourse) {
    Capture out(15);
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), PS_OK);
    EXPECT_EQ(script.loops, (Numbers{1, 128, 512}));
    EXPECT_EQ(tool.funcClocks(), 300);
    EXPECT_STREQ(tool.perfInfo().c_str(), "nLps=512");
    EXPECT_EQ(out.take(),
              "    Auto method: start\n"
              "        minClocks  = 10000\n"
              "    Prior Measurement: \n"
              "        numLoops   = 1\n"
              "        numClocks  = 300\n"
              "        funcClocks = 300\n"
              "        result     = wrong measure accuracy\n"
              "    Prior Measurement: \n"
              "        numLoops   = 128\n"
              "        numClocks  = 38400\n"
              "        funcClocks = 300\n"
              "        result     = successfully\n"
              "    Iteration Measurement: \n"
              "        startLoops = 512\n"
              "        maxLoops   = 262144\n"
              "        stopLoops  = 512\n"
              "        stopClocks = 153600\n"
              "        accuracy   = 0.00%\n"
              "        funcClocks = 300\n"
              "        result     = successfully\n"
              "    Auto method: stop\n");
}

TEST_F(Engine, PriorMeasurementCorrectsTheLoops) {
    const struct {
        const char* what;
        long long first;  // clocks of one loop
        Numbers loops;    // of the runs before the iterations
    } cases[] = {
        {"enough at once", 10000, {1}}, {"66 becomes 128", 300, {1, 128}},
        {"64 stays", 312, {1, 64}},     {"just below", 9999, {1, 2}},
        {"one clock", 1, {1, 32768}},
    };
    for (const auto& c : cases) {
        script = {};
        script.loopClocks = [&](int n) { return c.first * n; };
        tool.timing(funcLoop, nullptr, nullptr, nullptr);
        ASSERT_GT(script.loops.size(), c.loops.size()) << c.what;
        script.loops.resize(c.loops.size());
        EXPECT_EQ(script.loops, c.loops) << c.what;
    }
}

TEST_F(Engine, HugeClockFloorsSaturate) {
    script.loopClocks = [](int) { return 1LL; };
    tool.setMethodBest(1000, 2000, LLONG_MAX);
    tool.timing(funcLoop, nullptr, nullptr, nullptr);
    EXPECT_EQ(script.loops, (Numbers{1000, INT_MAX}));  // no room to iterate
    EXPECT_STREQ(tool.perfInfo().c_str(), "nLps=2147483647 acc=100.0%");
}

TEST_F(Engine, ZeroClocksFailAfterTenTimesTheLoops) {
    Capture out(1);
    script.loopClocks = [](int) { return 0LL; };
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), PS_ACCURFAIL);
    EXPECT_EQ(script.loops, (Numbers{1, 1, 10, 10}));
    EXPECT_STREQ(tool.message().c_str(), "accuracy fail");
    // Detail that nobody asked for appears with the failure.
    const std::string text = out.take();
    EXPECT_EQ(text.rfind("    Auto method: start\n", 0), 0u) << text;
    EXPECT_NE(text.find("        numLoops   = 10\n"), std::string::npos);
    EXPECT_NE(text.find("        result     = accuracy fail\n    Auto method: exit\n"),
              std::string::npos);
}

TEST_F(Engine, FirstZeroRunIsRepeatedSilently) {
    int runs = 0;
    script.loopClocks = [&](int n) { return ++runs == 1 ? 0LL : 20000LL * n; };
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), PS_OK);
    EXPECT_EQ(script.loops, (Numbers{1, 1, 4}));
}

TEST_F(Engine, IterationsDoubleUntilTwoAgree) {
    const struct {
        const char* what;
        std::vector<double> perLoop;  // of the runs, the last one repeating
        Numbers loops;
        psResult result;
        const char* info;
        const char* message;
    } cases[] = {
        // 2 * 30 / 3030 passes 5 %, but not the 1 % that spares the repetition;
        // that compares totals with one figure a loop, so it asks for more loops
        {"close", {15000, 15300}, {1, 4, 4, 4, 8}, PS_OK, "nLps=8", ""},
        {"very close", {15000, 15075}, {1, 4}, PS_OK, "nLps=4", ""},
        {"never",
         {20000, 30000, 20000, 30000},
         {1, 4, 8, 8, 8},
         PS_ACCURWRN,
         "nLps=8 acc=88.0%",
         "actual accuracy = 88.0%"},
    };
    for (const auto& c : cases) {
        script = {};
        std::size_t run = 0;
        script.loopClocks = [&](int n) {
            const double per = c.perLoop[std::min(run++, c.perLoop.size() - 1)];
            return static_cast<long long>(per * n);
        };
        tool.setMethodBest(1, 8, 10000);
        EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), c.result) << c.what;
        EXPECT_EQ(script.loops, c.loops) << c.what;
        EXPECT_STREQ(tool.perfInfo().c_str(), c.info) << c.what;
        EXPECT_STREQ(tool.message().c_str(), c.message) << c.what;
    }
}

TEST_F(Engine, RepeatsTakeTheBest) {
    // Loop totals that do not depend on n make the repeated figures comparable.
    std::vector<long long> clocks{10000, 11600, 3000, 2900};
    std::size_t run = 0;
    script.loopClocks = [&](int) { return clocks[std::min(run++, clocks.size() - 1)]; };
    tool.setMethodBest(1, 8, 10000);
    tool.setAccuracyLimit(2);
    tool.timing(funcLoop, nullptr, nullptr, nullptr);
    EXPECT_EQ(script.loops, (Numbers{1, 4, 4, 4}));
    EXPECT_EQ(tool.funcClocks(), 2900);  // of 2900, 3000, 2900
    EXPECT_NEAR(tool.accuracy(), 1.0 / 44, 1e-9);
}

TEST_F(Engine, StatisticFunctionGetsTheBudget) {
    const struct {
        long long perCall;
        int inner;
    } cases[] = {{15000, 1}, {201, 1}, {200, 100}, {1, 100}};
    for (const auto& c : cases) {
        script = {};
        script.loopClocks = [&](int n) { return c.perCall * n; };
        script.statCalls = 17;
        EXPECT_EQ(tool.timing(funcLoop, funcStat, funcCall, nullptr), PS_OK);
        EXPECT_EQ(script.stats, Numbers{8});
        EXPECT_EQ(script.inner, Numbers{c.inner}) << c.perCall;
        EXPECT_EQ(script.budgets.at(0), 26'000'000);  // 2600 MHz, a tenth of 100 ms
        EXPECT_EQ(tool.funcClocks(), 40);
        EXPECT_STREQ(tool.perfInfo().c_str(), "nLps=17");
    }
    tool.setCountCalls(true);
    tool.timing(funcLoop, funcStat, nullptr, nullptr);
    EXPECT_STREQ(tool.perfInfo().c_str(), "nCalls=17");
    tool.timing(funcLoop, nullptr, nullptr, nullptr);
    EXPECT_FALSE(tool.countCalls());
}

TEST_F(Engine, AutoNeedsMoreThanAStatisticFunction) {
    Capture out(1);
    EXPECT_EQ(tool.timing(nullptr, funcStat, nullptr, nullptr), PS_FAIL);
    EXPECT_NE(out.take().find("PS internal fail: file "), std::string::npos);
    EXPECT_TRUE(script.stats.empty());
}

TEST_F(Engine, ResultsOfTheWrapperAreKept) {
    const struct {
        psResult outcome;
        psResult result;
        const char* message;
        Numbers loops;
    } cases[] = {
        {PS_FUNCWRN, PS_FUNCWRN, "lib function note", {1, 128, 512}},
        {PS_FUNCFAIL, PS_FUNCFAIL, "lib function fail", {1}},
        {PS_ACCURFAIL, PS_ACCURFAIL, "accuracy fail", {1, 10}},
    };
    for (const auto& c : cases) {
        Capture out(1);
        script = {};
        script.outcome = [&] { return c.outcome; };
        EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), c.result);
        EXPECT_STREQ(tool.message().c_str(), c.message);
        EXPECT_EQ(script.loops, c.loops) << c.message;
    }
}

// The course of a measurement whose long runs disturb the control status.
class BadStatus : public Engine {
  protected:
    void SetUp() override {
        Engine::SetUp();
        zmo_FpuSsx4TS = fakeAccess;
        fakeStatus = fakeMxcsr = 0;
        psInitCtrlStatus();
        tool.setInitBeforeRun(true);
        script.loopClocks = [this](int n) {
            if (n > m_longest) fakeStatus |= 1;
            return m_constant ? 20000LL : 20000LL * n;
        };
    }
    int m_longest = 2;
    bool m_constant = true;
};

TEST_F(BadStatus, IsAvoidedByHalfTheLoops) {
    Capture out(15);
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, funcInit), PS_OK);
    EXPECT_EQ(script.loops, (Numbers{1, 4, 2, 2, 2, 2, 2}));
    EXPECT_EQ(script.inits, 7);  // before each run
    EXPECT_STREQ(tool.perfInfo().c_str(), "nLps=2");
    const std::string text = out.take();
    for (const char* part :
         {"        result     = modified control status\n", "x87 ?Invalid ",
          "-- Attempting to avoid bad control status\n",
          "    Reduce loops to avoid bad ctrl status.\n    Simple Measurements: \n",
          "-- Attempt is successful\n    Auto method: stop\n"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    EXPECT_FALSE(psBadCtrlStatus());
}

TEST_F(BadStatus, RepeatsWithHalfTheLoops) {
    Capture out(15);
    m_longest = 1;
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), PS_OK);
    const std::string text = out.take();
    EXPECT_NE(text.find("-- Attempt fails: Bad control status repeats.\n"
                        "    Cannot avoid bad ctrl status\n"),
              std::string::npos)
        << text;
    EXPECT_TRUE(psBadCtrlStatus());
}

TEST_F(BadStatus, AccuracyIsLostWithHalfTheLoops) {
    Capture out(3);
    m_constant = false;  // the element of the first run counts one loop
    tool.timing(funcLoop, nullptr, nullptr, nullptr);
    EXPECT_NE(out.take().find("-- Attempt fails: Accuracy is unsatisfactory.\n"),
              std::string::npos);
}

TEST_F(BadStatus, IsLeftAloneWithoutInit) {
    Capture out(3);
    m_constant = false;
    tool.setInitBeforeRun(false);
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, funcInit), PS_OK);
    EXPECT_EQ(script.inits, 0);
    EXPECT_EQ(out.take().find("Attempt"), std::string::npos);
    EXPECT_TRUE(psBadCtrlStatus());
}

TEST_F(Engine, LoopFactor) {
    const struct {
        int factor;
        int first;
        const char* info;
    } cases[] = {
        {0, 1, "nLps=4"},
        {12, 1, "nLps=4"},  // 0, 0: both defaults
        {32, 1, "nLps=4"},  // 1, 2048
        {-4, 16, "nLps=64"},
        {11, 1, "nLps=1 acc=100.0%"},               // stop 1: no iteration
        {-20, 1 << 20, "nLps=1048576 acc=100.0%"},  // stop negative
        {-21, 1 << 21, "nLps=2097152 acc=100.0%"},  // stop 0: the default
    };
    script.loopClocks = [](int n) { return 20000LL * n; };
    for (const auto& c : cases) {
        script.loops.clear();
        tool.setLoopFactor(c.factor);
        tool.timing(funcLoop, nullptr, nullptr, nullptr);
        EXPECT_EQ(script.loops.front(), c.first) << c.factor;
        EXPECT_STREQ(tool.perfInfo().c_str(), c.info) << c.factor;
    }
}

TEST_F(Engine, IterativeLimits) {
    const struct {
        int start, stop;
        int kept, ceiling;
    } cases[] = {{3, 10, 3, 24}, {0, 100, 1, 100}, {1, 2, 1, 8}, {INT_MAX, 5, INT_MAX, INT_MAX}};
    for (const auto& c : cases) {
        int start = 0, stop = 0;
        long long minClocks = 0;
        EXPECT_FALSE(psTool().getMethodBest(start, stop, minClocks));
        tool.setMethodBest(c.start, c.stop, 77);
        EXPECT_TRUE(tool.getMethodBest(start, stop, minClocks));
        EXPECT_EQ(start, c.kept);
        EXPECT_EQ(stop, c.ceiling);
        EXPECT_EQ(minClocks, 77);
    }
}

TEST_F(Engine, CallModeUsesItsOwnLoops) {
    tool.setCallMode(true);
    EXPECT_EQ(tool.timing(funcLoop, funcStat, nullptr, nullptr), PS_UNDEFINED);
    EXPECT_TRUE(script.loops.empty());

    tool.setMethodBest(1, 8, 1);
    EXPECT_EQ(tool.timing(funcLoop, funcStat, funcCall, funcInit), PS_OK);
    EXPECT_TRUE(script.loops.empty() && script.stats.empty());
    // Prior: a warm-up and one call, 10 clocks. Iteration: a warm-up and four
    // calls of 10 clocks, each with an untimed second one.
    EXPECT_EQ(script.calls, 2 + 1 + 8);
    EXPECT_EQ(tool.funcClocks(), 10);
    EXPECT_STREQ(tool.perfInfo().c_str(), "nLps=4");
}

psResult ownCheck(int status) {
    return status < 0 ? PS_FUNCFAIL : status > 0 ? PS_FUNCWRN : PS_OK;
}

TEST_F(Engine, LoopsOverTheCallFunction) {
    const struct {
        const char* what;
        int at;
        int status;
        int loopCalls;
        psResult loopResult;
        int statCalls;  // rounds of two calls
        psResult statResult;
    } cases[] = {
        {"fine", 0, 0, 11, PS_OK, 10, PS_OK},
        {"warm-up fails", 1, -5, 1, PS_FUNCFAIL, 0, PS_FUNCFAIL},
        {"third call fails", 3, -5, 3, PS_FUNCFAIL, 1, PS_FUNCFAIL},
        // the second call of a round is the one whose status counts
        {"note in a timed call", 2, 4, 11, PS_FUNCWRN, 10, PS_OK},
        {"note in an untimed call", 5, 4, 11, PS_FUNCWRN, 10, PS_FUNCWRN},
    };
    psTool::m_pCheckStatus = ownCheck;
    tool.setMethodLoop(1);
    for (const auto& c : cases) {
        script = {};
        tool.timing(nullptr, nullptr, funcCall, nullptr);  // hands the function over
        const auto run = [&](auto measure) {
            script.calls = 0;
            script.status = [&](int call) { return call == c.at ? c.status : 0; };
            return measure();
        };
        long long clocks = -1;
        EXPECT_EQ(run([&] { return tool.timCall_Loop(10, &clocks, true); }), c.loopResult)
            << c.what;
        EXPECT_EQ(script.calls, c.loopCalls) << c.what;
        EXPECT_EQ(clocks, c.loopCalls == 1 ? 0 : 10) << c.what;
        int n = 10;
        clocks = 0;
        EXPECT_EQ(run([&] { return tool.timCall_Stat(&n, &clocks, true); }), c.statResult)
            << c.what;
        EXPECT_EQ(n, c.statCalls) << c.what;
        EXPECT_EQ(clocks, 10 * c.statCalls) << c.what;
    }
    int n = 1;
    long long clocks = 95;
    script = {};
    EXPECT_EQ(tool.timCall_Stat(&n, &clocks, false), PS_OK);
    EXPECT_EQ(n, 10);  // the budget asks for more calls
    tool.reset();
    Capture out(1);
    EXPECT_EQ(tool.timCall_Loop(1, &clocks, false), PS_FAIL);
    EXPECT_EQ(tool.timCall_Stat(&n, &clocks, false), PS_FAIL);
}

[[gnu::noinline]] void readNull() {
    asm volatile("movl 0, %%eax" : : : "eax", "memory");
}

TEST_F(Engine, FaultsLeaveEverythingAsItWas) {
    psException::currentName = psTrace::getCurName;
    const auto niceValue = [] { return getpriority(PRIO_PROCESS, 0); };
    const int before = niceValue();
    psTool::m_priority = 3;
    const struct {
        const char* what;
        psTool::FuncLoop loop;
        psTool::FuncStat stat;
        psTool::FuncCall call;
        int method;
        bool callMode;
    } cases[] = {
        {"loop", funcLoop, nullptr, nullptr, psTool::AUTO, false},
        {"manual", funcLoop, nullptr, nullptr, psTool::MANUAL, false},
        {"stat", nullptr, funcStat, nullptr, psTool::STATISTIC, false},
        {"call", nullptr, nullptr, funcCall, psTool::ITERATIVE, false},
        {"call mode", nullptr, nullptr, funcCall, psTool::ITERATIVE, true},
    };
    for (int round = 0; round < 200; ++round) {
        for (const auto& c : cases) {
            script = {};
            script.fault = readNull;
            tool.setMethod(c.method);
            tool.setCallMode(c.callMode);
            psInitCtrlStatus();
            try {
                tool.timing(c.loop, c.stat, c.call, nullptr);
                FAIL() << c.what;
            } catch (const psException& fault) {
                ASSERT_STREQ(fault.info().c_str(), "Illegal storage access.") << c.what;
                const char* where = c.callMode ? "iterativeTiming" : "zmoFunctionCalls";
                ASSERT_STREQ(fault.where().c_str(), where);
            }
            psTrace::traceOut(psTrace::getCurName());
            ASSERT_EQ(niceValue(), before) << c.what;
            ASSERT_EQ(psFpuSsx4TS(2, 0, 0) & 0x3f, 0x3fu) << c.what;  // nothing traps
        }
    }
    psException::currentName = nullptr;
    psTool::m_priority = 0;
    // Measuring goes on.
    script = {};
    tool.setMethodAuto();
    tool.setCallMode(false);
    EXPECT_EQ(tool.timing(funcLoop, nullptr, nullptr, nullptr), PS_OK);
    EXPECT_EQ(tool.funcClocks(), 300);
}

psResult oldFunction(psTool& own, int n) {
    script.loops.push_back(n);
    own.setClocks(20000LL * n);
    return PS_DATAWRN;
}

TEST_F(Engine, TestsThatDriveTheToolThemselves) {
    EXPECT_EQ(tool.timing(oldFunction), PS_DATAWRN);
    EXPECT_EQ(script.loops, (Numbers{1, 4}));
    EXPECT_EQ(tool.funcClocks(), 20000);
}

TEST_F(Engine, SettingsSurviveAReset) {
    tool.setMethodStat(5, 6);
    tool.setAccuracyLimit(0.5);
    tool.timing(funcLoop, funcStat, funcCall, nullptr);
    psTool copy = tool;
    copy.reset();
    int calls = 0;
    long long clocks = 0;
    EXPECT_TRUE(copy.getMethodStat(calls, clocks));
    EXPECT_EQ(calls, 5);
    EXPECT_EQ(clocks, 6);
    EXPECT_EQ(copy.accuracyLimit(), 0.5);
    EXPECT_EQ(copy.result(), PS_UNDEFINED);
    EXPECT_EQ(copy.accuracy(), 1.0);
    EXPECT_TRUE(copy.perfInfo().empty());
}

TEST(EngineTexts, Accuracy) {
    const struct {
        double accuracy;
        const char* text;
    } cases[] = {
        {0.0005, "0.05%"},   {0.034, "3.4%"}, {0.001, "0.1%"},
        {0.000999, "0.10%"}, {1.0, "100.0%"}, {1e16, "1000000000000000"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::string(psTool::getAccuracyStr(c.accuracy).c_str()).rfind(c.text, 0), 0u)
            << c.text;
    EXPECT_EQ(psTool::getAccuracyStr(1e16).length(), 17);
}

TEST(EngineTexts, Clocks) {
    const struct {
        long long clocks;
        const char* text;
    } cases[] = {
        {0, "0"},
        {-5, "-5"},
        {2147483647, "2147483647"},
        {2147483648, "2147483640"},
        {5000000000, "5000000000"},
        {123456789012, "123456789000"},
        {LLONG_MAX,
         "922337203000000000"
         "0"},
    };
    for (const auto& c : cases) EXPECT_STREQ(psTool::clockStr(c.clocks).c_str(), c.text);
}

TEST(Results, WordsAndKinds) {
    EXPECT_STREQ(psResultName(PS_ACCURWRN), "ACCURWRN");
    EXPECT_STREQ(psResultText(PS_OK), "");
    EXPECT_STREQ(psResultText(PS_EXCPTFAIL), "exception");
    EXPECT_STREQ(psResultWord(PS_UNDEFINED), "was not run");
    EXPECT_STREQ(psResultName(static_cast<psResult>(12)), "UNKNOWN");
    EXPECT_STREQ(psResultText(static_cast<psResult>(-1)), "unknown result");
    int warnings = 0, failures = 0;
    for (int i = 0; i < 12; ++i) {
        warnings += isWarning(static_cast<psResult>(i));
        failures += isFailure(static_cast<psResult>(i));
    }
    EXPECT_EQ(warnings, 5);
    EXPECT_EQ(failures, 5);
}

}  // namespace
