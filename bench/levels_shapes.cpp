// Corners, lines and their suppression, on turned rectangles.
#include "levels.h"
#include "plain_shapes.h"
#include "shapes.h"

namespace {

using levels::Function;
using shapes::Shared;

double pixelsOf(const Shared& d) {
    return static_cast<double>(d->picture.size());
}

Function fastN(const Shared& d, int n) {
    return {
        .name = "zmoiFastN_8u_C1R n " + std::to_string(n),
        .call = shapes::callFastN(d, n),
        .plainLoop =
            [d, n] { plainFastN(d->picture.data(), d->dst.data(), d->roi, n, shapes::threshold); },
        .divisor = pixelsOf(d)};
}

Function lineSuppression(const Shared& d, int radius) {
    return {.name = "zmoiLineSuppression_8u_C1R radius " + std::to_string(radius),
            .call = shapes::callLineSuppression(d, radius),
            .plainLoop =
                [d, radius] {
                    plainLineSuppression(d->picture.data(), d->edges.data(), d->dst.data(), d->roi,
                                         radius, shapes::roundness);
                },
            .divisor = pixelsOf(d)};
}

Function hough(const Shared& d, int angles) {
    const double step = std::numbers::pi / angles;
    const int distances = shapes::houghDistances(d->roi);
    const auto votes = std::make_shared<std::vector<int>>(static_cast<size_t>(angles) *
                                                          static_cast<size_t>(distances));
    return {.name = "zmoiHoughLine_Region_8u32f_C1R angles " + std::to_string(angles),
            .call = shapes::callHough(d, angles),
            .plainLoop =
                [d, angles, step, distances, votes] {
                    plainHoughVotes(d->edges.data(), d->roi, angles, step, distances, *votes);
                },
            .divisor = pixelsOf(d)};
}

std::vector<Function> functions(ZmoiSize size) {
    const auto data = std::make_shared<shapes::Data>(size);
    return {fastN(data, 9),  fastN(data, 12), lineSuppression(data, 3), lineSuppression(data, 15),
            hough(data, 45), hough(data, 180)};
}

const levels::Registered registered("shapes", functions);

}  // namespace
