#include <algorithm>
#include <vector>

#include "call.h"
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

TEST(FastN, Oracle) {
    std::array<int, 17> found{};
    kit::forEachCase(101, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        const int n = 9 + static_cast<int>(turn % 8);
        const int threshold = std::array{0, 15, 100, 155, 255}[turn % 5];
        const bool suppress = turn / 2 % 2 == 0;
        size = {size.width + 6, size.height + 6};  // of which a corner may lie in the given size
        const kit::Image<Zmo8u> src = blocks(random, size, layout, turn);
        const kit::Image<Zmo8u> expected = expectedMap(src, n, threshold, suppress);
        kit::Buffer buffer = kit::bufferOf(zmoiFastNGetBufferSize, size, zmo8u, 1);
        kit::Image<Zmo8u> dst(size, layout);
        int count = -1;
        kit::succeed(zmoiFastN_8u_C1R, src, dst, size, n, threshold, suppress, &count, buffer);
        std::vector<ZmoiPoint> corners;
        kit::expectPixels(dst, [&](int x, int y) {
            if (expected.get(x, y) != 0) corners.push_back({x, y});
            return expected.get(x, y);
        });
        const int all = static_cast<int>(corners.size());
        EXPECT_EQ(count, all);
        found[static_cast<size_t>(n)] += all;
        for (const int room : {1, 7, std::max(all, 1)}) {
            kit::expectList(corners, room, [&](ZmoiPoint* list, int* listed) {
                return zmoiFastN2DToVec_8u(dst.ptr(), dst.step(), list, size, room, listed);
            });
        }
    });
    EXPECT_GT(*std::min_element(found.begin() + 9, found.end()), 20);
}

TEST(FastN, BadArguments) {
    const ZmoiSize size{12, 9};
    kit::Image<Zmo8u> src(size);
    kit::Image<Zmo8u> dst(size);
    kit::Image<ZmoiPoint> list({12 * 9, 1});
    kit::Buffer buffer(4096);
    int count = -1;
    kit::expectBadArguments(zmoiFastN_8u_C1R,
                            {{5, {8, 17}, zmoStsRangeErr}, {6, {-1, 256}, zmoStsThresholdErr}}, src,
                            dst, size, 9, 0, 1, &count, buffer);
    kit::expectBadArguments(zmoiFastN2DToVec_8u, {{4, 0, zmoStsRangeErr}}, src, list.withoutStep(),
                            size, 108, &count);
}

}  // namespace
