#include <algorithm>
#include <vector>

#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

// Tries all arcs and both signs.
int scoreAt(const kit::Image<Zmo8u>& src, int x, int y, int n) {
    constexpr int circle[16][2] = {{0, -3}, {1, -3},  {2, -2},  {3, -1}, {3, 0},  {3, 1},
                                   {2, 2},  {1, 3},   {0, 3},   {-1, 3}, {-2, 2}, {-3, 1},
                                   {-3, 0}, {-3, -1}, {-2, -2}, {-1, -3}};
    const ZmoiSize size = src.size();
    if (x < 3 || y < 3 || x >= size.width - 3 || y >= size.height - 3) return 0;
    int best = 0;
    for (const int sign : {1, -1}) {
        for (int first = 0; first < 16; ++first) {
            int least = 255;
            for (int k = first; k < first + n; ++k) {
                const int* const at = circle[k % 16];
                least = std::min(least, sign * (src.get(x + at[0], y + at[1]) - src.get(x, y)));
            }
            best = std::max(best, least);
        }
    }
    return best;
}

kit::Image<Zmo8u> expectedMap(const kit::Image<Zmo8u>& src, int n, int threshold, bool suppress) {
    kit::Image<Zmo8u> scores(src.size());
    scores.fill([&](int x, int y) {
        const int score = scoreAt(src, x, y, n);
        return score > threshold ? score : 0;
    });
    kit::Image<Zmo8u> map = scores;
    kit::forEachPixel(suppress ? src.size() : ZmoiSize{}, [&](int x, int y) {
        oracle::forEachNeighbour(src.size(), x, y, 8, [&](int i, int j) {
            const bool earlier = j < y || (j == y && i < x);
            if (scores.get(i, j) + earlier > scores.get(x, y)) map.set(x, y, 0);
        });
    });
    return map;
}

// Blocks of few greys, flat or noisy: arcs of all lengths, and equal scores.
kit::Image<Zmo8u> blocks(kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
    const int side = std::array{1, 2, 4}[turn % 3];
    const ZmoiSize grid{size.width / side + 1, size.height / side + 1};
    kit::Image<Zmo8u> greys(grid);
    greys.fill([&] { return random.between(0, 2) ? 90 : random.pick<int>({0, 110, 246}); });
    kit::Image<Zmo8u> image(size, layout);
    image.fill([&](int x, int y) {
        return greys.get(x / side, y / side) + (turn % 2 == 0 ? random.between(0, 9) : 0);
    });
    return image;
}

const kit::Function function = ZMO(zmoiFastN_8u_C1R);

// The list of the corners of a map, of which a part may find room.
void expectList(kit::AnyImage map, const std::vector<ZmoiPoint>& corners, int room) {
    kit::Case c(ZMO(zmoiFastN2DToVec_8u), map.size(), {7, 16});
    c.src().fill([&](int x, int y) { return map.get(x, y); });
    kit::expectAtAllLevels(c.with("maxCorners", room).wantList("pList", corners, room));
}

TEST(FastN, Oracle) {
    std::array<int, 17> found{};
    kit::forEachCase({101, 4}, function,
                     [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
                         const int n = 9 + static_cast<int>(turn % 8);
                         const int threshold = std::array{0, 15, 100, 155, 255}[turn % 5];
                         const bool suppress = turn / 2 % 2 == 0;
                         size = {size.width + 6,
                                 size.height + 6};  // of which a corner may lie in the given size
                         kit::Case c(function, size, layout);
                         const kit::Image<Zmo8u> src = blocks(random, size, layout, turn);
                         c.src().fill([&](int x, int y) { return src.get(x, y); });
                         const kit::Image<Zmo8u> map = expectedMap(src, n, threshold, suppress);
                         std::vector<ZmoiPoint> corners;
                         kit::forEachPixel(size, [&](int x, int y) {
                             if (map.get(x, y) != 0) corners.push_back({x, y});
                         });
                         const int all = static_cast<int>(corners.size());
                         found[static_cast<size_t>(n)] += all;
                         for (const int room : {1, 7, std::max(all, 1)})
                             expectList(map, corners, room);
                         c.with({{"n", n}, {"threshold", threshold}, {"suppress", suppress}});
                         c.sized(ZMO(zmoiFastNGetBufferSize)).wantResult("pCount", all);
                         return c.want("pDst", [&](int x, int y) { return map.get(x, y); });
                     });
    EXPECT_GT(*std::min_element(found.begin() + 9, found.end()), kit::sanitized ? 0 : 20);
}

TEST(FastN, BadArguments) {
    kit::Case(function, {12, 9})
        .with({{"n", 9}, {"threshold", 0}, {"suppress", 1}})
        .sized(ZMO(zmoiFastNGetBufferSize))
        .expectBadArguments(
            {{"n", {8, 17}, zmoStsRangeErr}, {"threshold", {-1, 256}, zmoStsThresholdErr}});
    kit::Case(ZMO(zmoiFastN2DToVec_8u), {12, 9})
        .with("maxCorners", 108)
        .give("pList", kit::Buffer(108 * sizeof(ZmoiPoint)))
        .expectBadArguments({{"maxCorners", 0, zmoStsRangeErr}});
}

}  // namespace
