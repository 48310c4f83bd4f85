#include "zmocv/canny.h"

#include <bit>
#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>

#include "common/check.h"
#include "zmocv.h"

namespace zmo {
namespace {

// Three rows of 4-byte sizes with a pixel on either side, the stack, and the alignment of all. More
// than any query accepts when it would not fit.
template <class Size>
int64_t cannyBufferSize(Size roi) {
    const int64_t width = roi.width;
    constexpr int64_t most = INT64_MAX / 4;
    constexpr int64_t bytesOfPixel = sizeof(CannyPixel);
    if (width > most / 32 / roi.height) return most;
    return 12 * (width + 2) + bytesOfPixel * width * roi.height + 64 + 4 * 63;
}

// Besides, derivatives: four rows of 2 bytes a pixel, and what a row of them is made of, a row of
// the border's value and a row of 2-byte sums with two pixels on either side.
int64_t cannyBorderBufferSize(ZmoiSize roi) {
    return cannyBufferSize(roi) + 4 * 2 * int64_t{roi.width} + roi.width +
           2 * (roi.width + int64_t{4}) + 6 * 63;
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
// could raise overflow. Denormal limits become 0, since each comparison with one would raise a
// flag.
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

// Unlike < and <=, these raise no flag for a threshold that is not a number.
bool badThresholds(Zmo32f low, Zmo32f high) {
    return !isNotNegative(low) || !std::islessequal(low, high);
}

template <class T, class Step, class Size>
ZmoStatus canny(const T* pSrc, Step srcStep, const T* pSrc2, Step src2Step, Zmo8u* pDst,
                Step dstStep, Size roi, Zmo32f low, Zmo32f high, ZmoiNorm norm, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pSrc2, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width) || badStep<T>(src2Step, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo8u>(dstStep, roi.width)) return zmoStsStepErr;
    if (badThresholds(low, high)) return zmoStsThresholdErr;
    if (!isKnown(norm)) return zmoStsNormErr;
    Step size = 0;
    if (storeSize(cannyBufferSize(roi), &size) != zmoStsNoErr) return zmoStsTooLargeErr;
    const CannyKernels& kernels = kernelsInUse(cannyKernelsByLevel);
    const auto run = [&](auto l1, auto l2, auto limit) {
        using Limit = decltype(limit);
        (norm == zmoiNormL1 ? l1 : l2)({pSrc, srcStep}, {pSrc2, src2Step}, {pDst, dstStep},
                                       regionOf(roi), floorTo<Limit>(limitOf(low, norm)),
                                       floorTo<Limit>(limitOf(high, norm)), pBuffer);
    };
    if constexpr (std::is_same_v<T, Zmo16s>) {
        run(kernels.l1From16s, kernels.l2From16s, int());
    } else {
        run(kernels.l1From32f, kernels.l2From32f, float());
    }
    return zmoStsNoErr;
}

template <class Size, class Int>
ZmoStatus cannySize(Size roi, Int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    return storeSize(cannyBufferSize(roi), pSize);
}

}  // namespace
}  // namespace zmo

#define ZMO_CANNY(types, suffix, T, Step, Size)                                                \
    ZmoStatus zmoiCanny_##types##_C1R##suffix(                                                 \
        const T* pSrc, Step srcStep, const T* pSrc2, Step src2Step, Zmo8u* pDst, Step dstStep, \
        Size roi, Zmo32f low, Zmo32f high, ZmoiNorm norm, Zmo8u* pBuffer) {                    \
        return zmo::canny(pSrc, srcStep, pSrc2, src2Step, pDst, dstStep, roi, low, high, norm, \
                          pBuffer);                                                            \
    }

ZMO_CANNY(16s8u, , Zmo16s, int, ZmoiSize)
ZMO_CANNY(32f8u, , Zmo32f, int, ZmoiSize)
ZMO_CANNY(16s8u, _L, Zmo16s, int64_t, ZmoiSizeL)
ZMO_CANNY(32f8u, _L, Zmo32f, int64_t, ZmoiSizeL)

ZmoStatus zmoiCannyGetSize(ZmoiSize roi, int* pSize) {
    return zmo::cannySize(roi, pSize);
}

ZmoStatus zmoiCannyGetSize_L(ZmoiSizeL roi, int64_t* pSize) {
    return zmo::cannySize(roi, pSize);
}

ZmoStatus zmoiCannyBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                 ZmoiSize roi, ZmoiDifferentialKernel kernel, ZmoiMaskSize mask,
                                 Zmo32f low, Zmo32f high, ZmoiNorm norm, ZmoiBorderType border,
                                 const Zmo8u* pBorderValue, Zmo8u* pBuffer) {
    if (zmo::anyNull(pSrc, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo8u>(dstStep, roi.width)) return zmoStsStepErr;
    if (!zmo::isKnownKernel(kernel)) return zmoStsFlagErr;
    if (!zmo::isKnownKernelSize(kernel, mask)) return zmoStsMaskSizeErr;
    if (zmo::badThresholds(low, high)) return zmoStsThresholdErr;
    if (!zmo::isKnown(norm)) return zmoStsNormErr;
    if (!zmo::isKnown(border)) return zmoStsBorderErr;
    if (zmo::cannyBorderBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    const auto derivative = static_cast<int>(zmo::derivativeOf(kernel, mask));
    const zmo::CannyKernels& kernels = zmo::kernelsInUse(zmo::cannyKernelsByLevel);
    kernels.border[norm == zmoiNormL1 ? 0 : 1][derivative](
        {pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi), {border, pBorderValue},
        zmo::floorToInt(zmo::limitOf(low, norm)), zmo::floorToInt(zmo::limitOf(high, norm)),
        pBuffer);
    return zmoStsNoErr;
}

ZmoStatus zmoiCannyBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask, ZmoDataType type,
                                       int channels, int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (!zmo::isKnown(mask)) return zmoStsMaskSizeErr;
    if (type != zmo8u) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    return zmo::storeSize(zmo::cannyBorderBufferSize(roi), pSize);
}
