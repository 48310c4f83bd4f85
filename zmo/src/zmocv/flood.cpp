#include "zmocv/flood.h"

#include <climits>

#include "common/check.h"
#include "zmocv_region.h"

namespace zmo {
namespace {

// Stack, map, one flag a row, and the alignment of all.
int64_t floodBufferSize(ZmoiSize roi) {
    return itemBytes(int64_t{roi.width} * roi.height, sizeof(FloodSpan) + 1,
                     int64_t{roi.height} + 64 + 3 * 63);
}

template <class T>
ZmoStatus flood(FloodKernel run, T* pSrcDst, int srcDstStep, ZmoiSize roi, ZmoiPoint seed, T value,
                T minDelta, T maxDelta, int connectivity, ZmoiFloodRegion* pRegion,
                Zmo8u* pBuffer) {
    if (anyNull(pSrcDst, pRegion, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcDstStep, roi.width)) return zmoStsStepErr;
    if (seed.x < 0 || seed.x >= roi.width || seed.y < 0 || seed.y >= roi.height) {
        return zmoStsPointErr;
    }
    if (!isNotNegative(minDelta) || !isNotNegative(maxDelta)) return zmoStsRangeErr;
    if (floodBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    run({pSrcDst, srcDstStep}, regionOf(roi), seed, &value, &minDelta, &maxDelta, connectivity,
        pRegion, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_FLOOD(con, T, index)                                                                 \
    ZmoStatus zmoiFloodFill_##con##Con_##T##_C1IR(Zmo##T* pSrcDst, int srcDstStep, ZmoiSize roi, \
                                                  ZmoiPoint seed, Zmo##T value,                  \
                                                  ZmoiFloodRegion* pRegion, Zmo8u* pBuffer) {    \
        return zmo::flood<Zmo##T>(zmo::kernelsInUse(zmo::floodKernelsByLevel).equal[index],      \
                                  pSrcDst, srcDstStep, roi, seed, value, 0, 0, con, pRegion,     \
                                  pBuffer);                                                      \
    }
#define ZMO_FLOOD_DELTA(Rule, kernel, con, T, index)                                              \
    ZmoStatus zmoiFloodFill_##Rule##con##Con_##T##_C1IR(                                          \
        Zmo##T* pSrcDst, int srcDstStep, ZmoiSize roi, ZmoiPoint seed, Zmo##T value,              \
        Zmo##T minDelta, Zmo##T maxDelta, ZmoiFloodRegion* pRegion, Zmo8u* pBuffer) {             \
        return zmo::flood<Zmo##T>(zmo::kernelsInUse(zmo::floodKernelsByLevel).kernel[index],      \
                                  pSrcDst, srcDstStep, roi, seed, value, minDelta, maxDelta, con, \
                                  pRegion, pBuffer);                                              \
    }

ZMO_FLOOD(4, 8u, 0)
ZMO_FLOOD(8, 8u, 0)
ZMO_FLOOD(4, 32s, 1)
ZMO_FLOOD(8, 32s, 1)
ZMO_FLOOD(4, 32f, 2)
ZMO_FLOOD(8, 32f, 2)
ZMO_FLOOD_DELTA(Range, range, 4, 8u, 0)
ZMO_FLOOD_DELTA(Range, range, 8, 8u, 0)
ZMO_FLOOD_DELTA(Range, range, 4, 32f, 1)
ZMO_FLOOD_DELTA(Range, range, 8, 32f, 1)
ZMO_FLOOD_DELTA(Grad, gradient, 4, 8u, 0)
ZMO_FLOOD_DELTA(Grad, gradient, 8, 8u, 0)
ZMO_FLOOD_DELTA(Grad, gradient, 4, 32f, 1)
ZMO_FLOOD_DELTA(Grad, gradient, 8, 32f, 1)

ZmoStatus zmoiFloodFillGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize) {
    const bool knownType = type == zmo8u || type == zmo32s || type == zmo32f;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, knownType, channels == 1)) return bad;
    return zmo::storeSize(zmo::floodBufferSize(roi), pSize);
}
