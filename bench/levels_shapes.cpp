// Corners, lines and their suppression, on turned rectangles.
#include <cmath>
#include <memory>
#include <numbers>

#include "levels.h"
#include "plain_shapes.h"
#include "zmocv.h"
#include "zmoi.h"

namespace {

using levels::Function;

constexpr int threshold = 20;
constexpr int roundness = 100;

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
    // Work memory of the largest size asked for.
    Zmo8u* reserve(int bytes) {
        buffer.resize(std::max(buffer.size(), static_cast<size_t>(bytes)));
        return buffer.data();
    }

    ZmoiSize roi;
    std::vector<Zmo8u> picture;
    std::vector<Zmo8u> edges;
    std::vector<Zmo8u> dst;
    std::vector<Zmo8u> buffer;
    std::vector<ZmoiPolar> lines;
    std::vector<int> votes;
    int count = 0;
};

using Shared = std::shared_ptr<Data>;

Function fastN(const Shared& d, int n, int suppress) {
    int bytes = 0;
    bench::require(zmoiFastNGetBufferSize(d->roi, zmo8u, 1, &bytes), "zmoiFastNGetBufferSize");
    d->reserve(bytes);
    std::function<void()> plain;
    if (suppress == 0) {
        plain = [d, n] { plainFastN(d->picture.data(), d->dst.data(), d->roi, n, threshold); };
    }
    return {.name = "zmoiFastN_8u_C1R n " + std::to_string(n) + (suppress ? " maxima" : ""),
            .call =
                [d, n, suppress] {
                    return zmoiFastN_8u_C1R(d->picture.data(), d->roi.width, d->dst.data(),
                                            d->roi.width, d->roi, n, threshold, suppress, &d->count,
                                            d->buffer.data());
                },
            .plainLoop = plain,
            .divisor = static_cast<double>(d->picture.size())};
}

Function lineSuppression(const Shared& d, int radius) {
    int bytes = 0;
    bench::require(zmoiLineSuppressionGetBufferSize(d->roi, radius, zmo8u, 1, &bytes),
                   "zmoiLineSuppressionGetBufferSize");
    d->reserve(bytes);
    return {.name = "zmoiLineSuppression_8u_C1R radius " + std::to_string(radius),
            .call =
                [d, radius] {
                    return zmoiLineSuppression_8u_C1R(
                        d->picture.data(), d->roi.width, d->edges.data(), d->roi.width,
                        d->dst.data(), d->roi.width, d->roi, radius, roundness, d->buffer.data());
                },
            .plainLoop =
                [d, radius] {
                    plainLineSuppression(d->picture.data(), d->edges.data(), d->dst.data(), d->roi,
                                         radius, roundness);
                },
            .divisor = static_cast<double>(d->picture.size())};
}

Function hough(const Shared& d, int angles) {
    constexpr int maxLines = 1000;
    const double step = std::numbers::pi / angles;
    const int largest = static_cast<int>(std::hypot(d->roi.width, d->roi.height));
    const int distances = 2 * largest + 1;
    const auto rho = static_cast<Zmo32f>(largest);
    const auto last = static_cast<Zmo32f>((angles - 1) * step);
    const auto limits =
        std::make_shared<std::vector<ZmoiPolar>>(std::vector<ZmoiPolar>{{-rho, 0}, {rho, last}});
    const ZmoiPolar delta{1, static_cast<Zmo32f>(step)};
    int bytes = 0;
    bench::require(zmoiHoughLine_RegionGetBufferSize(d->roi, limits->data(), delta, maxLines, zmo8u,
                                                     1, &bytes),
                   "zmoiHoughLine_RegionGetBufferSize");
    d->reserve(bytes);
    d->lines.resize(maxLines);
    d->votes.resize(static_cast<size_t>(angles) * static_cast<size_t>(distances));
    return {.name = "zmoiHoughLine_Region_8u32f_C1R angles " + std::to_string(angles),
            .call =
                [d, limits, delta] {
                    const ZmoStatus status = zmoiHoughLine_Region_8u32f_C1R(
                        d->edges.data(), d->roi.width, d->lines.data(), d->roi, limits->data(),
                        delta, 20, maxLines, &d->count, d->buffer.data());
                    return status == zmoStsTruncated ? zmoStsNoErr : status;
                },
            .plainLoop =
                [d, angles, step, distances] {
                    plainHoughVotes(d->edges.data(), d->roi, angles, step, distances, d->votes);
                },
            .divisor = static_cast<double>(d->picture.size())};
}

std::vector<Function> functions(ZmoiSize size) {
    const auto data = std::make_shared<Data>(size);
    return {fastN(data, 9, 0),        fastN(data, 12, 0),        fastN(data, 9, 1),
            lineSuppression(data, 3), lineSuppression(data, 15), hough(data, 45),
            hough(data, 180)};
}

const levels::Registered registered("shapes", functions);

}  // namespace
