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

kit::Case caseOf(const Row& row, const kit::Turn& t, int connectivity) {
    return kit::Case(row.function, t)
        .with("connectivity", connectivity)
        .sized(ZMO(zmoiMorphReconstructGetBufferSize));
}

// The definition: one step of every pixel at a time, until nothing changes.
kit::Image definition(const Row& row, const kit::Case& c, int connectivity) {
    // Erosion is dilation of what is turned upside down.
    const double sign = row.dilates() ? 1 : -1;
    const auto upright = [&](size_t image) {
        return kit::Image(c.roi(), [&](int x, int y) { return sign * c.image(image)(x, y); });
    };
    const kit::Image limit = upright(0);
    kit::Image want = upright(1);
    kit::forEachPixel(c.roi(),
                      [&](int x, int y) { want.set(x, y, std::min(want(x, y), limit(x, y))); });
    for (bool changes = true; changes;) {
        const kit::Image before = want;
        changes = false;
        kit::forEachPixel(c.roi(), [&](int x, int y) {
            double value = before(x, y);
            oracle::forEachNeighbour(c.roi(), x, y, connectivity,
                                     [&](int i, int j) { value = std::max(value, before(i, j)); });
            value = std::min(value, limit(x, y));
            changes |= value != before(x, y);
            want.set(x, y, value);
        });
    }
    return want.fill([&](int x, int y) { return sign * want(x, y); });
}

// Smooth hills, noise, and walls with a gap at either end, through which only the queue finds its
// way.
TEST(Reconstruct, Oracle) {
    kit::forEachCase({67, 4}, rows, [](kit::Turn& t, const Row& row) {
        const int connectivity = t.number / 2 % 2 == 0 ? 4 : 8;
        const size_t kind = t.number % 3;
        kit::Case c = caseOf(row, t, connectivity);
        const auto noise = [&] { return t.uniform(row.lowest, row.highest); };
        c.image("pSrc").fill([&](int x, int y) {
            const bool wall = x % 4 == 1 && y != (x % 8 == 1 ? 0 : t.size.height - 1);
            const double hill = 0.5 + 0.5 * std::sin(x * 0.7) * std::cos(y * 0.9);
            if (kind == 0) return noise();
            if (kind == 1) return row.lowest + hill * (row.highest - row.lowest);
            return wall ? row.far() : row.near();
        });
        c.image("pSrc2").fill([&](int x, int y) {
            if (kind == 0) return noise();
            return t.between(0, 99) == 0 || x + y == 0 ? row.near() : row.far();
        });
        return c.want(definition(row, c, connectivity));
    });
}

// With not-a-numbers the work ends, with the same bits at all levels.
TEST(Reconstruct, NotANumber) {
    kit::Turn t(68, {40, 30});
    for (const Row& row : rows) {
        if (!row.function.isNamed("32f")) continue;
        kit::Case c = caseOf(row, t, 8);
        const auto draw = [&] {
            return t.between(0, 9) == 0 ? NAN : t.between(0, 9) == 0 ? HUGE_VAL : t.uniform(0, 1);
        };
        c.fillAll(draw, draw);
        kit::expectSameAtAllLevels(c);
    }
}

TEST(Reconstruct, BadArguments) {
    for (const Row& row : rows) caseOf(row, kit::Turn(70), 4).expectBadArguments();
}

}  // namespace
