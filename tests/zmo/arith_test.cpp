#include <cmath>

#include "anycall.h"
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
};

// Products of floats are exact in double precision, and a sum, quotient or root taken there rounds
// to single precision as the direct one does.
double single(double value) {
    return static_cast<float>(value);
}

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
const std::vector<kit::Wrong> badAlphas = {{0, {-0.001, 1.001, NAN}, zmoStsRangeErr}};
const std::vector<std::vector<double>> times = {{100, 30}, {100, 90}, {200, 30}};
const std::vector<kit::Wrong> badTimes = {{0, {HUGE_VAL, NAN}, zmoStsRangeErr},
                                          {1, {-1, NAN}, zmoStsRangeErr}};
const std::vector<std::vector<double>> norms = {{zmoNormInf}, {zmoNormL1}, {zmoNormL2}};
const std::vector<kit::Wrong> badNorms = {{0, {3, -1}, zmoStsNormErr}};

#define ROW(fn, ...)           \
    Row {                      \
        {#fn, fn}, __VA_ARGS__ \
    }
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

class Case : public kit::AnyCall {
  public:
    Case(const Row& r, ZmoiSize size, kit::Layout layout, const std::vector<double>& values)
        : AnyCall(r.function, size, layout), row(r), own(values), target(imageCount() - 1) {
        for (size_t i = 0; i < own.size(); ++i) setValue(i, own[i]);
    }

    double most() const { return kit::mostOf(image(0)); }

    // The whole range of integers, often its ends; floats of the size told. A silhouette that is not
    // zero nowhere would leave nothing of the history, whose half numbers meet the oldest time, too.
    void draw(kit::Random& random, kit::Masked how, double huge) {
        const double range = most();
        const auto any = [&]() -> double {
            if (range == 0) return random.uniform(-1, 1) * (huge > 0 ? huge : 1000);
            return std::clamp(std::floor(random.uniform(-0.5, 1.5) * range), 0.0, range);
        };
        const auto sparse = [&] { return random.between(0, 3) == 0 ? 0 : any(); };
        const bool grows = row.function.inPlace();
        fillAll(sparse, [&] {
            if (!grows) return any();
            return huge > 0 ? random.uniform(-1e30, 1e30) : std::floor(random.uniform(0, 400)) / 2;
        });
        if (row.function.masked()) kit::drawMask(mask(), how, random);
    }

    double expected(const AnyCall& before, int x, int y) {
        const double old = before.get(target, x, y);
        if (!selects(x, y)) return old;
        Pixel pixel{{}, 0, old, own, most() != 0};
        for (int c = 0; c < row.function.channels(0); ++c) pixel.a[c] = get(0, x, y, c);
        if (target > 1) pixel.b = get(1, x, y);
        return row.formula(pixel);
    }

    void expectOracle() {
        const AnyCall before = *this;
        const oracle::Selection selection{roi(), [this](int x, int y) { return selects(x, y); }};
        EXPECT_EQ(run(), selection.count() == 0 ? zmoStsEmptyMask : zmoStsNoErr);
        expectTarget(target, [&](int x, int y, int) { return expected(before, x, y); });
    }

    const Row& row;
    const std::vector<double>& own;
    size_t target;

  private:
    size_t imageCount() const { return function().images().size(); }
};

void expectOracle(const std::vector<ZmoiSize>& sizes, double huge) {
    kit::forEachRow(
        61, rows, sizes,
        [&](kit::Random& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            Case c(row, size, layout, row.values[turn % row.values.size()]);
            c.draw(random, static_cast<kit::Masked>(turn / 3 % 4), huge);
            c.expectOracle();
        });
}

TEST(Arith, Oracle) {
    // Longer than the stretches that masks are looked at in.
    auto sizes = kit::sizes();
    sizes.push_back({600, 2});
    expectOracle(sizes, 0);
    expectOracle({{1, 1}, {31, 4}, {67, 9}}, 1e18);
}

TEST(Arith, BadArguments) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.function.name());
        Case(row, {12, 4}, {}, row.values[0]).expectBadArguments(row.bad);
    }
}

double drawOdd(kit::Random& random) {
    const float values[] = {
        NAN,  -NAN, std::bit_cast<float>(0x7fc12345), HUGE_VALF, -HUGE_VALF, 3e38F, -0.0F, 1e-40F,
        2.0F, 0.0F};
    return values[random.between(0, 9)];
}

// Unselected pixels may be anything, raise no flag, and keep their bits.
TEST(Arith, UnselectedFloatsHaveNoInfluence) {
    kit::forEachRow(63, rows, [](kit::Random& random, const Row& row) {
        if (!row.function.masked()) return;
        Case c(row, {301, 5}, {1, 3}, row.values.back());
        c.draw(random, kit::Masked::some, 0);
        kit::forEachPixel(c.roi(), [&](int x, int y) {
            if (c.selects(x, y)) return;
            c.set(c.target, x, y, 0, drawOdd(random));
            if (c.most() != 0) return;
            c.set(0, x, y, 0, drawOdd(random));
            if (row.formula == sumOfProducts) c.set(1, x, y, 0, drawOdd(random));
        });
        c.expectOracle();
    });
}

// Where the formula gives a number, so does the function; all levels agree in every bit.
TEST(Arith, InfiniteAndNotANumber) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.function.name());
        if (!row.function.isNamed("_32f_")) continue;
        kit::atAllLevels([&] {
            kit::Random random(64);
            Case c(row, {67, 9}, {1, 3}, row.values.back());
            const auto draw = [&] { return drawOdd(random); };
            c.fillAll(draw, draw);
            if (row.function.masked()) kit::drawMask(c.mask(), kit::Masked::some, random);
            const kit::AnyCall before = c;
            EXPECT_EQ(kit::runUnwatched(c.call()), zmoStsNoErr);
            c.expectTarget(c.target, [&](int x, int y, int) {
                const double want = c.expected(before, x, y);
                const double value = c.get(c.target, x, y);
                // A maximum with NaN is any.
                const bool any = row.formula == gray || (std::isnan(want) && std::isnan(value));
                return any ? value : want;
            });
            return std::get<kit::Image<Zmo32f>>(c.image(c.target));
        });
    }
}

}  // namespace
