#include <algorithm>
#include <cmath>

#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

struct Row {
    kit::Function function;
    double lowest = 0;
    double highest = 1;

    bool dilates() const { return function.isNamed("Dilate"); }
    // What neither limits nor grows, and what does.
    double far() const { return dilates() ? lowest : highest; }
    double near() const { return dilates() ? highest : lowest; }
};

#define ROWS(type, lowest, highest)                                         \
    {ZMO(zmoiMorphReconstructErode_##type##_C1IR_Copy), lowest, highest}, { \
        ZMO(zmoiMorphReconstructDilate_##type##_C1IR_Copy), lowest, highest \
    }

const std::vector<Row> rows = {ROWS(8u, 0, 255), ROWS(16u, 0, 65535), ROWS(32f, -10, 10),
                               ROWS(64f, -1e9, 1e9)};

kit::Case caseOf(const Row& row, ZmoiSize size, kit::Layout layout, int connectivity) {
    return kit::Case(row.function, size, layout)
        .with("connectivity", connectivity)
        .sized(ZMO(zmoiMorphReconstructGetBufferSize));
}

// The definition: one step of every pixel at a time, until nothing changes.
kit::Image<double> definition(const Row& row, const kit::Case& c, int connectivity) {
    // Erosion is dilation of what is turned upside down.
    const double sign = row.dilates() ? 1 : -1;
    const auto upright = [&](size_t image) {
        kit::Image<double> made(c.roi());
        made.fill([&](int x, int y) { return sign * c.image(image).get(x, y); });
        return made;
    };
    const kit::Image<double> limit = upright(0);
    kit::Image<double> want = upright(1);
    kit::forEachPixel(
        c.roi(), [&](int x, int y) { want.set(x, y, std::min(want.get(x, y), limit.get(x, y))); });
    for (bool changes = true; changes;) {
        const kit::Image<double> before = want;
        changes = false;
        kit::forEachPixel(c.roi(), [&](int x, int y) {
            double value = before.get(x, y);
            oracle::forEachNeighbour(c.roi(), x, y, connectivity, [&](int i, int j) {
                value = std::max(value, before.get(i, j));
            });
            value = std::min(value, limit.get(x, y));
            changes |= value != before.get(x, y);
            want.set(x, y, value);
        });
    }
    want.fill([&](int x, int y) { return sign * want.get(x, y); });
    return want;
}

// Smooth hills, noise, and walls with a gap at either end, through which only the queue finds its way.
TEST(Reconstruct, Oracle) {
    kit::forEachCase(
        {67, 4}, rows,
        [](auto& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int connectivity = turn / 2 % 2 == 0 ? 4 : 8;
            const size_t kind = turn % 3;
            kit::Case c = caseOf(row, size, layout, connectivity);
            const auto noise = [&] { return random.uniform(row.lowest, row.highest); };
            c.image("pSrc").fill([&](int x, int y) {
                const bool wall = x % 4 == 1 && y != (x % 8 == 1 ? 0 : size.height - 1);
                const double hill = 0.5 + 0.5 * std::sin(x * 0.7) * std::cos(y * 0.9);
                if (kind == 0) return noise();
                if (kind == 1) return row.lowest + hill * (row.highest - row.lowest);
                return wall ? row.far() : row.near();
            });
            c.image("pSrc2").fill([&](int x, int y) {
                if (kind == 0) return noise();
                return random.between(0, 99) == 0 || x + y == 0 ? row.near() : row.far();
            });
            const kit::Image<double> want = definition(row, c, connectivity);
            return c.want("pSrcDst", [&](int x, int y) { return want.get(x, y); });
        });
}

// With not-a-numbers the work ends, with the same bits at all levels.
TEST(Reconstruct, NotANumber) {
    kit::Random random(68);
    for (const Row& row : rows) {
        if (!row.function.isNamed("32f")) continue;
        kit::Case c = caseOf(row, {40, 30}, {}, 8);
        const auto draw = [&] {
            return random.between(0, 9) == 0   ? NAN
                   : random.between(0, 9) == 0 ? HUGE_VAL
                                               : random.uniform(0, 1);
        };
        c.fillAll(draw, draw);
        kit::expectSameAtAllLevels(c);
    }
}

// One marker fills a corridor of many bends, to its far end.
TEST(Reconstruct, FollowsACorridorThroughTheWholeImage) {
    constexpr int side = 129;
    kit::Case c = caseOf(rows[1], {side, side}, {}, 4);
    const auto corridor = [](int x, int y) {
        return x % 2 == 0 || y == (x % 4 == 1 ? 0 : side - 1) ? 255 : 0;
    };
    c.image("pSrc").fill(corridor);
    c.image("pSrc2").fill([](int x, int y) { return x + y == 0 ? 255 : 0; });
    kit::expectAtAllLevels(c.want("pSrcDst", corridor));
}

TEST(Reconstruct, BadArguments) {
    for (const Row& row : rows) caseOf(row, {9, 4}, {}, 4).expectBadArguments();
}

}  // namespace
