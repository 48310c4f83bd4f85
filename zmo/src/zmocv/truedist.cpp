#include "zmocv/truedist.h"

#include "common/check.h"
#include "zmocv_distance.h"

namespace zmo {
namespace {

bool isTooLarge(ZmoiSize roi) {
    return roi.width > mostTrueDistanceSide || roi.height > mostTrueDistanceSide;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiTrueDistanceTransform_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, Zmo8u* pBuffer) {
    if (zmo::anyNull(pSrc, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo32f>(dstStep, roi.width)) return zmoStsStepErr;
    if (zmo::isTooLarge(roi)) return zmoStsTooLargeErr;
    zmo::kernelsInUse(zmo::trueDistanceKernelsByLevel)
        .run({pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi), pBuffer);
    return zmoStsNoErr;
}

ZmoStatus zmoiTrueDistanceTransformGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                 int* pSize) {
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, type == zmo8u, channels == 1)) return bad;
    if (zmo::isTooLarge(roi)) return zmoStsTooLargeErr;
    return zmo::storeSize(int64_t{24} * (roi.width + 1) + 64 + 4 * 63, pSize);
}
