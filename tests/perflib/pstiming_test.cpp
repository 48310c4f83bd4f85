#include "pstiming.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>

#include "fakes.h"

namespace {

// A counter that stands still but for the calls; each reading costs 2 clocks.
long long now = 0;
std::string course;  // S start, E stop, c call, i init
int calls = 0;
std::function<int(int)> statusOf;  // of the n-th call, counted from 1
std::function<long long(int)> clocksOf;

long long readStart() {
    course += 'S';
    return now += 2;
}
long long readStop() {
    course += 'E';
    return now += 2;
}
[[gnu::always_inline]] inline int tcall_fake() {
    course += 'c';
    ++calls;
    now += clocksOf(calls);
    return statusOf(calls);
}
void putBack() {
    course += 'i';
    now += 1000;
}
psResult check(int status) {
    return status < 0 ? PS_FUNCFAIL : status > 0 ? PS_FUNCWRN : PS_OK;
}

constexpr auto loopTiming = psLoopTiming<tcall_fake, check>;
constexpr auto statTiming = psStatTiming<tcall_fake, check>;

class Timing : public testing::Test {
  protected:
    Timing() {
        zmo_StartCpuClocks = readStart;
        zmo_StopCpuClocks = readStop;
        reset();
    }
    static void reset() {
        now = 0;
        calls = 0;
        course.clear();
        statusOf = [](int) { return 0; };
        clocksOf = [](int) { return 50LL; };
    }
    const SavedReaders m_readers;
};

TEST_F(Timing, LoopTakesTheFastestCallAndTheLastStatus) {
    clocksOf = [](int n) { return n == 1 ? 5LL : 100LL - 10LL * n; };
    statusOf = [](int n) { return n == 3 ? -5 : 0; };
    long long clocks = -1;
    EXPECT_EQ(loopTiming(3, &clocks), PS_OK);
    EXPECT_EQ(clocks, 62);  // the fourth call, and one reading
    EXPECT_EQ(course, "cSScEScEScE");
    statusOf = [](int n) { return n == 15 ? -5 : 0; };
    EXPECT_EQ(loopTiming(10, &clocks), PS_FUNCFAIL);
    EXPECT_EQ(calls, 15);
}

TEST_F(Timing, StatCountsCallsAndBudget) {
    const std::tuple<int, long long, int, int, long long> cases[] = {
        {12, 0, 1, 12, 52},    {12, 0, 100, 100, 50},  // one block
        {1, 1030, 1, 20, 52},                          // the 20th call reaches 1040
        {30, 1030, 1, 30, 52},                         // both are needed
        {1, 1030, 10, 30, 50},                         // blocks of ten
        {-1, -5, 100, 0, 0},   {3, 0, -7, 3, 52}};     // inner below 2 is 1
    for (const auto& [least, budget, inner, made, perCall] : cases) {
        reset();
        int n = least;
        long long clocks = budget;
        EXPECT_EQ(statTiming(&n, &clocks, inner), PS_OK) << least;
        EXPECT_TRUE(n == made && calls == made) << n << " " << calls << " " << made;
        EXPECT_EQ(clocks, perCall) << least;
    }
}

TEST_F(Timing, StatStopsAtAnErrorAndRemembersNotes) {
    const std::tuple<int, int, int, int, psResult> cases[] = {{1, 3, -5, 3, PS_FUNCFAIL},
                                                              {10, 3, -5, 3, PS_FUNCFAIL},
                                                              {10, 13, -5, 13, PS_FUNCFAIL},
                                                              {10, 3, 2, 20, PS_FUNCWRN},
                                                              {1, 3, 2, 12, PS_FUNCWRN}};
    for (const auto& [inner, at, status, made, result] : cases) {
        reset();
        statusOf = [at = at, status = status](int n) { return n == at ? status : 0; };
        int n = 12;
        long long clocks = 0;
        EXPECT_EQ(statTiming(&n, &clocks, inner), result);
        EXPECT_TRUE(n == made && calls == made) << n << " " << calls << " " << made;
    }
}

TEST_F(Timing, StatTakesTheOverheadOff) {
    // The empty loop of the overhead costs 500 clocks: 5 a step.
    static bool measuring;
    zmo_StopCpuClocks = [] { return now += measuring ? 500 : 2; };
    // Below the overhead nothing is taken off.
    for (const auto& [perCall, taken] : {std::pair{50LL, 52 - 5}, {2LL, 4}}) {
        reset();
        measuring = true;
        clocksOf = [clocks = perCall](int) { return measuring = false, clocks; };
        int n = 1;
        long long clocks = 0;
        statTiming(&n, &clocks, 1);
        EXPECT_EQ(clocks, taken);
    }
}

TEST_F(Timing, InitStandsBeforeEveryTimedInterval) {
    long long clocks = 0;
    psLoopTiming<tcall_fake, check, putBack>(2, &clocks);
    EXPECT_EQ(course, "icSiScEiScE");
    EXPECT_EQ(clocks, 52);
    reset();
    int n = 3;
    clocks = 0;
    psStatTiming<tcall_fake, check, putBack>(&n, &clocks, 100);
    // What stands behind the measuring of the overhead and the readings around it.
    EXPECT_EQ(course.substr(1 + 2 * 100 + 1), "iScEiScEiScE");
    EXPECT_EQ(n, 3);
    EXPECT_EQ(clocks, 52);
}

}  // namespace
