#include <algorithm>
#include <vector>

#include "kit.h"
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
    kit::Image<Zmo8u> scores(src.size(), {}, 1);
    scores.fill([] { return 0; });
    for (int y = 0; y < src.size().height; ++y) {
        for (int x = 0; x < src.size().width; ++x) {
            const int score = scoreAt(src, x, y, n);
            scores.set(x, y, static_cast<Zmo8u>(score > threshold ? score : 0));
        }
    }
    kit::Image<Zmo8u> map = scores;
    for (int y = 0; suppress && y < src.size().height; ++y) {
        for (int x = 0; x < src.size().width; ++x) {
            for (int i = 0; i < 9; ++i) {
                const int other = scores.get(x + i % 3 - 1, y + i / 3 - 1);
                if (i != 4 && other + (i < 4 ? 1 : 0) > scores.get(x, y)) map.set(x, y, 0);
            }
        }
    }
    return map;
}

// Overlapping blocks of few greys, flat or noisy: arcs of all lengths, and equal scores.
kit::Image<Zmo8u> blocks(kit::Random& random, ZmoiSize size, kit::Layout layout, int64_t noise) {
    kit::Image<Zmo8u> image(size, layout);
    image.fill([] { return 90; });
    for (int i = 0; i < size.width * size.height / 12; ++i) {
        const int left = static_cast<int>(random.between(0, size.width - 1));
        const int top = static_cast<int>(random.between(0, size.height - 1));
        const int side = static_cast<int>(random.between(1, 5));
        const int grey = std::array{0, 90, 110, 246}[static_cast<size_t>(random.between(0, 3))];
        for (int y = top; y < std::min(size.height, top + side); ++y) {
            for (int x = left; x < std::min(size.width, left + side); ++x) {
                image.set(x, y, static_cast<Zmo8u>(grey + random.between(0, noise)));
            }
        }
    }
    image.snapshot();
    return image;
}

// The list has so much room, or all that it needs.
void expectList(const kit::Image<Zmo8u>& map, int room) {
    std::vector<int> places;
    for (int y = 0; y < map.size().height; ++y) {
        for (int x = 0; x < map.size().width; ++x) {
            if (map.get(x, y) != 0) places.insert(places.end(), {x, y});
        }
    }
    const int all = static_cast<int>(places.size() / 2);
    if (room == 0) room = std::max(1, all);
    kit::Image<Zmo32s> list({2 * std::min(room, all) + 2, 1}, {1, 0});
    list.fill([] { return -7; });
    places.resize(static_cast<size_t>(list.size().width) - 2);
    places.insert(places.end(), {-7, -7});
    int found = -1;
    EXPECT_EQ(zmoiFastN2DToVec_8u(map.ptr(), map.step(), reinterpret_cast<ZmoiPoint*>(list.ptr()),
                                  map.size(), room, &found),
              all > room ? zmoStsTruncated : zmoStsNoErr);
    EXPECT_EQ(found, std::min(room, all));
    kit::expectPixels(list, [&](int i, int) { return places[static_cast<size_t>(i)]; });
}

TEST(FastN, Oracle) {
    std::array<int, 17> found{};
    kit::forEachCase(101, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        const int n = 9 + static_cast<int>(turn % 8);
        const int threshold = std::array{0, 15, 100, 155, 255}[turn % 5];
        const bool suppress = turn / 2 % 2 == 0;
        size = {size.width + 6, size.height + 6};  // of which a corner may lie in the given size
        const kit::Image<Zmo8u> src = blocks(random, size, layout, turn % 3 == 0 ? 9 : 0);
        const kit::Image<Zmo8u> expected = expectedMap(src, n, threshold, suppress);
        int bytes = 0;
        EXPECT_EQ(zmoiFastNGetBufferSize(size, zmo8u, 1, &bytes), zmoStsNoErr);
        kit::Buffer buffer(bytes);
        kit::Image<Zmo8u> dst(size, layout);
        int count = -1;
        kit::succeed([&] {
            return zmoiFastN_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), size, n,
                                    threshold, suppress, &count, buffer.ptr());
        });
        kit::expectPixels(dst, [&](int x, int y) {
            count -= dst.get(x, y) != 0;
            found[static_cast<size_t>(n)] += dst.get(x, y) != 0;
            return expected.get(x, y);
        });
        EXPECT_EQ(count, 0);
        dst.expectSurroundingsUntouched("scores");
        buffer.expectSurroundingsUntouched();
        for (const int room : {0, 1, 7}) expectList(dst, room);
    });
    EXPECT_GT(*std::min_element(found.begin() + 9, found.end()), 20);
}

TEST(FastN, BadArguments) {
    kit::Image<Zmo8u> src({12, 9});
    kit::Image<Zmo8u> dst({12, 9});
    src.fill([] { return 3; });
    kit::Buffer buffer(4096);
    ZmoiPoint list[12 * 9];
    int count = -1;
    const auto untouched = [&] {
        dst.expectUntouched("scores");
        buffer.expectUntouched();
        EXPECT_EQ(count, -1);
    };
    kit::expectBadArguments(
        zmoiFastN_8u_C1R, {src.ptr(), 12, dst.ptr(), 12, {12, 9}, 9, 0, 1, &count, buffer.ptr()},
        {kit::bad<1>(11, zmoStsStepErr), kit::bad<3>(-12, zmoStsStepErr),
         kit::bad<5>(8, zmoStsRangeErr), kit::bad<5>(17, zmoStsRangeErr),
         kit::bad<6>(-1, zmoStsThresholdErr), kit::bad<6>(256, zmoStsThresholdErr)},
        untouched);
    count = -1;
    dst.snapshot();
    buffer.snapshot();
    kit::expectBadArguments(zmoiFastN2DToVec_8u, {src.ptr(), 12, list, {12, 9}, 108, &count},
                            {kit::bad<1>(11, zmoStsStepErr), kit::bad<4>(0, zmoStsRangeErr)},
                            untouched);
    count = -1;
    kit::expectBadArguments(
        zmoiFastNGetBufferSize, {{12, 9}, zmo8u, 1, &count},
        {kit::bad<1>(zmo16u, zmoStsDataTypeErr), kit::bad<2>(3, zmoStsChannelsErr),
         kit::bad<0>(ZmoiSize{INT32_MAX, 1}, zmoStsTooLargeErr)},
        untouched);
}

}  // namespace
