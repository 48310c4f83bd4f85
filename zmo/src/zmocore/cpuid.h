// CPUID with a check of the highest leaf.
#pragma once

#include <cpuid.h>

namespace zmo {

struct CpuidRegs {
    unsigned reg[4] = {};  // EAX, EBX, ECX, EDX
};

enum CpuidReg { eax, ebx, ecx, edx };

// A leaf that the processor does not have reads as zeros (some processors would answer with the
// data of their highest leaf).
inline CpuidRegs cpuid(unsigned leaf, unsigned subleaf) {
    CpuidRegs regs;
    // A base that the processor does not know answers with a highest leaf below the base.
    const unsigned base = leaf & 0xffff0000U;
    unsigned highest = 0;
    unsigned ignored[3];
    __cpuid(base, highest, ignored[0], ignored[1], ignored[2]);
    if (highest < base || highest < leaf) return regs;
    __cpuid_count(leaf, subleaf, regs.reg[eax], regs.reg[ebx], regs.reg[ecx], regs.reg[edx]);
    return regs;
}

}  // namespace zmo
