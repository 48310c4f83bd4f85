// Turned rectangles and their edges, for the programs that measure corners and lines, and the
// calls.
#pragma once

#include <array>
#include <cmath>
#include <memory>
#include <numbers>

#include "figures.h"
#include "zmocv.h"
#include "zmoi.h"

namespace shapes {

inline constexpr int threshold = 20;
inline constexpr int roundness = 100;

struct Data {
    explicit Data(ZmoiSize size)
        : roi(size), picture(bench::pixelsOf(size)), edges(picture.size()), dst(picture.size()) {
        double xShift = 0;
        double yShift = 0;
        bench::require(
            zmoiRotateGetShift(size.width / 2.0, size.height / 2.0, 10, &xShift, &yShift),
            "zmoiRotateGetShift");
        const std::vector<Zmo8u> figures = bench::rectangles(size, {8, 8});
        bench::require(zmoiRotate_8u_C1R(figures.data(), size.width, size, picture.data(),
                                         size.width, size, 10, xShift, yShift),
                       "zmoiRotate_8u_C1R");
        for (size_t i = 1; i < edges.size(); ++i)
            edges[i] = (picture[i] > 127) != (picture[i - 1] > 127);
    }

    ZmoiSize roi;
    std::vector<Zmo8u> picture;
    std::vector<Zmo8u> edges;
    std::vector<Zmo8u> dst;
    std::vector<Zmo8u> buffer;
    std::vector<ZmoiPolar> lines;
    int count = 0;
};

using Shared = std::shared_ptr<Data>;

inline auto callFastN(const Shared& d, int n) {
    bench::growBy(d->buffer, "zmoiFastNGetBufferSize", zmoiFastNGetBufferSize, d->roi, zmo8u, 1);
    return [d, n] {
        return zmoiFastN_8u_C1R(d->picture.data(), d->roi.width, d->dst.data(), d->roi.width,
                                d->roi, n, threshold, 0, &d->count, d->buffer.data());
    };
}

inline auto callLineSuppression(const Shared& d, int radius) {
    bench::growBy(d->buffer, "zmoiLineSuppressionGetBufferSize", zmoiLineSuppressionGetBufferSize,
                  d->roi, radius, zmo8u, 1);
    return [d, radius] {
        return zmoiLineSuppression_8u_C1R(d->picture.data(), d->roi.width, d->edges.data(),
                                          d->roi.width, d->dst.data(), d->roi.width, d->roi, radius,
                                          roundness, d->buffer.data());
    };
}

// All distances, a pixel apart, on either side of the middle.
inline int houghDistances(ZmoiSize roi) {
    return 2 * static_cast<int>(std::hypot(roi.width, roi.height)) + 1;
}

// So many angles over half a turn.
inline auto callHough(const Shared& d, int angles) {
    constexpr int maxLines = 1000;
    const int middle = houghDistances(d->roi) / 2;
    const double step = std::numbers::pi / angles;
    const auto rho = static_cast<Zmo32f>(middle);
    const std::array<ZmoiPolar, 2> limits{
        {{-rho, 0}, {rho, static_cast<Zmo32f>((angles - 1) * step)}}};
    const ZmoiPolar delta{1, static_cast<Zmo32f>(step)};
    bench::growBy(d->buffer, "zmoiHoughLine_RegionGetBufferSize", zmoiHoughLine_RegionGetBufferSize,
                  d->roi, limits.data(), delta, maxLines, zmo8u, 1);
    d->lines.resize(maxLines);
    return [d, limits, delta] {
        const ZmoStatus status = zmoiHoughLine_Region_8u32f_C1R(
            d->edges.data(), d->roi.width, d->lines.data(), d->roi, limits.data(), delta, threshold,
            maxLines, &d->count, d->buffer.data());
        return status == zmoStsTruncated ? zmoStsNoErr : status;
    };
}

}  // namespace shapes
