// Layers of pyramids.
#include "oracle/filter.h"
#include "zmoi.h"

namespace {

const struct {
    std::vector<double> kernel;
    int rate;
    bool isUsual = false;  // what a null kernel stands for
} pyramids[] = {{{1, 4, 6, 4, 1}, 2, true},
                {{1, 5, 8, 5, 1}, 2},
                {{-1, 3, 20, 30, 20, 9, 2}, 3},
                {{1, 2, 1}, 2},
                {{9, 8, 7, 6, 5, 4, 3, 2, 1}, 8}};

bool isUp(const kit::Function& function) {
    return function.isNamed("Up");
}

#define LAYERS(types)                                                                 \
    ZMO(zmoiPyramidLayerDown_##types##_C1R), ZMO(zmoiPyramidLayerDown_##types##_C3R), \
        ZMO(zmoiPyramidLayerUp_##types##_C1R), ZMO(zmoiPyramidLayerUp_##types##_C3R)
const std::vector<kit::Function> functions = {LAYERS(8u), LAYERS(16u), LAYERS(32f),
                                              ZMO(zmoiPyramidLayerDown_32f_C1R_L),
                                              ZMO(zmoiPyramidLayerUp_32f_C1R_L)};

// Every third turn, a side of the larger layer is no multiple of the rate.
ZmoiSize srcSize(const kit::Function& function, const kit::Turn& t) {
    const int rate = pyramids[t.number % 5].rate;
    const auto side = [&](int n) {
        return isUp(function) ? (n + rate - 1) / rate
                              : n * rate - (t.number % 3 == 2 ? rate - 1 : 0);
    };
    return {side(t.size.width), side(t.size.height)};
}

kit::Case caseOf(kit::Turn& t, const kit::Function& function) {
    const auto& chosen = pyramids[t.number % 5];
    const auto border = static_cast<ZmoiBorderType>(t.number % 4);
    const bool up = isUp(function);
    const ZmoiSize from = srcSize(function, t);
    kit::Case c(function, t, {{"pSrc", from, 12}});
    c.allowAnySize();
    draw(t, c.src());
    const std::vector<double> outside = {c.src()(0, 0), c.src()(-1, 0), c.src()(0, -1)};
    c.with({{"kernelSize", chosen.kernel.size()},
            {"rate", chosen.rate},
            {"border", border},
            {"pBorderValue", outside},
            {"srcRoi", from}});
    c.with("pKernel", chosen.isUsual ? kit::Value(nullptr) : chosen.kernel);
    // Sizes are given for the larger layer.
    c.with("roi", up ? t.size : from).sized(ZMO(zmoiPyramidGetSize_L)).with("roi", t.size);
    c.prepared(ZMO(zmoiPyramidInit));
    const kit::Image src = c.src().numbers();
    return c.want([&](int x, int y, int k) {
        const bool real = !c.src().isWhole();
        const oracle::Extended a{src, border, outside[static_cast<size_t>(k)], k};
        return c.dst().stored(oracle::layer(a, oracle::met(chosen.kernel, chosen.rate, up, x, real),
                                            oracle::met(chosen.kernel, chosen.rate, up, y, real),
                                            real));
    });
}

TEST(Pyramid, Layers) {
    kit::forEachCase({31, 2, {{530, 2}, {600, 1}}}, functions, caseOf);
}

TEST(Pyramid, BadArguments) {
    // Turn 60 has a rate of 2.
    kit::Turn t(33, {4, 3}, {}, 60);
    kit::Case colour = caseOf(t, functions[1]);
    for (const auto& function : {functions[0], functions[2]}) {
        kit::Case c = caseOf(t, function);
        c.expectBadArguments({{"pState", colour.memory("pState").ptr(), zmoStsStateErr}});
        // The layers must fit each other.
        for (const ZmoiSize unfit : {ZmoiSize{4, 2}, {3, 3}}) {
            c.with(isUp(function) ? "srcRoi" : "roi", unfit);
            EXPECT_EQ(c.run(), zmoStsSizeErr);
        }
    }
    kit::Case init(ZMO(zmoiPyramidInit_L));
    init.allowNull("pKernel");
    init.with({{"pKernel", std::vector<double>{10, 20, 30, 20, 10, 100, 0}},
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
}

}  // namespace
