// Filters: separable, Gaussian, with fixed masks, and between rows of the caller's.
#include "oracle/filter.h"
#include "oracle/mask.h"
#include "zmoi.h"

namespace {

bool isReal(const kit::Function& function) {
    return function.isNamed("32f");
}

// Kernels of changing sizes, anchors and weights; from time to time sums exceed 32 bits. Products
// with the rounded inverse of 98 miss many halves.
oracle::Taps tapsOf(size_t turn, const kit::Function& function) {
    static constexpr int widths[] = {1, 3, 5, 7, 2, 11, 6};
    static constexpr int heights[] = {5, 1, 3, 8, 7, 2, 12, 9};
    static constexpr int divisors[] = {1, 16, 6, 49, 1000, 2, 4096, 3, 98};
    static constexpr int sizes[] = {1, 2, 20, 100, 2700};
    kit::Random random(1000 + turn);
    const int size = sizes[turn % (function.isNamed("Pipeline") ? 4 : 5)];
    const auto weight = [&](int least) {
        const int whole = random.between(least, size);
        return isReal(function) ? double{static_cast<float>(whole) * 0.0137F} : whole;
    };
    oracle::Taps taps;
    for (int i = 0; i < widths[turn % 7]; ++i) taps.row.push_back(weight(-size));
    for (int j = 0; j < heights[turn % 8]; ++j) taps.column.push_back(weight(-size / 2));
    taps.anchor = {random.between(0, taps.size().width - 1),
                   random.between(0, taps.size().height - 1)};
    taps.divisor = divisors[turn % 9];
    return taps;
}

ZmoiBorderType borderOf(const kit::Turn& t) {
    return static_cast<ZmoiBorderType>(t.number % 4);
}

kit::Case caseOf(kit::Turn& t, const kit::Function& function) {
    kit::Case c(function, t, {{"pSrc", {}, 12}, {"ppSrc", {}, 12}});
    c.allowAnySize();
    draw(t, c.src());
    if (function.has("border")) draw(t, c.borderValue());
    return c.with("border", borderOf(t));
}

kit::Case separableCase(kit::Turn& t, const kit::Function& function) {
    kit::Case c = caseOf(t, function);
    const oracle::Taps taps = tapsOf(t.number, function);
    const bool real = isReal(function);
    c.with({{"pRowKernel", taps.row},
            {"pColumnKernel", taps.column},
            {"kernelSize", taps.size()},
            {"anchor", taps.anchor},
            {"divisor", taps.divisor}})
        .sized(ZMO(zmoiFilterSeparableGetSize_L))
        .prepared(real ? ZMO(zmoiFilterSeparableInit_32f_L) : ZMO(zmoiFilterSeparableInit_16s_L));
    return oracle::wantBordered(c, borderOf(t), [=](const oracle::Extended& a, int x, int y) {
        return oracle::separable(a, x, y, taps, real);
    });
}

kit::Case gaussianCase(kit::Turn& t, const kit::Function& function) {
    const int taps = std::array{5, 3, 11, 1, 7}[t.number % 5];
    const float sigma = std::array{1.0F, 0.05F, 2.5F, 0.7F}[t.number % 4];
    kit::Case c = caseOf(t, function);
    c.with({{"kernelSize", taps}, {"sigma", sigma}})
        .sized(ZMO(zmoiFilterGaussianGetSize_L))
        .prepared(ZMO(zmoiFilterGaussianInit));
    const auto weights = oracle::gaussian(taps, sigma);
    return oracle::wantBordered(c, borderOf(t), [=](const oracle::Extended& a, int x, int y) {
        return oracle::separable(a, x, y, {weights, weights, {taps / 2, taps / 2}}, true);
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

kit::Case maskCase(kit::Turn& t, const Masked& row) {
    const int side = t.number / 4 % 2 == 0 ? 3 : 5;
    kit::Case c = caseOf(t, row.function).with("mask", side).sized(row.query);
    return oracle::wantBordered(c, borderOf(t), [&](const oracle::Extended& a, int x, int y) {
        return oracle::mask(a, x, y, side / 2, row.kind);
    });
}

// The sum saturates at every tap.
double lowSum(const oracle::Extended& a, int x, int y, const oracle::Taps& taps) {
    double sum = 0;
    for (int j = 0; j < taps.size().height; ++j) {
        for (int i = 0; i < taps.size().width; ++i) {
            const double weight =
                taps.row[static_cast<size_t>(i)] * taps.column[static_cast<size_t>(j)];
            sum += weight * a(x + i - taps.anchor.x, y + j - taps.anchor.y);
            sum = std::clamp<double>(sum, INT16_MIN, INT16_MAX);
        }
    }
    return sum;
}

// A pipeline is a separable filter with one tap in the other direction.
kit::Case pipelineCase(kit::Turn& t, const kit::Function& function) {
    const bool rows = function.isNamed("Row");
    oracle::Taps taps = tapsOf(t.number, function);
    (rows ? taps.column : taps.row) = {1};
    (rows ? taps.anchor.y : taps.anchor.x) = 0;
    const auto& weights = rows ? taps.row : taps.column;
    const int count = static_cast<int>(weights.size());
    kit::Case c = caseOf(t, function);
    if (!rows) c.setRows(-taps.anchor.y, t.size.height + count - 1);
    c.with({{"pKernel", weights},
            {"kernelSize", count},
            {"anchor", taps.anchor.x},
            {"divisor", taps.divisor}})
        .sized(rows ? ZMO(zmoiFilterRowBorderPipelineGetBufferSize)
                    : ZMO(zmoiFilterColumnPipelineGetBufferSize));
    return oracle::wantBordered(
        c, rows ? borderOf(t) : zmoiBorderInMem, [&](const oracle::Extended& a, int x, int y) {
            return function.isNamed("Low") ? lowSum(a, x, y, taps)
                                           : oracle::separable(a, x, y, taps, isReal(function));
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

TEST(Filters, BadArguments) {
    kit::Turn t(39, {20, 3}, {}, 62);
    kit::Case gauss = gaussianCase(t, ZMO(zmoiFilterGaussianBorder_16s_C3R));
    kit::Case grey = gaussianCase(t, ZMO(zmoiFilterGaussianBorder_16s_C1R));
    kit::Case real = gaussianCase(t, ZMO(zmoiFilterGaussianBorder_32f_C3R));
    const auto state = [](kit::Case& c) { return c.memory("pState").ptr(); };
    gauss.expectBadArguments({{"pState", {state(grey), state(real)}, zmoStsStateErr}});
    separableCase(t, ZMO(zmoiFilterSeparable_16s_C3R_L))
        .expectBadArguments({{"pState", state(gauss), zmoStsStateErr}});
    maskCase(t, masks[2]).expectBadArguments({{"mask", 4, zmoStsMaskSizeErr}});

    const kit::Named fewTaps = {
        {"pKernel", std::vector<double>{10, 20, 30, 20, 10, 100, 0, 32000, 800}},
        {"kernelSize", 5},
        {"anchor", 2},
        {"divisor", 2}};
    kit::Case rows = pipelineCase(t, ZMO(zmoiFilterRowBorderPipeline_16s_C3R));
    rows.with(fewTaps).expectBadArguments({{"kernelSize", 0, zmoStsMaskSizeErr},
                                           {"anchor", {-1, 9}, zmoStsAnchorErr},
                                           {"divisor", 0, zmoStsRangeErr},
                                           {"kernelSize", 9, zmoStsRangeErr}});
    kit::Case columns = pipelineCase(t, ZMO(zmoiFilterColumnPipeline_16s_C3R));
    columns.with(fewTaps).with("kernelSize", 1);
    columns.setRows(0, 3);
    // With two taps the fourth row is missed.
    columns.expectBadArguments({{{{"roi", columns.roi()}, {"kernelSize", 2}}, zmoStsNullPtrErr},
                                {"kernelSize", 0, zmoStsMaskSizeErr},
                                {"divisor", 0, zmoStsRangeErr}});
}

TEST(Filters, BadStates) {
    const kit::Wrong sizes{"kernelSize", {ZmoiSize{256, 5}, ZmoiSize{5, 0}}, zmoStsMaskSizeErr};
    const kit::Wrong types{{{"srcType", zmo64f}, {"dstType", zmo64f}}, zmoStsDataTypeErr};
    const kit::Wrong anchor{"anchor", ZmoiPoint{2, 300}, zmoStsAnchorErr};
    const auto separable = [](const kit::Function& function, const std::vector<double>& kernel) {
        return kit::Case(function)
            .with({{"pRowKernel", kernel},
                   {"pColumnKernel", kernel},
                   {"kernelSize", ZmoiSize{5, 5}},
                   {"anchor", ZmoiPoint{2, 2}},
                   {"divisor", 2},
                   {"srcType", zmo16u},
                   {"dstType", zmo16u},
                   {"channels", 3}})
            .give("pState", kit::Buffer(4096));
    };
    separable(ZMO(zmoiFilterSeparableInit_16s_L), {10, 20, 30, 20, 10, 100, 0, 32000, 800})
        .expectBadArguments({sizes,
                             anchor,
                             {"divisor", 0, zmoStsRangeErr},
                             {"kernelSize", ZmoiSize{9, 5}, zmoStsRangeErr},
                             types});
    separable(ZMO(zmoiFilterSeparableInit_32f_L), {1, 2, 3, 2, 1, HUGE_VAL})
        .expectBadArguments({sizes, anchor, {"kernelSize", ZmoiSize{6, 5}, zmoStsRangeErr}});
    separable(ZMO(zmoiFilterSeparableGetSize_L), {}).expectBadArguments({sizes, types});
    kit::Case(ZMO(zmoiFilterGaussianInit_L))
        .with({{"kernelSize", 5}, {"sigma", 1}, {"type", zmo16u}, {"channels", 3}})
        .give("pState", kit::Buffer(4096))
        .expectBadArguments({{"kernelSize", 4, zmoStsMaskSizeErr},
                             {"sigma", 0, zmoStsRangeErr},
                             {"type", zmo64f, zmoStsDataTypeErr}});
}

}  // namespace
