#include "zmocv/pixelwise.h"

#include <cmath>

#include "common/check.h"
#include "common/types.h"
#include "zmocv_arith.h"

namespace zmo {
namespace {

const PixelwiseKernels& kernels() {
    return kernelsInUse(pixelwiseKernelsByLevel);
}

// The checks that all of these functions begin with; S and D are the elements of source and
// destination.
template <class S, class D, int channels = 1>
ZmoStatus check(const S* pSrc, int srcStep, const D* pDst, int dstStep, ZmoiSize roi) {
    if (anyNull(pSrc, pDst)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<S, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<D>(dstStep, roi.width)) return zmoStsStepErr;
    return zmoStsNoErr;
}

template <class T>
ZmoStatus absDiff(const T* pSrc, int srcStep, const T* pSrc2, int src2Step, T* pDst, int dstStep,
                  ZmoiSize roi) {
    if (anyNull(pSrc, pSrc2, pDst)) return zmoStsNullPtrErr;
    if (const ZmoStatus bad = check(pSrc, srcStep, pDst, dstStep, roi)) return bad;
    if (badStep<T>(src2Step, roi.width)) return zmoStsStepErr;
    kernels().absDiff[typeIndex<T>]({pSrc, srcStep}, {pSrc2, src2Step}, {pDst, dstStep},
                                    regionOf(roi));
    return zmoStsNoErr;
}

template <class T>
ZmoStatus absDiffC(const T* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi, T value) {
    if (const ZmoStatus bad = check(pSrc, srcStep, pDst, dstStep, roi)) return bad;
    kernels().absDiffC[typeIndex<T>]({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), &value);
    return zmoStsNoErr;
}

template <class T>
ZmoStatus colorToGray(const T* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi,
                      ZmoNormType norm) {
    if (const ZmoStatus bad = check<T, T, 3>(pSrc, srcStep, pDst, dstStep, roi)) return bad;
    if (!isKnown(norm)) return zmoStsNormErr;
    kernels().colorToGray[norm][typeIndex<T>]({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi));
    return zmoStsNoErr;
}

template <class T>
ZmoStatus updateMotionHistory(const T* pSrc, int srcStep, Zmo32f* pSrcDst, int srcDstStep,
                              ZmoiSize roi, Zmo32f timestamp, Zmo32f duration) {
    if (const ZmoStatus bad = check(pSrc, srcStep, pSrcDst, srcDstStep, roi)) return bad;
    if (!std::isfinite(timestamp)) return zmoStsRangeErr;
    if (!std::isfinite(duration) || duration < 0) return zmoStsRangeErr;
    kernels().motionHistory[typeIndex<T>]({pSrc, srcStep}, {pSrcDst, srcDstStep}, regionOf(roi),
                                          timestamp, timestamp - duration);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_PIXELWISE(T, type, typeTo32f)                                                        \
    ZmoStatus zmoiAbsDiff_##type##_C1R(const T* pSrc, int srcStep, const T* pSrc2, int src2Step, \
                                       T* pDst, int dstStep, ZmoiSize roi) {                     \
        return zmo::absDiff(pSrc, srcStep, pSrc2, src2Step, pDst, dstStep, roi);                 \
    }                                                                                            \
    ZmoStatus zmoiAbsDiffC_##type##_C1R(const T* pSrc, int srcStep, T* pDst, int dstStep,        \
                                        ZmoiSize roi, T value) {                                 \
        return zmo::absDiffC(pSrc, srcStep, pDst, dstStep, roi, value);                          \
    }                                                                                            \
    ZmoStatus zmoiGradientColorToGray_##type##_C3C1R(                                            \
        const T* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi, ZmoNormType norm) {      \
        return zmo::colorToGray(pSrc, srcStep, pDst, dstStep, roi, norm);                        \
    }                                                                                            \
    ZmoStatus zmoiUpdateMotionHistory_##typeTo32f##_C1IR(                                        \
        const T* pSrc, int srcStep, Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,               \
        Zmo32f timestamp, Zmo32f duration) {                                                     \
        return zmo::updateMotionHistory(pSrc, srcStep, pSrcDst, srcDstStep, roi, timestamp,      \
                                        duration);                                               \
    }

ZMO_PIXELWISE(Zmo8u, 8u, 8u32f)
ZMO_PIXELWISE(Zmo16u, 16u, 16u32f)
ZMO_PIXELWISE(Zmo32f, 32f, 32f)
