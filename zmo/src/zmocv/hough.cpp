#include "zmocv/hough.h"

#include <cmath>
#include <cstring>

#include "common/check.h"
#include "zmocv_shape.h"

namespace zmo {
namespace {

bool badLimits(const ZmoiPolar limits[2], ZmoiPolar delta) {
    const auto bad = [](Zmo32f low, Zmo32f high, Zmo32f step) {
        return !std::isfinite(low) || !std::isfinite(high) || std::isgreater(low, high) ||
               !std::isfinite(step) || !isPositive(step);
    };
    return bad(limits[0].rho, limits[1].rho, delta.rho) ||
           bad(limits[0].theta, limits[1].theta, delta.theta);
}

// Places from low to high; as a double, for there may be any number.
double placesIn(Zmo32f low, Zmo32f high, Zmo32f step) {
    return std::floor((double{high} - double{low}) / double{step} + 0.5) + 1;
}

// Bytes of the work buffer's three parts.
struct Layout {
    double cells;
    double table;
    double peaks;
    double total() const { return cells + table + peaks; }
};

Layout layoutFor(double angles, double distances, int maxLines) {
    constexpr double alignment = 64;
    const double cells = (angles + 2) * (distances + houghMargin);
    return {cells * sizeof(int32_t) + houghPortion * (2.0 * sizeof(double) + sizeof(int32_t)) +
                distances + 5 * alignment + 64,
            2 * angles * sizeof(double) + alignment, double{sizeof(HoughPeak)} * maxLines};
}

// Counts of pixels and all sizes stay in the range of int.
bool isTooLarge(ZmoiSize roi, const Layout& layout) {
    return int64_t{roi.width} * roi.height > INT_MAX ||
           !std::islessequal(layout.total(), static_cast<double>(INT_MAX) - 64);
}

double* alignedTable(Zmo8u* pBuffer) {
    const uintptr_t address = reinterpret_cast<uintptr_t>(pBuffer);
    return reinterpret_cast<double*>(pBuffer + (64 - address % 64) % 64);
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiHoughLine_Region_8u32f_C1R(const Zmo8u* pSrc, int srcStep, ZmoiPolar* pLines,
                                         ZmoiSize roi, const ZmoiPolar limits[2], ZmoiPolar delta,
                                         int threshold, int maxLines, int* pCount, Zmo8u* pBuffer) {
    if (zmo::anyNull(pSrc, pLines, limits, pCount, pBuffer)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (zmo::badLimits(limits, delta)) return zmoStsRangeErr;
    if (threshold < 0) return zmoStsThresholdErr;
    if (maxLines < 1) return zmoStsRangeErr;
    const double angles = zmo::placesIn(limits[0].theta, limits[1].theta, delta.theta);
    const double distances = zmo::placesIn(limits[0].rho, limits[1].rho, delta.rho);
    if (zmo::isTooLarge(roi, zmo::layoutFor(angles, distances, maxLines))) {
        return zmoStsTooLargeErr;
    }

    const zmo::HoughSpace space{static_cast<ptrdiff_t>(angles), static_cast<ptrdiff_t>(distances)};
    double* const cosines = zmo::alignedTable(pBuffer);
    double* const sines = cosines + space.angles;
    for (ptrdiff_t n = 0; n < space.angles; ++n) {
        const double theta = limits[0].theta + static_cast<double>(n) * delta.theta;
        cosines[n] = std::cos(theta) / delta.rho;
        sines[n] = std::sin(theta) / delta.rho;
    }
    auto* const peaks = reinterpret_cast<zmo::HoughPeak*>(sines + space.angles);
    const int64_t found = zmo::kernelsInUse(zmo::houghKernelsByLevel)
                              .run({{pSrc, srcStep},
                                    zmo::regionOf(roi),
                                    space,
                                    cosines,
                                    sines,
                                    0.5 - double{limits[0].rho} / delta.rho,
                                    threshold,
                                    maxLines,
                                    peaks,
                                    peaks + maxLines});
    const int count = found < maxLines ? static_cast<int>(found) : maxLines;
    for (int i = 0; i < count; ++i) {
        const ptrdiff_t n = peaks[i].index / space.distances;
        const ptrdiff_t r = peaks[i].index % space.distances;
        const ZmoiPolar line{
            static_cast<Zmo32f>(limits[0].rho + static_cast<double>(r) * delta.rho),
            static_cast<Zmo32f>(limits[0].theta + static_cast<double>(n) * delta.theta)};
        std::memcpy(pLines + i, &line, sizeof line);
    }
    *pCount = count;
    return found > count ? zmoStsTruncated : zmoStsNoErr;
}

ZmoStatus zmoiHoughLine_RegionGetBufferSize(ZmoiSize roi, const ZmoiPolar limits[2],
                                            ZmoiPolar delta, int maxLines, ZmoDataType type,
                                            int channels, int* pSize) {
    if (zmo::anyNull(limits, pSize)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badLimits(limits, delta) || maxLines < 1) return zmoStsRangeErr;
    if (type != zmo8u) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    const zmo::Layout layout =
        zmo::layoutFor(zmo::placesIn(limits[0].theta, limits[1].theta, delta.theta),
                       zmo::placesIn(limits[0].rho, limits[1].rho, delta.rho), maxLines);
    if (zmo::isTooLarge(roi, layout)) return zmoStsTooLargeErr;
    return zmo::storeSize(static_cast<int64_t>(layout.total()), pSize);
}
