// What stands in the place of the processor.
#pragma once

#include "pscputick_gcc.h"
#include "psctrl87.h"

// Control and status registers held in memory.
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

// Puts the clock readers of before back at its end.
class SavedReaders {
  public:
    ~SavedReaders() {
        zmo_StartCpuClocks = m_start;
        zmo_StopCpuClocks = m_stop;
    }

  private:
    psCpuClocks m_start = zmo_StartCpuClocks;
    psCpuClocks m_stop = zmo_StopCpuClocks;
};

// Puts the processor's control words of before back at its end, and clears the x87 flags.
class SavedRegisters {
  public:
    ~SavedRegisters() {
        psFpuSsx4TS(5, m_mxcsr, 0xffff);
        psFpuSsx4TS(4, 0, 0);
        psFpuSsx4TS(1, m_control, 0xf3f);
    }

  private:
    unsigned m_control = psFpuSsx4TS(2, 0, 0);
    unsigned m_mxcsr = psFpuSsx4TS(6, 0, 0);
};
