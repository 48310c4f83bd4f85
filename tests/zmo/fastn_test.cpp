#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

// Tries all arcs and both signs.
double scoreAt(const kit::Image& src, int x, int y, int n) {
    constexpr int circle[16][2] = {{0, -3}, {1, -3},  {2, -2},  {3, -1}, {3, 0},  {3, 1},
                                   {2, 2},  {1, 3},   {0, 3},   {-1, 3}, {-2, 2}, {-3, 1},
                                   {-3, 0}, {-3, -1}, {-2, -2}, {-1, -3}};
    const ZmoiSize size = src.size();
    if (x < 3 || y < 3 || x >= size.width - 3 || y >= size.height - 3) return 0;
    double best = 0;
    for (const int sign : {1, -1}) {
        for (int first = 0; first < 16; ++first) {
            double least = 255;
            for (int k = first; k < first + n; ++k) {
                const int* const at = circle[k % 16];
                least = std::min(least, sign * (src(x + at[0], y + at[1]) - src(x, y)));
            }
            best = std::max(best, least);
        }
    }
    return best;
}

kit::Image expectedMap(const kit::Image& src, int n, int threshold, bool suppress) {
    const kit::Image scores(src.size(), [&](int x, int y) {
        const double score = scoreAt(src, x, y, n);
        return score > threshold ? score : 0;
    });
    kit::Image map = scores;
    kit::forEachPixel(suppress ? src.size() : ZmoiSize{}, [&](int x, int y) {
        oracle::forEachNeighbour(src.size(), x, y, 8, [&](int i, int j) {
            const bool earlier = j < y || (j == y && i < x);
            if (scores(i, j) + earlier > scores(x, y)) map.set(x, y, 0);
        });
    });
    return map;
}

// Blocks of few greys, flat or noisy: arcs of all lengths, and equal scores.
void drawBlocks(kit::Turn& t, kit::Image& image) {
    const int side = std::array{1, 2, 4}[t.number % 3];
    const ZmoiSize grid{t.size.width / side + 1, t.size.height / side + 1};
    const kit::Image greys(grid, [&] { return t.between(0, 2) ? 90 : t.pick<int>({0, 110, 246}); });
    image.fill([&](int x, int y) {
        return greys(x / side, y / side) + (t.number % 2 == 0 ? t.between(0, 9) : 0);
    });
}

const kit::Function function = ZMO(zmoiFastN_8u_C1R);

TEST(FastN, Oracle) {
    std::array<int, 17> found{};
    kit::forEachCase({101, 4}, 1, [&](kit::Turn& t, size_t) {
        const int n = 9 + static_cast<int>(t.number % 8);
        const int threshold = std::array{0, 15, 100, 155, 255}[t.number % 5];
        const bool suppress = t.number / 2 % 2 == 0;
        // Of which a corner may lie in the given size.
        t.size = {t.size.width + 6, t.size.height + 6};
        kit::Case c(function, t);
        drawBlocks(t, c.src());
        const kit::Image map = expectedMap(c.src(), n, threshold, suppress);
        std::vector<ZmoiPoint> corners;
        kit::forEachPixel(t.size, [&](int x, int y) {
            if (map(x, y) != 0) corners.push_back({x, y});
        });
        const int all = static_cast<int>(corners.size());
        found[static_cast<size_t>(n)] += all;
        // Of the list a part may find room.
        for (const int room : {1, 7, std::max(all, 1)}) {
            kit::Case list(ZMO(zmoiFastN2DToVec_8u), t);
            list.src().fill(map);
            kit::expectAtAllLevels(list.with("maxCorners", room).wantList("pList", corners, room));
        }
        return c.with({{"n", n}, {"threshold", threshold}, {"suppress", suppress}})
            .sized(ZMO(zmoiFastNGetBufferSize))
            .wantResult("pCount", all)
            .want(map);
    });
    EXPECT_TRUE(kit::sanitized || *std::min_element(found.begin() + 9, found.end()) > 20);
}

TEST(FastN, BadArguments) {
    kit::Case(function, kit::Turn(102, {12, 9}))
        .with({{"n", 9}, {"threshold", 0}, {"suppress", 1}})
        .sized(ZMO(zmoiFastNGetBufferSize))
        .expectBadArguments(
            {{"n", {8, 17}, zmoStsRangeErr}, {"threshold", {-1, 256}, zmoStsThresholdErr}});
    kit::Case(ZMO(zmoiFastN2DToVec_8u), kit::Turn(103, {12, 9}))
        .with("maxCorners", 108)
        .give("pList", kit::Buffer(108 * sizeof(ZmoiPoint)))
        .expectBadArguments({{"maxCorners", 0, zmoStsRangeErr}});
}

}  // namespace
