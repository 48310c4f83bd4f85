#include <cmath>

#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

struct Row {
    kit::Function function;
    // The values that occur, the first most often, and deltas of those that have a range.
    std::vector<double> values;
    std::vector<double> deltas = {};

    bool isRange() const { return function.isNamed("_Range"); }
    int connectivity() const { return function.isNamed("8Con") ? 8 : 4; }
};

const std::vector<double> bytes = {100, 101, 103, 0, 255};
const std::vector<double> byteDeltas = {0, 1, 2, 101, 255};
const std::vector<double> integers = {-7, 9, INT32_MIN, INT32_MAX};
// Sums of these are exact in float and in double alike.
const std::vector<double> floats = {1.5, 1.75, 2.5, -900, 0};
const std::vector<double> floatDeltas = {0, 0.25, 1, 1000};

#define ROWS(type, values, deltas)                                     \
    {ZMO(zmoiFloodFill_4Con_##type##_C1IR), values},                   \
        {ZMO(zmoiFloodFill_8Con_##type##_C1IR), values},               \
        {ZMO(zmoiFloodFill_Range4Con_##type##_C1IR), values, deltas},  \
        {ZMO(zmoiFloodFill_Range8Con_##type##_C1IR), values, deltas},  \
        {ZMO(zmoiFloodFill_Grad4Con_##type##_C1IR), values, deltas}, { \
        ZMO(zmoiFloodFill_Grad8Con_##type##_C1IR), values, deltas      \
    }

const std::vector<Row> rows = {ROWS(8u, bytes, byteDeltas),
                               ROWS(32f, floats, floatDeltas),
                               {ZMO(zmoiFloodFill_4Con_32s_C1IR), integers},
                               {ZMO(zmoiFloodFill_8Con_32s_C1IR), integers}};

kit::Case caseOf(const Row& row, const kit::Turn& t, ZmoiPoint seed, double value,
                 double minDelta = 1, double maxDelta = 1) {
    return kit::Case(row.function, t)
        .with({{"seed", seed}, {"value", value}, {"minDelta", minDelta}, {"maxDelta", maxDelta}})
        .sized(ZMO(zmoiFloodFillGetBufferSize));
}

// Few different values, so that regions branch, meet again and enclose others. The deltas differ,
// so that it matters in which direction a step is taken.
TEST(Flood, Oracle) {
    std::map<std::string, size_t> most;
    kit::forEachCase({61, 4}, rows, [&](kit::Turn& t, const Row& row) {
        const ZmoiPoint seed{t.between(0, t.size.width - 1), t.between(0, t.size.height - 1)};
        const double value = t.pick(row.values);
        const double minDelta = row.deltas.empty() ? 0 : t.pick(row.deltas);
        const double maxDelta = row.deltas.empty() ? 0 : t.pick(row.deltas);
        kit::Case c = caseOf(row, t, seed, value, minDelta, maxDelta);
        kit::Image& image = c.dst();
        image.fill([&] { return t.between(0, 2) ? row.values[0] : t.pick(row.values); });
        const double first = image(seed.x, seed.y);
        const auto joins = [&](ZmoiPoint p, ZmoiPoint q) {
            const double next = image(q.x, q.y);
            if (row.deltas.empty()) return next == first;
            const double from = row.isRange() ? first : image(p.x, p.y);
            return next >= from - minDelta && next <= from + maxDelta;
        };
        const auto pixels = oracle::reached(t.size, seed, row.connectivity(), joins);
        kit::Image after = image;
        ZmoiPoint low = seed;
        ZmoiPoint high = seed;
        for (const ZmoiPoint p : pixels) {
            after.set(p.x, p.y, value);
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
        size_t& largest = most[row.function.name()];
        largest = std::max(largest, pixels.size());
        c.wantResult("pRegion",
                     ZmoiFloodRegion{static_cast<double>(pixels.size()),
                                     {low.x, low.y, high.x - low.x + 1, high.y - low.y + 1},
                                     value});
        return c.want(after);
    });
    for (const auto& [name, size] : most) {
        EXPECT_GT(size, kit::sanitized ? 50U : 500U) << name << " was never given a large region";
    }
}

// No pixel equals one that is not a number, not even itself, but the seed belongs to its region.
TEST(Flood, SeedThatIsNotANumber) {
    for (const Row& row : rows) {
        if (row.values != floats) continue;
        kit::Case c = caseOf(row, kit::Turn(62, {9, 3}), {4, 1}, 7);
        c.dst().fill(NAN);
        c.want([](int x, int y) { return x == 4 && y == 1 ? 7 : NAN; });
        c.wantResult("pRegion", ZmoiFloodRegion{1, {4, 1, 1, 1}, 7});
        kit::expectSameAtAllLevels(c);
    }
}

TEST(Flood, BadArguments) {
    for (const Row& row : rows) {
        std::vector<kit::Wrong> wrong = {
            {"seed",
             {ZmoiPoint{-1, 1}, ZmoiPoint{12, 1}, ZmoiPoint{1, -1}, ZmoiPoint{1, 4}},
             zmoStsPointErr}};
        if (row.deltas == floatDeltas) {
            wrong.push_back({"minDelta", -1, zmoStsRangeErr});
            wrong.push_back({"maxDelta", NAN, zmoStsRangeErr});
        }
        kit::Case c = caseOf(row, kit::Turn(63, {12, 4}), {1, 1}, 9);
        c.expectBadArguments();
        // A larger region would hold the seeds.
        c.allowAnySize();
        c.expectBadArguments(wrong);
    }
}

}  // namespace
