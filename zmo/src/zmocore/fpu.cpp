#include "zmocore.h"

namespace zmo {
namespace {

unsigned controlWord() {
    unsigned short word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}

unsigned statusWord() {
    unsigned short word = 0;
    __asm__ volatile("fnstsw %0" : "=m"(word));
    return word;
}

unsigned setControlWord(unsigned value, unsigned mask) {
    const auto word = static_cast<unsigned short>((controlWord() & ~mask) | (value & mask));
    __asm__ volatile("fldcw %0" : : "m"(word));
    return controlWord();
}

unsigned clearStatusWord() {
    __asm__ volatile("fnclex");
    return statusWord();
}

unsigned mxcsr() {
    unsigned word = 0;
    __asm__ volatile("stmxcsr %0" : "=m"(word));
    return word;
}

unsigned setMxcsr(unsigned value, unsigned mask) {
    // Loading a one into a reserved bit is a general protection fault.
    constexpr unsigned defined = 0xffff;
    mask &= defined;
    const unsigned word = (mxcsr() & ~mask) | (value & mask);
    __asm__ volatile("ldmxcsr %0" : : "m"(word));
    return mxcsr();
}

constexpr unsigned mxcsrFlags = 0x3f;

}  // namespace
}  // namespace zmo

unsigned zmoFpuSsx4TS(int op, unsigned value, unsigned mask) {
    switch (op) {
        case 1:
            return zmo::setControlWord(value, mask);
        case 2:
            return zmo::controlWord();
        case 3:
            return zmo::statusWord();
        case 4:
            return zmo::clearStatusWord();
        case 5:
            return zmo::setMxcsr(value, mask);
        case 6:
            return zmo::mxcsr();
        case 7:
            return zmo::setMxcsr(0, zmo::mxcsrFlags);
        default:
            return 0;
    }
}
