#include "zmocore.h"

// lfence orders the reading against the instructions around it and costs little; cpuid, which would
// also do, traps in virtual machines. RDTSCP waits for earlier instructions by itself.
namespace {

Zmo64s join(unsigned low, unsigned high) {
    return static_cast<Zmo64s>(static_cast<Zmo64u>(high) << 32 | low);
}

inline Zmo64s fencedTsc() {
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("lfence\n\trdtsc\n\tlfence" : "=a"(low), "=d"(high) : : "memory");
    return join(low, high);
}

}  // namespace

Zmo64s zmoStartTsc(void) {
    return fencedTsc();
}

Zmo64s zmoStopTsc(void) {
    return fencedTsc();
}

Zmo64s zmoStartTscp(void) {
    return fencedTsc();
}

Zmo64s zmoStopTscp(void) {
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("rdtscp\n\tlfence" : "=a"(low), "=d"(high) : : "rcx", "memory");
    return join(low, high);
}
