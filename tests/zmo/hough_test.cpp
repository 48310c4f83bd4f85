#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "call.h"
#include "zmocv.h"

namespace {

struct Region {
    ZmoiPolar limits[2];
    ZmoiPolar delta;
};

// All lines, strongest first.
std::vector<ZmoiPolar> expectedLines(const kit::Image<Zmo8u>& src, const Region& region,
                                     int threshold) {
    const auto [low, high] = region.limits;
    const ZmoiPolar delta = region.delta;
    const auto last = [](double from, double to, double step) {
        return static_cast<int>(std::floor((to - from) / step + 0.5));
    };
    const int lastAngle = last(low.theta, high.theta, delta.theta);
    const int lastDistance = last(low.rho, high.rho, delta.rho);
    std::vector<std::vector<int>> votes(static_cast<size_t>(lastAngle) + 3,
                                        std::vector<int>(static_cast<size_t>(lastDistance) + 3));
    const auto cell = [&](int n, int r) -> int& {
        return votes[static_cast<size_t>(n) + 1][static_cast<size_t>(r) + 1];
    };
    for (int n = 0; n <= lastAngle; ++n) {
        const double theta = low.theta + double{delta.theta} * n;
        const double c = std::cos(theta) / delta.rho;
        const double s = std::sin(theta) / delta.rho;
        const double o = 0.5 - double{low.rho} / delta.rho;
        kit::forEachPixel(src.size(), [&](int x, int y) {
            const double r = std::floor(x * c + (y * s + o));
            if (src.get(x, y) != 0 && r >= 0 && r <= lastDistance) ++cell(n, static_cast<int>(r));
        });
    }
    std::vector<std::pair<int, ZmoiPolar>> lines;
    for (int n = 0; n <= lastAngle; ++n) {
        for (int r = 0; r <= lastDistance; ++r) {
            const int v = cell(n, r);
            if (v > threshold && v > cell(n - 1, r) && v >= cell(n + 1, r) && v > cell(n, r - 1) &&
                v >= cell(n, r + 1)) {
                lines.push_back({v,
                                 {static_cast<float>(low.rho + double{delta.rho} * r),
                                  static_cast<float>(low.theta + double{delta.theta} * n)}});
            }
        }
    }
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

// A density of 100 fills more than one portion of pixels.
TEST(Hough, Oracle) {
    int many = 0;
    kit::forEachCase(111, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        const Region& region = regions[turn % 4];
        const int density = std::array{5, 0, 100, 20, 40}[turn % 5];
        kit::Image<Zmo8u> src(size, layout);
        src.fill([&] { return random.between(0, 99) < density ? random.between(1, 255) : 0; });
        const int threshold = turn % 4 == 3 ? 0 : std::array{0, 4, 9}[turn % 3];
        const int room = std::array{7, 1, 5000}[turn / 4 % 3];
        const std::vector<ZmoiPolar> lines = expectedLines(src, region, threshold);
        many += lines.size() > 7;
        kit::Buffer buffer = kit::bufferOf(zmoiHoughLine_RegionGetBufferSize, size, region.limits,
                                           region.delta, room, zmo8u, 1);
        kit::expectList(lines, room, [&](ZmoiPolar* list, int* count) {
            return zmoiHoughLine_Region_8u32f_C1R(src.ptr(), src.step(), list, size, region.limits,
                                                  region.delta, threshold, room, count,
                                                  buffer.ptr());
        });
        buffer.expectSurroundingsUntouched();
    });
    EXPECT_GT(many, 10);
}

TEST(Hough, BadArguments) {
    const ZmoiSize size{12, 4};
    kit::Image<Zmo8u> src(size);
    kit::Image<ZmoiPolar> lines({10, 1});
    kit::Buffer buffer(1 << 17);
    int count = -1;
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    const ZmoiPolar good[] = {{0, 0}, {9, 1}};
    const ZmoiPolar crossed[] = {{10, 0}, {9, 1}};
    const ZmoiPolar crossedAngles[] = {{0, 2}, {9, 1}};
    const ZmoiPolar noNumber[] = {{0, 0}, {9, nan}};
    kit::expectBadArguments(zmoiHoughLine_Region_8u32f_C1R,
                            {{4, {crossed, crossedAngles, noNumber}, zmoStsRangeErr},
                             {5, {ZmoiPolar{0, 1}, ZmoiPolar{1, -1}}, zmoStsRangeErr},
                             {6, -1, zmoStsThresholdErr},
                             {7, 0, zmoStsRangeErr},
                             {5, ZmoiPolar{1e-9F, 1}, zmoStsTooLargeErr}},
                            src, lines.withoutStep(), size, &good[0], ZmoiPolar{1, 1}, 0, 10,
                            &count, buffer);
    kit::expectBadArguments(zmoiHoughLine_RegionGetBufferSize,
                            {{2, ZmoiPolar{1, 0}, zmoStsRangeErr},
                             {3, 0, zmoStsRangeErr},
                             {4, zmo16u, zmoStsDataTypeErr},
                             {5, 3, zmoStsChannelsErr},
                             {3, INT32_MAX, zmoStsTooLargeErr},
                             {0, ZmoiSize{65536, 32768}, zmoStsTooLargeErr}},
                            size, &good[0], ZmoiPolar{1, 1}, 10, zmo8u, 1, &count);
}

}  // namespace
