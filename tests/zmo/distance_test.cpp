#include <cfloat>
#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

constexpr double unreached = std::numeric_limits<double>::infinity();

// Lengths of the shortest paths to the zero pixels, found by trying all steps until nothing
// changes.
kit::Image chamferLengths(const kit::Image& src, const std::vector<double>& steps) {
    const ZmoiSize size = src.size();
    kit::Image lengths(size, [&](int x, int y) { return src(x, y) == 0 ? 0 : unreached; });
    bool improved = true;
    const auto improve = [&](int x, int y) {
        for (int dy = -2; dy <= 2; ++dy) {
            for (int dx = -2; dx <= 2; ++dx) {
                // 1, 2 and 5 are the squared lengths of the three kinds of steps.
                const int square = dx * dx + dy * dy;
                const size_t kind = square == 1 ? 0 : square == 2 ? 1 : square == 5 ? 2 : 9;
                if (kind >= steps.size() || !kit::contains(size, x + dx, y + dy)) continue;
                const double length = lengths(x + dx, y + dy) + steps[kind];
                if (length >= lengths(x, y)) continue;
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
void drawSource(kit::Turn& t, kit::Image& src) {
    const int zeros = std::array{0, 1, 30, 1000}[(t.number + t.number / 4) % 4];
    src.fill([&] { return t.between(0, 999) < zeros ? 0 : t.between(1, 255); });
    if (zeros == 1) src.set(t.between(0, src.size().width - 1), 0, 0);
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

TEST(Chamfer, ShortestPaths) {
    kit::forEachCase({81, 4}, rows, [](kit::Turn& t, const Row& row) {
        const auto& metrics = row.metrics[t.number % row.metrics.size()];
        kit::Case c(row.function, t);
        drawSource(t, c.src());
        const kit::Image lengths = chamferLengths(c.src(), metrics);
        const double most = c.dst().isWhole() ? c.dst().most() : double{FLT_MAX};
        return c.with("pMetrics", metrics).want([&](int x, int y) {
            return std::min(lengths(x, y), most);
        });
    });
}

kit::Case trueDistance(const kit::Turn& t) {
    return kit::Case(ZMO(zmoiTrueDistanceTransform_8u32f_C1R), t)
        .sized(ZMO(zmoiTrueDistanceTransformGetBufferSize));
}
kit::Case fastMarching(const kit::Turn& t, double radius) {
    return kit::Case(ZMO(zmoiFastMarching_8u32f_C1R), t)
        .with("radius", radius)
        .sized(ZMO(zmoiFastMarchingGetBufferSize));
}

TEST(TrueDistance, NearestZeroPixel) {
    kit::forEachCase({83, 4}, 1, [](kit::Turn& t, size_t) {
        kit::Case c = trueDistance(t);
        drawSource(t, c.src());
        std::vector<ZmoiPoint> zeros;
        kit::forEachPixel(t.size, [&](int x, int y) {
            if (c.src()(x, y) == 0) zeros.push_back({x, y});
        });
        return c.want([&](int x, int y) {
            double least = unreached;
            for (const ZmoiPoint p : zeros) least = std::min(least, std::hypot(x - p.x, y - p.y));
            return std::min(least, double{FLT_MAX});
        });
    });
}

// Each arrival time solves the equation with those of its neighbours, in double precision.
TEST(FastMarching, TimesSolveTheEquation) {
    kit::forEachCase({84, 4}, 1, [](kit::Turn& t, size_t) {
        const double radius = t.number % 2 == 0 ? 4.5 : 1000;
        kit::Case c = fastMarching(t, radius);
        drawSource(t, c.src());
        const kit::Image times = c.tried();
        const auto at = [&](int x, int y) {
            const bool isReached = kit::contains(t.size, x, y) && times(x, y) < radius;
            return isReached ? times(x, y) : unreached;
        };
        double worst = 0;
        kit::forEachPixel(t.size, [&](int x, int y) {
            const double a = std::min(at(x - 1, y), at(x + 1, y));
            const double b = std::min(at(x, y - 1), at(x, y + 1));
            const double near = std::min(a, b);
            double want = near + 1;
            if (near != unreached && std::fabs(a - b) < 1) {
                want = (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2;
            }
            want = c.src()(x, y) == 0 ? 0 : std::min(want, radius);
            worst = std::max(worst, std::fabs(want - times(x, y)));
        });
        EXPECT_LT(worst, 2e-4) << c.text();
        // So they are at the level in use, and the others give the same.
        return c.want(times);
    });
}

TEST(Distance, BadArguments) {
    for (const Row& row : rows) {
        const std::vector<double> good(row.metrics[0].size(), 2);
        std::vector<kit::Wrong> wrong;
        for (size_t i = 0; i < good.size(); ++i) {
            auto bad = good;
            bad[i] = 0;
            wrong.push_back({"pMetrics", bad, zmoStsRangeErr});
        }
        kit::Case(row.function).with("pMetrics", good).expectBadArguments(wrong);
    }
    trueDistance(kit::Turn(85, {12, 4})).expectBadArguments();
    fastMarching(kit::Turn(86, {12, 4}), 2).expectBadArguments({{"radius", 0, zmoStsRangeErr}});
}

}  // namespace
