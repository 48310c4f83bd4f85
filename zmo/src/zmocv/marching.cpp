#include "zmocv/marching.h"

#include <climits>

#include "common/check.h"
#include "zmocv_distance.h"

namespace zmo {
namespace {

int64_t marchingBufferSize(ZmoiSize roi) {
    return itemBytes(int64_t{roi.width} * roi.height, sizeof(FrontPixel) + sizeof(int),
                     64 + 2 * 63);
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiFastMarching_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                     ZmoiSize roi, Zmo32f radius, Zmo8u* pBuffer) {
    if (zmo::anyNull(pSrc, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo32f>(dstStep, roi.width)) return zmoStsStepErr;
    if (!zmo::isPositive(radius)) return zmoStsRangeErr;
    if (zmo::marchingBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    zmo::kernelsInUse(zmo::marchingKernelsByLevel)
        .run({pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi), radius, pBuffer);
    return zmoStsNoErr;
}

ZmoStatus zmoiFastMarchingGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize) {
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, type == zmo8u, channels == 1)) return bad;
    return zmo::storeSize(zmo::marchingBufferSize(roi), pSize);
}
