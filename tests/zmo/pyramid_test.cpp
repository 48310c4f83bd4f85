// Layers of pyramids.
#include "bordered.h"
#include "oracle/filter.h"
#include "zmoi.h"

namespace {

const struct {
    std::vector<Zmo16s> kernel;
    int rate;
    bool isUsual = false;  // what a null kernel stands for
} pyramids[] = {{{1, 4, 6, 4, 1}, 2, true},
                {{1, 5, 8, 5, 1}, 2},
                {{-1, 3, 20, 30, 20, 9, 2}, 3},
                {{1, 2, 1}, 2},
                {{9, 8, 7, 6, 5, 4, 3, 2, 1}, 8}};

struct Row {
    kit::Function function;

    bool up() const { return function.isNamed("Up"); }
};

#define ROWS(types)                                                                       \
    {ZMO(zmoiPyramidLayerDown_##types##_C1R)}, {ZMO(zmoiPyramidLayerDown_##types##_C3R)}, \
        {ZMO(zmoiPyramidLayerUp_##types##_C1R)}, {                                        \
        ZMO(zmoiPyramidLayerUp_##types##_C3R)                                             \
    }
const std::vector<Row> rows = {ROWS(8u),
                               ROWS(16u),
                               ROWS(32f),
                               {ZMO(zmoiPyramidLayerDown_32f_C1R_L)},
                               {ZMO(zmoiPyramidLayerUp_32f_C1R_L)}};

// Every third turn, a side of the larger layer is no multiple of the rate.
ZmoiSize srcSize(const Row& row, ZmoiSize roi, size_t turn) {
    const int rate = pyramids[turn % 5].rate;
    const auto side = [&](int n) {
        return row.up() ? (n + rate - 1) / rate : n * rate - (turn % 3 == 2 ? rate - 1 : 0);
    };
    return {side(roi.width), side(roi.height)};
}

kit::Case caseOf(kit::Random& random, const Row& row, ZmoiSize roi, kit::Layout layout,
                 size_t turn) {
    const auto& chosen = pyramids[turn % 5];
    const auto border = static_cast<ZmoiBorderType>(turn % 4);
    const ZmoiSize from = srcSize(row, roi, turn);
    kit::Case c(row.function, roi, layout, {{"pSrc", from, 12}});
    c.allowAnySize();
    kit::Image<Zmo32f> values({4, 1});
    kit::AnyImage drawn = c.src().alike([] { return 0; });
    kit::drawWide(random, turn, c.src(), drawn);
    values.fill([&](int k, int) { return drawn.get(0, 0, k % drawn.channels()); });
    c.with({{"pKernel", chosen.isUsual ? nullptr : chosen.kernel.data()},
            {"kernelSize", chosen.kernel.size()},
            {"rate", chosen.rate},
            {"border", border},
            {"pBorderValue", values.ptr()},
            {"srcRoi", from}});
    // Sizes are told for the larger layer.
    c.with("roi", row.up() ? roi : from).sized(ZMO(zmoiPyramidGetSize_L)).with("roi", roi);
    c.prepared(ZMO(zmoiPyramidInit));
    return kit::wantBordered(
        c, border, [&](int k) { return values.get(k, 0); },
        [&](const auto& a, int x, int y) {
            return oracle::layer(a, oracle::met(chosen.kernel, chosen.rate, row.up(), x),
                                 oracle::met(chosen.kernel, chosen.rate, row.up(), y));
        });
}

TEST(Pyramid, Layers) {
    kit::forEachCase({31, 2, {{530, 2}, {600, 1}}}, rows, caseOf);
}

TEST(Pyramid, ImagesBeyondTwoGigabytes) {
    kit::Random random(32);
    for (const Row& row : rows) {
        // Turn 60 has a rate of 2.
        if (row.function.large()) caseOf(random, row, {37, 3}, {}, 60).expectWithFarRows();
    }
}

TEST(Pyramid, BadArguments) {
    kit::Random random(33);
    kit::Case colour = caseOf(random, rows[1], {4, 3}, {}, 60);
    for (const Row& row : {rows[0], rows[2]}) {
        kit::Case c = caseOf(random, row, {4, 3}, {}, 60);
        c.expectBadArguments({{"pState", colour.memory("pState").ptr(), zmoStsStateErr}});
        // The layers must fit each other.
        for (const ZmoiSize unfit : {ZmoiSize{4, 2}, {3, 3}}) {
            c.with(row.up() ? "srcRoi" : "roi", unfit);
            EXPECT_EQ(c.run(), zmoStsSizeErr);
        }
    }
    const Zmo16s kernel[] = {10, 20, 30, 20, 10, 100, 0};
    kit::Case init(ZMO(zmoiPyramidInit_L));
    init.allowNull("pKernel");
    init.with({{"pKernel", &kernel[0]},
               {"kernelSize", 5},
               {"rate", 2},
               {"border", zmoiBorderMirror},
               {"pBorderValue", nullptr},
               {"type", zmo8u},
               {"channels", 3}})
        .give("pState", kit::Buffer(256))
        .expectBadArguments({{"kernelSize", 4, zmoStsMaskSizeErr},
                             {"rate", {1, 6}, zmoStsRangeErr},
                             {{{"kernelSize", 7}, {"rate", 2}}, zmoStsRangeErr},
                             {"type", zmo64f, zmoStsDataTypeErr}});
    kit::Case(ZMO(zmoiPyramidGetSize_L))
        .with({{"type", zmo16u}, {"channels", 3}})
        .expectBadArguments({{"type", zmo64f, zmoStsDataTypeErr}});
}

}  // namespace
