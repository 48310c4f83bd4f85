// Layers of pyramids.
#include "filter.h"
#include "oracle/filter.h"
#include "zmoi.h"

namespace {

using filters::expectOracle;
using filters::Filter;
using filters::Prepared;

const struct {
    std::vector<Zmo16s> kernel;
    int rate;
    bool isUsual = false;  // what a null kernel stands for
} pyramids[] = {{{1, 4, 6, 4, 1}, 2, true},
                {{1, 5, 8, 5, 1}, 2},
                {{-1, 3, 20, 30, 20, 9, 2}, 3},
                {{1, 2, 1}, 2},
                {{9, 8, 7, 6, 5, 4, 3, 2, 1}, 8}};

template <class T, class Step, class Size>
Filter<T, T> layer(const char* name, int channels, bool up,
                   ZmoStatus (*run)(const T*, Step, Size, T*, Step, Size, const ZmoiPyramidState*,
                                    Zmo8u*)) {
    Filter<T, T> f{name, channels};
    f.isLarge = sizeof(Step) == 8;
    // Every third turn, a side of the larger layer is no multiple of the rate.
    f.srcSize = [=](ZmoiSize roi, size_t turn) {
        const int rate = pyramids[turn % 5].rate;
        const auto side = [=](int n) {
            return up ? (n + rate - 1) / rate : n * rate - (turn % 3 == 2 ? rate - 1 : 0);
        };
        return ZmoiSize{side(roi.width), side(roi.height)};
    };
    f.run = [=](const auto& c, size_t turn) {
        const auto& chosen = pyramids[turn % 5];
        const ZmoiSize large = up ? c.roi : c.srcRoi;
        Zmo32f values[4] = {};
        for (int i = 0; i < channels && c.pValue != nullptr; ++i)
            values[i] = static_cast<Zmo32f>(c.pValue[i]);
        Prepared p(zmoiPyramidGetSize_L, ZmoiSizeL{large.width, large.height}, kit::typeOf<T>,
                   channels);
        kit::succeed(zmoiPyramidInit, chosen.isUsual ? nullptr : chosen.kernel.data(),
                     static_cast<int>(chosen.kernel.size()), chosen.rate, c.border, &values[0],
                     kit::typeOf<T>, channels, p.state);
        kit::succeed(run, c.src, Size{c.srcRoi.width, c.srcRoi.height}, c.dst,
                     Size{c.roi.width, c.roi.height}, p.state, p.buffer);
    };
    f.pixel = [=](const auto& a, int x, int y, size_t turn) {
        const auto& chosen = pyramids[turn % 5];
        return oracle::layer(a, oracle::met(chosen.kernel, chosen.rate, up, x),
                             oracle::met(chosen.kernel, chosen.rate, up, y));
    };
    return f;
}

#define EXPECT_LAYERS(types)                                                           \
    expectOracle(layer("down " #types, 1, false, zmoiPyramidLayerDown_##types##_C1R)); \
    expectOracle(layer("down " #types, 3, false, zmoiPyramidLayerDown_##types##_C3R)); \
    expectOracle(layer("up " #types, 1, true, zmoiPyramidLayerUp_##types##_C1R));      \
    expectOracle(layer("up " #types, 3, true, zmoiPyramidLayerUp_##types##_C3R))

TEST(Pyramid, Layers) {
    EXPECT_LAYERS(8u);
    EXPECT_LAYERS(16u);
    EXPECT_LAYERS(32f);
    expectOracle(layer("down _L", 1, false, zmoiPyramidLayerDown_32f_C1R_L));
    expectOracle(layer("up _L", 1, true, zmoiPyramidLayerUp_32f_C1R_L));
}

TEST(Pyramid, BadArguments) {
    const ZmoiSize large{8, 5};
    const ZmoiSize small{4, 3};
    kit::Image<Zmo8u> a(large);
    kit::Image<Zmo8u> b(small);
    kit::Buffer state(256);
    kit::Buffer colour(256);
    kit::Buffer buffer(10000);
    const Zmo16s kernel[] = {10, 20, 30, 20, 10, 100, 0};
    kit::expectBadArguments(zmoiPyramidInit_L,
                            {{{{3, zmoiBorderConst}, {4, nullptr}}, zmoStsNullPtrErr},
                             {1, 4, zmoStsMaskSizeErr},
                             {2, {1, 6}, zmoStsRangeErr},
                             {1, 7, zmoStsRangeErr},
                             {3, 4, zmoStsBorderErr},
                             {5, zmo64f, zmoStsDataTypeErr},
                             {6, 2, zmoStsChannelsErr}},
                            kit::exempt(&kernel[0]), 5, 2, zmoiBorderMirror,
                            kit::exempt<Zmo32f*>(nullptr), zmo8u, 3, colour);
    kit::succeed(zmoiPyramidInit, nullptr, 0, 2, zmoiBorderMirror, nullptr, zmo8u, 1, state);
    const auto* const other = colour.as<ZmoiPyramidState>();
    kit::expectBadArguments(zmoiPyramidLayerDown_8u_C1R, {{6, other, zmoStsStateErr}}, a, large, b,
                            small, state, buffer);
    kit::expectBadArguments(zmoiPyramidLayerUp_8u_C1R, {{6, other, zmoStsStateErr}}, b, small, a,
                            large, state, buffer);
    // The layers must fit each other.
    for (const ZmoiSize unfit : {ZmoiSize{4, 2}, {3, 3}}) {
        EXPECT_EQ(kit::run(zmoiPyramidLayerDown_8u_C1R, a, large, b, unfit, state, buffer),
                  zmoStsSizeErr);
        EXPECT_EQ(kit::run(zmoiPyramidLayerUp_8u_C1R, b, unfit, a, large, state, buffer),
                  zmoStsSizeErr);
    }
    int64_t stateSize = -1;
    int64_t bufferSize = -1;
    kit::expectBadArguments(zmoiPyramidGetSize_L,
                            {{1, zmo64f, zmoStsDataTypeErr},
                             {2, 2, zmoStsChannelsErr},
                             {0, ZmoiSizeL{INT64_MAX / 4, 3}, zmoStsTooLargeErr}},
                            ZmoiSizeL{20, 3}, zmo16u, 3, &stateSize, &bufferSize);
}

}  // namespace
