// The timing wrappers of one tested function as templates.
//
// `call` is a function `int tcall_<fn>()` that makes one call of the tested
// function and returns its status. It must be [[gnu::always_inline]] inline, so
// that between the two readings of the counter stands only the tested call.
// `check(status)` makes a psResult of a status. `init`, for functions that change
// the data they read, puts the data back: it runs before every reading that opens
// a timed interval, never inside one, and each interval then holds one call.
#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "pscputick_gcc.h"
#include "psresult.h"

template <auto init>
[[gnu::always_inline]] inline void psInitData() {
    if constexpr (!std::is_null_pointer_v<decltype(init)>) init();
}

// A warm-up call, then n timed ones; *clocks is the fastest of them. With n = 0 it
// is what the two readings cost. The status that counts is the last call's.
template <auto call, auto check, auto init = nullptr>
psResult psLoopTiming(int n, long long* clocks) {
    const psCpuClocks start = zmo_StartCpuClocks;
    const psCpuClocks stop = zmo_StopCpuClocks;
    long long best = std::numeric_limits<long long>::max();
    psInitData<init>();
    int status = call();
    long long begin = start();
    for (int i = 0; i < n; ++i) {
        psInitData<init>();
        begin = start();
        status = call();
        best = std::min(best, stop() - begin);
    }
    *clocks = n > 0 ? best : stop() - begin;
    return check(status);
}

// Calls until *n calls are made and *clocks clocks are spent, in blocks of `inner`
// calls an interval. *n becomes the calls made, *clocks the clocks of one call in
// the fastest block, less the cost of reading where that is smaller. An error
// status ends it at once; of the others the last that is not 0 counts.
template <auto call, auto check, auto init = nullptr>
psResult psStatTiming(int* n, long long* clocks, int innerLoops) {
    const psCpuClocks start = zmo_StartCpuClocks;
    const psCpuClocks stop = zmo_StopCpuClocks;
    const long long factor = psCpuTicker::getClockFactor();
    const long long budget = *clocks;
    const int wanted = *n;
    constexpr bool once = !std::is_null_pointer_v<decltype(init)>;
    const int inner = once ? 1 : std::max(innerLoops, 1);
    start();
    const long long overhead = psTimerOverhead();
    start();

    int status = 0;
    long long calls = 0;
    long long total = 0;
    long long best = std::numeric_limits<long long>::max();
    while (status >= 0 && (calls < wanted || factor * total < budget)) {
        psInitData<init>();
        long long spent = 0;
        if (inner == 1) {
            const long long begin = start();
            const int s = call();
            spent = stop() - begin;
            if (s != 0) status = s;
            ++calls;
        } else {
            int left = inner;
            const long long begin = start();
            do {
                const int s = call();
                --left;
                if (s != 0) status = s;
            } while (left > 0 && status >= 0);
            spent = stop() - begin;
            calls += inner - left;
        }
        best = std::min(best, spent);
        total += spent;
    }
    const long long per = calls > 0 ? best / inner : 0;
    *n = static_cast<int>(std::min<long long>(calls, std::numeric_limits<int>::max()));
    *clocks = per > overhead ? per - overhead : per;
    return check(status);
}
