// Corners from the structure tensor: MinEigenVal, EigenValsVecs, both with a border, and HarrisCorner.
#include <algorithm>
#include <cmath>

#include "case.h"
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
const std::vector<Row> rows8u = {ROWS(8u32f)};
const std::vector<Row> rows32f = {ROWS(32f)};

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

kit::Case caseOf(const Row& row, ZmoiSize size, kit::Layout layout, const Own& own) {
    kit::Case c(row.function, size, layout, {{"pSrc", {}, 10}, {"pDst", {}, 0, row.floats()}});
    c.with({{"kernel", own.kernel},
            {"kernelSize", own.kernelSize},
            {"windowSize", own.windowSize},
            {"k", own.k},
            {"scale", own.scale},
            {"border", own.border}})
        .sized(row.query);
    c.allowAnySize();
    return c;
}

// The tensors of all pixels, each window summed anew.
template <class T>
std::vector<Tensor> tensors(const kit::Image<T>& src, const Own& own, T value) {
    using oracle::Mask;
    const int radius = own.windowSize / 2;
    const oracle::Extended<T> picture{src, own.border, value};
    const auto derived = [&](Mask sobel, Mask scharr) {
        const Mask mask = own.kernel == zmoiKernelSobel ? sobel : scharr;
        kit::Image<double> image(src.size(), {}, own.border == zmoiBorderInMem ? radius : 0);
        image.fill(
            [&](int x, int y) { return oracle::mask(picture, x, y, own.kernelSize / 2, mask); });
        return image;
    };
    const kit::Image<double> dx = derived(Mask::vert, Mask::scharrVert);
    const kit::Image<double> dy = derived(Mask::horiz, Mask::scharrHoriz);
    const oracle::Extended<double> alongX{dx, own.border, 0};
    const oracle::Extended<double> alongY{dy, own.border, 0};
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

template <class T>
std::vector<Tensor> tensors(kit::Case& c, const Own& own) {
    const bool border = c.function().has("border");
    return tensors(c.src().as<T>(), own, border ? c.borderValue().as<T>().get(0, 0) : T{});
}

// Every function gives the bits of the formulas.
template <class T>
kit::Case& wantOracle(kit::Case& c, const Row& row, const Own& own) {
    const std::vector<Tensor> expected = tensors<T>(c, own);
    return c.want("pDst", [&](int x, int y, int i) {
        return row.result(expected[kit::indexIn(c.roi(), x, y)], i, own);
    });
}

template <class Draw>
void fill(kit::Case& c, Draw draw) {
    c.src().fill(draw);
    if (c.function().has("border")) c.borderValue().fill(draw);
}

template <class T>
void expectOracleEverywhere(const std::vector<Row>& rows,
                            const std::function<double(kit::Random&, size_t turn)>& draw) {
    kit::forEachCase(
        {90, 4}, rows,
        [&](auto& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            const Own own = ownOf(row, turn);
            kit::Case c = caseOf(row, size, layout, own);
            fill(c, [&] { return draw(random, turn); });
            return wantOracle<T>(c, row, own);
        });
}

// Integers, of which some are black or white only, and eighths, whose products and sums are exact in
// double precision.
TEST(Corner, Oracle8u) {
    expectOracleEverywhere<Zmo8u>(rows8u, [](auto& random, size_t turn) -> double {
        return static_cast<double>(turn / 4 % 2 ? random.between(0, 255)
                                                : random.between(0, 1) * 255);
    });
    kit::Random random(91);
    for (const Row& row : rows8u) {
        Own widest = ownOf(row, 1);
        widest.windowSize = 255;
        for (const ZmoiBorderType border : {zmoiBorderConst, zmoiBorderMirror}) {
            if (row.function.has("border")) widest.border = border;
            kit::Case c = caseOf(row, {17, 5}, {}, widest);
            fill(c, [&] { return random.between(0, 1) * 255; });
            kit::expectAtAllLevels(wantOracle<Zmo8u>(c, row, widest));
        }
    }
}

TEST(Corner, Oracle32f) {
    expectOracleEverywhere<Zmo32f>(rows32f, [](auto& random, size_t) {
        return static_cast<double>(random.between(-8000, 8000)) / 8;
    });
}

// Behind a bright part of the picture only rounding is left in the running sums.
TEST(Corner, RunningSumsOfFloats) {
    const Row& row = rows32f[3];
    const Own own = ownOf(row, 3);
    kit::Case c = caseOf(row, {90, 60}, {}, own);
    kit::Random random(93);
    fill(c, [&] { return random.uniform(-1, 1); });
    for (int x = 0; x < 90; ++x) c.src().set(x, 10, 0, 12345.678F);
    const std::vector<Tensor> expected = tensors<Zmo32f>(c, own);
    double largest = 0;
    for (const Tensor& t : expected) largest = std::max({largest, t.a, t.c});
    const kit::AnyImage dst = c.tried();
    kit::forEachPixel(dst.size(), [&](int x, int y) {
        const double want = eigenResult(expected[kit::indexIn(dst.size(), x, y)], 0);
        EXPECT_NEAR(dst.get(x, y), want, 2e-7 * want + (90 + 60) * 0x1p-52 * largest);
    });
}

// Whatever comes of it, it is the same at all levels.
TEST(Corner, NotANumber) {
    kit::Random random(95);
    for (const Row& row : rows32f) {
        kit::Case c = caseOf(row, {90, 20}, {}, ownOf(row, 3));
        fill(c, [&] { return random.uniform(-1, 1); });
        c.src().set(40, 5, 0, NAN);
        c.src().set(50, 8, 0, -NAN);
        c.src().set(20, 14, 0, HUGE_VAL);
        kit::expectSameAtAllLevels(c);
    }
}

TEST(Corner, BadArguments) {
    const Own own{0, 3, 3, 0.04F, 1, zmoiBorderMirror};
    for (const auto& rows : {rows8u, rows32f}) {
        for (const Row& row : rows) {
            std::vector<kit::Wrong> wrong = {
                {"kernel", 2, zmoStsFlagErr},
                {{{"kernel", 1}, {"kernelSize", 5}}, zmoStsMaskSizeErr},
                {"kernelSize", 4, zmoStsMaskSizeErr},
                {"windowSize", {4, 257}, zmoStsMaskSizeErr}};
            if (row.function.has("scale")) {
                wrong.push_back({"k", {0.26F, NAN}, zmoStsRangeErr});
                wrong.push_back({"scale", {0, INFINITY}, zmoStsRangeErr});
            }
            kit::Case c = caseOf(row, {17, 13}, {}, own);
            c.expectBadArguments(wrong);
            kit::Case(row.query)
                .with({{"kernelSize", 5},
                       {"windowSize", 3},
                       {"type", c.src().type()},
                       {"channels", 1}})
                .expectBadArguments({{"kernelSize", 4, zmoStsMaskSizeErr},
                                     {"windowSize", 2, zmoStsMaskSizeErr},
                                     {"type", zmo16u, zmoStsDataTypeErr},
                                     {"channels", 3, zmoStsChannelsErr}});
        }
    }
}

}  // namespace
