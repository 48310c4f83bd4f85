#include "zmocv/norm.h"

#include <cmath>
#include <limits>

#include "common/check.h"
#include "common/types.h"
#include "zmocv_norm.h"

namespace zmo {
namespace {

// src2 counts for two of the uses, coi for three channels.
template <class T, int channels>
ZmoStatus norm(NormUse use, ZmoNormType kind, Source src, Source src2, Source mask, ZmoiSize roi,
               int coi, Zmo64f* pNorm) {
    const bool two = use != normOfImage;
    if (anyNull(src.data, mask.data, pNorm)) return zmoStsNullPtrErr;
    if (two && src2.data == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(src.step, roi.width)) return zmoStsStepErr;
    if (two && badStep<T, channels>(src2.step, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo8u>(mask.step, roi.width)) return zmoStsStepErr;
    if (coi < 1 || coi > channels) return zmoStsCoiErr;
    NormSums sums;
    kernelsInUse(normKernelsByLevel)
        .at[use][kind][typeIndex<T>][channels / 3](channelOf<T>(src, coi),
                                                   two ? channelOf<T>(src2, coi) : Source{}, mask,
                                                   regionOf(roi), &sums);
    const auto finished = [kind](double sum) { return kind == zmoNormL2 ? std::sqrt(sum) : sum; };
    const double first = finished(sums.first);
    if (use != normOfBoth || !sums.selected) {
        *pNorm = first;
        return sums.selected ? zmoStsNoErr : zmoStsEmptyMask;
    }
    if (sums.divisor == 0) {
        *pNorm = first == 0 ? 0 : std::numeric_limits<double>::infinity();
        return zmoStsDivByZero;
    }
    *pNorm = first / finished(sums.divisor);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_NORM(kind, T, type)                                                                \
    ZmoStatus zmoiNorm_##kind##_##type##_C1MR(const T* pSrc, int srcStep, const Zmo8u* pMask,  \
                                              int maskStep, ZmoiSize roi, Zmo64f* pNorm) {     \
        return zmo::norm<T, 1>(zmo::normOfImage, zmoNorm##kind, {pSrc, srcStep}, {},           \
                               {pMask, maskStep}, roi, 1, pNorm);                              \
    }                                                                                          \
    ZmoStatus zmoiNorm_##kind##_##type##_C3CMR(const T* pSrc, int srcStep, const Zmo8u* pMask, \
                                               int maskStep, ZmoiSize roi, int coi,            \
                                               Zmo64f* pNorm) {                                \
        return zmo::norm<T, 3>(zmo::normOfImage, zmoNorm##kind, {pSrc, srcStep}, {},           \
                               {pMask, maskStep}, roi, coi, pNorm);                            \
    }
#define ZMO_NORM_OF_TWO(Base, use, kind, T, type)                                                  \
    ZmoStatus zmoi##Base##_##kind##_##type##_C1MR(const T* pSrc, int srcStep, const T* pSrc2,      \
                                                  int src2Step, const Zmo8u* pMask, int maskStep,  \
                                                  ZmoiSize roi, Zmo64f* pNorm) {                   \
        return zmo::norm<T, 1>(use, zmoNorm##kind, {pSrc, srcStep}, {pSrc2, src2Step},             \
                               {pMask, maskStep}, roi, 1, pNorm);                                  \
    }                                                                                              \
    ZmoStatus zmoi##Base##_##kind##_##type##_C3CMR(const T* pSrc, int srcStep, const T* pSrc2,     \
                                                   int src2Step, const Zmo8u* pMask, int maskStep, \
                                                   ZmoiSize roi, int coi, Zmo64f* pNorm) {         \
        return zmo::norm<T, 3>(use, zmoNorm##kind, {pSrc, srcStep}, {pSrc2, src2Step},             \
                               {pMask, maskStep}, roi, coi, pNorm);                                \
    }
#define ZMO_NORMS(kind, T, type)                                    \
    ZMO_NORM(kind, T, type)                                         \
    ZMO_NORM_OF_TWO(NormDiff, zmo::normOfDifference, kind, T, type) \
    ZMO_NORM_OF_TWO(NormRel, zmo::normOfBoth, kind, T, type)

ZMO_NORMS(Inf, Zmo8u, 8u)
ZMO_NORMS(Inf, Zmo16u, 16u)
ZMO_NORMS(Inf, Zmo32f, 32f)
ZMO_NORMS(L1, Zmo8u, 8u)
ZMO_NORMS(L1, Zmo16u, 16u)
ZMO_NORMS(L1, Zmo32f, 32f)
ZMO_NORMS(L2, Zmo8u, 8u)
ZMO_NORMS(L2, Zmo16u, 16u)
ZMO_NORMS(L2, Zmo32f, 32f)
