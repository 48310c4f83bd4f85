#include "zmocv/speckles.h"

#include <climits>
#include <type_traits>

#include "common/check.h"
#include "zmocv_region.h"

namespace zmo {
namespace {

int64_t specklesBufferSize(ZmoiSize roi) {
    const int64_t pixels = static_cast<int64_t>(roi.width) * roi.height;
    if (pixels > INT_MAX) return INT64_MAX;
    return 16 * pixels + int64_t{4} * (int64_t{roi.height} + 1) + int64_t{5} * roi.width + 64 +
           8 * 63;
}

template <class T>
bool isDifference(T value) {
    if constexpr (std::is_same_v<T, Zmo32f>) return __builtin_isgreaterequal(value, 0.0F);
    return value >= 0;
}

template <class T>
ZmoStatus markSpeckles(int index, T* pSrcDst, int srcDstStep, ZmoiSize roi, T value, int maxSize,
                       T maxDiff, int connectivity, Zmo8u* pBuffer) {
    if (anyNull(pSrcDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcDstStep, roi.width)) return zmoStsStepErr;
    if (maxSize < 1 || !isDifference(maxDiff)) return zmoStsRangeErr;
    if (connectivity != 4 && connectivity != 8) return zmoStsConnectivityErr;
    if (specklesBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    kernelsInUse(specklesKernelsByLevel)
        .at[index]({pSrcDst, srcDstStep}, {roi.width, roi.height}, &value, maxSize, &maxDiff,
                   connectivity, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_MARK_SPECKLES(type, index)                                                         \
    ZmoStatus zmoiMarkSpeckles_##type##_C1IR(Zmo##type* pSrcDst, int srcDstStep, ZmoiSize roi, \
                                             Zmo##type value, int maxSize, Zmo##type maxDiff,  \
                                             int connectivity, Zmo8u* pBuffer) {               \
        return zmo::markSpeckles(index, pSrcDst, srcDstStep, roi, value, maxSize, maxDiff,     \
                                 connectivity, pBuffer);                                       \
    }

ZMO_MARK_SPECKLES(8u, 0)
ZMO_MARK_SPECKLES(16u, 1)
ZMO_MARK_SPECKLES(16s, 2)
ZMO_MARK_SPECKLES(32f, 3)

ZmoStatus zmoiMarkSpecklesGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (type != zmo8u && type != zmo16u && type != zmo16s && type != zmo32f) {
        return zmoStsDataTypeErr;
    }
    if (channels != 1) return zmoStsChannelsErr;
    return zmo::storeSize(zmo::specklesBufferSize(roi), pSize);
}
