/* Set-up of the ZMO library: processor levels, version, threads, clocks, floating-point registers.
 * The conventions stand in zmotypes.h. */
#ifndef ZMOCORE_H
#define ZMOCORE_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Processor features: the bits of the masks below. A bit of AVX, AVX2 or AVX-512 is set only when
 * the operating system saves the registers as well. */
#define ZMO_CPU_MMX 0x1ULL
#define ZMO_CPU_SSE 0x2ULL
#define ZMO_CPU_SSE2 0x4ULL
#define ZMO_CPU_SSE3 0x8ULL
#define ZMO_CPU_SSSE3 0x10ULL
#define ZMO_CPU_MOVBE 0x20ULL
#define ZMO_CPU_SSE41 0x40ULL
#define ZMO_CPU_SSE42 0x80ULL
#define ZMO_CPU_AVX 0x100ULL
#define ZMO_CPU_AES 0x400ULL
#define ZMO_CPU_CLMUL 0x800ULL
#define ZMO_CPU_RDRAND 0x2000ULL
#define ZMO_CPU_F16C 0x4000ULL
#define ZMO_CPU_AVX2 0x8000ULL
#define ZMO_CPU_ADCOX 0x10000ULL
#define ZMO_CPU_RDSEED 0x20000ULL
#define ZMO_CPU_PREFETCHW 0x40000ULL
#define ZMO_CPU_SHA 0x80000ULL
#define ZMO_CPU_AVX512F 0x100000ULL
#define ZMO_CPU_AVX512CD 0x200000ULL
#define ZMO_CPU_AVX512ER 0x400000ULL
#define ZMO_CPU_AVX512PF 0x800000ULL
#define ZMO_CPU_AVX512BW 0x1000000ULL
#define ZMO_CPU_AVX512DQ 0x2000000ULL
#define ZMO_CPU_AVX512VL 0x4000000ULL
#define ZMO_CPU_AVX512VBMI 0x8000000ULL
#define ZMO_CPU_MPX 0x10000000ULL
#define ZMO_CPU_AVX512_4FMADDPS 0x20000000ULL
#define ZMO_CPU_AVX512_4VNNIW 0x40000000ULL
#define ZMO_CPU_AVX512IFMA 0x100000000ULL
#define ZMO_CPU_AVX512VPOPCNTDQ 0x400000000ULL
#define ZMO_CPU_AVX512_BITALG 0x800000000ULL
#define ZMO_CPU_AVX512_FP16 0x1000000000ULL
#define ZMO_CPU_AVX_VNNI 0x2000000000ULL
#define ZMO_CPU_AVX_VNNI_INT8 0x4000000000ULL
#define ZMO_CPU_AVX_VNNI_INT16 0x8000000000ULL
#define ZMO_CPU_AVX10_256 0x10000000000ULL
#define ZMO_CPU_AVX10_512 0x20000000000ULL

/* Processor levels: the features that each code path of the library needs. */
#define ZMO_LEVEL_SSE2 0x7ULL
#define ZMO_LEVEL_SSE42 0xdfULL
#define ZMO_LEVEL_AVX2 0x81dfULL
#define ZMO_LEVEL_AVX512 0x73081dfULL

/* Selects the highest level of the processor. Without it the library works at the baseline, SSE2.
 * Always zmoStsNoErr. */
ZMO_API ZmoStatus zmoInit(void);

/* Selects the highest level whose features all lie inside mask, for all five libraries.
 *   zmoStsCpuFeaturesErr  mask has a bit that zmoGetCpuFeatures does not report; nothing changes
 *   zmoStsNoLevel         no level lies inside mask; the baseline is selected */
ZMO_API ZmoStatus zmoSetCpuFeatures(Zmo64u mask);

/* Stores the features of the processor in *pMask. With regs not null it also stores EAX, EBX, ECX
 * and EDX, in this order, of the CPUID leaf (subleaf 0); a leaf beyond the processor's highest
 * gives zeros. zmoStsNullPtrErr      pMask is null */
ZMO_API ZmoStatus zmoGetCpuFeatures(Zmo64u* pMask, Zmo32u leaf, Zmo32u regs[4]);

/* The ZMO_LEVEL_ mask of the level in use. */
ZMO_API Zmo64u zmoGetEnabledCpuFeatures(void);

/* A text for every status, "Unknown status" for numbers that are none. Never null. */
ZMO_API const char* zmoGetStatusString(ZmoStatus status);

/* The number of threads that the library may use. Its functions run in the caller's thread: any
 * request of at least 1 is accepted, and the number in use is 1.
 *   zmoStsRangeErr        numThreads is below 1
 *   zmoStsNullPtrErr      pNumThreads is null */
ZMO_API ZmoStatus zmoSetNumThreads(int numThreads);
ZMO_API ZmoStatus zmoGetNumThreads(int* pNumThreads);

/* Stores the size in bytes of the processor's largest data or unified cache, as CPUID reports it.
 *   zmoStsNullPtrErr      pSize is null
 *   zmoStsUnavailable     the processor does not report it; *pSize is 0
 *   zmoStsTooLargeErr     the size does not fit; nothing is stored */
ZMO_API ZmoStatus zmoGetMaxCacheSizeB(int* pSize);

/* The version of libzmocore. The record lives as long as the library; its text follows the level
 * with each call. */
ZMO_API const ZmoLibraryVersion* zmocoreGetVersion(void);

/* Time-stamp counter. A start reader waits for all earlier instructions and lets no later one begin
 * before the reading; a stop reader waits for the measured instructions to finish. The Tscp pair
 * needs RDTSCP (CPUID leaf 0x80000001, EDX bit 27) for the stop. */
ZMO_API Zmo64s zmoStartTsc(void);
ZMO_API Zmo64s zmoStopTsc(void);
ZMO_API Zmo64s zmoStartTscp(void);
ZMO_API Zmo64s zmoStopTscp(void);

/* Access to the floating-point registers of the calling thread; value and mask are used by
 * operations 1 and 5 only.
 *   1  sets the bits under mask of the x87 control word to value; returns the new control word
 *   2  returns the x87 control word
 *   3  returns the x87 status word
 *   4  clears the x87 exception flags; returns the new status word
 *   5  sets the bits under mask of MXCSR to value (reserved bits stay); returns the new MXCSR
 *   6  returns MXCSR
 *   7  clears the exception flags of MXCSR; returns the new MXCSR
 * Any other operation does nothing and returns 0. Operation 1 uses a waiting instruction: an
 * unmasked x87 exception that is already pending traps there, so clear the flags (4) first. */
ZMO_API unsigned zmoFpuSsx4TS(int op, unsigned value, unsigned mask);

#ifdef __cplusplus
}
#endif

#endif
