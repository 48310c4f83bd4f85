/* What the Canny module prepares its data with. The results are as empty as a
 * test of the harness may have them. PSCV_FAULT:
 *   preparenull    the first filter reads a null pointer
 *   preparestatus  the first filter reports a bad step */
#include "fault.h"
#include "zmoi.h"

static void fill(void* pDst, int dstStep, ZmoiSize roi, size_t pixel) {
    for (int y = 0; y < roi.height; ++y) {
        memset((char*)pDst + (ptrdiff_t)y * dstStep, 0, (size_t)roi.width * pixel);
    }
}

static const int* volatile nowhere = NULL;

/* A derivative filter, which gives zeros, and the size of its work buffer. */
#define FILTER(name, Source, Result, fault)                                                     \
    ZmoStatus zmoiFilter##name(const Source* pSrc, int srcStep, Result* pDst, int dstStep,      \
                               ZmoiSize roi, ZmoiMaskSize mask, ZmoiBorderType border,          \
                               const Source* pBorderValue, Zmo8u* pBuffer) {                    \
        (void)pSrc, (void)srcStep, (void)mask, (void)border, (void)pBorderValue, (void)pBuffer; \
        if (fault && faultIs("preparenull")) return *nowhere;                                   \
        if (fault && faultIs("preparestatus")) return zmoStsStepErr;                            \
        fill(pDst, dstStep, roi, sizeof *pDst);                                                 \
        return zmoStsNoErr;                                                                     \
    }
#define BUFFER_SIZE(name)                                                                        \
    ZmoStatus zmoiFilter##name##GetBufferSize(ZmoiSize roi, ZmoiMaskSize mask, ZmoDataType type, \
                                              int channels, int* pSize) {                        \
        (void)roi, (void)mask, (void)type, (void)channels;                                       \
        *pSize = 64;                                                                             \
        return zmoStsNoErr;                                                                      \
    }

FILTER(SobelVertBorder_8u16s_C1R, Zmo8u, Zmo16s, 1)
FILTER(SobelHorizBorder_8u16s_C1R, Zmo8u, Zmo16s, 0)
FILTER(SobelVertBorder_32f_C1R, Zmo32f, Zmo32f, 0)
FILTER(SobelHorizBorder_32f_C1R, Zmo32f, Zmo32f, 0)
BUFFER_SIZE(SobelVertBorder)
BUFFER_SIZE(SobelHorizBorder)

ZmoStatus zmoiConvert_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                ZmoiSize roi) {
    (void)pSrc, (void)srcStep;
    fill(pDst, dstStep, roi, sizeof *pDst);
    return zmoStsNoErr;
}

ZmoStatus zmoiRotateGetShift(Zmo64f xCenter, Zmo64f yCenter, Zmo64f angle, Zmo64f* pXShift,
                             Zmo64f* pYShift) {
    (void)xCenter, (void)yCenter, (void)angle;
    *pXShift = 0;
    *pYShift = 0;
    return zmoStsNoErr;
}

ZmoStatus zmoiRotate_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi, Zmo8u* pDst,
                            int dstStep, ZmoiSize roi, Zmo64f angle, Zmo64f xShift, Zmo64f yShift) {
    (void)pSrc, (void)srcStep, (void)srcRoi, (void)angle, (void)xShift, (void)yShift;
    fill(pDst, dstStep, roi, sizeof *pDst);
    return zmoStsNoErr;
}
