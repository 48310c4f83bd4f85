#include "zmocv/fastn.h"

#include "common/check.h"
#include "zmocv_shape.h"

namespace zmo {
namespace {

int64_t fastNBufferSize(ZmoiSize roi) {
    return fastRows * (int64_t{roi.width} + 2) + 2 * 64;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiFastN_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                           int n, int threshold, int suppress, int* pCount, Zmo8u* pBuffer) {
    if (zmo::anyNull(pSrc, pDst, pCount, pBuffer)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo8u>(dstStep, roi.width)) return zmoStsStepErr;
    if (n < 9 || n > 16) return zmoStsRangeErr;
    if (threshold < 0 || threshold > 255) return zmoStsThresholdErr;
    if (zmo::fastNBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    const int64_t count = zmo::kernelsInUse(zmo::fastNKernelsByLevel)
                              .find({pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi), n,
                                    threshold, suppress != 0, pBuffer);
    *pCount = static_cast<int>(count < INT_MAX ? count : INT_MAX);
    return zmoStsNoErr;
}

ZmoStatus zmoiFastNGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize) {
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, type == zmo8u, channels == 1)) return bad;
    return zmo::storeSize(zmo::fastNBufferSize(roi), pSize);
}

ZmoStatus zmoiFastN2DToVec_8u(const Zmo8u* pSrc, int srcStep, ZmoiPoint* pList, ZmoiSize roi,
                              int maxCorners, int* pCount) {
    if (zmo::anyNull(pSrc, pList, pCount)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (maxCorners < 1) return zmoStsRangeErr;
    bool more = false;
    *pCount = zmo::kernelsInUse(zmo::fastNKernelsByLevel)
                  .list({pSrc, srcStep}, pList, zmo::regionOf(roi), maxCorners, &more);
    return more ? zmoStsTruncated : zmoStsNoErr;
}
