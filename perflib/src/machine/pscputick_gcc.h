// Time-stamp counter, processor frequency, host, and process priority.
#pragma once

#include <ctime>

#include "psstring.h"

// A counter reader. Start lets no later instruction begin before the reading,
// Stop waits for all earlier ones; both are preset to the system's own, so they
// are never null. A time is always Stop minus Start.
using psCpuClocks = long long (*)();
extern psCpuClocks zmo_StartCpuClocks;
extern psCpuClocks zmo_StopCpuClocks;

// Takes the library's readers: the pair built on RDTSCP where the processor has
// it, else the plain one. For each one that is null the system's own serves.
void psSelectCpuClocks(psCpuClocks startTsc, psCpuClocks stopTsc, psCpuClocks startTscp,
                       psCpuClocks stopTscp);
bool psHasRdtscp();

// Clocks of an empty loop of 100 steps between two readings, divided by 100: the
// smallest of 100 tries.
long long psTimerOverhead();

class psCpuTicker {
  public:
    // Processor frequency in MHz. The environment variable PSCV_FREQ_MHZ gives
    // it; otherwise the first call measures for about three seconds.
    static int getFreq();
    // The same, but with --frequency=exact as a short measurement against a better
    // clock has it, neither given nor rounded.
    static double exactFreq();
    // The frequency comes from the environment, not from a measurement.
    static bool given();
    static int getClockFactor() { return 1; }

    // The nominal frequency within 3 % of a measured one, else the measured one.
    static int nominal(int mhz);
    // Two one-second counts of the counter as MHz, before rounding to a nominal
    // value. `now` is time() or a stand-in for it.
    static double measure(std::time_t (*now)(std::time_t*));

    static int m_freqMHz;  // 0 until known
};

psString psFreqText(double mhz);  // "800 MHz", "2.6 GHz"

int psGetNumOfProcessors();  // online, at least 1
void psHost(char* name);     // room for psHostSize bytes
void psOS(char* text);       // room for psOSSize bytes
constexpr int psHostSize = 1025;
constexpr int psOSSize = 256;

// Priority for a measurement: 1 high, 2 normal, 3 low, 0 leaves it alone. Only
// the superuser's priority changes; failures are ignored.
void psSetPriority(int level);
void psResetPriority();

// Raises the priority for a scope, also when an exception leaves it.
class psPriorityScope {
  public:
    explicit psPriorityScope(int level) { psSetPriority(level); }
    psPriorityScope(const psPriorityScope&) = delete;
    psPriorityScope& operator=(const psPriorityScope&) = delete;
    ~psPriorityScope() { psResetPriority(); }
};
