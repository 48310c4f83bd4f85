#include "pstiming.h"

#include "fakes.h"
#include "unit.h"

namespace {

// A counter that stands still but for the calls; each reading costs 2 clocks.
struct Script {
    long long now = 0;
    std::string course;  // S start, E stop, c call, i init
    int calls = 0;
    std::function<int(int)> status = [](int) { return 0; };  // of the n-th call, from 1
    std::function<long long(int)> clocks = [](int) { return 50LL; };
} script;

template <char letter>
long long reading() {
    script.course += letter;
    return script.now += 2;
}
[[gnu::always_inline]] inline int tcall_fake() {
    script.course += 'c';
    script.now += script.clocks(++script.calls);
    return script.status(script.calls);
}
void putBack() {
    script.course += 'i';
    script.now += 1000;
}
psResult check(int status) {
    return status < 0 ? PS_FUNCFAIL : status > 0 ? PS_FUNCWRN : PS_OK;
}

constexpr auto loopTiming = psLoopTiming<tcall_fake, check>;

// What the statistic wrapper makes of the numbers: result, calls, clocks of one.
using Made = std::tuple<psResult, int, long long>;
Made statistic(int calls, long long clocks, int inner) {
    const psResult result = psStatTiming<tcall_fake, check>(&calls, &clocks, inner);
    EXPECT_EQ(script.calls, calls);
    return {result, calls, clocks};
}

class Timing : public testing::Test {
  protected:
    Timing() {
        zmo_StartCpuClocks = reading<'S'>;
        zmo_StopCpuClocks = reading<'E'>;
        script = {};
    }
    const SavedReaders m_readers;
};

TEST_F(Timing, LoopTakesTheFastestCallAndTheLastStatus) {
    script.clocks = [](int n) { return n == 1 ? 5LL : 100LL - 10LL * n; };
    script.status = [](int n) { return n == 3 ? -5 : 0; };
    long long clocks = -1;
    EXPECT_EQ(loopTiming(3, &clocks), PS_OK);
    EXPECT_EQ(clocks, 62);  // the fourth call, and one reading
    EXPECT_EQ(script.course, "cSScEScEScE");
    script.status = [](int n) { return n == 15 ? -5 : 0; };
    EXPECT_EQ(loopTiming(10, &clocks), PS_FUNCFAIL);
    EXPECT_EQ(script.calls, 15);
}

TEST_F(Timing, StatCountsCallsAndBudgetStopsAtAnErrorAndRemembersNotes) {
    const struct {
        int least;
        long long budget;
        int inner;
        Made made;
        int at = 0, status = 0;  // of the call that fails or notes
    } cases[] = {{12, 0, 1, {PS_OK, 12, 52}},
                 {12, 0, 100, {PS_OK, 100, 50}},  // one block
                 {1, 1030, 1, {PS_OK, 20, 52}},   // the 20th call reaches 1040
                 {30, 1030, 1, {PS_OK, 30, 52}},  // both are needed
                 {1, 1030, 10, {PS_OK, 30, 50}},  // blocks of ten
                 {-1, -5, 100, {PS_OK, 0, 0}},
                 {3, 0, -7, {PS_OK, 3, 52}},  // inner below 2 is 1
                 {12, 0, 1, {PS_FUNCFAIL, 3, 52}, 3, -5},
                 {12, 0, 10, {PS_FUNCFAIL, 3, 15}, 3, -5},
                 {12, 0, 10, {PS_FUNCFAIL, 13, 15}, 13, -5},
                 {12, 0, 10, {PS_FUNCWRN, 20, 50}, 3, 2},
                 {12, 0, 1, {PS_FUNCWRN, 12, 52}, 3, 2}};
    for (const auto& c : cases) {
        script = {};
        script.status = [&](int n) { return n == c.at ? c.status : 0; };
        EXPECT_EQ(statistic(c.least, c.budget, c.inner), c.made) << c.least << " " << c.inner;
    }
}

TEST_F(Timing, StatTakesTheOverheadOff) {
    // The empty loop of the overhead costs 500 clocks: 5 a step.
    static bool measuring;
    zmo_StopCpuClocks = [] { return script.now += measuring ? 500 : 2; };
    // Below the overhead nothing is taken off.
    for (const auto& [perCall, taken] : {std::pair{50LL, 52 - 5}, {2LL, 4}}) {
        script = {};
        measuring = true;
        script.clocks = [clocks = perCall](int) { return measuring = false, clocks; };
        EXPECT_EQ(statistic(1, 0, 1), (Made{PS_OK, 1, taken}));
    }
}

TEST_F(Timing, InitStandsBeforeEveryTimedInterval) {
    long long clocks = 0;
    psLoopTiming<tcall_fake, check, putBack>(2, &clocks);
    EXPECT_EQ(script.course, "icSiScEiScE");
    EXPECT_EQ(clocks, 52);
    script = {};
    int n = 3;
    clocks = 0;
    psStatTiming<tcall_fake, check, putBack>(&n, &clocks, 100);
    // What stands behind the measuring of the overhead and the readings around it.
    EXPECT_EQ(script.course.substr(1 + 2 * 100 + 1), "iScEiScEiScE");
    EXPECT_TRUE(n == 3 && clocks == 52) << n << " " << clocks;
}

}  // namespace
