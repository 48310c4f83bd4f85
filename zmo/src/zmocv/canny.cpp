#include "zmocv/canny.h"

#include <bit>
#include <climits>
#include <limits>
#include <type_traits>

#include "common/check.h"
#include "zmocv.h"

namespace zmo {
namespace {

// Three rows of 4-byte sizes with a pixel on either side, the stack, and the alignment of all.
int64_t cannyBufferSize(ZmoiSize roi) {
    const int64_t pixels = static_cast<int64_t>(roi.width) * roi.height;
    constexpr int64_t bytesOfPixel = sizeof(CannyPixel);
    constexpr int64_t most = INT64_MAX / 2 / bytesOfPixel;
    if (pixels > most) return INT64_MAX;
    return int64_t{12} * (roi.width + int64_t{2}) + bytesOfPixel * pixels + 64 + int64_t{4} * 63;
}

// Sizes are compared with thresholds (L1) or their squares (L2); a float's square is exact in
// double.
double limitOf(Zmo32f threshold, ZmoiNorm norm) {
    const double value = threshold;
    return norm == zmoiNormL2 ? value * value : value;
}

// size > limit holds for an integer exactly when size > floor(limit).
int floorToInt(double limit) {
    return limit >= INT_MAX ? INT_MAX : static_cast<int>(limit);
}

// The largest float that is not above limit >= 0, found in the bits: a conversion would round, and
// could raise overflow. Denormal limits become 0, since each comparison with one would raise a flag.
float floorToFloat(double limit) {
    constexpr double smallestNormal = std::numeric_limits<float>::min();
    constexpr double largest = std::numeric_limits<float>::max();
    if (limit < smallestNormal) return 0;
    if (limit == std::numeric_limits<double>::infinity())
        return std::numeric_limits<float>::infinity();
    if (limit > largest) return std::numeric_limits<float>::max();
    constexpr uint64_t surplusBits = (1ULL << 29) - 1;
    return static_cast<float>(std::bit_cast<double>(std::bit_cast<uint64_t>(limit) & ~surplusBits));
}

template <class Limit>
Limit floorTo(double limit) {
    if constexpr (std::is_same_v<Limit, int>) {
        return floorToInt(limit);
    } else {
        return floorToFloat(limit);
    }
}

template <class T, class Limit>
ZmoStatus canny(CannyKernel<Limit> CannyKernels::*l1, CannyKernel<Limit> CannyKernels::*l2,
                const T* pSrc, int srcStep, const T* pSrc2, int src2Step, Zmo8u* pDst, int dstStep,
                ZmoiSize roi, Zmo32f low, Zmo32f high, ZmoiNorm norm, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pSrc2, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width) || badStep<T>(src2Step, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo8u>(dstStep, roi.width)) return zmoStsStepErr;
    // Unlike < and <=, these raise no flag for a threshold that is not a number.
    if (!__builtin_isgreaterequal(low, 0.0F) || !__builtin_islessequal(low, high)) {
        return zmoStsThresholdErr;
    }
    if (!isKnown(norm)) return zmoStsNormErr;
    if (cannyBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    const CannyKernel<Limit> run =
        kernelsInUse(cannyKernelsByLevel).*(norm == zmoiNormL1 ? l1 : l2);
    run({pSrc, srcStep}, {pSrc2, src2Step}, {pDst, dstStep}, {roi.width, roi.height},
        floorTo<Limit>(limitOf(low, norm)), floorTo<Limit>(limitOf(high, norm)), pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiCanny_16s8u_C1R(const Zmo16s* pSrc, int srcStep, const Zmo16s* pSrc2, int src2Step,
                              Zmo8u* pDst, int dstStep, ZmoiSize roi, Zmo32f low, Zmo32f high,
                              ZmoiNorm norm, Zmo8u* pBuffer) {
    return zmo::canny(&zmo::CannyKernels::l1From16s, &zmo::CannyKernels::l2From16s, pSrc, srcStep,
                      pSrc2, src2Step, pDst, dstStep, roi, low, high, norm, pBuffer);
}

ZmoStatus zmoiCanny_32f8u_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2, int src2Step,
                              Zmo8u* pDst, int dstStep, ZmoiSize roi, Zmo32f low, Zmo32f high,
                              ZmoiNorm norm, Zmo8u* pBuffer) {
    return zmo::canny(&zmo::CannyKernels::l1From32f, &zmo::CannyKernels::l2From32f, pSrc, srcStep,
                      pSrc2, src2Step, pDst, dstStep, roi, low, high, norm, pBuffer);
}

ZmoStatus zmoiCannyGetSize(ZmoiSize roi, int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    return zmo::storeSize(zmo::cannyBufferSize(roi), pSize);
}
