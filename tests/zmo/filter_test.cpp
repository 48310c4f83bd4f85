// Filters: separable, Gaussian, with fixed masks, and between rows of the caller's.
#include "oracle/filter.h"
#include "bordered.h"
#include "zmoi.h"

namespace {

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

// The weights as the function takes them.
kit::Buffer memoryOf(const kit::Function& function, const std::vector<Zmo16s>& weights) {
    const auto copied = [](const auto& values) {
        const auto bytes = std::as_bytes(std::span(values));
        kit::Buffer memory(static_cast<int64_t>(bytes.size()), 0);
        std::memcpy(memory.ptr(), bytes.data(), bytes.size());
        memory.snapshot();
        return memory;
    };
    return function.isNamed("32f") ? copied(floats(weights)) : copied(weights);
}

constexpr int margin = 12;

ZmoiBorderType borderOf(size_t turn) {
    return static_cast<ZmoiBorderType>(turn % 4);
}

kit::Case caseOf(kit::Random& random, const kit::Function& function, ZmoiSize size,
                 kit::Layout layout, size_t turn) {
    kit::Case c(function, size, layout, {{"pSrc", {}, margin}, {"ppSrc", {}, margin}});
    c.allowAnySize();
    kit::drawWide(random, turn, c.src());
    if (function.has("border")) kit::drawWide(random, turn, c.borderValue());
    return c.with("border", borderOf(turn));
}

kit::Case separableCase(kit::Random& random, const kit::Function& function, ZmoiSize size,
                        kit::Layout layout, size_t turn) {
    kit::Case c = caseOf(random, function, size, layout, turn);
    const oracle::Taps taps = tapsOf(turn, true);
    const bool real = function.isNamed("32f");
    c.give("pRowKernel", memoryOf(function, taps.row))
        .give("pColumnKernel", memoryOf(function, taps.column))
        .with({{"kernelSize", taps.size()}, {"anchor", taps.anchor}, {"divisor", taps.divisor}})
        .sized(ZMO(zmoiFilterSeparableGetSize_L))
        .prepared(real ? ZMO(zmoiFilterSeparableInit_32f_L) : ZMO(zmoiFilterSeparableInit_16s_L));
    return kit::wantBordered(c, borderOf(turn), [&](const auto& a, int x, int y) -> double {
        if (!real) return static_cast<double>(oracle::separable(a, x, y, taps));
        return oracle::separable32f(a, x, y, floats(taps.row), floats(taps.column), taps.anchor);
    });
}

kit::Case gaussianCase(kit::Random& random, const kit::Function& function, ZmoiSize size,
                       kit::Layout layout, size_t turn) {
    const int taps = std::array{5, 3, 11, 1, 7}[turn % 5];
    const float sigma = std::array{1.0F, 0.05F, 2.5F, 0.7F}[turn % 4];
    kit::Case c = caseOf(random, function, size, layout, turn);
    c.with({{"kernelSize", taps}, {"sigma", sigma}})
        .sized(ZMO(zmoiFilterGaussianGetSize_L))
        .prepared(ZMO(zmoiFilterGaussianInit));
    const auto weights = oracle::gaussian(taps, sigma);
    return kit::wantBordered(c, borderOf(turn), [&](const auto& a, int x, int y) {
        return oracle::separable32f(a, x, y, weights, weights, {taps / 2, taps / 2});
    });
}

struct Masked {
    kit::Function function;
    kit::Function query;
    oracle::Mask kind;
};

#define MASK(Base, types, kind)                                                                  \
    {                                                                                            \
        ZMO(zmoiFilter##Base##Border_##types##_C1R), ZMO(zmoiFilter##Base##BorderGetBufferSize), \
            oracle::Mask::kind                                                                   \
    }
const std::vector<Masked> masks = {
    MASK(SobelVert, 8u16s, vert),      MASK(SobelHoriz, 8u16s, horiz),
    MASK(Laplacian, 8u16s, laplacian), MASK(Lowpass, 8u, lowpass),
    MASK(SobelVert, 32f, vert),        MASK(SobelHoriz, 32f, horiz),
    MASK(SobelCross, 32f, cross),      MASK(Laplacian, 32f, laplacian),
    MASK(Lowpass, 32f, lowpass)};

kit::Case maskCase(kit::Random& random, const Masked& row, ZmoiSize size, kit::Layout layout,
                   size_t turn) {
    const int side = turn / 4 % 2 == 0 ? 3 : 5;
    kit::Case c = caseOf(random, row.function, size, layout, turn);
    c.with("mask", side).sized(row.query);
    return kit::wantBordered(
        c, borderOf(turn), [&]<class S>(const oracle::Extended<S>& a, int x, int y) {
            if constexpr (std::is_same_v<S, Zmo8u> || std::is_same_v<S, Zmo32f>) {
                return static_cast<double>(oracle::mask(a, x, y, side / 2, row.kind));
            } else {
                return 0.0;
            }
        });
}

// The sum saturates at every tap.
template <class S>
double lowSum(const oracle::Extended<S>& a, int x, int y, const std::vector<Zmo16s>& weights,
              bool rows, ZmoiPoint anchor) {
    int64_t sum = 0;
    for (int i = 0; i < static_cast<int>(weights.size()); ++i) {
        const S pixel = rows ? a(x + i - anchor.x, y) : a(x, y + i - anchor.y);
        sum += weights[static_cast<size_t>(i)] * static_cast<int64_t>(pixel);
        sum = std::clamp<int64_t>(sum, INT16_MIN, INT16_MAX);
    }
    return static_cast<double>(sum);
}

// A pipeline is a separable filter with one tap in the other direction.
kit::Case pipelineCase(kit::Random& random, const kit::Function& function, ZmoiSize size,
                       kit::Layout layout, size_t turn) {
    const bool rows = function.isNamed("Row");
    oracle::Taps taps = tapsOf(turn, false);
    (rows ? taps.column : taps.row) = {1};
    (rows ? taps.anchor.y : taps.anchor.x) = 0;
    const auto& weights = rows ? taps.row : taps.column;
    const int count = static_cast<int>(weights.size());
    kit::Case c = caseOf(random, function, size, layout, turn);
    if (!rows) c.setRows(-taps.anchor.y, size.height + count - 1);
    c.give("pKernel", memoryOf(function, weights))
        .with({{"kernelSize", count}, {"anchor", taps.anchor.x}, {"divisor", taps.divisor}})
        .sized(rows ? ZMO(zmoiFilterRowBorderPipelineGetBufferSize)
                    : ZMO(zmoiFilterColumnPipelineGetBufferSize));
    const auto outside = [&](int k) { return rows ? c.borderValue().get(0, 0, k) : 0; };
    return kit::wantBordered(
        c, rows ? borderOf(turn) : zmoiBorderInMem, outside,
        [&](const auto& a, int x, int y) -> double {
            if (function.isNamed("32f")) {
                return rows ? oracle::separable32f(a, x, y, floats(weights), {1}, taps.anchor)
                            : oracle::separable32f(a, x, y, {1}, floats(weights), taps.anchor);
            }
            if (function.isNamed("Low")) return lowSum(a, x, y, weights, rows, taps.anchor);
            return static_cast<double>(oracle::separable(a, x, y, taps));
        });
}

#define SEPARABLE(types)                                                                \
    ZMO(zmoiFilterSeparable_##types##_C1R_L), ZMO(zmoiFilterSeparable_##types##_C3R_L), \
        ZMO(zmoiFilterSeparable_##types##_C4R_L)
#define GAUSSIAN(type)                                                                      \
    ZMO(zmoiFilterGaussianBorder_##type##_C1R), ZMO(zmoiFilterGaussianBorder_##type##_C3R), \
        ZMO(zmoiFilterGaussian_##type##_C1R_L), ZMO(zmoiFilterGaussian_##type##_C3R_L)
#define PIPELINE(Base, types) \
    ZMO(zmoiFilter##Base##Pipeline_##types##_C1R), ZMO(zmoiFilter##Base##Pipeline_##types##_C3R)

using Functions = std::vector<kit::Function>;
const Functions separables = {SEPARABLE(8u), SEPARABLE(8u16s), SEPARABLE(16s), SEPARABLE(16u),
                              SEPARABLE(32f)};
const Functions gaussians = {GAUSSIAN(8u), GAUSSIAN(16u), GAUSSIAN(16s), GAUSSIAN(32f)};
const Functions pipelines = {
    PIPELINE(RowBorder, 8u16s), PIPELINE(RowBorder, 16u),     PIPELINE(RowBorder, 16s),
    PIPELINE(RowBorder, 32f),   PIPELINE(RowBorder, Low_16s), PIPELINE(Column, 16u),
    PIPELINE(Column, 16s),      PIPELINE(Column, 16s8u),      PIPELINE(Column, 16s8s),
    PIPELINE(Column, 32f),      PIPELINE(Column, Low_16s)};

const std::vector<ZmoiSize> longRows = {{530, 2}, {600, 1}};

TEST(Filters, Separable) {
    kit::forEachCase({34, 1, longRows}, separables, separableCase);
}
TEST(Filters, Gaussian) {
    kit::forEachCase({35, 1, longRows}, gaussians, gaussianCase);
}
TEST(Filters, FixedMasks) {
    kit::forEachCase({36, 3, longRows}, masks, maskCase);
}
TEST(Filters, Pipelines) {
    kit::forEachCase({37, 1, longRows}, pipelines, pipelineCase);
}

TEST(Filters, ImagesBeyondTwoGigabytes) {
    kit::Random random(38);
    for (const auto& function : separables) {
        separableCase(random, function, {37, 6}, {}, 60).expectWithFarRows();
    }
    for (const auto& function : gaussians) {
        if (function.large()) gaussianCase(random, function, {37, 6}, {}, 60).expectWithFarRows();
    }
}

TEST(Filters, BadArguments) {
    kit::Random random(39);
    const auto stateOf = [&](const auto& make, const Functions& from, std::string_view name) {
        for (const auto& function : from) {
            if (function.isNamed(name)) return make(random, function, {20, 3}, {}, 62);
        }
        throw std::invalid_argument(std::string(name));
    };
    kit::Case gauss = stateOf(gaussianCase, gaussians, "Border_16s_C3R");
    kit::Case grey = stateOf(gaussianCase, gaussians, "Border_16s_C1R");
    kit::Case real = stateOf(gaussianCase, gaussians, "Border_32f_C3R");
    kit::Case separable = stateOf(separableCase, separables, "_16s_C3R");
    const auto state = [](kit::Case& c) { return c.memory("pState").ptr(); };
    gauss.expectBadArguments({{"pState", {state(grey), state(real)}, zmoStsStateErr}});
    separable.expectBadArguments({{"pState", state(gauss), zmoStsStateErr}});
    maskCase(random, masks[2], {20, 3}, {}, 62)
        .expectBadArguments({{"mask", 4, zmoStsMaskSizeErr}});

    const Zmo16s kernel[31] = {10, 20, 30, 20, 10, 100, 0, 32000, 800};
    const kit::Named fewTaps = {
        {"pKernel", &kernel[0]}, {"kernelSize", 5}, {"anchor", 2}, {"divisor", 2}};
    kit::Case rows = stateOf(pipelineCase, pipelines, "RowBorderPipeline_16s_C3R");
    rows.with(fewTaps).expectBadArguments({{"kernelSize", 0, zmoStsMaskSizeErr},
                                           {"anchor", {-1, 9}, zmoStsAnchorErr},
                                           {"divisor", 0, zmoStsRangeErr},
                                           {"kernelSize", 9, zmoStsRangeErr}});
    kit::Case columns = stateOf(pipelineCase, pipelines, "ColumnPipeline_16s_C3R");
    columns.with(fewTaps).with("kernelSize", 1);
    columns.setRows(0, 3);
    // With two taps the fourth row is missed.
    columns.expectBadArguments({{{{"roi", columns.roi()}, {"kernelSize", 2}}, zmoStsNullPtrErr},
                                {"kernelSize", 0, zmoStsMaskSizeErr},
                                {"divisor", 0, zmoStsRangeErr}});
}

TEST(Filters, BadStates) {
    static constexpr Zmo16s kernel[31] = {10, 20, 30, 20, 10, 100, 0, 32000, 800};
    static constexpr Zmo32f floatKernel[] = {1, 2, 3, 2, 1, HUGE_VALF};
    const kit::Named gaussian = {
        {"kernelSize", 5}, {"sigma", 1}, {"type", zmo16u}, {"channels", 3}};
    const kit::Named separable = {{"kernelSize", ZmoiSize{5, 5}},
                                  {"anchor", ZmoiPoint{2, 2}},
                                  {"divisor", 2},
                                  {"srcType", zmo16u},
                                  {"dstType", zmo16u},
                                  {"channels", 3}};
    const std::vector<kit::Wrong> wrongGaussian = {{"kernelSize", 4, zmoStsMaskSizeErr},
                                                   {"type", zmo64f, zmoStsDataTypeErr}};
    const kit::Wrong sizes{"kernelSize", {ZmoiSize{256, 5}, ZmoiSize{5, 0}}, zmoStsMaskSizeErr};
    const kit::Wrong types{{{"srcType", zmo64f}, {"dstType", zmo64f}}, zmoStsDataTypeErr};
    const kit::Wrong anchor{"anchor", ZmoiPoint{2, 300}, zmoStsAnchorErr};
    const kit::Buffer state(4096);
    kit::Case(ZMO(zmoiFilterGaussianInit_L))
        .with(gaussian)
        .give("pState", state)
        .expectBadArguments({wrongGaussian[0], {"sigma", 0, zmoStsRangeErr}, wrongGaussian[1]});
    kit::Case(ZMO(zmoiFilterSeparableInit_16s_L))
        .with(separable)
        .with({{"pRowKernel", &kernel[0]}, {"pColumnKernel", &kernel[0]}})
        .give("pState", state)
        .expectBadArguments({sizes,
                             anchor,
                             {"divisor", 0, zmoStsRangeErr},
                             {"kernelSize", ZmoiSize{9, 5}, zmoStsRangeErr},
                             types});
    kit::Case(ZMO(zmoiFilterSeparableInit_32f_L))
        .with(separable)
        .with({{"pRowKernel", &floatKernel[0]}, {"pColumnKernel", &floatKernel[0]}})
        .give("pState", state)
        .expectBadArguments({sizes, anchor, {"kernelSize", ZmoiSize{6, 5}, zmoStsRangeErr}});
    kit::Case(ZMO(zmoiFilterGaussianGetSize_L)).with(gaussian).expectBadArguments(wrongGaussian);
    kit::Case(ZMO(zmoiFilterSeparableGetSize_L)).with(separable).expectBadArguments({sizes, types});
    for (const auto& query :
         {ZMO(zmoiFilterSobelVertBorderGetBufferSize), ZMO(zmoiFilterSobelHorizBorderGetBufferSize),
          ZMO(zmoiFilterSobelCrossBorderGetBufferSize), ZMO(zmoiFilterLaplacianBorderGetBufferSize),
          ZMO(zmoiFilterLowpassBorderGetBufferSize)}) {
        const bool isCross = query.isNamed("Cross");
        kit::Case(query)
            .with({{"mask", zmoiMask5x5}, {"type", isCross ? zmo32f : zmo8u}, {"channels", 1}})
            .expectBadArguments({{"mask", 4, zmoStsMaskSizeErr},
                                 {"type", isCross ? zmo8u : zmo16s, zmoStsDataTypeErr}});
    }
}

}  // namespace
