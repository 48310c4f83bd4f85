// Canny edges from derivatives, of large images too, and of a picture.
#include "oracle/canny.h"
#include "oracle/mask.h"
#include "zmocv.h"

namespace {

using Rules = oracle::CannyRules;

// The second of each type gives the same for large images.
const std::vector<kit::Function> integers = {ZMO(zmoiCanny_16s8u_C1R), ZMO(zmoiCanny_16s8u_C1R_L)};
const std::vector<kit::Function> floats = {ZMO(zmoiCanny_32f8u_C1R), ZMO(zmoiCanny_32f8u_C1R_L)};

kit::Function queryOf(const kit::Function& function) {
    return function.large() ? ZMO(zmoiCannyGetSize_L) : ZMO(zmoiCannyGetSize);
}

kit::Case caseOf(const kit::Function& function, const kit::Turn& t, const Rules& rules) {
    return kit::Case(function, t)
        .with({{"low", rules.low}, {"high", rules.high}, {"norm", rules.norm}})
        .sized(queryOf(function));
}

// What the oracle finds in the derivatives; returns the number of edge pixels.
int wantEdges(kit::Case& c, const Rules& rules) {
    int found = 0;
    const kit::Image edges = oracle::Canny(c.image(0), c.image(1), rules).edges;
    kit::forEachPixel(c.roi(), [&](int x, int y) { found += edges(x, y) != 0; });
    c.want(edges);
    return found;
}

// In images of all sizes and layouts, with both norms. Thresholds far outside the range of the
// sizes select all maxima or none.
void expectOracle(const std::vector<kit::Function>& functions,
                  const std::function<double(kit::Random&)>& draw, float low, float high) {
    constexpr float largest = std::numeric_limits<float>::max();
    const std::pair<float, float> limits[] = {
        {low, high}, {0, 0}, {low, high}, {1e-30F, 1e-20F}, {1e-20F, largest}, {low, HUGE_VALF}};
    int edges = 0;
    kit::forEachCase({20, 4}, functions, [&](kit::Turn& t, const auto& function) {
        const auto [from, to] = limits[t.number % 6];
        const Rules rules{from, to, t.number / 6 % 2 == 0 ? zmoiNormL1 : zmoiNormL2};
        kit::Case c = caseOf(function, t, rules);
        c.fillAll([&] { return draw(t); }, 77);
        const int found = wantEdges(c, rules);
        edges += to == high ? found : 0;
        return c;
    });
    EXPECT_GT(edges, 0);
}

// Any values, values from a few sizes, so that ties and thresholds are hit exactly, and the
// largest.
TEST(Canny, Oracle) {
    for (const auto& functions : {integers, floats}) {
        expectOracle(
            functions, [](auto& random) { return random.uniform(-500, 500); }, 200, 400);
        expectOracle(
            functions, [](auto& random) { return random.between(-3, 3); }, 3, 4);
    }
    expectOracle(
        integers, [](auto& random) { return random.between(0, 1) * 65535 - 32768; }, 46339, 46340);
    expectOracle(
        floats, [](auto& random) { return random.uniform(-1e18, 1e18); }, 1e17F, 8e17F);
}

// Of derivatives that are 0 but where they are drawn; returns the number of edge pixels.
int edgesOf(const std::vector<kit::Function>& functions, ZmoiSize size, const Rules& rules,
            const std::function<void(kit::Image& dx, kit::Image& dy)>& draw) {
    int count = 0;
    for (const auto& function : functions) {
        kit::Case c = caseOf(function, kit::Turn(21, size), rules);
        c.fillAll(0, 77);
        draw(c.image(0), c.image(1));
        count = wantEdges(c, rules);
        kit::expectAtAllLevels(c);
    }
    return count;
}

// A pixel between two strong neighbours of one diagonal is an edge as long as its gradient counts
// as lying along an axis.
void expectSectorBound(const std::vector<kit::Function>& functions, double along, double onBound,
                       double beyond) {
    for (const bool alongX : {true, false}) {
        for (const double across : {onBound, beyond}) {
            const auto draw = [&](kit::Image& dx, kit::Image& dy) {
                // along is negative and across positive: the rising diagonal is theirs.
                (alongX ? dx : dy).set(1, 1, along);
                (alongX ? dy : dx).set(1, 1, across);
                for (const int x : {0, 2}) {
                    dx.set(x, 2 - x, along);
                    dy.set(x, 2 - x, along);
                }
            };
            const int edges = edgesOf(functions, {3, 3}, {0, 0, zmoiNormL2}, draw);
            EXPECT_EQ(edges, across == onBound ? 3 : 2) << "along x: " << alongX;
        }
    }
}

TEST(Canny, SectorBounds) {
    expectSectorBound(integers, -32768, 13573, 13574);
    expectSectorBound(floats, -1, 0.41421356F, std::nextafter(0.41421356F, 1.0F));
    expectSectorBound(floats, -3e8F, 3e8F * 0.41421356F, std::nextafter(3e8F * 0.41421356F, 1e9F));
}

// A line that winds over the whole image with one seed at its start: an edge is followed to the
// end, and a limit on passes or depth would cut it.
TEST(Canny, FollowsAChainToItsEnd) {
    constexpr int side = kit::sanitized ? 41 : 81;
    for (const float seed : {10.0F, 30.0F}) {
        const auto draw = [&](kit::Image& dx, kit::Image& dy) {
            // The gradient stands across the line, so that its pixels are maxima.
            dx.fill([](int x, int y) {
                return y % 2 != 0 && x == (y % 4 == 1 ? side - 1 : 0) ? 10 : 0;
            });
            dy.fill([](int, int y) { return y % 2 == 0 ? 10 : 0; });
            dy.set(0, 0, seed);
        };
        const int edges = edgesOf(floats, {side, side}, {5, 20, zmoiNormL2}, draw);
        EXPECT_EQ(edges > 0, seed > 10);
    }
}

TEST(Canny, BadArguments) {
    for (const auto& functions : {integers, floats}) {
        for (const auto& function : functions) {
            // A region beyond the size query, with steps that hold it.
            const int64_t longest = function.large() ? INT64_MAX / 64 * 4 : INT32_MAX / 64 * 4;
            caseOf(function, kit::Turn(22, {16, 5}), {10, 20, zmoiNormL1})
                .expectBadArguments({{"low", {-1, 21, NAN}, zmoStsThresholdErr},
                                     {"high", NAN, zmoStsThresholdErr},
                                     {"norm", 2, zmoStsNormErr},
                                     {{{"srcStep", longest},
                                       {"src2Step", longest},
                                       {"dstStep", longest},
                                       {"roi", ZmoiSizeL{longest / 8, longest / 4}}},
                                      zmoStsTooLargeErr}});
            kit::Case(queryOf(function)).expectBadArguments();
        }
    }
}

kit::Case borderCase(const kit::Turn& t, int kernel, int mask, const Rules& rules, int border) {
    return kit::Case(ZMO(zmoiCannyBorder_8u_C1R), t, {{"pSrc", {}, 2}})
        .with({{"kernel", kernel},
               {"mask", mask},
               {"low", rules.low},
               {"high", rules.high},
               {"norm", rules.norm},
               {"border", border}})
        .sized(ZMO(zmoiCannyBorderGetBufferSize));
}

// The edges that the oracle finds from the derivatives by their definition.
TEST(CannyBorder, EdgesOfItsDerivatives) {
    using oracle::Mask;
    static constexpr struct {
        ZmoiDifferentialKernel kernel;
        int size;
        Mask vert;
        Mask horiz;
    } masks[] = {{zmoiDiffSobel, 3, Mask::vert, Mask::horiz},
                 {zmoiDiffSobel, 5, Mask::vert, Mask::horiz},
                 {zmoiDiffScharr, 3, Mask::scharrVert, Mask::scharrHoriz}};
    kit::forEachCase({27, 8}, 1, [](kit::Turn& t, size_t) {
        const auto& mask = masks[t.number % 3];
        const float low = mask.size == 5 ? 1500 : 200;
        const Rules rules{low, low * static_cast<float>(t.between(1, 3)),
                          static_cast<ZmoiNorm>(t.number / 8 % 2)};
        const auto border = static_cast<ZmoiBorderType>(t.number / 2 % 4);
        kit::Case c = borderCase(t, mask.kernel, mask.size, rules, border);
        const int unit = t.number % 2 == 0 ? 255 : 1;
        c.src().fill([&] { return t.between(0, 255 / unit) * unit; });
        c.borderValue().fill([&] { return t.between(0, 255); });
        const oracle::Extended picture{c.src(), border, c.outside()};
        const auto derived = [&](Mask kind) {
            return kit::Image(zmo16s, t.size).fill([&](int x, int y) {
                return oracle::mask(picture, x, y, mask.size / 2, kind);
            });
        };
        const kit::Image dx = derived(mask.vert);
        const kit::Image dy = derived(mask.horiz);
        return c.want(oracle::Canny(dx, dy, rules).edges);
    });
}

TEST(CannyBorder, BadArguments) {
    borderCase(kit::Turn(28, {30, 30}), zmoiDiffSobel, 3, {300, 600, zmoiNormL1}, zmoiBorderMirror)
        .expectBadArguments({{"kernel", 2, zmoStsFlagErr},
                             {{{"kernel", zmoiDiffScharr}, {"mask", 5}}, zmoStsMaskSizeErr},
                             {"mask", 7, zmoStsMaskSizeErr},
                             {"low", 601, zmoStsThresholdErr},
                             {"high", NAN, zmoStsThresholdErr},
                             {"norm", 2, zmoStsNormErr}});
}

}  // namespace
