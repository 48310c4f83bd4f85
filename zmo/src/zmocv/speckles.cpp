#include "zmocv/speckles.h"

#include <climits>

#include "common/check.h"
#include "zmocv_region.h"

namespace zmo {
namespace {

int64_t specklesBufferSize(ZmoiSize roi) {
    return itemBytes(int64_t{roi.width} * roi.height, 16,
                     4 * (int64_t{roi.height} + 1) + int64_t{5} * roi.width + 64 + 8 * 63);
}

template <class T>
ZmoStatus markSpeckles(int index, T* pSrcDst, int srcDstStep, ZmoiSize roi, T value, int maxSize,
                       T maxDiff, int connectivity, Zmo8u* pBuffer) {
    if (anyNull(pSrcDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcDstStep, roi.width)) return zmoStsStepErr;
    if (maxSize < 1 || !isNotNegative(maxDiff)) return zmoStsRangeErr;
    if (!isConnectivity(connectivity)) return zmoStsConnectivityErr;
    if (specklesBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    kernelsInUse(specklesKernelsByLevel)
        .at[index]({pSrcDst, srcDstStep}, regionOf(roi), &value, maxSize, &maxDiff, connectivity,
                   pBuffer);
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
    const bool knownType = type == zmo8u || type == zmo16u || type == zmo16s || type == zmo32f;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, knownType, channels == 1)) return bad;
    return zmo::storeSize(zmo::specklesBufferSize(roi), pSize);
}
