#include <cmath>

#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

const std::vector<kit::Function> functions = {
    ZMO(zmoiSegmentWatershed_8u_C1IR), ZMO(zmoiSegmentWatershed_8u16u_C1IR),
    ZMO(zmoiSegmentWatershed_32f16u_C1IR), ZMO(zmoiSegmentGradient_8u_C1IR),
    ZMO(zmoiSegmentGradient_8u_C3IR)};

// The others grow segments from pixel to pixel.
bool floods(const kit::Function& function) {
    return function.isNamed("Watershed");
}

kit::Case caseOf(const kit::Function& function, const kit::Turn& t, int connectivity,
                 int drawLines) {
    return kit::Case(function, t, {{"pSrcDst", {}, 0, 1}})
        .with({{"connectivity", connectivity}, {"drawLines", drawLines}})
        .sized(floods(function) ? ZMO(zmoiSegmentWatershedGetBufferSize)
                                : ZMO(zmoiSegmentGradientGetBufferSize));
}

// A pixel that waits to get the label of the one that offered it.
struct Waiting {
    double level;
    ZmoiPoint at;
    double label;
};

// Segments by the definition: all that waits stands in one list, of one level the earliest first.
kit::Image expectedSegments(const kit::Case& c, int connectivity, bool drawLines) {
    const bool flood = floods(c.function());
    const bool lines = drawLines && flood;
    const kit::Image src = c.src().numbers();
    kit::Image segments = c.dst().numbers();
    const auto isLabel = [&](double v) { return v != 0 && !(lines && v == c.dst().most()); };
    std::vector<Waiting> list;
    const auto offer = [&](ZmoiPoint from, double level) {
        oracle::forEachNeighbour(c.roi(), from.x, from.y, connectivity, [&](int x, int y) {
            if (segments(x, y) != 0) return;
            double next = flood ? std::max(level, src(x, y)) : 0;
            for (int k = 0; !flood && k < src.channels(); ++k) {
                next = std::max(next, std::fabs(src(x, y, k) - src(from.x, from.y, k)));
            }
            const auto waits = std::ranges::find_if(
                list, [&](const Waiting& w) { return w.at.x == x && w.at.y == y; });
            if (waits != list.end()) {
                if (flood || next >= waits->level) return;
                list.erase(waits);
            }
            list.push_back({next, {x, y}, segments(from.x, from.y)});
        });
    };
    kit::forEachPixel(c.roi(), [&](int x, int y) {
        if (isLabel(segments(x, y))) offer({x, y}, -HUGE_VAL);
    });
    while (!list.empty()) {
        const auto first = std::ranges::min_element(list, {}, &Waiting::level);
        const Waiting w = *first;
        list.erase(first);
        bool line = false;
        oracle::forEachNeighbour(c.roi(), w.at.x, w.at.y, connectivity, [&](int x, int y) {
            line |= lines && isLabel(segments(x, y)) && segments(x, y) != w.label;
        });
        segments.set(w.at.x, w.at.y, line ? c.dst().most() : w.label);
        if (!line) offer(w.at, w.level);
    }
    return segments;
}

double drawn(kit::Random& random, const kit::Image& src, bool few) {
    constexpr double values[] = {0, -0.0, 1, -1.5, 3e38, -HUGE_VAL, HUGE_VAL, 1e-30};
    if (!src.isWhole()) return few ? values[random.between(0, 7)] : random.uniform(-1e6, 1e6);
    return few ? 85 * random.between(0, 3) : random.between(0, 255);
}

// Few markers, many, none, and all; labels at both ends of their range.
TEST(Segment, Oracle) {
    kit::forEachCase({101, 4}, functions, [](kit::Turn& t, const auto& function) {
        const int density = std::array{0, 5, 100, 1000}[(t.number + t.number / 4) % 4];
        const int connectivity = t.number % 3 == 0 ? 8 : 4;
        const int drawLines = std::array{6, 7, 0, 0, 0}[t.number % 5];
        kit::Case c = caseOf(function, t, connectivity, drawLines);
        c.src().fill([&] { return drawn(t, c.src(), t.number % 2 == 0); });
        c.dst().fill([&] {
            const double label = t.pick<double>({1, 2, 200, c.dst().most()});
            return t.between(0, 999) < density ? label : 0;
        });
        if (density > 0) c.dst().set(t.size.width / 2, t.size.height / 2, 1);
        return c.want(expectedSegments(c, connectivity, drawLines != 0));
    });
}

// Where a relief is not a number the order is left open, but it is the same everywhere.
TEST(Segment, ReliefThatIsNotANumber) {
    kit::Turn t(102, {33, 9});
    kit::Case c = caseOf(functions[2], t, 4, 0);
    c.src().fill([&] { return t.between(0, 2) ? t.uniform(-1, 1) : NAN; });
    c.dst().fill([&] { return t.between(0, 20) ? 0 : t.between(1, 9); });
    kit::expectSameAtAllLevels(c);
}

TEST(Segment, BadArguments) {
    const kit::Turn t(103, {12, 4});
    for (const auto& function : functions) caseOf(function, t, 4, 1).expectBadArguments();
}

}  // namespace
