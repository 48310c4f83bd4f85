#include "zmocore/features.h"

#include "zmocore.h"
#include "zmocore/cpuid.h"

namespace zmo {
namespace {

// Register states that the operating system must save, as bits of XCR0.
constexpr unsigned noState = 0;
constexpr unsigned avxState = 0x6;      // XMM and the upper half of YMM
constexpr unsigned mpxState = 0x18;     // bound registers and their configuration
constexpr unsigned avx512State = 0xe6;  // opmasks and ZMM as well

struct Feature {
    Zmo64u mask;
    unsigned leaf;
    unsigned subleaf;
    CpuidReg reg;
    int bit;
    unsigned state;
};

constexpr Feature features[] = {
    {ZMO_CPU_MMX, 1, 0, edx, 23, noState},
    {ZMO_CPU_SSE, 1, 0, edx, 25, noState},
    {ZMO_CPU_SSE2, 1, 0, edx, 26, noState},
    {ZMO_CPU_SSE3, 1, 0, ecx, 0, noState},
    {ZMO_CPU_SSSE3, 1, 0, ecx, 9, noState},
    {ZMO_CPU_MOVBE, 1, 0, ecx, 22, noState},
    {ZMO_CPU_SSE41, 1, 0, ecx, 19, noState},
    {ZMO_CPU_SSE42, 1, 0, ecx, 20, noState},
    {ZMO_CPU_AVX, 1, 0, ecx, 28, avxState},
    {ZMO_CPU_AES, 1, 0, ecx, 25, noState},
    {ZMO_CPU_CLMUL, 1, 0, ecx, 1, noState},
    {ZMO_CPU_RDRAND, 1, 0, ecx, 30, noState},
    {ZMO_CPU_F16C, 1, 0, ecx, 29, avxState},
    {ZMO_CPU_AVX2, 7, 0, ebx, 5, avxState},
    {ZMO_CPU_ADCOX, 7, 0, ebx, 19, noState},
    {ZMO_CPU_RDSEED, 7, 0, ebx, 18, noState},
    {ZMO_CPU_PREFETCHW, 0x80000001U, 0, ecx, 8, noState},
    {ZMO_CPU_SHA, 7, 0, ebx, 29, noState},
    {ZMO_CPU_AVX512F, 7, 0, ebx, 16, avx512State},
    {ZMO_CPU_AVX512CD, 7, 0, ebx, 28, avx512State},
    {ZMO_CPU_AVX512ER, 7, 0, ebx, 27, avx512State},
    {ZMO_CPU_AVX512PF, 7, 0, ebx, 26, avx512State},
    {ZMO_CPU_AVX512BW, 7, 0, ebx, 30, avx512State},
    {ZMO_CPU_AVX512DQ, 7, 0, ebx, 17, avx512State},
    {ZMO_CPU_AVX512VL, 7, 0, ebx, 31, avx512State},
    {ZMO_CPU_AVX512VBMI, 7, 0, ecx, 1, avx512State},
    {ZMO_CPU_MPX, 7, 0, ebx, 14, mpxState},
    {ZMO_CPU_AVX512_4FMADDPS, 7, 0, edx, 3, avx512State},
    {ZMO_CPU_AVX512_4VNNIW, 7, 0, edx, 2, avx512State},
    {ZMO_CPU_AVX512IFMA, 7, 0, ebx, 21, avx512State},
    {ZMO_CPU_AVX512VPOPCNTDQ, 7, 0, ecx, 14, avx512State},
    {ZMO_CPU_AVX512_BITALG, 7, 0, ecx, 12, avx512State},
    {ZMO_CPU_AVX512_FP16, 7, 0, edx, 23, avx512State},
    {ZMO_CPU_AVX_VNNI, 7, 1, eax, 4, avxState},
    {ZMO_CPU_AVX_VNNI_INT8, 7, 1, edx, 4, avxState},
    {ZMO_CPU_AVX_VNNI_INT16, 7, 1, edx, 10, avxState},
    {ZMO_CPU_AVX10_256, 0x24, 0, ebx, 17, avx512State},
    {ZMO_CPU_AVX10_512, 0x24, 0, ebx, 18, avx512State},
};

// The states that the operating system saves.
unsigned savedStates() {
    constexpr unsigned osxsave = 1U << 27;
    if ((cpuid(1, 0).reg[ecx] & osxsave) == 0) return 0;
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

Zmo64u askProcessor() {
    const unsigned saved = savedStates();
    Zmo64u mask = 0;
    for (const Feature& feature : features) {
        const CpuidRegs regs = cpuid(feature.leaf, feature.subleaf);
        const bool present = (regs.reg[feature.reg] >> feature.bit & 1U) != 0;
        if (present && (saved & feature.state) == feature.state) mask |= feature.mask;
    }
    return mask;
}

}  // namespace

// Asked once: under a hypervisor every CPUID traps, and a switch of the level
// would cost forty of them. No processor that runs this has an empty mask.
Zmo64u processorFeatures() {
    static Zmo64u known = 0;
    Zmo64u mask = __atomic_load_n(&known, __ATOMIC_RELAXED);
    if (mask == 0) {
        mask = askProcessor();
        __atomic_store_n(&known, mask, __ATOMIC_RELAXED);
    }
    return mask;
}

}  // namespace zmo

ZmoStatus zmoGetCpuFeatures(Zmo64u* pMask, Zmo32u leaf, Zmo32u regs[4]) {
    if (pMask == nullptr) return zmoStsNullPtrErr;
    *pMask = zmo::processorFeatures();
    if (regs != nullptr) {
        const zmo::CpuidRegs answer = zmo::cpuid(leaf, 0);
        for (int i = 0; i < 4; ++i) regs[i] = answer.reg[i];
    }
    return zmoStsNoErr;
}
