// Canny edges from derivatives, of large images too, and of a picture.
#include <array>
#include <cmath>
#include <limits>

#include "kit.h"
#include "oracle/canny.h"
#include "oracle/mask.h"
#include "zmocv.h"

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();

template <class T, class Step = int, class Size = ZmoiSize>
using CannyFunction = ZmoStatus (*)(const T*, Step, const T*, Step, Zmo8u*, Step, Size, Zmo32f,
                                    Zmo32f, ZmoiNorm, Zmo8u*);
template <class T>
constexpr CannyFunction<T> cannyOf = nullptr;
template <>
constexpr CannyFunction<Zmo16s> cannyOf<Zmo16s> = zmoiCanny_16s8u_C1R;
template <>
constexpr CannyFunction<Zmo32f> cannyOf<Zmo32f> = zmoiCanny_32f8u_C1R;
template <class T>
constexpr CannyFunction<T, int64_t, ZmoiSizeL> largeCannyOf = nullptr;
template <>
constexpr CannyFunction<Zmo16s, int64_t, ZmoiSizeL> largeCannyOf<Zmo16s> = zmoiCanny_16s8u_C1R_L;
template <>
constexpr CannyFunction<Zmo32f, int64_t, ZmoiSizeL> largeCannyOf<Zmo32f> = zmoiCanny_32f8u_C1R_L;

// Both forms, which give the same.
template <class T>
kit::Image<Zmo8u> runCanny(const kit::Image<T>& dx, const kit::Image<T>& dy, kit::Layout layout,
                           float low, float high, ZmoiNorm norm) {
    const auto run = [&](auto function, auto query, auto size, auto roi) {
        EXPECT_EQ(query(roi, &size), zmoStsNoErr);
        kit::Buffer buffer(static_cast<int>(size), layout.misalign);
        kit::Image<Zmo8u> dst(dx.size(), layout);
        kit::succeed([&] {
            return function(dx.ptr(), dx.step(), dy.ptr(), dy.step(), dst.ptr(), dst.step(), roi,
                            low, high, norm, buffer.ptr());
        });
        dst.expectSurroundingsUntouched("destination");
        buffer.expectSurroundingsUntouched();
        return dst;
    };
    const auto edges = run(cannyOf<T>, zmoiCannyGetSize, int(), dx.size());
    EXPECT_TRUE(kit::samePixels(run(largeCannyOf<T>, zmoiCannyGetSize_L, int64_t(),
                                    ZmoiSizeL{dx.size().width, dx.size().height}),
                                edges));
    return edges;
}

// Compares with the oracle; returns the number of edge pixels.
template <class T>
int expectOracleHere(const kit::Image<T>& dx, const kit::Image<T>& dy, kit::Layout layout,
                     float low, float high, ZmoiNorm norm) {
    SCOPED_TRACE(testing::Message() << dx.size() << " " << layout << " low " << low << " high "
                                    << high << " norm " << norm);
    const oracle::Canny<T> expected(dx, dy, low, high, norm);
    kit::expectPixels(runCanny(dx, dy, layout, low, high, norm),
                      [&](int x, int y) { return expected.edges().get(x, y); });
    dx.expectUntouched("dx");
    dy.expectUntouched("dy");
    return expected.count();
}

// The same at every level.
template <class T>
int expectOracle(const kit::Image<T>& dx, const kit::Image<T>& dy, float low, float high,
                 ZmoiNorm norm) {
    int count = 0;
    kit::forEachLevel([&] { count = expectOracleHere(dx, dy, {}, low, high, norm); });
    return count;
}

// The edges found with both norms in images of all sizes and layouts.
template <class T, class Draw>
std::array<int, 2> expectOracleEverywhere(Draw draw, float low, float high) {
    std::array<int, 2> edges{};
    kit::forEachCase(20, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t) {
        kit::Image<T> dx(size, layout);
        kit::Image<T> dy(size, {layout.misalign + 1, layout.padding + 2});
        dx.fill([&] { return draw(random); });
        dy.fill([&] { return draw(random); });
        edges[0] += expectOracleHere(dx, dy, layout, low, high, zmoiNormL1);
        edges[1] += expectOracleHere(dx, dy, layout, low, high, zmoiNormL2);
    });
    return edges;
}

template <class T>
void expectThresholdsAndNormAct() {
    const auto edges = [](float low, float high) {
        const auto draw = [](kit::Random& random) { return random.uniform(-500, 500); };
        return expectOracleEverywhere<T>(draw, low, high);
    };
    const auto both = edges(200, 400), strongOnly = edges(400, 400), weakToo = edges(200, 200);
    EXPECT_NE(both[0], both[1]);
    for (const size_t norm : {size_t{0}, size_t{1}})
        EXPECT_TRUE(strongOnly[norm] < both[norm] && both[norm] < weakToo[norm]);
}

TEST(Canny, RandomGradients) {
    expectThresholdsAndNormAct<Zmo16s>();
    expectThresholdsAndNormAct<Zmo32f>();
}

// Values from a few sizes, so that ties and thresholds are hit exactly.
TEST(Canny, TiesAndExtremeValues) {
    const auto few = [](kit::Random& random) { return random.between(-3, 3); };
    EXPECT_GT(expectOracleEverywhere<Zmo16s>(few, 3, 4)[1], 0);
    EXPECT_GT(expectOracleEverywhere<Zmo32f>(few, 3, 4)[1], 0);
    const auto extreme = [](kit::Random& random) { return random.between(0, 1) * 65535 - 32768; };
    EXPECT_GT(expectOracleEverywhere<Zmo16s>(extreme, 46339, 46340)[1], 0);
    const auto large = [](kit::Random& random) { return random.uniform(-1e18, 1e18); };
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
            expectOracle(dx, dy, 0, 0, zmoiNormL2);
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

// A line that winds over the whole image with one seed at its start: an edge is followed to the end,
// and a limit on passes or depth would cut it.
TEST(Canny, FollowsAChainToItsEnd) {
    const ZmoiSize size{81, 81};
    kit::Image<Zmo32f> dx(size);
    kit::Image<Zmo32f> dy(size);
    dx.fill([] { return 0; });
    dy.fill([] { return 0; });
    // The gradient stands across the line, so that its pixels are maxima.
    for (int y = 0; y < size.height; ++y) {
        if (y % 2 != 0) {
            dx.set(y % 4 == 1 ? size.width - 1 : 0, y, 10);
        } else {
            for (int x = 0; x < size.width; ++x) dy.set(x, y, 10);
        }
    }
    dx.snapshot();
    dy.snapshot();
    EXPECT_EQ(expectOracle(dx, dy, 5, 20, zmoiNormL2), 0);
    dy.set(0, 0, 30);
    dy.snapshot();
    EXPECT_GT(expectOracle(dx, dy, 5, 20, zmoiNormL2), 3200);
}

// Thresholds far outside the range of the sizes select all maxima or none, without a flag.
template <class T, class Draw>
void expectThresholds(Draw draw, float aboveAll) {
    kit::Image<T> dx({40, 20});
    kit::Image<T> dy({40, 20});
    dx.fill(draw);
    dy.fill(draw);
    for (const ZmoiNorm norm : {zmoiNormL1, zmoiNormL2}) {
        const int all = expectOracle(dx, dy, 0, 0, norm);
        EXPECT_GT(all, 0);
        EXPECT_EQ(expectOracle(dx, dy, 1e-30F, 1e-20F, norm), all);
        EXPECT_EQ(expectOracle(dx, dy, 1e-20F, aboveAll, norm), 0);
        EXPECT_EQ(expectOracle(dx, dy, 1e-20F, largest, norm), 0);
        EXPECT_EQ(expectOracle(dx, dy, largest, infinity, norm), 0);
    }
}

TEST(Canny, ExtremeThresholds) {
    kit::Random random(25);
    expectThresholds<Zmo16s>([&] { return random.between(-32768, 32767); }, 65537);
    expectThresholds<Zmo32f>([&] { return random.uniform(-10, 10); }, 20.1F);
}

template <class T, class Step, class Size>
void expectCannyFaults(CannyFunction<T, Step, Size> function) {
    kit::Image<T> dx({16, 5});
    kit::Image<T> dy({16, 5});
    kit::Image<Zmo8u> dst({16, 5});
    dx.fill([] { return 4; });
    dy.fill([] { return 5; });
    kit::Buffer buffer(4096);
    using kit::bad;
    constexpr Step row = 16 * sizeof(T);
    kit::expectBadArguments(
        function,
        {dx.ptr(), row, dy.ptr(), row, dst.ptr(), 16, {16, 5}, 10, 20, zmoiNormL1, buffer.ptr()},
        {bad<1>(row - 1, zmoStsStepErr), bad<1>(row + 1, zmoStsStepErr),
         bad<3>(-row, zmoStsStepErr), bad<3>(row + 1, zmoStsStepErr), bad<5>(15, zmoStsStepErr),
         bad<7>(-1.0F, zmoStsThresholdErr), bad<7>(21.0F, zmoStsThresholdErr),
         bad<7>(nan, zmoStsThresholdErr), bad<8>(nan, zmoStsThresholdErr),
         bad<9>(static_cast<ZmoiNorm>(2), zmoStsNormErr)},
        [&] { dst.expectUntouched("destination"), buffer.expectUntouched(); });
    // A region beyond the size query is refused before anything is touched.
    constexpr Step most = std::numeric_limits<Step>::max() / 8;
    EXPECT_EQ(function(dx.ptr(), most - most % 4, dy.ptr(), most - most % 4, dst.ptr(), most,
                       {most / 4, most / 4}, 10, 20, zmoiNormL1, buffer.ptr()),
              zmoStsTooLargeErr);
}

template <class Int, class Size>
void expectSizeQuery(ZmoStatus (*query)(Size, Int*)) {
    constexpr auto most = std::numeric_limits<Int>::max();
    Int size = -5;
    EXPECT_EQ(query({0, 4}, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(query({0, 4}, &size), zmoStsSizeErr);
    EXPECT_EQ(query({4, -1}, &size), zmoStsSizeErr);
    EXPECT_EQ(query({most, most}, &size), zmoStsTooLargeErr);
    EXPECT_EQ(size, -5);
    ASSERT_EQ(query({1, 1}, &size), zmoStsNoErr);
    EXPECT_GE(size, 64);
}

TEST(Canny, BadArguments) {
    expectCannyFaults(cannyOf<Zmo16s>);
    expectCannyFaults(cannyOf<Zmo32f>);
    expectCannyFaults(largeCannyOf<Zmo16s>);
    expectCannyFaults(largeCannyOf<Zmo32f>);
    expectSizeQuery(zmoiCannyGetSize);
    expectSizeQuery(zmoiCannyGetSize_L);
}

// All rows, then two of them with a step that needs more than 32 bits.
TEST(Canny, ImageBeyondTwoGigabytes) {
    kit::FarRows farDx;
    kit::FarRows farDy;
    kit::FarRows farDst;
    if (!farDx || !farDy || !farDst) GTEST_SKIP() << kit::FarRows::whyNot;
    kit::Random random(26);
    kit::Image<Zmo16s> dx({40, kit::FarRows::count});
    kit::Image<Zmo16s> dy(dx.size());
    kit::Image<Zmo8u> dst(dx.size());
    farDx.take(dx.fill([&] { return random.between(-500, 500); }));
    farDy.take(dy.fill([&] { return random.between(-500, 500); }));
    kit::Buffer buffer(1 << 14);
    for (const int rows : {1, 4}) {
        const auto find = [&](const Zmo16s* alongX, int64_t dxStep, const Zmo16s* alongY,
                              int64_t dyStep, Zmo8u* edges, int64_t dstStep) {
            const int height = rows == 1 ? kit::FarRows::count : 2;
            kit::succeed([&] {
                return largeCannyOf<Zmo16s>(alongX, rows * dxStep, alongY, rows * dyStep, edges,
                                            rows * dstStep, {40, height}, 200, 400, zmoiNormL2,
                                            buffer.ptr());
            });
        };
        constexpr int64_t far = kit::FarRows::step;
        find(dx.ptr(), dx.step(), dy.ptr(), dy.step(), dst.ptr(), dst.step());
        find(farDx.first<Zmo16s>(), far, farDy.first<Zmo16s>(), far, farDst.first<Zmo8u>(), far);
        farDst.expect(dst);
    }
}

// ---- Canny edges of a picture

struct PictureArgs {
    const Zmo8u* pSrc;
    int srcStep;
    Zmo8u* pDst;
    int dstStep;
    ZmoiSize roi;
    int kernel;
    int mask;
    float low;
    float high;
    int norm;
    int border;
    const Zmo8u* pValue;
    Zmo8u* pBuffer;
};

ZmoStatus cannyBorder(const PictureArgs& a) {
    return zmoiCannyBorder_8u_C1R(
        a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, static_cast<ZmoiDifferentialKernel>(a.kernel),
        static_cast<ZmoiMaskSize>(a.mask), a.low, a.high, static_cast<ZmoiNorm>(a.norm),
        static_cast<ZmoiBorderType>(a.border), a.pValue, a.pBuffer);
}

kit::Image<Zmo8u> edgesOf(PictureArgs a, kit::Layout layout = {}) {
    int size = 0;
    const auto mask = static_cast<ZmoiMaskSize>(a.mask);
    EXPECT_EQ(zmoiCannyBorderGetBufferSize(a.roi, mask, zmo8u, 1, &size), zmoStsNoErr);
    kit::Image<Zmo8u> dst(a.roi, layout);
    kit::Buffer buffer(size, layout.misalign);
    a.pDst = dst.ptr();
    a.dstStep = dst.step();
    a.pBuffer = buffer.ptr();
    kit::succeed([&] { return cannyBorder(a); });
    dst.expectSurroundingsUntouched("edges");
    buffer.expectSurroundingsUntouched();
    return dst;
}

kit::Image<Zmo16s> derived(const kit::Image<Zmo8u>& src, ZmoiBorderType border, Zmo8u value,
                           int size, oracle::Mask mask) {
    const oracle::Extended<Zmo8u> picture{src, border, value};
    kit::Image<Zmo16s> image(src.size());
    for (int y = 0; y < src.size().height; ++y) {
        for (int x = 0; x < src.size().width; ++x) {
            image.set(x, y, static_cast<Zmo16s>(oracle::mask(picture, x, y, size / 2, mask)));
        }
    }
    image.snapshot();
    return image;
}

// The edges that the oracle finds from the derivatives by their definition.
TEST(CannyBorder, EdgesOfItsDerivatives) {
    using oracle::Mask;
    static constexpr struct {
        int kernel;
        int size;
        Mask vert;
        Mask horiz;
    } masks[] = {{0, 3, Mask::vert, Mask::horiz},
                 {0, 5, Mask::vert, Mask::horiz},
                 {1, 3, Mask::scharrVert, Mask::scharrHoriz}};
    kit::forEachCase(27, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        kit::Image<Zmo8u> src(size, layout, 2);
        const int step = turn % 2 == 0 ? 255 : 1;
        src.fill([&] { return random.between(0, 255 / step) * step; });
        const Zmo8u value = static_cast<Zmo8u>(random.between(0, 255));
        const auto& mask = masks[turn % 3];
        const float low = mask.size == 5 ? 1500 : 200;
        for (int i = 0; i < 8; i += 3) {
            const auto norm = static_cast<ZmoiNorm>(i / 4);
            const auto border = static_cast<ZmoiBorderType>((turn + static_cast<size_t>(i)) % 4);
            const auto dx = derived(src, border, value, mask.size, mask.vert);
            const auto dy = derived(src, border, value, mask.size, mask.horiz);
            const oracle::Canny<Zmo16s> expected(dx, dy, low, 2 * low, norm);
            kit::expectPixels(edgesOf({src.ptr(), src.step(), nullptr, 0, size, mask.kernel,
                                       mask.size, low, 2 * low, norm, border, &value, nullptr},
                                      layout),
                              [&](int x, int y) { return expected.edges().get(x, y); });
        }
        src.expectUntouched("picture");
    });
}

TEST(CannyBorder, EachArgumentMattersAndIsChecked) {
    kit::Random random(28);
    const ZmoiSize roi{30, 30};
    kit::Image<Zmo8u> src(roi, {}, 2);
    src.fill([&] { return random.between(0, 255); });
    kit::Image<Zmo8u> dst(roi);
    kit::Buffer buffer(1 << 14);
    const Zmo8u values[] = {77, 240};
    using A = PictureArgs;
    const A good{src.ptr(), src.step(), dst.ptr(), dst.step(), roi,        0,           3,
                 300,       600,        0,         1,          &values[0], buffer.ptr()};
    kit::expectEachMatters<A>(
        good, [](const A& a) { return edgesOf(a); },
        {[](A& a) { a.kernel = 1; }, [](A& a) { a.mask = 5; }, [](A& a) { a.low = 100; },
         [](A& a) { a.high = 900; }, [](A& a) { a.norm = 1; }, [](A& a) { a.border = 0; },
         [](A& a) { a.border = 2; }, [](A& a) { a.border = 3; }, [](A& a) { ++a.pValue; }});
    kit::expectFaults<A>(
        good, cannyBorder,
        {{"null picture", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
         {"null edges", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
         {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }},
         {"null value", zmoStsNullPtrErr, [](A& a) { a.pValue = nullptr, a.border = 1; }},
         {"width", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
         {"picture step", zmoStsStepErr, [](A& a) { a.srcStep = 29; }},
         {"edges step", zmoStsStepErr, [](A& a) { a.dstStep = 29; }},
         {"kernel", zmoStsFlagErr, [](A& a) { a.kernel = 2; }},
         {"Scharr 5x5", zmoStsMaskSizeErr, [](A& a) { a.kernel |= 1, a.mask = 5; }},
         {"mask", zmoStsMaskSizeErr, [](A& a) { a.mask = 7; }},
         {"low", zmoStsThresholdErr, [](A& a) { a.low = 601; }},
         {"high no number", zmoStsThresholdErr, [](A& a) { a.high = nan; }},
         {"norm", zmoStsNormErr, [](A& a) { a.norm = 2; }},
         {"border", zmoStsBorderErr, [](A& a) { a.border = 4; }}},
        [&] { dst.expectUntouched("edges"), buffer.expectUntouched(); });

    const auto query = zmoiCannyBorderGetBufferSize;
    constexpr auto mask7 = static_cast<ZmoiMaskSize>(7);
    int size = -1;
    EXPECT_EQ(query({0, 4}, mask7, zmo8u, 1, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(query({0, 4}, mask7, zmo8u, 1, &size), zmoStsSizeErr);
    EXPECT_EQ(query({4, 4}, mask7, zmo16s, 1, &size), zmoStsMaskSizeErr);
    EXPECT_EQ(query({4, 4}, zmoiMask5x5, zmo16s, 3, &size), zmoStsDataTypeErr);
    EXPECT_EQ(query({4, 4}, zmoiMask5x5, zmo8u, 3, &size), zmoStsChannelsErr);
    EXPECT_EQ(query({1 << 20, 1 << 20}, zmoiMask5x5, zmo8u, 1, &size), zmoStsTooLargeErr);
    EXPECT_EQ(size, -1);
}

}  // namespace
