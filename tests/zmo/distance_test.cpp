#include <algorithm>
#include <cmath>

#include "call.h"
#include "zmocv.h"

namespace {

constexpr double unreached = std::numeric_limits<double>::infinity();

// Lengths of the shortest paths to the zero pixels, found by trying all steps until nothing changes.
template <class Metric>
kit::Image<double> chamferLengths(const kit::Image<Zmo8u>& src, const std::vector<Metric>& steps) {
    const ZmoiSize size = src.size();
    kit::Image<double> lengths(size);
    lengths.fill([&](int x, int y) { return src.get(x, y) == 0 ? 0 : unreached; });
    bool improved = true;
    const auto improve = [&](int x, int y) {
        for (int dy = -2; dy <= 2; ++dy) {
            for (int dx = -2; dx <= 2; ++dx) {
                // 1, 2 and 5 are the squared lengths of the three kinds of steps.
                const int square = dx * dx + dy * dy;
                const size_t kind = square == 1 ? 0 : square == 2 ? 1 : square == 5 ? 2 : 9;
                if (kind >= steps.size() || !kit::contains(size, x + dx, y + dy)) continue;
                const double length = lengths.get(x + dx, y + dy) + steps[kind];
                if (length >= lengths.get(x, y)) continue;
                lengths.set(x, y, length);
                improved = true;
            }
        }
    };
    while (improved) {
        improved = false;
        kit::forEachPixel(size, improve);
    }
    return lengths;
}

// Few zero pixels, and none, one or all in some images.
template <class Body>
void forEachSource(uint64_t stream, Body body) {
    kit::forEachTurn(
        stream, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int zeros = std::array{0, 1, 30, 1000}[(turn + turn / 4) % 4];
            kit::Image<Zmo8u> src(size, {layout.misalign + 3, layout.padding + 1});
            src.fill([&] { return random.between(0, 999) < zeros ? 0 : random.between(1, 255); });
            if (zeros == 1) src.set(static_cast<int>(random.between(0, size.width - 1)), 0, 0);
            body(src, layout, turn);
        });
}

template <class T, class Metric>
using Chamfer = ZmoStatus (*)(const Zmo8u*, int, T*, int, ZmoiSize, const Metric*);
using InPlace = ZmoStatus (*)(Zmo8u*, int, ZmoiSize, const Zmo32s*);

// The form in place, which only 8u has, gives the same.
template <class T, class Metric>
void expectShortestPaths(const char* name, Chamfer<T, Metric> function, InPlace inPlace,
                         const std::vector<std::vector<Metric>>& metrics) {
    SCOPED_TRACE(name);
    forEachSource(81, [&](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t turn) {
        const std::vector<Metric>& steps = metrics[turn % metrics.size()];
        const kit::Image<double> lengths = chamferLengths(src, steps);
        const auto dst = kit::atAllLevels([&] {
            kit::Image<T> result(src.size(), layout);
            kit::succeed(function, src, result, src.size(), steps.data());
            if constexpr (std::is_same_v<T, Zmo8u>) {
                kit::Image<T> image = src;
                kit::succeed(inPlace, image, src.size(), steps.data());
                kit::expectPixels(image, result);
            }
            return result;
        });
        kit::expectPixels(dst, [&](int x, int y) {
            return std::min<double>(lengths.get(x, y), std::numeric_limits<T>::max());
        });
    });
}

// The 32f lengths are sums of few quarters: exact.
TEST(Chamfer, ShortestPaths) {
    expectShortestPaths("3x3 8u", zmoiDistanceTransform_3x3_8u_C1R,
                        zmoiDistanceTransform_3x3_8u_C1IR,
                        {{3, 4}, {5, 7}, {100, 150}, {255, 300}});
    expectShortestPaths("5x5 8u", zmoiDistanceTransform_5x5_8u_C1R,
                        zmoiDistanceTransform_5x5_8u_C1IR,
                        {{3, 4, 7}, {5, 7, 11}, {100, 150, 220}, {255, 300, 700}});
    expectShortestPaths("3x3 16u", zmoiDistanceTransform_3x3_8u16u_C1R, nullptr,
                        {{5, 7}, {1000, 1400}, {40000, 60000}});
    expectShortestPaths("5x5 16u", zmoiDistanceTransform_5x5_8u16u_C1R, nullptr,
                        {{5, 7, 11}, {1000, 1400, 2200}, {40000, 60000, 90000}});
    expectShortestPaths("3x3 32f", zmoiDistanceTransform_3x3_8u32f_C1R, nullptr,
                        {{1, 1.25F}, {0.75F, 1}});
    expectShortestPaths("5x5 32f", zmoiDistanceTransform_5x5_8u32f_C1R, nullptr,
                        {{1, 1.25F, 2.25F}, {0.75F, 1, 1.75F}});
}

// With a work buffer of what the query tells; `own` are the function's own values.
template <class... P, class Query, class... Own>
kit::Image<Zmo32f> distances(ZmoStatus (*function)(P...), Query query, const kit::Image<Zmo8u>& src,
                             kit::Layout layout, Own... own) {
    return kit::atAllLevels([&] {
        kit::Image<Zmo32f> dst(src.size(), layout);
        kit::Buffer buffer = kit::bufferOf(query, src.size(), zmo8u, 1);
        kit::succeed(function, src, dst, src.size(), own..., buffer);
        return dst;
    });
}

TEST(TrueDistance, NearestZeroPixel) {
    forEachSource(83, [](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t) {
        std::vector<ZmoiPoint> zeros;
        kit::forEachPixel(src.size(), [&](int x, int y) {
            if (src.get(x, y) == 0) zeros.push_back({x, y});
        });
        const auto dst = distances(zmoiTrueDistanceTransform_8u32f_C1R,
                                   zmoiTrueDistanceTransformGetBufferSize, src, layout);
        kit::expectPixels(dst, [&](int x, int y) {
            int64_t least = INT64_MAX;
            for (const ZmoiPoint p : zeros) {
                const int64_t dx = x - p.x;
                const int64_t dy = y - p.y;
                least = std::min(least, dx * dx + dy * dy);
            }
            return zeros.empty() ? double{std::numeric_limits<float>::max()}
                                 : std::sqrt(static_cast<double>(least));
        });
    });
}

// Each arrival time solves the equation with those of its neighbours, in double precision.
TEST(FastMarching, TimesSolveTheEquation) {
    forEachSource(84, [](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t turn) {
        const float radius = turn % 2 == 0 ? 4.5F : 1000;
        const auto dst = distances(zmoiFastMarching_8u32f_C1R, zmoiFastMarchingGetBufferSize, src,
                                   layout, radius);
        const auto at = [&](int x, int y) {
            const bool isReached = kit::contains(src.size(), x, y) && dst.get(x, y) < radius;
            return isReached ? double{dst.get(x, y)} : unreached;
        };
        double worst = 0;
        kit::forEachPixel(src.size(), [&](int x, int y) {
            const double a = std::min(at(x - 1, y), at(x + 1, y));
            const double b = std::min(at(x, y - 1), at(x, y + 1));
            const double near = std::min(a, b);
            double want = near + 1;
            if (near != unreached && std::fabs(a - b) < 1) {
                want = (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2;
            }
            want = src.get(x, y) == 0 ? 0 : std::min<double>(want, radius);
            worst = std::max(worst, std::fabs(want - double{dst.get(x, y)}));
        });
        EXPECT_LT(worst, 2e-4);
    });
}

// Each metric must be positive. dst: nothing, or the image of the lengths.
template <class Metric, class... P, class... Dst>
void expectBadMetrics(size_t metrics, ZmoStatus (*function)(P...), Dst... dst) {
    const Metric rows[][3] = {{2, 2, 2}, {0, 2, 2}, {2, 0, 2}, {2, 2, 0}};
    kit::Image<Zmo8u> src({12, 4});
    src.fill([] { return 3; });
    std::vector<kit::Wrong> wrong;
    for (size_t i = 1; i <= metrics; ++i) {
        wrong.push_back({sizeof...(P) - 1, &rows[i][0], zmoStsRangeErr});
    }
    kit::expectBadArguments(function, wrong, src, dst..., src.size(), &rows[0][0]);
}

TEST(Distance, BadArguments) {
    kit::Image<Zmo8u> src({12, 4});
    kit::Image<Zmo16u> dst16u(src.size());
    kit::Image<Zmo32f> dst(src.size());
    kit::Buffer buffer(4096);
    expectBadMetrics<Zmo32s>(2, zmoiDistanceTransform_3x3_8u_C1R, src);
    expectBadMetrics<Zmo32s>(3, zmoiDistanceTransform_5x5_8u_C1R, src);
    expectBadMetrics<Zmo32s>(2, zmoiDistanceTransform_3x3_8u_C1IR);
    expectBadMetrics<Zmo32s>(3, zmoiDistanceTransform_5x5_8u_C1IR);
    expectBadMetrics<Zmo32s>(2, zmoiDistanceTransform_3x3_8u16u_C1R, dst16u);
    expectBadMetrics<Zmo32s>(3, zmoiDistanceTransform_5x5_8u16u_C1R, dst16u);
    expectBadMetrics<Zmo32f>(2, zmoiDistanceTransform_3x3_8u32f_C1R, dst);
    expectBadMetrics<Zmo32f>(3, zmoiDistanceTransform_5x5_8u32f_C1R, dst);
    kit::expectBadArguments(zmoiTrueDistanceTransform_8u32f_C1R, {}, src, dst, src.size(), buffer);
    kit::expectBadArguments(zmoiFastMarching_8u32f_C1R, {{5, 0, zmoStsRangeErr}}, src, dst,
                            src.size(), 2, buffer);
}

}  // namespace
