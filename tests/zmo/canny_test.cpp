#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "kit.h"
#include "oracle/canny.h"
#include "zmocv.h"

namespace {

template <class T>
ZmoStatus (*const cannyOf)(const T*, int, const T*, int, Zmo8u*, int, ZmoiSize, Zmo32f, Zmo32f,
                           ZmoiNorm, Zmo8u*) = nullptr;
template <>
constexpr auto* cannyOf<Zmo16s> = zmoiCanny_16s8u_C1R;
template <>
constexpr auto* cannyOf<Zmo32f> = zmoiCanny_32f8u_C1R;

template <class T>
kit::Image<Zmo8u> runCanny(const kit::Image<T>& dx, const kit::Image<T>& dy, kit::Layout layout,
                           float low, float high, ZmoiNorm norm) {
    int size = 0;
    EXPECT_EQ(zmoiCannyGetSize(dx.size(), &size), zmoStsNoErr);
    kit::Buffer buffer(size, layout.misalign);
    kit::Image<Zmo8u> dst(dx.size(), layout);
    kit::succeed([&] {
        return cannyOf<T>(dx.ptr(), dx.step(), dy.ptr(), dy.step(), dst.ptr(), dst.step(),
                          dx.size(), low, high, norm, buffer.ptr());
    });
    dst.expectSurroundingsUntouched("destination");
    buffer.expectSurroundingsUntouched();
    return dst;
}

// Compares every level with the oracle; returns the number of edge pixels.
template <class T>
int expectOracle(const kit::Image<T>& dx, const kit::Image<T>& dy, kit::Layout layout, float low,
                 float high, ZmoiNorm norm) {
    SCOPED_TRACE(testing::Message() << dx.size() << " " << layout << " low " << low << " high "
                                    << high << " norm " << norm);
    const oracle::Canny<T> expected(dx, dy, low, high, norm);
    kit::forEachLevel([&] {
        const kit::Image<Zmo8u> dst = runCanny(dx, dy, layout, low, high, norm);
        kit::expectPixels(dst, [&](int x, int y) { return expected.edges().get(x, y); });
    });
    dx.expectUntouched("dx");
    dy.expectUntouched("dy");
    return expected.count();
}

// The edges found with both norms in images of all sizes and layouts.
template <class T, class Draw>
std::array<int, 2> expectOracleEverywhere(Draw draw, float low, float high) {
    std::array<int, 2> edges{};
    for (const ZmoiSize size : kit::sizes()) {
        for (const kit::Layout layout : kit::layouts()) {
            kit::Image<T> dx(size, layout);
            kit::Image<T> dy(size, {layout.misalign + 1, layout.padding + 2});
            dx.fill(draw);
            dy.fill(draw);
            edges[0] += expectOracle(dx, dy, layout, low, high, zmoiNormL1);
            edges[1] += expectOracle(dx, dy, layout, low, high, zmoiNormL2);
        }
    }
    return edges;
}

template <class T>
void expectThresholdsAndNormAct() {
    const auto edges = [](float low, float high) {
        kit::Random random(20);
        return expectOracleEverywhere<T>([&] { return random.uniform(-500, 500); }, low, high);
    };
    const auto both = edges(200, 400), strongOnly = edges(400, 400), weakToo = edges(200, 200);
    EXPECT_NE(both[0], both[1]);
    for (int norm : {0, 1})
        EXPECT_TRUE(strongOnly[norm] < both[norm] && both[norm] < weakToo[norm]);
}

TEST(Canny, RandomGradients) {
    expectThresholdsAndNormAct<Zmo16s>();
    expectThresholdsAndNormAct<Zmo32f>();
}

// Values from a few sizes, so that ties, sector bounds and thresholds are hit exactly.
TEST(Canny, TiesAndExtremeValues) {
    kit::Random random(21);
    const auto few = [&] { return random.between(-3, 3); };
    EXPECT_GT(expectOracleEverywhere<Zmo16s>(few, 3, 4)[1], 0);
    EXPECT_GT(expectOracleEverywhere<Zmo32f>(few, 3, 4)[1], 0);
    const auto extreme = [&] { return random.between(0, 1) == 0 ? -32768 : 32767; };
    EXPECT_GT(expectOracleEverywhere<Zmo16s>(extreme, 46339, 46340)[1], 0);
    const auto large = [&] { return static_cast<float>(random.uniform(-1e18, 1e18)); };
    EXPECT_GT(expectOracleEverywhere<Zmo32f>(large, 1e17F, 8e17F)[1], 0);
}

// A pixel between two strong neighbours of one diagonal is an edge as long as its gradient counts as
// lying along an axis.
template <class T>
void expectSectorBound(T along, T onBound, T beyond) {
    for (const bool alongX : {true, false}) {
        for (const T across : {onBound, beyond}) {
            kit::Image<T> dx({3, 3});
            kit::Image<T> dy({3, 3});
            dx.fill([] { return 0; });
            dy.fill([] { return 0; });
            // along is negative and across positive: the rising diagonal is theirs.
            dx.set(1, 1, alongX ? along : across);
            dy.set(1, 1, alongX ? across : along);
            for (const int x : {0, 2}) {
                dx.set(x, 2 - x, along);
                dy.set(x, 2 - x, along);
            }
            dx.snapshot();
            dy.snapshot();
            expectOracle(dx, dy, {}, 0, 0, zmoiNormL2);
            const kit::Image<Zmo8u> edges = runCanny(dx, dy, {}, 0, 0, zmoiNormL2);
            EXPECT_EQ(edges.get(1, 1), across == onBound ? 255 : 0) << "along x: " << alongX;
        }
    }
}

TEST(Canny, SectorBounds) {
    expectSectorBound<Zmo16s>(-32768, 13573, 13574);
    expectSectorBound<Zmo32f>(-1, 0.41421356F, std::nextafter(0.41421356F, 1.0F));
    expectSectorBound<Zmo32f>(-3e8F, 3e8F * 0.41421356F, std::nextafter(3e8F * 0.41421356F, 1e9F));
}

// A spiral of candidates with one seed at its inner end: an edge is followed over the whole image, and
// a limit on passes or depth would cut it.
TEST(Canny, FollowsAChainToItsEnd) {
    const ZmoiSize size{201, 201};
    kit::Image<Zmo32f> dx(size);
    kit::Image<Zmo32f> dy(size);
    dx.fill([] { return 0; });
    dy.fill([] { return 0; });
    int x = 0, y = 0, stepX = 1, stepY = 0;
    const auto inside = [&](int i, int j) {
        return i >= 0 && j >= 0 && i < size.width && j < size.height;
    };
    // Each side is walked until the next pixel but one is taken.
    const auto blocked = [&] {
        const int i = x + 2 * stepX, j = y + 2 * stepY;
        return !inside(x + stepX, y + stepY) ||
               (inside(i, j) && (dx.get(i, j) != 0 || dy.get(i, j) != 0));
    };
    // The gradient stands across the line, so every pixel of the line is a maximum.
    const auto mark = [&](float strength) {
        dx.set(x, y, stepX != 0 ? 0 : strength);
        dy.set(x, y, stepX != 0 ? strength : 0);
    };
    mark(10);
    int length = 1;
    for (int turns = 0; turns < 2;) {
        if (blocked()) {
            stepX = -std::exchange(stepY, stepX);
            ++turns;
            continue;
        }
        turns = 0;
        x += stepX;
        y += stepY;
        ++length;
        mark(10);
    }
    ASSERT_GT(length, 15000);
    dx.snapshot();
    dy.snapshot();
    EXPECT_EQ(expectOracle(dx, dy, {}, 5, 20, zmoiNormL2), 0);
    mark(30);
    const kit::Image<Zmo8u> edges = runCanny(dx, dy, {}, 5, 20, zmoiNormL2);
    int found = 0;
    for (int i = 0; i < size.width * size.height; ++i)
        found += edges.get(i % size.width, i / size.width) == 255;
    // Where the line turns, a pixel of the other direction may be suppressed; the chain stays whole.
    EXPECT_GT(found, length * 97 / 100);
    EXPECT_EQ(edges.get(0, 0), 255);
}

// Thresholds far outside the range of the sizes select all maxima or none, without a flag.
template <class T>
void expectAllOrNone(int64_t range, float over) {
    kit::Random random(25);
    kit::Image<T> dx({40, 20});
    kit::Image<T> dy({40, 20});
    dx.fill([&] { return random.between(-range, range); });
    dy.fill([&] { return random.between(-range, range); });
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float largest = std::numeric_limits<float>::max();
    for (const ZmoiNorm norm : {zmoiNormL1, zmoiNormL2}) {
        const int all = expectOracle(dx, dy, {}, 0, 0, norm);
        EXPECT_GT(all, 0);
        EXPECT_EQ(expectOracle(dx, dy, {}, 1e-30F, 1e-20F, norm), all);
        EXPECT_EQ(expectOracle(dx, dy, {}, 1e-20F, over, norm), 0);
        EXPECT_EQ(expectOracle(dx, dy, {}, over, largest, norm), 0);
        EXPECT_EQ(expectOracle(dx, dy, {}, largest, infinity, norm), 0);
    }
}

TEST(Canny, ExtremeThresholds) {
    expectAllOrNone<Zmo16s>(32767, 65536);
    expectAllOrNone<Zmo32f>(10, 3e9F);
}

template <class T>
void expectCannyFaults() {
    struct Args {
        const T* pSrc;
        int srcStep;
        const T* pSrc2;
        int src2Step;
        Zmo8u* pDst;
        int dstStep;
        ZmoiSize roi;
        float low;
        float high;
        ZmoiNorm norm;
        Zmo8u* pBuffer;
    };
    const ZmoiSize roi{16, 5};
    kit::Image<T> dx(roi);
    kit::Image<T> dy(roi);
    kit::Image<Zmo8u> dst(roi);
    dx.fill([] { return 4; });
    dy.fill([] { return 5; });
    int size = 0;
    ASSERT_EQ(zmoiCannyGetSize(roi, &size), zmoStsNoErr);
    kit::Buffer buffer(size);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr int element = sizeof(T);
    kit::expectFaults(
        Args{dx.ptr(), dx.step(), dy.ptr(), dy.step(), dst.ptr(), dst.step(), roi, 10, 20,
             zmoiNormL1, buffer.ptr()},
        [](const Args& a) {
            return cannyOf<T>(a.pSrc, a.srcStep, a.pSrc2, a.src2Step, a.pDst, a.dstStep, a.roi,
                              a.low, a.high, a.norm, a.pBuffer);
        },
        {{"null dx", zmoStsNullPtrErr, [](Args& a) { a.pSrc = nullptr; }},
         {"null dy", zmoStsNullPtrErr, [](Args& a) { a.pSrc2 = nullptr; }},
         {"null destination", zmoStsNullPtrErr, [](Args& a) { a.pDst = nullptr; }},
         {"null buffer", zmoStsNullPtrErr, [](Args& a) { a.pBuffer = nullptr; }},
         {"width", zmoStsSizeErr, [](Args& a) { a.roi.width = 0; }},
         {"height", zmoStsSizeErr, [](Args& a) { a.roi.height = -2; }},
         {"dx step", zmoStsStepErr, [](Args& a) { a.srcStep = 15 * element; }},
         {"odd dx step", zmoStsStepErr, [](Args& a) { a.srcStep = 16 * element + 1; }},
         {"dy step", zmoStsStepErr, [](Args& a) { a.src2Step = -16 * element; }},
         {"odd dy step", zmoStsStepErr, [](Args& a) { a.src2Step = 17 * element - 1; }},
         {"destination step", zmoStsStepErr, [](Args& a) { a.dstStep = 15; }},
         {"negative low", zmoStsThresholdErr, [](Args& a) { a.low = -1; }},
         {"low above high", zmoStsThresholdErr, [](Args& a) { a.low = 21; }},
         {"low no number", zmoStsThresholdErr, [](Args& a) { a.low = nan; }},
         {"high no number", zmoStsThresholdErr, [](Args& a) { a.high = nan; }},
         {"norm", zmoStsNormErr, [](Args& a) { a.norm = static_cast<ZmoiNorm>(2); }}},
        [&] {
            dst.expectUntouched("destination");
            buffer.expectUntouched();
        });
    // A region beyond the size query is refused before anything is touched.
    EXPECT_EQ(cannyOf<T>(dx.ptr(), 4 << 20, dy.ptr(), 4 << 20, dst.ptr(), 1 << 20,
                         {1 << 20, 1 << 20}, 10, 20, zmoiNormL1, buffer.ptr()),
              zmoStsTooLargeErr);
}

TEST(Canny, BadArguments) {
    expectCannyFaults<Zmo16s>();
    expectCannyFaults<Zmo32f>();
}

TEST(Canny, SizeQuery) {
    int size = -5;
    EXPECT_EQ(zmoiCannyGetSize({0, 4}, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(zmoiCannyGetSize({0, 4}, &size), zmoStsSizeErr);
    EXPECT_EQ(zmoiCannyGetSize({4, -1}, &size), zmoStsSizeErr);
    EXPECT_EQ(zmoiCannyGetSize({2147483647, 2147483647}, &size), zmoStsTooLargeErr);
    EXPECT_EQ(size, -5);
    ASSERT_EQ(zmoiCannyGetSize({1, 1}, &size), zmoStsNoErr);
    EXPECT_GE(size, 64);
}

}  // namespace
