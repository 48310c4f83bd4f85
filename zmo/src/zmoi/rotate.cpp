#include "zmoi/rotate.h"

#include <cmath>

#include "common/check.h"
#include "zmoi.h"

namespace zmo {
namespace {

struct Direction {
    double c;
    double s;
};

// Cosine and sine of an angle in degrees, exact at the multiples of 90: a quarter turn must not
// push the pixels of an edge outside by a rounding error.
Direction directionOf(double degrees) {
    constexpr double radiansPerDegree = 0.017453292519943295;
    constexpr Direction quarters[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    const double rest = std::fmod(degrees, 360.0);
    if (std::fmod(rest, 90.0) == 0) return quarters[(static_cast<int>(rest) / 90 + 4) % 4];
    return {std::cos(rest * radiansPerDegree), std::sin(rest * radiansPerDegree)};
}

// islessequal, unlike <=, raises no flag for what is not a number.
bool isPlain(double value) {
    return std::islessequal(std::fabs(value), 1e9);
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiRotateGetShift(Zmo64f xCenter, Zmo64f yCenter, Zmo64f angle, Zmo64f* pXShift,
                             Zmo64f* pYShift) {
    if (zmo::anyNull(pXShift, pYShift)) return zmoStsNullPtrErr;
    if (!std::isfinite(xCenter) || !std::isfinite(yCenter) || !std::isfinite(angle)) {
        return zmoStsRangeErr;
    }
    const auto [c, s] = zmo::directionOf(angle);
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
    const auto [c, s] = zmo::directionOf(angle);
    zmo::kernelsInUse(zmo::rotateKernelsByLevel)
        .rotate8u({pSrc, srcStep}, zmo::regionOf(srcRoi), {pDst, dstStep}, zmo::regionOf(roi),
                  {c, s, xShift, yShift});
    return zmoStsNoErr;
}
