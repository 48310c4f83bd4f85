#include <cmath>
#include <numbers>

#include "case.h"
#include "zmocv.h"

namespace {

struct Region {
    ZmoiPolar limits[2];
    ZmoiPolar delta;
};

// All lines, strongest first.
std::vector<ZmoiPolar> expectedLines(const kit::Image& src, const Region& region, int threshold) {
    const auto [low, high] = region.limits;
    const ZmoiPolar delta = region.delta;
    const auto last = [](double from, double to, double step) {
        return static_cast<int>(std::floor((to - from) / step + 0.5));
    };
    const int lastAngle = last(low.theta, high.theta, delta.theta);
    const int lastDistance = last(low.rho, high.rho, delta.rho);
    kit::Image votes({lastDistance + 1, lastAngle + 1}, 0, 1);
    for (int n = 0; n <= lastAngle; ++n) {
        const double theta = low.theta + double{delta.theta} * n;
        const double c = std::cos(theta) / delta.rho;
        const double s = std::sin(theta) / delta.rho;
        const double o = 0.5 - double{low.rho} / delta.rho;
        kit::forEachPixel(src.size(), [&](int x, int y) {
            const double r = std::floor(x * c + (y * s + o));
            if (src(x, y) == 0 || r < 0 || r > lastDistance) return;
            const int bin = static_cast<int>(r);
            votes.set(bin, n, votes(bin, n) + 1);
        });
    }
    std::vector<std::pair<double, ZmoiPolar>> lines;
    kit::forEachPixel(votes.size(), [&, low = low, delta = delta](int r, int n) {
        const double v = votes(r, n);
        if (v > threshold && v > votes(r, n - 1) && v >= votes(r, n + 1) && v > votes(r - 1, n) &&
            v >= votes(r + 1, n)) {
            lines.push_back({v,
                             {static_cast<float>(low.rho + double{delta.rho} * r),
                              static_cast<float>(low.theta + double{delta.theta} * n)}});
        }
    });
    std::ranges::stable_sort(lines, std::greater(), [](const auto& line) { return line.first; });
    std::vector<ZmoiPolar> places;
    for (const auto& line : lines) places.push_back(line.second);
    return places;
}

constexpr float pi = std::numbers::pi_v<float>;
// The last is one column of pixels: its neighbours lie on the limit, one inside and one outside.
const Region regions[] = {{{{-300, 0}, {300, pi}}, {1, pi / 60}},
                          {{{5, 1}, {40.5F, 1.5F}}, {0.75F, 0.01F}},
                          {{{-20, -4}, {100, 9}}, {7, 0.5F}},
                          {{{2.5F, 0}, {2.5F, 0}}, {1, 1}}};

const kit::Function function = ZMO(zmoiHoughLine_Region_8u32f_C1R);
const kit::Function query = ZMO(zmoiHoughLine_RegionGetBufferSize);

kit::Case caseOf(const kit::Turn& t, const Region& region, int threshold, int room) {
    return kit::Case(function, t)
        .with({{"limits", &region.limits[0]},
               {"delta", region.delta},
               {"threshold", threshold},
               {"maxLines", room}})
        .sized(query);
}

// A density of 100 fills more than one portion of pixels.
TEST(Hough, Oracle) {
    int many = 0;
    kit::forEachCase({111, 4}, 1, [&](kit::Turn& t, size_t) {
        const Region& region = regions[t.number % 4];
        const int density = std::array{5, 0, 100, 20, 40}[t.number % 5];
        const int threshold = t.number % 4 == 3 ? 0 : std::array{0, 4, 9}[t.number % 3];
        const int room = std::array{7, 1, 5000}[t.number / 4 % 3];
        kit::Case c = caseOf(t, region, threshold, room);
        c.src().fill([&] { return t.between(0, 99) < density ? t.between(1, 255) : 0; });
        const std::vector<ZmoiPolar> lines = expectedLines(c.src(), region, threshold);
        many += lines.size() > 7;
        return c.wantList("pLines", lines, room);
    });
    EXPECT_TRUE(kit::sanitized || many > 10);
}

TEST(Hough, BadArguments) {
    const Region good{{{0, 0}, {9, 1}}, {1, 1}};
    const ZmoiPolar crossed[] = {{10, 0}, {9, 1}};
    const ZmoiPolar crossedAngles[] = {{0, 2}, {9, 1}};
    const ZmoiPolar noNumber[] = {{0, 0}, {9, NAN}};
    caseOf(kit::Turn(112, {12, 4}), good, 0, 10)
        .give("pLines", kit::Buffer(10 * sizeof(ZmoiPolar)))
        .expectBadArguments(
            {{"limits", {&crossed[0], &crossedAngles[0], &noNumber[0]}, zmoStsRangeErr},
             {"delta", {ZmoiPolar{0, 1}, ZmoiPolar{1, -1}}, zmoStsRangeErr},
             {"threshold", -1, zmoStsThresholdErr},
             {"maxLines", 0, zmoStsRangeErr},
             {"delta", ZmoiPolar{1e-9F, 1}, zmoStsTooLargeErr}});
    kit::Case(query)
        .with({{"limits", &good.limits[0]},
               {"delta", good.delta},
               {"maxLines", 10},
               {"type", zmo8u},
               {"channels", 1}})
        .expectBadArguments({{"delta", ZmoiPolar{1, 0}, zmoStsRangeErr},
                             {"maxLines", 0, zmoStsRangeErr},
                             {"type", zmo16u, zmoStsDataTypeErr},
                             {"channels", 3, zmoStsChannelsErr},
                             {"maxLines", INT32_MAX, zmoStsTooLargeErr},
                             {"roi", ZmoiSize{65536, 32768}, zmoStsTooLargeErr}});
}

}  // namespace
