// Control and status registers held in memory, in the place of the processor's.
#pragma once

struct FakeRegisters {
    unsigned control = 0;
    unsigned status = 0;
    unsigned mxcsr = 0;
};
inline FakeRegisters fake;

// Takes the place of zmo_FpuSsx4TS.
inline unsigned fakeAccess(int op, unsigned value, unsigned mask) {
    if (op == 1) fake.control = (fake.control & ~mask) | (value & mask);
    if (op == 4) fake.status = 0;
    if (op == 5) fake.mxcsr = (fake.mxcsr & ~mask) | (value & mask);
    if (op == 7) fake.mxcsr &= ~0x3fu;
    return op < 3 ? fake.control : op < 5 ? fake.status : fake.mxcsr;
}
