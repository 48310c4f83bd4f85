#include "zmoi/rotate.h"

#include <cmath>

#include "common/check.h"
#include "zmoi.h"

namespace zmo {
namespace {

constexpr double radiansPerDegree = 0.017453292519943295;

bool isPlain(double value) {
    return std::fabs(value) <= 1e9;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiRotateGetShift(Zmo64f xCenter, Zmo64f yCenter, Zmo64f angle, Zmo64f* pXShift,
                             Zmo64f* pYShift) {
    if (zmo::anyNull(pXShift, pYShift)) return zmoStsNullPtrErr;
    if (!std::isfinite(xCenter) || !std::isfinite(yCenter) || !std::isfinite(angle)) {
        return zmoStsRangeErr;
    }
    const double c = std::cos(angle * zmo::radiansPerDegree);
    const double s = std::sin(angle * zmo::radiansPerDegree);
    *pXShift = xCenter - c * xCenter - s * yCenter;
    *pYShift = yCenter + s * xCenter - c * yCenter;
    return zmoStsNoErr;
}

ZmoStatus zmoiRotate_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi, Zmo8u* pDst,
                            int dstStep, ZmoiSize roi, Zmo64f angle, Zmo64f xShift, Zmo64f yShift) {
    if (zmo::anyNull(pSrc, pDst)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(srcRoi) || zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, srcRoi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo8u>(dstStep, roi.width)) return zmoStsStepErr;
    if (!zmo::isPlain(angle) || !zmo::isPlain(xShift) || !zmo::isPlain(yShift)) {
        return zmoStsRangeErr;
    }
    const double radians = angle * zmo::radiansPerDegree;
    zmo::kernelsInUse(zmo::rotateKernelsByLevel)
        .rotate8u({pSrc, srcStep}, {srcRoi.width, srcRoi.height}, {pDst, dstStep},
                  {roi.width, roi.height}, {std::cos(radians), std::sin(radians), xShift, yShift});
    return zmoStsNoErr;
}
