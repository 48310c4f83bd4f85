// Canny edges from derivatives, of large images too, and of a picture.
#include <cmath>

#include "case.h"
#include "oracle/canny.h"
#include "oracle/mask.h"
#include "zmocv.h"

namespace {

struct Row {
    kit::Function function;
    kit::Function query;
};
// The second of each type gives the same for large images.
template <class T>
const std::vector<Row> rows;
template <>
const std::vector<Row> rows<Zmo16s> = {{ZMO(zmoiCanny_16s8u_C1R), ZMO(zmoiCannyGetSize)},
                                       {ZMO(zmoiCanny_16s8u_C1R_L), ZMO(zmoiCannyGetSize_L)}};
template <>
const std::vector<Row> rows<Zmo32f> = {{ZMO(zmoiCanny_32f8u_C1R), ZMO(zmoiCannyGetSize)},
                                       {ZMO(zmoiCanny_32f8u_C1R_L), ZMO(zmoiCannyGetSize_L)}};

struct Rules {
    float low;
    float high;
    ZmoiNorm norm;
};

kit::Case caseOf(const Row& row, ZmoiSize size, kit::Layout layout, const Rules& rules) {
    return kit::Case(row.function, size, layout)
        .with({{"low", rules.low}, {"high", rules.high}, {"norm", rules.norm}})
        .sized(row.query);
}

// What the oracle finds in the derivatives; returns the number of edge pixels.
template <class T>
int wantEdges(kit::Case& c, const Rules& rules) {
    const oracle::Canny<T> oracle(c.image(0).as<T>(), c.image(1).as<T>(), rules.low, rules.high,
                                  rules.norm);
    c.want("pDst", [&](int x, int y) { return oracle.edges().get(x, y); });
    return oracle.count();
}

// In images of all sizes and layouts, with both norms.
template <class T, class Draw>
void expectOracleEverywhere(Draw draw, float low, float high) {
    int edges = 0;
    kit::forEachCase(
        {20, 4}, rows<T>,
        [&](auto& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            const Rules rules{low, high, turn / 4 % 2 == 0 ? zmoiNormL1 : zmoiNormL2};
            kit::Case c = caseOf(row, size, layout, rules);
            const auto drawn = [&] { return draw(random); };
            c.fillAll(drawn, drawn);
            edges += wantEdges<T>(c, rules);
            return c;
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

// The derivatives at single pixels; elsewhere they are 0. Returns the number of edge pixels.
template <class T>
int expectOracle(ZmoiSize size, const Rules& rules,
                 const std::function<void(kit::Image<T>& dx, kit::Image<T>& dy)>& draw,
                 const std::function<void(const kit::AnyImage& edges)>& look = {}) {
    int count = 0;
    for (const Row& row : rows<T>) {
        kit::Case c = caseOf(row, size, {}, rules);
        c.fillAll([] { return 0; }, [] { return 77; });
        draw(c.image(0).as<T>(), c.image(1).as<T>());
        count = wantEdges<T>(c, rules);
        kit::expectAtAllLevels(c);
        if (look) look(c.tried());
    }
    return count;
}

// A pixel between two strong neighbours of one diagonal is an edge as long as its gradient counts as
// lying along an axis.
template <class T>
void expectSectorBound(T along, T onBound, T beyond) {
    for (const bool alongX : {true, false}) {
        for (const T across : {onBound, beyond}) {
            const auto draw = [&](kit::Image<T>& dx, kit::Image<T>& dy) {
                // along is negative and across positive: the rising diagonal is theirs.
                dx.set(1, 1, alongX ? along : across);
                dy.set(1, 1, alongX ? across : along);
                for (const int x : {0, 2}) {
                    dx.set(x, 2 - x, along);
                    dy.set(x, 2 - x, along);
                }
            };
            expectOracle<T>({3, 3}, {0, 0, zmoiNormL2}, draw, [&](const kit::AnyImage& edges) {
                EXPECT_EQ(edges.get(1, 1), across == onBound ? 255 : 0) << "along x: " << alongX;
            });
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
    constexpr int side = kit::sanitized ? 41 : 81;
    for (const float seed : {10.0F, 30.0F}) {
        const int edges =
            expectOracle<Zmo32f>({side, side}, {5, 20, zmoiNormL2}, [&](auto& dx, auto& dy) {
                // The gradient stands across the line, so that its pixels are maxima.
                dx.fill([](int x, int y) {
                    return y % 2 != 0 && x == (y % 4 == 1 ? side - 1 : 0) ? 10 : 0;
                });
                dy.fill([](int, int y) { return y % 2 == 0 ? 10 : 0; });
                dy.set(0, 0, seed);
            });
        EXPECT_EQ(edges > 0, seed > 10);
        EXPECT_GT(edges, seed > 10 ? side * side * 48 / 100 : -1);
    }
}

// Thresholds far outside the range of the sizes select all maxima or none, without a flag.
template <class T>
void expectThresholds(const std::function<double(kit::Random&)>& value, float aboveAll) {
    constexpr float largest = std::numeric_limits<float>::max();
    for (const ZmoiNorm norm : {zmoiNormL1, zmoiNormL2}) {
        const auto edges = [&](float low, float high) {
            return expectOracle<T>({40, 20}, {low, high, norm}, [&](auto& dx, auto& dy) {
                kit::Random random(25);
                dx.fill([&] { return value(random); });
                dy.fill([&] { return value(random); });
            });
        };
        const int all = edges(0, 0);
        EXPECT_GT(all, 0);
        EXPECT_EQ(edges(1e-30F, 1e-20F), all);
        EXPECT_EQ(edges(1e-20F, aboveAll), 0);
        EXPECT_EQ(edges(1e-20F, largest), 0);
        EXPECT_EQ(edges(largest, HUGE_VALF), 0);
    }
}

TEST(Canny, ExtremeThresholds) {
    expectThresholds<Zmo16s>(
        [](auto& random) { return static_cast<double>(random.between(-32768, 32767)); }, 65537);
    expectThresholds<Zmo32f>([](auto& random) { return random.uniform(-10, 10); }, 20.1F);
}

template <class T>
void expectBadArguments() {
    for (const Row& row : rows<T>) {
        // A region beyond the size query, with steps that hold it.
        const int64_t longest = row.function.large() ? INT64_MAX / 64 * 4 : INT32_MAX / 64 * 4;
        caseOf(row, {16, 5}, {}, {10, 20, zmoiNormL1})
            .expectBadArguments({{"low", {-1, 21, NAN}, zmoStsThresholdErr},
                                 {"high", NAN, zmoStsThresholdErr},
                                 {"norm", 2, zmoStsNormErr},
                                 {{{"srcStep", longest},
                                   {"src2Step", longest},
                                   {"dstStep", longest},
                                   {"roi", ZmoiSizeL{longest / 8, longest / 4}}},
                                  zmoStsTooLargeErr}});
        kit::Case(row.query).expectBadArguments();
    }
}

TEST(Canny, BadArguments) {
    expectBadArguments<Zmo16s>();
    expectBadArguments<Zmo32f>();
}

TEST(Canny, ImageBeyondTwoGigabytes) {
    kit::Random random(26);
    // All rows, and two of them.
    for (const int height : {6, 2}) {
        kit::Case c = caseOf(rows<Zmo16s>[1], { 40, height }, {}, {200, 400, zmoiNormL2});
        const auto any = [&] { return random.between(-500, 500); };
        c.fillAll(any, any);
        c.expectWithFarRows(height == 6 ? 1 : 4);
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
    const kit::Function function = ZMO(zmoiCannyBorder_8u_C1R);
    kit::forEachCase({27, 8}, function,
                     [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
                         kit::Case c(function, size, layout, {{"pSrc", {}, 2}});
                         const int step = turn % 2 == 0 ? 255 : 1;
                         c.src().fill([&] { return random.between(0, 255 / step) * step; });
                         c.borderValue().fill([&] { return random.between(0, 255); });
                         const auto& mask = masks[turn % 3];
                         const float low = mask.size == zmoiMask5x5 ? 1500 : 200;
                         const float high = low * static_cast<float>(random.between(1, 3));
                         const auto norm = static_cast<ZmoiNorm>(turn / 8 % 2);
                         const auto border = static_cast<ZmoiBorderType>(turn / 2 % 4);
                         c.with({{"kernel", mask.kernel},
                                 {"mask", mask.size},
                                 {"low", low},
                                 {"high", high},
                                 {"norm", norm},
                                 {"border", border}})
                             .sized(ZMO(zmoiCannyBorderGetBufferSize));
                         const oracle::Extended<Zmo8u> picture{
                             c.src().as<Zmo8u>(), border, c.borderValue().as<Zmo8u>().get(0, 0)};
                         const auto dx = derived(picture, mask.size, mask.vert);
                         const auto dy = derived(picture, mask.size, mask.horiz);
                         const oracle::Canny<Zmo16s> expected(dx, dy, low, high, norm);
                         return c.want("pDst",
                                       [&](int x, int y) { return expected.edges().get(x, y); });
                     });
}

TEST(CannyBorder, BadArguments) {
    kit::Case(ZMO(zmoiCannyBorder_8u_C1R), {30, 30})
        .with({{"kernel", zmoiDiffSobel},
               {"mask", zmoiMask3x3},
               {"low", 300},
               {"high", 600},
               {"norm", zmoiNormL1},
               {"border", zmoiBorderMirror}})
        .sized(ZMO(zmoiCannyBorderGetBufferSize))
        .expectBadArguments({{"kernel", 2, zmoStsFlagErr},
                             {{{"kernel", zmoiDiffScharr}, {"mask", 5}}, zmoStsMaskSizeErr},
                             {"mask", 7, zmoStsMaskSizeErr},
                             {"low", 601, zmoStsThresholdErr},
                             {"high", NAN, zmoStsThresholdErr},
                             {"norm", 2, zmoStsNormErr}});
    kit::Case(ZMO(zmoiCannyBorderGetBufferSize))
        .with({{"mask", zmoiMask5x5}, {"type", zmo8u}, {"channels", 1}})
        .expectBadArguments({{"mask", 7, zmoStsMaskSizeErr},
                             {"type", zmo16s, zmoStsDataTypeErr},
                             {"channels", 3, zmoStsChannelsErr},
                             {"roi", ZmoiSize{1 << 20, 1 << 20}, zmoStsTooLargeErr}});
}

}  // namespace
