// Canny edges from derivatives, of large images too, and of a picture.
#include <array>
#include <cmath>
#include <limits>

#include "call.h"
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
struct Forms {
    CannyFunction<T> usual;
    CannyFunction<T, int64_t, ZmoiSizeL> large;
};
template <class T>
constexpr Forms<T> forms = {};
template <>
constexpr Forms<Zmo16s> forms<Zmo16s> = {zmoiCanny_16s8u_C1R, zmoiCanny_16s8u_C1R_L};
template <>
constexpr Forms<Zmo32f> forms<Zmo32f> = {zmoiCanny_32f8u_C1R, zmoiCanny_32f8u_C1R_L};

// Both forms, which give the same.
template <class T>
kit::Image<Zmo8u> runCanny(const kit::Image<T>& dx, const kit::Image<T>& dy, kit::Layout layout,
                           float low, float high, ZmoiNorm norm) {
    const auto run = [&](auto function, auto size, auto roi) {
        kit::Buffer buffer(size, layout.misalign);
        kit::Image<Zmo8u> dst(dx.size(), layout);
        kit::succeed(function, dx, dy, dst, roi, low, high, norm, buffer);
        return dst;
    };
    const ZmoiSizeL roi{dx.size().width, dx.size().height};
    int size = 0;
    int64_t largeSize = 0;
    kit::succeed(zmoiCannyGetSize, dx.size(), &size);
    kit::succeed(zmoiCannyGetSize_L, roi, &largeSize);
    const auto edges = run(forms<T>.usual, size, dx.size());
    kit::expectPixels(run(forms<T>.large, largeSize, roi), edges);
    return edges;
}

// Compares with the oracle; returns the number of edge pixels.
template <class T>
int expectOracleHere(const kit::Image<T>& dx, const kit::Image<T>& dy, kit::Layout layout,
                     float low, float high, ZmoiNorm norm) {
    SCOPED_TRACE(testing::Message() << "low " << low << " high " << high << " norm " << norm);
    const oracle::Canny<T> expected(dx, dy, low, high, norm);
    kit::expectPixels(runCanny(dx, dy, layout, low, high, norm), expected.edges());
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

// In images of all sizes and layouts, with both norms.
template <class T, class Draw>
void expectOracleEverywhere(Draw draw, float low, float high) {
    int edges = 0;
    kit::forEachCase(20, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t) {
        kit::Image<T> dx(size, layout);
        kit::Image<T> dy(size, {layout.misalign + 1, layout.padding + 2});
        dx.fill([&] { return draw(random); });
        dy.fill([&] { return draw(random); });
        edges += expectOracleHere(dx, dy, layout, low, high, zmoiNormL1);
        edges += expectOracleHere(dx, dy, layout, low, high, zmoiNormL2);
    });
    EXPECT_GT(edges, 0);
}

// Any values, values from a few sizes, so that ties and thresholds are hit exactly, and the largest.
TEST(Canny, Oracle) {
    const auto any = [](kit::Random& random) { return random.uniform(-500, 500); };
    const auto few = [](kit::Random& random) { return random.between(-3, 3); };
    const auto ends = [](kit::Random& random) { return random.between(0, 1) * 65535 - 32768; };
    const auto large = [](kit::Random& random) { return random.uniform(-1e18, 1e18); };
    expectOracleEverywhere<Zmo16s>(any, 200, 400);
    expectOracleEverywhere<Zmo32f>(any, 200, 400);
    expectOracleEverywhere<Zmo16s>(few, 3, 4);
    expectOracleEverywhere<Zmo32f>(few, 3, 4);
    expectOracleEverywhere<Zmo16s>(ends, 46339, 46340);
    expectOracleEverywhere<Zmo32f>(large, 1e17F, 8e17F);
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
    EXPECT_EQ(expectOracle(dx, dy, 5, 20, zmoiNormL2), 0);
    dy.set(0, 0, 30);
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
void expectBadArguments(CannyFunction<T, Step, Size> function) {
    kit::Image<T> dx({16, 5});
    kit::Image<T> dy({16, 5});
    kit::Image<Zmo8u> dst({16, 5});
    dx.fill([] { return 4; });
    dy.fill([] { return 5; });
    kit::Buffer buffer(4096);
    // A region beyond the size query, with steps that hold it.
    constexpr Step most = std::numeric_limits<Step>::max() / 8 / 4 * 4;
    kit::expectBadArguments(
        function,
        {{7, {-1, 21, nan}, zmoStsThresholdErr},
         {8, nan, zmoStsThresholdErr},
         {9, 2, zmoStsNormErr},
         {{{1, most}, {3, most}, {5, most}, {6, Size{most / 8, most / 4}}}, zmoStsTooLargeErr}},
        dx, dy, dst, Size{16, 5}, 10, 20, zmoiNormL1, buffer);
}

template <class Int, class Size>
void expectBadSizes(ZmoStatus (*query)(Size, Int*)) {
    constexpr auto most = std::numeric_limits<Int>::max();
    Int size = -5;
    kit::expectBadArguments(query, {{0, Size{most, most}, zmoStsTooLargeErr}}, Size{1, 1}, &size);
    EXPECT_GE(size, 64);
}

TEST(Canny, BadArguments) {
    expectBadArguments(forms<Zmo16s>.usual);
    expectBadArguments(forms<Zmo32f>.usual);
    expectBadArguments(forms<Zmo16s>.large);
    expectBadArguments(forms<Zmo32f>.large);
    expectBadSizes(zmoiCannyGetSize);
    expectBadSizes(zmoiCannyGetSize_L);
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
        const ZmoiSizeL roi{40, rows == 1 ? kit::FarRows::count : 2};
        const auto find = [&](auto alongX, auto alongY, auto edges) {
            kit::succeed(zmoiCanny_16s8u_C1R_L, alongX.every(rows), alongY.every(rows),
                         edges.every(rows), roi, 200, 400, zmoiNormL2, buffer);
        };
        find(dx.rows(), dy.rows(), dst.rows());
        find(farDx.rows<Zmo16s>(), farDy.rows<Zmo16s>(), farDst.rows<Zmo8u>());
        farDst.expect(dst);
    }
}

// ---- Canny edges of a picture

kit::Image<Zmo16s> derived(const oracle::Extended<Zmo8u>& picture, int size, oracle::Mask mask) {
    kit::Image<Zmo16s> image(picture.image.size());
    image.fill([&](int x, int y) { return oracle::mask(picture, x, y, size / 2, mask); });
    return image;
}

// The edges that the oracle finds from the derivatives by their definition.
TEST(CannyBorder, EdgesOfItsDerivatives) {
    using oracle::Mask;
    static constexpr struct {
        ZmoiDifferentialKernel kernel;
        ZmoiMaskSize size;
        Mask vert;
        Mask horiz;
    } masks[] = {{zmoiDiffSobel, zmoiMask3x3, Mask::vert, Mask::horiz},
                 {zmoiDiffSobel, zmoiMask5x5, Mask::vert, Mask::horiz},
                 {zmoiDiffScharr, zmoiMask3x3, Mask::scharrVert, Mask::scharrHoriz}};
    kit::forEachCase(27, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        kit::Image<Zmo8u> src(size, layout, 2);
        const int step = turn % 2 == 0 ? 255 : 1;
        src.fill([&] { return random.between(0, 255 / step) * step; });
        const Zmo8u value = static_cast<Zmo8u>(random.between(0, 255));
        const auto& mask = masks[turn % 3];
        const float low = mask.size == zmoiMask5x5 ? 1500 : 200;
        for (int i = 0; i < 8; i += 3) {
            const float high = low * static_cast<float>(random.between(1, 3));
            const auto norm = static_cast<ZmoiNorm>(i / 4);
            const auto border = static_cast<ZmoiBorderType>((turn + static_cast<size_t>(i)) % 4);
            const oracle::Extended<Zmo8u> picture{src, border, value};
            const auto dx = derived(picture, mask.size, mask.vert);
            const auto dy = derived(picture, mask.size, mask.horiz);
            const oracle::Canny<Zmo16s> expected(dx, dy, low, high, norm);
            kit::Image<Zmo8u> dst(size, layout);
            kit::Buffer buffer =
                kit::bufferOf(zmoiCannyBorderGetBufferSize, size, mask.size, zmo8u, 1);
            kit::succeed(zmoiCannyBorder_8u_C1R, src, dst, size, mask.kernel, mask.size, low, high,
                         norm, border, &value, buffer);
            kit::expectPixels(dst, expected.edges());
        }
    });
}

TEST(CannyBorder, BadArguments) {
    const ZmoiSize roi{30, 30};
    kit::Image<Zmo8u> src(roi);
    kit::Image<Zmo8u> dst(roi);
    kit::Buffer buffer(1 << 14);
    const Zmo8u value = 77;
    kit::expectBadArguments(zmoiCannyBorder_8u_C1R,
                            {{{{10, zmoiBorderConst}, {11, nullptr}}, zmoStsNullPtrErr},
                             {5, 2, zmoStsFlagErr},
                             {{{5, zmoiDiffScharr}, {6, 5}}, zmoStsMaskSizeErr},
                             {6, 7, zmoStsMaskSizeErr},
                             {7, 601, zmoStsThresholdErr},
                             {8, nan, zmoStsThresholdErr},
                             {9, 2, zmoStsNormErr},
                             {10, 4, zmoStsBorderErr}},
                            src, dst, roi, zmoiDiffSobel, zmoiMask3x3, 300, 600, zmoiNormL1,
                            zmoiBorderMirror, kit::exempt(&value), buffer);
    int size = -1;
    kit::expectBadArguments(zmoiCannyBorderGetBufferSize,
                            {{1, 7, zmoStsMaskSizeErr},
                             {2, zmo16s, zmoStsDataTypeErr},
                             {3, 3, zmoStsChannelsErr},
                             {0, ZmoiSize{1 << 20, 1 << 20}, zmoStsTooLargeErr}},
                            roi, zmoiMask5x5, zmo8u, 1, &size);
}

}  // namespace
