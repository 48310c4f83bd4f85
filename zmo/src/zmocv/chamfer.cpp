#include "zmocv/chamfer.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "common/check.h"
#include "common/types.h"
#include "zmocv_distance.h"

namespace zmo {
namespace {

// Steps as long as the largest distance do what longer ones would.
template <class T, class Metric>
float stepOf(Metric metric) {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<float>(std::min<Metric>(metric, std::numeric_limits<T>::max()));
    } else {
        return metric;
    }
}

template <int maskSize, class T, class Metric>
ZmoStatus chamfer(const Zmo8u* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi,
                  const Metric* pMetrics) {
    if (anyNull(pSrc, pDst, pMetrics)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<Zmo8u>(srcStep, roi.width) || badStep<T>(dstStep, roi.width)) return zmoStsStepErr;
    constexpr bool large = maskSize == 5;
    if (!isPositive(pMetrics[0]) || !isPositive(pMetrics[1])) return zmoStsRangeErr;
    if (large && !isPositive(pMetrics[2])) return zmoStsRangeErr;
    const ChamferSteps steps = {stepOf<T>(pMetrics[0]), stepOf<T>(pMetrics[1]),
                                large ? stepOf<T>(pMetrics[2]) : 0};
    kernelsInUse(chamferKernelsByLevel)
        .at[large ? 1 : 0][typeIndex<T>]({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), steps);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_CHAMFER(size, types, T, Metric)                                     \
    ZmoStatus zmoiDistanceTransform_##size##x##size##_##types##_C1R(            \
        const Zmo8u* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi,     \
        const Metric* pMetrics) {                                               \
        return zmo::chamfer<size>(pSrc, srcStep, pDst, dstStep, roi, pMetrics); \
    }
#define ZMO_CHAMFERS(size)                                                                  \
    ZMO_CHAMFER(size, 8u, Zmo8u, Zmo32s)                                                    \
    ZMO_CHAMFER(size, 8u16u, Zmo16u, Zmo32s)                                                \
    ZMO_CHAMFER(size, 8u32f, Zmo32f, Zmo32f)                                                \
    ZmoStatus zmoiDistanceTransform_##size##x##size##_8u_C1IR(                              \
        Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi, const Zmo32s* pMetrics) {             \
        return zmo::chamfer<size>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roi, pMetrics); \
    }

ZMO_CHAMFERS(3)
ZMO_CHAMFERS(5)
