#include "pscputick_gcc.h"

#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "psfaults.h"
#include "pslib.h"
#include "pssettings.h"
#include "psstream.h"

using enum MessageLevel;

namespace {

inline long long joined(std::uint32_t low, std::uint32_t high) {
    return static_cast<long long>((static_cast<std::uint64_t>(high) << 32) | low);
}

// The fence before waits for earlier work, the one behind keeps the measured
// code from starting early. cpuid would do both, but traps in virtual machines.
long long startTsc() {
    std::uint32_t low, high;
    asm volatile("lfence\n\trdtsc\n\tlfence" : "=a"(low), "=d"(high) : : "memory");
    return joined(low, high);
}

long long stopTsc() {
    return startTsc();
}

// rdtscp itself waits for the measured code.
long long stopTscp() {
    std::uint32_t low, high, processor;
    asm volatile("rdtscp\n\tlfence" : "=a"(low), "=d"(high), "=c"(processor) : : "memory");
    return joined(low, high);
}

}  // namespace

psCpuClocks zmo_StartCpuClocks = startTsc;
psCpuClocks zmo_StopCpuClocks = stopTsc;

bool psHasRdtscp() {
    constexpr std::uint32_t extendedFeatures = 0x80000001;
    constexpr std::uint32_t rdtscpBit = 1u << 27;
    return (psCpuid(extendedFeatures)[3] & rdtscpBit) != 0;
}

void psSelectCpuClocks(psCpuClocks libStartTsc, psCpuClocks libStopTsc, psCpuClocks libStartTscp,
                       psCpuClocks libStopTscp) {
    const bool tscp = psHasRdtscp();
    const psCpuClocks start = tscp ? libStartTscp : libStartTsc;
    const psCpuClocks stop = tscp ? libStopTscp : libStopTsc;
    zmo_StartCpuClocks = start ? start : startTsc;
    zmo_StopCpuClocks = stop ? stop : tscp ? stopTscp : stopTsc;
}

long long psTimerOverhead() {
    constexpr int tries = 100;
    constexpr int steps = 100;
    const psCpuClocks start = zmo_StartCpuClocks;
    const psCpuClocks stop = zmo_StopCpuClocks;
    long long least = std::numeric_limits<long long>::max();
    for (int i = 0; i < tries; ++i) {
        const long long begin = start();
        // The compiler must not drop the empty loop.
        for (int step = 0; step < steps; ++step) asm volatile("" : "+r"(step));
        least = std::min(least, stop() - begin);
    }
    return least / steps;
}

int psCpuTicker::m_freqMHz = 0;

namespace {

constexpr const char* freqVariable = "PSCV_FREQ_MHZ";

constexpr std::array nominalMHz{60,   66,   75,   90,   100,  120,  133,  150,  166,  185,
                                200,  220,  240,  266,  300,  333,  400,  450,  500,  530,
                                550,  600,  800,  1000, 1400, 1700, 1800, 1900, 2000, 2200,
                                2260, 2400, 2500, 2530, 2600, 2660, 2800, 3060};

void waitOneSecond(std::time_t (*now)(std::time_t*)) {
    const std::time_t begin = now(nullptr);
    while (std::difftime(now(nullptr), begin) < 1.0) {
    }
}

// 0 when the variable is not set or holds no usable value; the latter is reported.
int freqFromEnvironment() {
    constexpr int highest = 100000;
    const char* text = std::getenv(freqVariable);
    if (!text) return 0;
    int mhz = 0;
    if (psFromText(text, mhz) && mhz >= 1 && mhz <= highest) return mhz;
    g_ostrm << ERR << "-- " << freqVariable << "=\"" << text
            << "\" is ignored: it must be a whole number of MHz from 1 to " << highest << "\n"
            << END;
    psFaults::count(psFault::input);
    return 0;
}

int givenFreq() {
    static const int mhz = freqFromEnvironment();
    return mhz;
}

double secondsRaw() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_RAW, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Moment {
    double seconds;
    double clocks;
};

// Both clocks at one moment: of several tries the one in which the least time
// passed around the reading, since another process may come between.
Moment moment() {
    constexpr int tries = 20;
    Moment best{};
    long long least = std::numeric_limits<long long>::max();
    for (int i = 0; i < tries; ++i) {
        const long long before = zmo_StartCpuClocks();
        const double seconds = secondsRaw();
        const long long width = zmo_StartCpuClocks() - before;
        if (width >= least) continue;
        least = width;
        best = {seconds, static_cast<double>(before) + static_cast<double>(width) / 2};
    }
    return best;
}

// A tenth of a second against a clock that is exact to under 1 ppm.
double measureRaw() {
    constexpr double interval = 0.1;
    const Moment begin = moment();
    while (secondsRaw() - begin.seconds < interval) {
    }
    const Moment end = moment();
    return (end.clocks - begin.clocks) / (end.seconds - begin.seconds) * 1e-6;
}

// time() moves in ticks of the kernel: on a busy machine the seconds may be off
// by one.
void crossCheck(double mhz) {
    constexpr double tolerance = 100e-6;
    const double exact = measureRaw();
    const double deviation = std::abs(mhz - exact) / exact;
    if (deviation <= tolerance) return;
    g_ostrm << WARN
            << psFormat(
                   "-- The clock frequency was measured as %.3f MHz, a second clock tells %.3f MHz"
                   " (%.0f ppm apart): times may be off by as much\n",
                   mhz, exact, deviation * 1e6)
            << END;
}

}  // namespace

int psCpuTicker::nominal(int mhz) {
    int nearest = mhz;
    int least = 1000;
    for (const int candidate : nominalMHz) {
        const int difference = std::abs(candidate - mhz);
        if (difference >= least) continue;
        least = difference;
        nearest = candidate;
    }
    return mhz > 0 && static_cast<double>(least) / mhz < 0.03 ? nearest : mhz;
}

double psCpuTicker::measure(std::time_t (*now)(std::time_t*)) {
    zmo_StartCpuClocks();
    waitOneSecond(now);  // up to a change of second
    zmo_StartCpuClocks();
    const long long c1 = zmo_StartCpuClocks();
    waitOneSecond(now);
    const long long d1 = zmo_StartCpuClocks() - c1;
    const long long c2 = zmo_StartCpuClocks();
    waitOneSecond(now);
    const long long d2 = zmo_StartCpuClocks() - c2;
    return (static_cast<float>(d2) + static_cast<float>(d1)) * 5e-7;
}

int psCpuTicker::getFreq() {
    if (m_freqMHz == 0) m_freqMHz = givenFreq();
    if (m_freqMHz == 0) {
        const double mhz = measure(&std::time);
        crossCheck(mhz);
        // Times are clocks divided by this.
        m_freqMHz = std::max(nominal(static_cast<int>(mhz)), 1);
    }
    return m_freqMHz;
}

double psCpuTicker::exactFreq() {
    if (!g_settings.exactFrequency) return getFreq();
    static const double mhz = measureRaw();
    return mhz;
}

bool psCpuTicker::given() {
    return !g_settings.exactFrequency && givenFreq() != 0;
}

psString psFreqText(double mhz) {
    return mhz <= 999 ? psText(mhz) + " MHz" : psText(mhz * 0.001) + " GHz";
}

int psGetNumOfProcessors() {
    return std::max(get_nprocs(), 1);
}

void psHost(char* name) {
    std::fill_n(name, psHostSize, '\0');
    gethostname(name, psHostSize - 1);
}

void psOS(char* text) {
    utsname system{};
    uname(&system);
    std::snprintf(text, psOSSize, "%s (%s, %s)", system.sysname, system.release, system.version);
}

namespace {

bool prioritySaved = false;
int savedNice = 0;

bool isSuperuser() {
    return getuid() == 0;
}

void setNice(int nice) {
    setpriority(PRIO_PROCESS, 0, nice);
}

}  // namespace

void psSetPriority(int level) {
    prioritySaved = level != 0;
    if (!prioritySaved || !isSuperuser()) return;
    savedNice = getpriority(PRIO_PROCESS, 0);
    if (level == 1) setNice(-20);
    if (level == 2) setNice(0);
    if (level == 3) setNice(10);
}

void psResetPriority() {
    if (prioritySaved && isSuperuser()) setNice(savedNice);
    prioritySaved = false;
}
