/* Canny functions of which the 16s one does what PSCV_FAULT names:
 *   null        reads a null pointer
 *   x87div      divides by zero in x87 code
 *   x87pending  leaves that fault for the caller's next x87 instruction
 *   ill         executes an illegal instruction
 *   stack       overflows the stack
 *   status      returns an error
 *   note        returns a note
 *   fpstate     returns with other control words and exception flags set
 *   hang        says so on standard error and never returns
 * The 32f one reports on standard error once which floating-point state it meets
 * and at which priority it runs, so that a test sees what a fault has left. */
#include <stdint.h>
#include <stdio.h>
#include <sys/resource.h>

#include "fault.h"
#include "zmocv.h"

static const int* volatile nowhere = NULL;
static volatile int endless = 1;

static int overflow(volatile const char* previous) {
    if (!endless) return 0;
    volatile char frame[4096];
    frame[0] = (char)(previous[0] + 1);
    return overflow(frame) + frame[0];
}

static void disturb(void) {
    /* Rounding up, no flush to zero, and overflow and zero-divide flags as code leaves them. */
    const uint16_t controlWord = 0xb7f;
    const uint32_t mxcsr = 0x5fcc;
    __asm__ volatile("fldcw %0\n\tldmxcsr %1" : : "m"(controlWord), "m"(mxcsr));
}

/* The fault arrives with the next x87 instruction that waits. */
static void divideByZero(void) {
    __asm__ volatile("fldz\n\tfld1\n\tfdiv %%st(1), %%st" : : : "st", "st(1)");
}

static void leaveX87(void) {
    __asm__ volatile("fstp %%st(0)\n\tfstp %%st(0)" : : : "memory");
}

static ZmoStatus misbehave(void) {
    if (faultIs("null")) return *nowhere;
    if (faultIs("x87div")) divideByZero(), leaveX87();
    if (faultIs("x87pending")) divideByZero();
    if (faultIs("ill")) __asm__ volatile("ud2");
    if (faultIs("stack")) return overflow("");
    if (faultIs("status")) return zmoStsRangeErr;
    if (faultIs("note")) return zmoStsDivByZero;
    if (faultIs("fpstate")) disturb();
    if (faultIs("hang")) {
        fputs("faulty: hanging\n", stderr);
        while (endless) {
        }
    }
    return zmoStsNoErr;
}

static void work(Zmo8u* pDst, int dstStep, ZmoiSize roi) {
    for (int y = 0; y < roi.height; ++y) {
        memset(pDst + (ptrdiff_t)y * dstStep, 0, (size_t)roi.width);
    }
}

ZmoStatus zmoiCanny_16s8u_C1R(const Zmo16s* pSrc, int srcStep, const Zmo16s* pSrc2, int src2Step,
                              Zmo8u* pDst, int dstStep, ZmoiSize roi, Zmo32f low, Zmo32f high,
                              ZmoiNorm norm, Zmo8u* pBuffer) {
    (void)pSrc, (void)srcStep, (void)pSrc2, (void)src2Step, (void)low, (void)high, (void)norm;
    (void)pBuffer;
    work(pDst, dstStep, roi);
    return misbehave();
}

#ifndef LACKS_CANNY_32F
static void reportState(void) {
    uint16_t controlWord = 0;
    uint32_t mxcsr = 0;
    __asm__ volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(controlWord), "=m"(mxcsr));
    fprintf(stderr, "faulty: cw=%#x mxcsr=%#x nice=%d\n", controlWord & 0xf3fU, mxcsr & 0xffc0U,
            getpriority(PRIO_PROCESS, 0));
}

ZmoStatus zmoiCanny_32f8u_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2, int src2Step,
                              Zmo8u* pDst, int dstStep, ZmoiSize roi, Zmo32f low, Zmo32f high,
                              ZmoiNorm norm, Zmo8u* pBuffer) {
    static int reported = 0;
    (void)pSrc, (void)srcStep, (void)pSrc2, (void)src2Step, (void)low, (void)high, (void)norm;
    (void)pBuffer;
    if (!reported) reportState();
    reported = 1;
    work(pDst, dstStep, roi);
    return zmoStsNoErr;
}
#endif

ZmoStatus zmoiCannyGetSize(ZmoiSize roi, int* pSize) {
    (void)roi;
    *pSize = 64;
    return zmoStsNoErr;
}
