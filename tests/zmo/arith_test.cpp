#include <cmath>

#include "case.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

// What the formulas of the header see: a pixel of each image, and the function's own values.
struct Pixel {
    double a[3];
    double b;
    double old;
    const std::vector<double>& own;
    bool whole;  // elements are integers
};

struct Row {
    kit::Function function;
    double (*formula)(const Pixel&);
    // Legal values, each with another result, and what is not legal.
    std::vector<std::vector<double>> values = {{}};
    std::vector<kit::Wrong> bad = {};

    bool ofFloats() const { return function.isNamed("_32f_"); }
};

using kit::single;

// ---- Formulas

double sum(const Pixel& p) {
    return p.old + p.a[0];
}
double sumOfSquares(const Pixel& p) {
    return p.old + single(p.a[0] * p.a[0]);
}
double sumOfProducts(const Pixel& p) {
    return p.old + single(p.a[0] * p.b);
}
double weighted(const Pixel& p) {
    return single(p.a[0] * p.own[0]) + single(p.old * single(1.0 - p.own[0]));
}
double blended(const Pixel& p) {
    return single(p.a[0] * p.own[0]) + single(p.b * single(1.0 - p.own[0]));
}
double history(const Pixel& p) {
    if (p.a[0] != 0) return p.own[0];
    return p.old < single(p.own[0] - p.own[1]) ? 0 : p.old;
}
double difference(const Pixel& p) {
    return std::fabs(p.a[0] - p.b);
}
double differenceFromConstant(const Pixel& p) {
    return std::fabs(p.a[0] - p.own[0]);
}
double gray(const Pixel& p) {
    const double u = std::fabs(p.a[0]);
    const double v = std::fabs(p.a[1]);
    const double w = std::fabs(p.a[2]);
    double result = std::max({u, v, w});
    if (p.own[0] == double{zmoNormL1}) {
        result = (p.whole ? u + v + w : single(single(u + v) + w)) / 3;
    } else if (p.own[0] == double{zmoNormL2}) {
        result = std::sqrt((u * u + v * v + w * w) / 3);
    }
    return p.whole ? std::nearbyint(result) : result;
}

// ---- The functions

const std::vector<std::vector<double>> alphas = {{0}, {0.3F}, {1}};
const std::vector<kit::Wrong> badAlphas = {{"alpha", {-0.001, 1.001, NAN}, zmoStsRangeErr}};
const std::vector<std::vector<double>> times = {{100, 30}, {100, 90}, {200, 30}};
const std::vector<kit::Wrong> badTimes = {{"timestamp", {HUGE_VAL, NAN}, zmoStsRangeErr},
                                          {"duration", {-1, NAN}, zmoStsRangeErr}};
const std::vector<std::vector<double>> norms = {{zmoNormInf}, {zmoNormL1}, {zmoNormL2}};
const std::vector<kit::Wrong> badNorms = {{"norm", {3, -1}, zmoStsNormErr}};

#define ROW(fn, ...) \
    { ZMO(fn), __VA_ARGS__ }
#define TWO_ROWS(base, types, ...) \
    ROW(zmoi##base##_##types##_C1IR, __VA_ARGS__), ROW(zmoi##base##_##types##_C1IMR, __VA_ARGS__)
#define ROWS(types, type, constants)                                             \
    ROW(zmoiAdd_##types##_C1IMR, sum), TWO_ROWS(AddSquare, types, sumOfSquares), \
        TWO_ROWS(AddProduct, types, sumOfProducts),                              \
        TWO_ROWS(AddWeighted, types, weighted, alphas, badAlphas),               \
        ROW(zmoiUpdateMotionHistory_##types##_C1IR, history, times, badTimes),   \
        ROW(zmoiAbsDiff_##type##_C1R, difference),                               \
        ROW(zmoiAbsDiffC_##type##_C1R, differenceFromConstant, constants),       \
        ROW(zmoiGradientColorToGray_##type##_C3C1R, gray, norms, badNorms)

using Values = std::vector<std::vector<double>>;
const std::vector<Row> rows = {ROW(zmoiAdd_8u32f_C1IR, sum),
                               ROWS(8u32f, 8u, (Values{{0}, {100}, {255}})),
                               ROW(zmoiAdd_16u32f_C1IR, sum),
                               ROWS(16u32f, 16u, (Values{{0}, {40000}, {65535}})),
                               ROWS(32f, 32f, (Values{{0}, {-70.5}, {1e20F}})),
                               ROW(zmoiAddWeighted_32f_C1R, blended, alphas, badAlphas)};

// ---- Comparison

kit::Case caseOf(const Row& row, const kit::Turn& t, const std::vector<double>& own) {
    kit::Case c(row.function, t);
    const auto names = row.function.values();
    for (size_t i = 0; i < own.size(); ++i) c.with(names[i], own[i]);
    return c;
}

double valueAt(const kit::Case& c, const Row& row, const std::vector<double>& own, int x, int y) {
    const double old = c.dst()(x, y);
    if (!c.selects(x, y)) return old;
    Pixel pixel{{}, 0, old, own, c.src().isWhole()};
    for (int i = 0; i < c.src().channels(); ++i) pixel.a[i] = c.src()(x, y, i);
    if (c.function().has("pSrc2")) pixel.b = c.image(1)(x, y);
    return row.formula(pixel);
}

kit::Case& wantFormula(kit::Case& c, const Row& row, const std::vector<double>& own) {
    bool any = false;
    c.want([&](int x, int y) {
        any |= c.selects(x, y);
        return valueAt(c, row, own, x, y);
    });
    return c.wantStatus(any ? zmoStsNoErr : zmoStsEmptyMask);
}

// The whole range of integers, often its ends; floats of the size given. A silhouette that is zero
// nowhere would leave nothing of the history, whose half numbers meet the oldest time, too.
void draw(kit::Case& c, kit::Random& random, kit::Masked how, double huge) {
    const double range = c.src().most();
    const auto any = [&] {
        if (range == 0) return random.uniform(-1, 1) * (huge > 0 ? huge : 1000);
        return std::clamp(std::floor(random.uniform(-0.5, 1.5) * range), 0.0, range);
    };
    c.fillAll([&] { return random.between(0, 3) == 0 ? 0 : any(); },
              [&] {
                  if (!c.function().has("pSrcDst")) return any();
                  return huge > 0 ? random.uniform(-1e30, 1e30)
                                  : std::floor(random.uniform(0, 400)) / 2;
              });
    if (c.function().masked()) kit::drawMask(c.mask(), how, random);
}

double drawOdd(kit::Random& random) {
    const float values[] = {
        NAN,  -NAN, std::bit_cast<float>(0x7fc12345), HUGE_VALF, -HUGE_VALF, 3e38F, -0.0F, 1e-40F,
        2.0F, 0.0F};
    return values[random.between(0, 9)];
}

// Unselected pixels may be anything, raise no flag, and keep their bits.
void drawUnselected(kit::Case& c, const Row& row, kit::Random& random) {
    kit::forEachPixel(c.roi(), [&](int x, int y) {
        if (c.selects(x, y)) return;
        c.dst().set(x, y, drawOdd(random));
        if (!row.ofFloats()) return;
        c.src().set(x, y, drawOdd(random));
        if (row.formula == sumOfProducts) c.image("pSrc2").set(x, y, drawOdd(random));
    });
}

TEST(Arith, Oracle) {
    // Longer than the stretches that masks are looked at in.
    kit::forEachCase({61, 1, {{600, 2}}}, rows, [](kit::Turn& t, const Row& row) {
        const auto& own = row.values[t.number % row.values.size()];
        kit::Case c = caseOf(row, t, own);
        draw(c, t, static_cast<kit::Masked>(t.number / 3 % 4), t.number % 5 == 0 ? 1e18 : 0);
        if (t.number % 2 == 0) drawUnselected(c, row, t);
        return wantFormula(c, row, own);
    });
}

TEST(Arith, BadArguments) {
    const kit::Turn t(62, {12, 4});
    for (const Row& row : rows) caseOf(row, t, row.values[0]).expectBadArguments(row.bad);
}

// Where the formula gives a number, so does the function; all levels agree in every bit.
TEST(Arith, InfiniteAndNotANumber) {
    kit::Turn t(64, {67, 9}, {1, 3});
    for (const Row& row : rows) {
        if (!row.ofFloats()) continue;
        const auto& own = row.values.back();
        kit::Case c = caseOf(row, t, own);
        c.fillAll([&] { return drawOdd(t); }, [&] { return drawOdd(t); });
        if (row.function.masked()) kit::drawMask(c.mask(), kit::Masked::some, t);
        const kit::Image made = c.tried();
        c.want([&](int x, int y) {
            const double want = valueAt(c, row, own, x, y);
            // A maximum with NaN is any.
            const bool any = row.formula == gray || (std::isnan(want) && std::isnan(made(x, y)));
            return any ? made(x, y) : want;
        });
        kit::expectSameAtAllLevels(c);
    }
}

}  // namespace
