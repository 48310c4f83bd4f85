// The harness's own floor: what the timing wrappers and the engine give for a
// function that does nothing. A measured figure holds about this much of the
// harness; of figures near it only differences mean something.
#include <cstdio>

#include "pscputick_gcc.h"
#include "psexcept.h"
#include "pstiming.h"
#include "pstool.h"

namespace {

[[gnu::noinline]] int emptyFunction() {
    asm volatile("");
    return 0;
}
// Reached through a pointer, as the library's functions are.
int (*volatile bound)() = emptyFunction;

[[gnu::always_inline]] inline int tcall_empty() {
    return bound();
}
psResult check(int status) {
    return status == 0 ? PS_OK : PS_FUNCFAIL;
}

constexpr auto tim_loop = psLoopTiming<tcall_empty, check>;
constexpr auto tim_stat = psStatTiming<tcall_empty, check>;

long long readingClocks() {
    long long clocks = 0;
    long long least = 1'000'000;
    for (int i = 0; i < 1000; ++i) {
        tim_loop(0, &clocks);
        if (clocks < least) least = clocks;
    }
    return least;
}

double statClocks(int inner) {
    int n = 100'000;
    long long clocks = 0;
    tim_stat(&n, &clocks, inner);
    return static_cast<double>(clocks);
}

// Clocks of arming the trap around nothing: spent once a run, outside the interval.
double guardClocks() {
    constexpr int times = 100'000;
    const long long start = zmo_StartCpuClocks();
    for (int i = 0; i < times; ++i) psGuarded([] { asm volatile(""); });
    return static_cast<double>(zmo_StopCpuClocks() - start) / times;
}

double engineClocks(void (*setMethod)(psTool&)) {
    psTool tool;
    setMethod(tool);
    tool.timing(tim_loop, tim_stat, tcall_empty, nullptr);
    return tool.funcClocks();
}

void line(const char* what, double clocks) {
    std::printf("%-58s %8.1f clocks\n", what, clocks);
}

}  // namespace

int main() {
    psSelectCpuClocks(nullptr, nullptr, nullptr, nullptr);
    psCpuTicker::m_freqMHz = 2600;  // only bounds how long the Auto method runs
    long long clocks = 0;
    line("two readings of the counter, back to back", static_cast<double>(readingClocks()));
    tim_loop(100'000, &clocks);
    line("loop wrapper, fastest of 100,000 calls", static_cast<double>(clocks));
    line("statistic wrapper, one call an interval", statClocks(1));
    line("statistic wrapper, 100 calls an interval", statClocks(100));
    line("overhead that the statistic wrapper takes off", static_cast<double>(psTimerOverhead()));
    line("engine, Auto", engineClocks([](psTool& tool) { tool.setMethodAuto(); }));
    line("engine, Statistic (divides by its 12 or more calls)",
         engineClocks([](psTool& tool) { tool.setMethodStat(12, 10000); }));
    line("arming the signal trap, outside of all intervals", guardClocks());
}
