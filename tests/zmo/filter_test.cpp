// Filters: separable, Gaussian, with fixed masks, and between rows of the caller's.
#include "filter.h"
#include "oracle/filter.h"
#include "zmoi.h"

namespace {

using filters::expectOracle;
using filters::Filter;
using filters::Prepared;

// Kernels of changing sizes, anchors and weights; from time to time sums exceed 32 bits. Products with
// the rounded inverse of 98 miss many halves.
oracle::Taps tapsOf(size_t turn, bool wide) {
    static constexpr int widths[] = {1, 3, 5, 7, 2, 11, 6};
    static constexpr int heights[] = {5, 1, 3, 8, 7, 2, 12, 9};
    static constexpr int divisors[] = {1, 16, 6, 49, 1000, 2, 4096, 3, 98};
    static constexpr int sizes[] = {1, 2, 20, 100, 2700};
    kit::Random random(1000 + turn);
    const int size = sizes[turn % (wide ? 5 : 4)];
    oracle::Taps taps;
    for (int i = 0; i < widths[turn % 7]; ++i) {
        taps.row.push_back(static_cast<Zmo16s>(random.between(-size, size)));
    }
    for (int j = 0; j < heights[turn % 8]; ++j) {
        taps.column.push_back(static_cast<Zmo16s>(random.between(-size / 2, size)));
    }
    taps.anchor = {static_cast<int>(random.between(0, taps.size().width - 1)),
                   static_cast<int>(random.between(0, taps.size().height - 1))};
    taps.divisor = divisors[turn % 9];
    return taps;
}
std::vector<float> floats(const std::vector<Zmo16s>& weights) {
    std::vector<float> result;
    for (const Zmo16s weight : weights) result.push_back(static_cast<float>(weight) * 0.0137F);
    return result;
}

template <class S, class D>
Prepared prepareSeparable(const oracle::Taps& taps, ZmoiSizeL roi, int channels) {
    Prepared p(zmoiFilterSeparableGetSize_L, roi, taps.size(), kit::typeOf<S>, kit::typeOf<D>,
               channels);
    if constexpr (std::is_same_v<S, float>) {
        kit::succeed(zmoiFilterSeparableInit_32f_L, floats(taps.row).data(),
                     floats(taps.column).data(), taps.size(), taps.anchor, channels, p.state);
    } else {
        kit::succeed(zmoiFilterSeparableInit_16s_L, taps.row.data(), taps.column.data(),
                     taps.size(), taps.anchor, taps.divisor, kit::typeOf<S>, kit::typeOf<D>,
                     channels, p.state);
    }
    return p;
}

constexpr int gaussianTaps[] = {5, 3, 11, 1, 7};
constexpr float sigmas[] = {1.0F, 0.05F, 2.5F, 0.7F};

template <class T>
Prepared prepareGaussian(size_t turn, ZmoiSizeL roi, int channels) {
    const int taps = gaussianTaps[turn % 5];
    Prepared p(zmoiFilterGaussianGetSize_L, roi, taps, kit::typeOf<T>, channels);
    kit::succeed(zmoiFilterGaussianInit, taps, sigmas[turn % 4], kit::typeOf<T>, channels, p.state);
    return p;
}

// Separable and Gaussian filters: what differs is the state.
template <class S, class D, class Step, class Size, class State>
Filter<S, D> kernelFilter(const char* name, int channels,
                          ZmoStatus (*run)(const S*, Step, D*, Step, Size, ZmoiBorderType, const S*,
                                           const State*, Zmo8u*)) {
    constexpr bool isGaussian = std::is_same_v<State, ZmoiGaussianState>;
    Filter<S, D> f{name, channels};
    f.isLarge = sizeof(Step) == 8;
    f.run = [=](const auto& c, size_t turn) {
        const ZmoiSizeL roi{c.roi.width, c.roi.height};
        Prepared p = isGaussian ? prepareGaussian<S>(turn, roi, channels)
                                : prepareSeparable<S, D>(tapsOf(turn, true), roi, channels);
        kit::succeed(run, c.src, c.dst, Size{c.roi.width, c.roi.height}, c.border, c.pValue,
                     p.state, p.buffer);
    };
    f.pixel = [](const auto& a, int x, int y, size_t turn) {
        const oracle::Taps taps = tapsOf(turn, true);
        if constexpr (isGaussian) {
            const auto weights = oracle::gaussian(gaussianTaps[turn % 5], sigmas[turn % 4]);
            const int anchor = static_cast<int>(weights.size()) / 2;
            return oracle::fromFloat<D>(
                oracle::separable32f(a, x, y, weights, weights, {anchor, anchor}));
        } else if constexpr (std::is_same_v<S, float>) {
            return oracle::separable32f(a, x, y, floats(taps.row), floats(taps.column),
                                        taps.anchor);
        } else {
            return oracle::separable<D>(a, x, y, taps);
        }
    };
    return f;
}

ZmoiMaskSize maskOf(size_t turn) {
    return turn / 4 % 2 == 0 ? zmoiMask3x3 : zmoiMask5x5;
}

template <class S, class D, class Query>
Filter<S, D> fixedMask(const char* name, oracle::Mask kind, Query query,
                       ZmoStatus (*run)(const S*, int, D*, int, ZmoiSize, ZmoiMaskSize,
                                        ZmoiBorderType, const S*, Zmo8u*)) {
    Filter<S, D> f{name, 1};
    f.run = [=](const auto& c, size_t turn) {
        kit::Buffer buffer = kit::bufferOf(query, c.roi, maskOf(turn), kit::typeOf<S>, 1);
        kit::succeed(run, c.src, c.dst, c.roi, maskOf(turn), c.border, c.pValue, buffer);
    };
    f.pixel = [=](const auto& a, int x, int y, size_t turn) {
        return static_cast<D>(oracle::mask(a, x, y, maskOf(turn) / 2, kind));
    };
    return f;
}

// A pipeline is a separable filter with one tap in the other direction.
template <bool rows>
oracle::Taps pipelineTaps(size_t turn) {
    oracle::Taps taps = tapsOf(turn, false);
    (rows ? taps.column : taps.row) = {1};
    (rows ? taps.anchor.y : taps.anchor.x) = 0;
    return taps;
}

// _Low: the sum saturates at every tap.
template <bool rows, bool low, class S, class D>
D pipelinePixel(const oracle::Extended<S>& a, int x, int y, size_t turn) {
    const oracle::Taps taps = pipelineTaps<rows>(turn);
    if constexpr (std::is_same_v<S, float>) {
        const auto weights = floats(rows ? taps.row : taps.column);
        return rows ? oracle::separable32f(a, x, y, weights, {1}, taps.anchor)
                    : oracle::separable32f(a, x, y, {1}, weights, taps.anchor);
    } else if constexpr (low) {
        const auto& weights = rows ? taps.row : taps.column;
        int64_t sum = 0;
        for (int i = 0; i < static_cast<int>(weights.size()); ++i) {
            const S pixel = rows ? a(x + i - taps.anchor.x, y) : a(x, y + i - taps.anchor.y);
            sum = oracle::saturated<Zmo16s>(sum + weights[static_cast<size_t>(i)] * pixel);
        }
        return static_cast<D>(sum);
    } else {
        return oracle::separable<D>(a, x, y, taps);
    }
}

template <bool rows, bool divided, class S, class D, class Run>
Filter<S, D> pipeline(const char* name, int channels, Run run) {
    Filter<S, D> f{name, channels};
    if (!rows) f.borders = {zmoiBorderInMem};
    f.pixel = pipelinePixel<rows, !divided, S, D>;
    f.run = [=](const auto& c, size_t turn) {
        const oracle::Taps taps = pipelineTaps<rows>(turn);
        const auto& integers = rows ? taps.row : taps.column;
        const auto weights = [&] {
            if constexpr (std::is_same_v<S, float>)
                return floats(integers);
            else
                return integers;
        }();
        const int count = static_cast<int>(weights.size());
        kit::Buffer buffer = kit::bufferOf(
            rows ? zmoiFilterRowBorderPipelineGetBufferSize : zmoiFilterColumnPipelineGetBufferSize,
            c.roi, count, kit::typeOf<S>, channels);
        std::vector<const S*> from;
        std::vector<D*> to;
        for (int y = 0; y < c.roi.height; ++y) to.push_back(c.dst[y]);
        for (int y = 0; y < c.roi.height + count - 1; ++y) {
            from.push_back(c.src[y - taps.anchor.y]);
        }
        // Not all functions have a divisor.
        const auto call = [&](auto... divisor) {
            if constexpr (rows) {
                kit::succeed(run, c.src, kit::Pointer<D*>{to.data(), c.dst.block}, c.roi,
                             weights.data(), count, taps.anchor.x, divisor..., c.border, c.pValue,
                             buffer);
            } else {
                kit::succeed(run, from.data(), c.dst, c.roi, weights.data(), count, divisor...,
                             buffer);
            }
        };
        if constexpr (divided) {
            call(taps.divisor);
        } else {
            call();
        }
    };
    return f;
}

#define EXPECT_KERNEL(fn, channels) expectOracle(kernelFilter(#fn, channels, fn))
#define EXPECT_SEPARABLE(types)                            \
    EXPECT_KERNEL(zmoiFilterSeparable_##types##_C1R_L, 1); \
    EXPECT_KERNEL(zmoiFilterSeparable_##types##_C3R_L, 3); \
    EXPECT_KERNEL(zmoiFilterSeparable_##types##_C4R_L, 4)
#define EXPECT_GAUSSIAN(type)                                \
    EXPECT_KERNEL(zmoiFilterGaussianBorder_##type##_C1R, 1); \
    EXPECT_KERNEL(zmoiFilterGaussianBorder_##type##_C3R, 3); \
    EXPECT_KERNEL(zmoiFilterGaussian_##type##_C1R_L, 1);     \
    EXPECT_KERNEL(zmoiFilterGaussian_##type##_C3R_L, 3)
#define EXPECT_MASK(Base, types, kind)                                                     \
    expectOracle(                                                                          \
        fixedMask(#Base #types, oracle::Mask::kind, zmoiFilter##Base##BorderGetBufferSize, \
                  zmoiFilter##Base##Border_##types##_C1R),                                 \
        3)
#define EXPECT_PIPELINE(Base, rows, divided, S, D, types)                               \
    expectOracle(pipeline<rows, divided, S, D>(#Base #types, 1, Base##_##types##_C1R)); \
    expectOracle(pipeline<rows, divided, S, D>(#Base #types, 3, Base##_##types##_C3R))
#define EXPECT_ROWS(...) EXPECT_PIPELINE(zmoiFilterRowBorderPipeline, true, __VA_ARGS__)
#define EXPECT_COLUMNS(...) EXPECT_PIPELINE(zmoiFilterColumnPipeline, false, __VA_ARGS__)

TEST(Filters, Separable) {
    EXPECT_SEPARABLE(8u);
    EXPECT_SEPARABLE(8u16s);
    EXPECT_SEPARABLE(16s);
    EXPECT_SEPARABLE(16u);
    EXPECT_SEPARABLE(32f);
}

TEST(Filters, Gaussian) {
    EXPECT_GAUSSIAN(8u);
    EXPECT_GAUSSIAN(16u);
    EXPECT_GAUSSIAN(16s);
    EXPECT_GAUSSIAN(32f);
}

TEST(Filters, FixedMasks) {
    EXPECT_MASK(SobelVert, 8u16s, vert);
    EXPECT_MASK(SobelHoriz, 8u16s, horiz);
    EXPECT_MASK(Laplacian, 8u16s, laplacian);
    EXPECT_MASK(Lowpass, 8u, lowpass);
    EXPECT_MASK(SobelVert, 32f, vert);
    EXPECT_MASK(SobelHoriz, 32f, horiz);
    EXPECT_MASK(SobelCross, 32f, cross);
    EXPECT_MASK(Laplacian, 32f, laplacian);
    EXPECT_MASK(Lowpass, 32f, lowpass);
}

TEST(Filters, Pipelines) {
    EXPECT_ROWS(true, Zmo8u, Zmo16s, 8u16s);
    EXPECT_ROWS(true, Zmo16u, Zmo16u, 16u);
    EXPECT_ROWS(true, Zmo16s, Zmo16s, 16s);
    EXPECT_ROWS(false, Zmo32f, Zmo32f, 32f);
    EXPECT_ROWS(false, Zmo16s, Zmo16s, Low_16s);
    EXPECT_COLUMNS(true, Zmo16u, Zmo16u, 16u);
    EXPECT_COLUMNS(true, Zmo16s, Zmo16s, 16s);
    EXPECT_COLUMNS(true, Zmo16s, Zmo8u, 16s8u);
    EXPECT_COLUMNS(true, Zmo16s, Zmo8s, 16s8s);
    EXPECT_COLUMNS(false, Zmo32f, Zmo32f, 32f);
    EXPECT_COLUMNS(false, Zmo16s, Zmo16s, Low_16s);
}

kit::Wrong unknownBorder(size_t place) {
    return {place, 4, zmoStsBorderErr};
}
kit::Wrong noValue(size_t border) {
    return {{{border, zmoiBorderConst}, {border + 1, nullptr}}, zmoStsNullPtrErr};
}

TEST(Filters, BadArguments) {
    const ZmoiSize roi{20, 3};
    const ZmoiSizeL large{20, 3};
    kit::Image<Zmo16s> src(roi, {}, 6, 3);
    src.fill([] { return 5; });
    kit::Image<Zmo16s> dst(roi, {}, 0, 3);
    kit::Image<Zmo8u> grey(roi, {}, 6);
    kit::Image<Zmo16s> derivative(roi);
    Prepared gauss = prepareGaussian<Zmo16s>(0, large, 3);
    Prepared greyGauss = prepareGaussian<Zmo16s>(0, large, 1);
    Prepared floatGauss = prepareGaussian<Zmo32f>(0, large, 3);
    Prepared separable = prepareSeparable<Zmo16s, Zmo16s>(tapsOf(0, false), large, 3);
    kit::Buffer buffer(100000);
    const Zmo16s value[3] = {};
    const auto border = kit::exempt(&value[0]);
    kit::expectBadArguments(
        zmoiFilterGaussianBorder_16s_C3R,
        {noValue(5),
         unknownBorder(5),
         {7,
          {greyGauss.state.as<ZmoiGaussianState>(), floatGauss.state.as<ZmoiGaussianState>()},
          zmoStsStateErr}},
        src, dst, roi, zmoiBorderMirror, border, gauss.state, buffer);
    kit::expectBadArguments(
        zmoiFilterSeparable_16s_C3R_L,
        {noValue(5), unknownBorder(5), {7, gauss.state.as<ZmoiSeparableState>(), zmoStsStateErr}},
        src, dst, large, zmoiBorderMirror, border, separable.state, buffer);
    kit::expectBadArguments(zmoiFilterLaplacianBorder_8u16s_C1R,
                            {noValue(6), {5, 4, zmoStsMaskSizeErr}, unknownBorder(6)}, grey,
                            derivative, roi, zmoiMask5x5, zmoiBorderMirror,
                            kit::exempt<Zmo8u*>(nullptr), buffer);

    const Zmo16s kernel[31] = {10, 20, 30, 20, 10, 100, 0, 32000, 800};
    const auto to = dst.rows();
    Zmo16s* rows[] = {to[0], to[1], to[2]};
    const Zmo16s* from[] = {src.rows()[0], src.rows()[1], src.rows()[2], nullptr};
    kit::expectBadArguments(zmoiFilterRowBorderPipeline_16s_C3R,
                            {noValue(8),
                             {5, 0, zmoStsMaskSizeErr},
                             {6, {-1, 9}, zmoStsAnchorErr},
                             {7, 0, zmoStsRangeErr},
                             {5, 9, zmoStsRangeErr},
                             unknownBorder(8)},
                            src, kit::Pointer<Zmo16s*>{rows, &dst}, roi, &kernel[0], 5, 2, 2,
                            zmoiBorderMirror, border, buffer);
    // With two taps the fourth row is missed.
    kit::expectBadArguments(
        zmoiFilterColumnPipeline_16s_C3R,
        {{{{3, roi}, {5, 2}}, zmoStsNullPtrErr}, {5, 0, zmoStsMaskSizeErr}, {6, 0, zmoStsRangeErr}},
        &from[0], dst, roi, &kernel[0], 1, 2, buffer);
}

TEST(Filters, BadStates) {
    const Zmo16s kernel[31] = {10, 20, 30, 20, 10, 100, 0, 32000, 800};
    const Zmo32f floatKernel[] = {1, 2, 3, 2, 1, HUGE_VALF};
    const ZmoiSizeL roi{20, 3};
    const auto mask = kit::exempt(ZmoiSize{5, 5});
    kit::Buffer state(4096);
    kit::expectBadArguments(zmoiFilterGaussianInit_L,
                            {{0, 4, zmoStsMaskSizeErr},
                             {1, 0, zmoStsRangeErr},
                             {2, zmo64f, zmoStsDataTypeErr},
                             {3, 2, zmoStsChannelsErr}},
                            5, 1, zmo16u, 3, state);
    kit::expectBadArguments(zmoiFilterSeparableInit_16s_L,
                            {{2, {ZmoiSize{256, 5}, ZmoiSize{5, 0}}, zmoStsMaskSizeErr},
                             {3, ZmoiPoint{2, 300}, zmoStsAnchorErr},
                             {4, 0, zmoStsRangeErr},
                             {2, ZmoiSize{9, 5}, zmoStsRangeErr},
                             {{{5, zmo64f}, {6, zmo64f}}, zmoStsDataTypeErr},
                             {7, 2, zmoStsChannelsErr}},
                            &kernel[0], &kernel[0], mask, ZmoiPoint{2, 2}, 2, zmo16u, zmo16u, 3,
                            state);
    kit::expectBadArguments(zmoiFilterSeparableInit_32f_L,
                            {{2, {ZmoiSize{256, 5}, ZmoiSize{5, 0}}, zmoStsMaskSizeErr},
                             {3, ZmoiPoint{2, 300}, zmoStsAnchorErr},
                             {2, ZmoiSize{6, 5}, zmoStsRangeErr},
                             {4, 2, zmoStsChannelsErr}},
                            &floatKernel[0], &floatKernel[0], mask, ZmoiPoint{2, 2}, 3, state);
    int64_t sizes[] = {-1, -1};
    const ZmoiSizeL beyond{INT64_MAX / 4, 3};
    kit::expectBadArguments(zmoiFilterGaussianGetSize_L,
                            {{1, 4, zmoStsMaskSizeErr},
                             {2, zmo64f, zmoStsDataTypeErr},
                             {3, 2, zmoStsChannelsErr},
                             {0, beyond, zmoStsTooLargeErr}},
                            roi, 5, zmo16u, 3, &sizes[0], &sizes[1]);
    kit::expectBadArguments(zmoiFilterSeparableGetSize_L,
                            {{1, {ZmoiSize{256, 5}, ZmoiSize{5, 0}}, zmoStsMaskSizeErr},
                             {{{2, zmo64f}, {3, zmo64f}}, zmoStsDataTypeErr},
                             {4, 2, zmoStsChannelsErr},
                             {0, beyond, zmoStsTooLargeErr}},
                            roi, mask, zmo16u, zmo16u, 3, &sizes[0], &sizes[1]);
    int size = -1;
    for (auto* const query :
         {zmoiFilterSobelVertBorderGetBufferSize, zmoiFilterSobelHorizBorderGetBufferSize,
          zmoiFilterSobelCrossBorderGetBufferSize, zmoiFilterLaplacianBorderGetBufferSize,
          zmoiFilterLowpassBorderGetBufferSize}) {
        const bool isCross = query == zmoiFilterSobelCrossBorderGetBufferSize;
        kit::expectBadArguments(query,
                                {{1, 4, zmoStsMaskSizeErr},
                                 {2, isCross ? zmo8u : zmo16s, zmoStsDataTypeErr},
                                 {3, 2, zmoStsChannelsErr},
                                 {0, ZmoiSize{INT32_MAX, 3}, zmoStsTooLargeErr}},
                                ZmoiSize{20, 3}, zmoiMask5x5, isCross ? zmo32f : zmo8u, 1, &size);
    }
}

}  // namespace
