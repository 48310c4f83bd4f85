#include "zmocv/linesuppression.h"

#include "common/check.h"
#include "zmocv_shape.h"

namespace zmo {
namespace {

bool badRadius(int radius) {
    return radius < 1 || radius > 15;
}

int64_t lineBufferSize(ZmoiSize roi, int radius) {
    const int64_t row = int64_t{roi.width} + 2 * radius + 2;
    return 3 * row + 3 * row * static_cast<int64_t>(sizeof(int32_t)) + 7 * 64;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiLineSuppression_8u_C1R(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                     int src2Step, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                     int radius, int threshold, Zmo8u* pBuffer) {
    if (zmo::anyNull(pSrc, pSrc2, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width) || zmo::badStep<Zmo8u>(src2Step, roi.width) ||
        zmo::badStep<Zmo8u>(dstStep, roi.width)) {
        return zmoStsStepErr;
    }
    if (zmo::badRadius(radius)) return zmoStsRangeErr;
    if (threshold < 0 || threshold > 255) return zmoStsThresholdErr;
    if (zmo::lineBufferSize(roi, radius) > INT_MAX) return zmoStsTooLargeErr;
    zmo::kernelsInUse(zmo::lineSuppressionKernelsByLevel)
        .run({{pSrc, srcStep},
              {pSrc2, src2Step},
              {pDst, dstStep},
              zmo::regionOf(roi),
              radius,
              threshold,
              pBuffer});
    return zmoStsNoErr;
}

ZmoStatus zmoiLineSuppressionGetBufferSize(ZmoiSize roi, int radius, ZmoDataType type, int channels,
                                           int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badRadius(radius)) return zmoStsRangeErr;
    if (type != zmo8u) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    return zmo::storeSize(zmo::lineBufferSize(roi, radius), pSize);
}
