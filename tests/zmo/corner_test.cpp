// Corners from the structure tensor: MinEigenVal, EigenValsVecs, both with a border, and
// HarrisCorner.
#include <cmath>

#include "oracle/mask.h"
#include "zmocv.h"

namespace {

struct Tensor {
    double a, b, c;
};

double eigenResult(const Tensor& t, int i) {
    const double m = (t.a + t.c) / 2;
    const double d = (t.a - t.c) / 2;
    const double r = std::sqrt(d * d + t.b * t.b);
    if (i == 0) return m + r;
    if (i == 1) return m - r < m * 0x1p-48 ? 0 : m - r;
    if (i >= 4) return i == 4 ? 0 - eigenResult(t, 3) : eigenResult(t, 2);
    if (r == 0) return i == 2 ? 1 : 0;
    const double u = d >= 0 ? d + r : t.b;
    const double v = d >= 0 ? t.b : r - d;
    return (i == 2 ? u : v) * (1 / std::sqrt(u * u + v * v));
}

struct Own {
    int kernel;
    int kernelSize;
    int windowSize;
    float k;
    float scale;
    ZmoiBorderType border;
};

struct Row {
    kit::Function function;
    kit::Function query;

    bool ofFloats() const { return function.isNamed("_32f_"); }
    int floats() const { return function.isNamed("EigenValsVecs") ? 6 : 1; }
    double result(const Tensor& t, int i, const Own& own) const {
        if (!function.has("scale")) return eigenResult(t, floats() == 1 ? 1 : i);
        const double trace = t.a + t.c;
        return own.scale * ((t.a * t.c - t.b * t.b) - own.k * (trace * trace));
    }
};

#define ROW(base, types) \
    { ZMO(base##_##types##_C1R), ZMO(base##GetBufferSize) }
#define ROWS(types)                                                                                \
    ROW(zmoiMinEigenVal, types), ROW(zmoiEigenValsVecs, types), ROW(zmoiMinEigenValBorder, types), \
        ROW(zmoiEigenValsVecsBorder, types), ROW(zmoiHarrisCorner, types)
const std::vector<Row> rows = {ROWS(8u32f), ROWS(32f)};

// The forms without a border replicate.
Own ownOf(const Row& row, size_t turn) {
    static constexpr int windows[] = {3, 1, 5, 15, 7};
    static constexpr int kernels[][2] = {{0, 3}, {0, 5}, {1, 3}};
    const auto border = static_cast<ZmoiBorderType>(turn / 3 % 4);
    return {kernels[turn % 3][0],
            kernels[turn % 3][1],
            windows[turn % 5],
            turn % 2 != 0 ? 0.04F : 0.25F,
            turn / 2 % 2 != 0 ? 1.0F : 1e-6F,
            row.function.has("border") ? border : zmoiBorderReplicate};
}

kit::Case caseOf(const Row& row, const kit::Turn& t, const Own& own, const kit::Pixels& pixels) {
    kit::Case c(row.function, t, {{"pSrc", {}, 10}, {"pDst", {}, 0, row.floats()}});
    c.allowAnySize();
    c.src().fill(pixels);
    if (row.function.has("border")) c.borderValue().fill(pixels);
    return c
        .with({{"kernel", own.kernel},
               {"kernelSize", own.kernelSize},
               {"windowSize", own.windowSize},
               {"k", own.k},
               {"scale", own.scale},
               {"border", own.border}})
        .sized(row.query);
}

// The tensors of all pixels, each window summed anew.
std::vector<Tensor> tensors(const kit::Case& c, const Own& own) {
    using oracle::Mask;
    const int radius = own.windowSize / 2;
    const kit::Image src = c.src().numbers();
    const oracle::Extended picture{src, own.border, c.outside()};
    const auto derived = [&](Mask sobel, Mask scharr) {
        const Mask mask = own.kernel == zmoiKernelSobel ? sobel : scharr;
        return kit::Image(
            src.size(),
            [&](int x, int y) { return oracle::mask(picture, x, y, own.kernelSize / 2, mask); },
            own.border == zmoiBorderInMem ? radius : 0);
    };
    const kit::Image dx = derived(Mask::vert, Mask::scharrVert);
    const kit::Image dy = derived(Mask::horiz, Mask::scharrHoriz);
    const oracle::Extended alongX{dx, own.border};
    const oracle::Extended alongY{dy, own.border};
    std::vector<Tensor> all;
    kit::forEachPixel(src.size(), [&](int x, int y) {
        Tensor t = {0, 0, 0};
        for (int j = y - radius; j <= y + radius; ++j) {
            for (int i = x - radius; i <= x + radius; ++i) {
                const double p = alongX(i, j);
                const double q = alongY(i, j);
                t = {t.a + p * p, t.b + p * q, t.c + q * q};
            }
        }
        all.push_back(t);
    });
    return all;
}

// Every function gives the bits of the formulas.
kit::Case& wantOracle(kit::Case&& c, const Row& row, const Own& own) {
    const std::vector<Tensor> expected = tensors(c, own);
    return c.want([&](int x, int y, int i) {
        return row.result(expected[kit::indexIn(c.roi(), x, y)], i, own);
    });
}

// Integers, of which some are black or white only, and eighths, whose products and sums are exact
// in double precision.
TEST(Corner, Oracle) {
    kit::forEachCase({90, 4}, rows, [](kit::Turn& t, const Row& row) {
        const Own own = ownOf(row, t.number);
        const int unit = t.number / 4 % 2 ? 1 : 255;
        const auto draw = [&]() -> double {
            if (row.ofFloats()) return t.between(-8000, 8000) / 8.0;
            return t.between(0, 255 / unit) * unit;
        };
        return wantOracle(caseOf(row, t, own, draw), row, own);
    });
}

TEST(Corner, WidestWindow) {
    kit::Turn t(91, {17, 5});
    for (const Row& row : rows) {
        if (row.ofFloats()) continue;
        Own widest = ownOf(row, 1);
        widest.windowSize = 255;
        for (const ZmoiBorderType border : {zmoiBorderConst, zmoiBorderMirror}) {
            if (row.function.has("border")) widest.border = border;
            const auto draw = [&] { return t.between(0, 1) * 255; };
            kit::expectAtAllLevels(wantOracle(caseOf(row, t, widest, draw), row, widest));
        }
    }
}

// Behind a bright part of the picture only rounding is left in the running sums.
TEST(Corner, RunningSumsOfFloats) {
    kit::Turn t(93, {90, 60});
    const Row& row = rows[8];
    const Own own = ownOf(row, 3);
    kit::Case c = caseOf(row, t, own, [&] { return t.uniform(-1, 1); });
    for (int x = 0; x < 90; ++x) c.src().set(x, 10, 12345.678F);
    const std::vector<Tensor> expected = tensors(c, own);
    double largest = 0;
    for (const Tensor& tensor : expected) largest = std::max({largest, tensor.a, tensor.c});
    const kit::Image dst = c.tried();
    kit::forEachPixel(dst.size(), [&](int x, int y) {
        const double want = eigenResult(expected[kit::indexIn(dst.size(), x, y)], 0);
        EXPECT_NEAR(dst(x, y), want, 2e-7 * want + (90 + 60) * 0x1p-52 * largest);
    });
}

// Whatever comes of it, it is the same at all levels.
TEST(Corner, NotANumber) {
    kit::Turn t(95, {90, 20});
    for (const Row& row : rows) {
        if (!row.ofFloats()) continue;
        kit::Case c = caseOf(row, t, ownOf(row, 3), [&] { return t.uniform(-1, 1); });
        c.src().set(40, 5, NAN);
        c.src().set(50, 8, -NAN);
        c.src().set(20, 14, HUGE_VAL);
        kit::expectSameAtAllLevels(c);
    }
}

TEST(Corner, BadArguments) {
    const Own own{0, 3, 3, 0.04F, 1, zmoiBorderMirror};
    for (const Row& row : rows) {
        std::vector<kit::Wrong> wrong = {{"kernel", 2, zmoStsFlagErr},
                                         {{{"kernel", 1}, {"kernelSize", 5}}, zmoStsMaskSizeErr},
                                         {"kernelSize", 4, zmoStsMaskSizeErr},
                                         {"windowSize", {4, 257}, zmoStsMaskSizeErr}};
        if (row.function.has("scale")) {
            wrong.push_back({"k", {0.26F, NAN}, zmoStsRangeErr});
            wrong.push_back({"scale", {0, INFINITY}, zmoStsRangeErr});
        }
        caseOf(row, kit::Turn(96, {17, 13}), own, 1).expectBadArguments(wrong);
    }
}

}  // namespace
