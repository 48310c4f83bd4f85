#include <algorithm>
#include <cfloat>
#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

constexpr double unreached = std::numeric_limits<double>::infinity();

// Lengths of the shortest paths to the zero pixels, found by trying all steps until nothing changes.
kit::Image<double> chamferLengths(const kit::AnyImage& src, const std::vector<double>& steps) {
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
void drawSource(kit::AnyImage& src, kit::Random& random, size_t turn) {
    const int zeros = std::array{0, 1, 30, 1000}[(turn + turn / 4) % 4];
    src.fill([&] { return random.between(0, 999) < zeros ? 0 : random.between(1, 255); });
    const auto last = static_cast<int>(src.size().width) - 1;
    if (zeros == 1) src.set(static_cast<int>(random.between(0, last)), 0, 0, 0);
}

struct Row {
    kit::Function function;
    std::vector<std::vector<double>> metrics;
};

const std::vector<std::vector<double>> near8u = {{3, 4}, {5, 7}, {100, 150}, {255, 300}};
const std::vector<std::vector<double>> far8u = {
    {3, 4, 7}, {5, 7, 11}, {100, 150, 220}, {255, 300, 700}};
// The 32f lengths are sums of few quarters: exact.
const std::vector<Row> rows = {
    {ZMO(zmoiDistanceTransform_3x3_8u_C1R), near8u},
    {ZMO(zmoiDistanceTransform_5x5_8u_C1R), far8u},
    {ZMO(zmoiDistanceTransform_3x3_8u_C1IR), near8u},
    {ZMO(zmoiDistanceTransform_5x5_8u_C1IR), far8u},
    {ZMO(zmoiDistanceTransform_3x3_8u16u_C1R), {{5, 7}, {1000, 1400}, {40000, 60000}}},
    {ZMO(zmoiDistanceTransform_5x5_8u16u_C1R),
     {{5, 7, 11}, {1000, 1400, 2200}, {40000, 60000, 90000}}},
    {ZMO(zmoiDistanceTransform_3x3_8u32f_C1R), {{1, 1.25}, {0.75, 1}}},
    {ZMO(zmoiDistanceTransform_5x5_8u32f_C1R), {{1, 1.25, 2.25}, {0.75, 1, 1.75}}}};

// Of the type that the function takes.
kit::Buffer metricsOf(const kit::Function& function, const std::vector<double>& metrics) {
    kit::Buffer memory(static_cast<int64_t>(4 * metrics.size()), 0);
    for (size_t i = 0; i < metrics.size(); ++i) {
        const auto whole = static_cast<Zmo32s>(metrics[i]);
        const auto real = static_cast<Zmo32f>(metrics[i]);
        const void* const value =
            function.isNamed("32f") ? static_cast<const void*>(&real) : &whole;
        std::memcpy(memory.ptr() + 4 * i, value, 4);
    }
    return memory;
}

TEST(Chamfer, ShortestPaths) {
    kit::forEachCase(
        {81, 4}, rows,
        [](auto& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            const auto& metrics = row.metrics[turn % row.metrics.size()];
            kit::Case c(row.function, size, layout);
            c.give("pMetrics", metricsOf(row.function, metrics));
            drawSource(c.src(), random, turn);
            const kit::Image<double> lengths = chamferLengths(c.src(), metrics);
            const double most = c.dst().most() != 0 ? c.dst().most() : double{FLT_MAX};
            return c.want(c.targetName(),
                          [&](int x, int y) { return std::min(lengths.get(x, y), most); });
        });
}

kit::Case trueDistance(ZmoiSize size, kit::Layout layout = {}) {
    return kit::Case(ZMO(zmoiTrueDistanceTransform_8u32f_C1R), size, layout)
        .sized(ZMO(zmoiTrueDistanceTransformGetBufferSize));
}
kit::Case fastMarching(float radius, ZmoiSize size, kit::Layout layout = {}) {
    return kit::Case(ZMO(zmoiFastMarching_8u32f_C1R), size, layout)
        .with("radius", radius)
        .sized(ZMO(zmoiFastMarchingGetBufferSize));
}

TEST(TrueDistance, NearestZeroPixel) {
    kit::forEachCase({83, 4}, trueDistance({1, 1}).function(),
                     [](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
                         kit::Case c = trueDistance(size, layout);
                         drawSource(c.src(), random, turn);
                         std::vector<ZmoiPoint> zeros;
                         kit::forEachPixel(size, [&](int x, int y) {
                             if (c.src().get(x, y) == 0) zeros.push_back({x, y});
                         });
                         return c.want("pDst", [&](int x, int y) {
                             int64_t least = INT64_MAX;
                             for (const ZmoiPoint p : zeros) {
                                 const int64_t dx = x - p.x;
                                 const int64_t dy = y - p.y;
                                 least = std::min(least, dx * dx + dy * dy);
                             }
                             return zeros.empty() ? double{FLT_MAX}
                                                  : std::sqrt(static_cast<double>(least));
                         });
                     });
}

// Each arrival time solves the equation with those of its neighbours, in double precision.
TEST(FastMarching, TimesSolveTheEquation) {
    kit::forEachCase({84, 4}, fastMarching(1, {1, 1}).function(),
                     [](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
                         const float radius = turn % 2 == 0 ? 4.5F : 1000;
                         kit::Case c = fastMarching(radius, size, layout);
                         drawSource(c.src(), random, turn);
                         const kit::AnyImage times = c.tried();
                         const auto at = [&](int x, int y) {
                             const bool isReached =
                                 kit::contains(size, x, y) && times.get(x, y) < double{radius};
                             return isReached ? times.get(x, y) : unreached;
                         };
                         double worst = 0;
                         kit::forEachPixel(size, [&](int x, int y) {
                             const double a = std::min(at(x - 1, y), at(x + 1, y));
                             const double b = std::min(at(x, y - 1), at(x, y + 1));
                             const double near = std::min(a, b);
                             double want = near + 1;
                             if (near != unreached && std::fabs(a - b) < 1) {
                                 want = (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2;
                             }
                             want = c.src().get(x, y) == 0 ? 0 : std::min<double>(want, radius);
                             worst = std::max(worst, std::fabs(want - times.get(x, y)));
                         });
                         EXPECT_LT(worst, 2e-4) << c.text();
                         // So they are at the level in use, and the others give the same.
                         return c.want("pDst", [&](int x, int y) { return times.get(x, y); });
                     });
}

TEST(Distance, BadArguments) {
    for (const Row& row : rows) {
        std::vector<double> metrics(row.metrics[0].size(), 2);
        std::vector<kit::Buffer> bad;
        std::vector<kit::Wrong> wrong;
        for (size_t i = 0; i < metrics.size(); ++i) {
            auto one = metrics;
            one[i] = 0;
            bad.push_back(metricsOf(row.function, one));
        }
        for (kit::Buffer& one : bad) wrong.push_back({"pMetrics", one.ptr(), zmoStsRangeErr});
        kit::Case(row.function)
            .give("pMetrics", metricsOf(row.function, metrics))
            .expectBadArguments(wrong);
    }
    trueDistance({12, 4}).expectBadArguments();
    fastMarching(2, {12, 4}).expectBadArguments({{"radius", 0, zmoStsRangeErr}});
}

}  // namespace
