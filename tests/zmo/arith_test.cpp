#include <cmath>

#include "kit.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

// A function's own values; each looks at its own ones only.
struct Values {
    float alpha = 0;  // also the constant of AbsDiffC
    float timestamp = 0;
    float duration = 0;
    ZmoNormType norm = zmoNormInf;
};

template <class T, class D>
struct Args {
    const T* pSrc;
    int srcStep;
    const T* pSrc2;
    int src2Step;
    const Zmo8u* pMask;
    int maskStep;
    D* pDst;
    int dstStep;
    ZmoiSize roi;
    Values own;
};

// What the formulas of the header see: a pixel of each image, channels side by side.
template <class T, class D>
struct Pixel {
    T a[3];
    T b;
    D old;
    Values own;
};

template <class T, class D>
struct Function {
    const char* name;
    bool two;
    bool masked;
    int channels;
    D (*formula)(const Pixel<T, D>&);
    std::vector<Values> values;
    std::function<ZmoStatus(const Args<T, D>&)> run;
    std::vector<kit::Fault<Args<T, D>>> faults;
};

// Products of floats are exact in double precision, and a sum, quotient or root taken there rounds
// to single precision as the direct one does.
float single(double value) {
    return static_cast<float>(value);
}

// ---- Formulas

template <class T>
float sum(const Pixel<T, float>& p) {
    return single(static_cast<double>(p.old) + p.a[0]);
}
template <class T>
float sumOfSquares(const Pixel<T, float>& p) {
    return single(static_cast<double>(p.old) + single(static_cast<double>(p.a[0]) * p.a[0]));
}
template <class T>
float sumOfProducts(const Pixel<T, float>& p) {
    return single(static_cast<double>(p.old) + single(static_cast<double>(p.a[0]) * p.b));
}
template <class T>
float weighted(const Pixel<T, float>& p) {
    const double rest = single(1.0 - p.own.alpha);
    return single(static_cast<double>(single(static_cast<double>(p.a[0]) * p.own.alpha)) +
                  single(p.old * rest));
}
float blended(const Pixel<float, float>& p) {
    return weighted(Pixel<float, float>{{p.a[0]}, 0, p.b, p.own});
}
template <class T>
float history(const Pixel<T, float>& p) {
    if (p.a[0] != 0) return p.own.timestamp;
    return p.old < single(static_cast<double>(p.own.timestamp) - p.own.duration) ? 0 : p.old;
}
template <class T>
T difference(const Pixel<T, T>& p) {
    return static_cast<T>(std::fabs(static_cast<double>(p.a[0]) - p.b));
}
template <class T>
T differenceFromConstant(const Pixel<T, T>& p) {
    return static_cast<T>(std::fabs(static_cast<double>(p.a[0]) - static_cast<T>(p.own.alpha)));
}
template <class T>
T gray(const Pixel<T, T>& p) {
    const double u = std::fabs(p.a[0]);
    const double v = std::fabs(p.a[1]);
    const double w = std::fabs(p.a[2]);
    constexpr bool whole = std::is_integral_v<T>;
    double result = std::max({u, v, w});
    if (p.own.norm == zmoNormL1) {
        result = whole ? (u + v + w) / 3 : single(single(u + v) + w) / 3.0;
    } else if (p.own.norm == zmoNormL2) {
        result = std::sqrt((u * u + v * v + w * w) / 3);
    }
    return static_cast<T>(whole ? std::nearbyint(result) : result);
}

// ---- Tables of functions

template <class T, class D>
std::vector<kit::Fault<Args<T, D>>> alphaFaults() {
    using A = Args<T, D>;
    return {{"alpha negative", zmoStsRangeErr, [](A& a) { a.own.alpha = -0.001F; }},
            {"alpha above 1", zmoStsRangeErr, [](A& a) { a.own.alpha = 1.001F; }},
            {"alpha no number", zmoStsRangeErr, [](A& a) { a.own.alpha = NAN; }}};
}
template <class T>
std::vector<kit::Fault<Args<T, float>>> timeFaults() {
    using A = Args<T, float>;
    return {{"timestamp infinite", zmoStsRangeErr, [](A& a) { a.own.timestamp = HUGE_VALF; }},
            {"timestamp no number", zmoStsRangeErr, [](A& a) { a.own.timestamp = NAN; }},
            {"duration negative", zmoStsRangeErr, [](A& a) { a.own.duration = -1; }},
            {"duration no number", zmoStsRangeErr, [](A& a) { a.own.duration = NAN; }}};
}
template <class T>
std::vector<kit::Fault<Args<T, T>>> normFaults() {
    using A = Args<T, T>;
    return {{"norm 3", zmoStsNormErr, [](A& a) { a.own.norm = static_cast<ZmoNormType>(3); }},
            {"norm -1", zmoStsNormErr, [](A& a) { a.own.norm = static_cast<ZmoNormType>(-1); }}};
}

const std::vector<Values> none = {{}};
const std::vector<Values> alphas = {{0.0F}, {0.3F}, {1.0F}};
const std::vector<Values> times = {{0, 100, 30}, {0, 100, 90}, {0, 200, 30}};
const std::vector<Values> norms = {
    {0, 0, 0, zmoNormInf}, {0, 0, 0, zmoNormL1}, {0, 0, 0, zmoNormL2}};

#define SRC a.pSrc, a.srcStep
#define SRC2 a.pSrc2, a.src2Step
#define MASK a.pMask, a.maskStep
#define REST a.pDst, a.dstStep, a.roi

#define ROW(fn, two, masked, channels, formula, values, faults, ...) \
    {                                                                \
#fn, two, masked, channels, formula, values,                 \
            [](const auto& a) { return fn(__VA_ARGS__); }, faults    \
    }
#define ROW_MASKED(base, types, formula) \
    ROW(zmoi##base##_##types##_C1IMR, false, true, 1, formula, none, {}, SRC, MASK, REST)
#define ROW_PLAIN(base, types, formula) \
    ROW(zmoi##base##_##types##_C1IR, false, false, 1, formula, none, {}, SRC, REST)

// Without Add_..._C1IR, which 32f lacks.
#define ACCUMULATORS(T, types)                                                                    \
    ROW_MASKED(Add, types, sum<T>), ROW_PLAIN(AddSquare, types, sumOfSquares<T>),                 \
        ROW_MASKED(AddSquare, types, sumOfSquares<T>),                                            \
        ROW(zmoiAddProduct_##types##_C1IR, true, false, 1, sumOfProducts<T>, none, {}, SRC, SRC2, \
            REST),                                                                                \
        ROW(zmoiAddProduct_##types##_C1IMR, true, true, 1, sumOfProducts<T>, none, {}, SRC, SRC2, \
            MASK, REST),                                                                          \
        ROW(zmoiAddWeighted_##types##_C1IR, false, false, 1, weighted<T>, alphas,                 \
            (alphaFaults<T, float>()), SRC, REST, a.own.alpha),                                   \
        ROW(zmoiAddWeighted_##types##_C1IMR, false, true, 1, weighted<T>, alphas,                 \
            (alphaFaults<T, float>()), SRC, MASK, REST, a.own.alpha),                             \
        ROW(zmoiUpdateMotionHistory_##types##_C1IR, false, false, 1, history<T>, times,           \
            timeFaults<T>(), SRC, REST, a.own.timestamp, a.own.duration)

#define PIXELWISE(T, type, constants)                                                             \
    ROW(zmoiAbsDiff_##type##_C1R, true, false, 1, difference<T>, none, {}, SRC, SRC2, REST),      \
        ROW(zmoiAbsDiffC_##type##_C1R, false, false, 1, differenceFromConstant<T>, constants, {}, \
            SRC, REST, static_cast<T>(a.own.alpha)),                                              \
        ROW(zmoiGradientColorToGray_##type##_C3C1R, false, false, 3, gray<T>, norms,              \
            normFaults<T>(), SRC, REST, a.own.norm)

template <class T>
struct Tables;
template <>
struct Tables<Zmo8u> {
    std::vector<Function<Zmo8u, Zmo32f>> accumulators = {ROW_PLAIN(Add, 8u32f, sum<Zmo8u>),
                                                         ACCUMULATORS(Zmo8u, 8u32f)};
    std::vector<Function<Zmo8u, Zmo8u>> pixelwise = {
        PIXELWISE(Zmo8u, 8u, (std::vector<Values>{{0}, {100}, {255}}))};
};
template <>
struct Tables<Zmo16u> {
    std::vector<Function<Zmo16u, Zmo32f>> accumulators = {ROW_PLAIN(Add, 16u32f, sum<Zmo16u>),
                                                          ACCUMULATORS(Zmo16u, 16u32f)};
    std::vector<Function<Zmo16u, Zmo16u>> pixelwise = {
        PIXELWISE(Zmo16u, 16u, (std::vector<Values>{{0}, {40000}, {65535}}))};
};
template <>
struct Tables<Zmo32f> {
    std::vector<Function<Zmo32f, Zmo32f>> accumulators = {
        ACCUMULATORS(Zmo32f, 32f),
        ROW(zmoiAddWeighted_32f_C1R, true, false, 1, blended, alphas,
            (alphaFaults<Zmo32f, Zmo32f>()), SRC, SRC2, REST, a.own.alpha)};
    std::vector<Function<Zmo32f, Zmo32f>> pixelwise = {
        PIXELWISE(Zmo32f, 32f, (std::vector<Values>{{0}, {-70.5F}, {1e20F}}))};
};

// ---- Comparison

template <class T, class D>
struct Case {
    Case(const Function<T, D>& f, ZmoiSize size, kit::Layout layout)
        : function(f),
          src(size, layout, 0, f.channels),
          src2(size, {layout.misalign * 5 % 64, layout.padding + 2}),
          mask(size, {layout.misalign * 3 % 64, layout.padding + 1}),
          before(size, {layout.misalign * 7 % 64, layout.padding}),
          dst(before) {}

    // A silhouette that is not zero nowhere would leave nothing of the history.
    template <class Draw, class DrawOld>
    void fill(kit::Random& random, kit::Masked how, Draw draw, DrawOld drawOld) {
        const auto sparse = [&] { return random.between(0, 3) == 0 ? 0 : draw(); };
        src.fill(sparse);
        src2.fill(draw);
        kit::drawMask(mask, how, random);
        before.fill(drawOld);
        dst = before;
    }

    bool selects(int x, int y) const { return !function.masked || mask.get(x, y) != 0; }

    Args<T, D> args(const Values& own) {
        return {src.ptr(),   src.step(), src2.ptr(), src2.step(), mask.ptr(),
                mask.step(), dst.ptr(),  dst.step(), src.size(),  own};
    }

    D expected(const Values& own, int x, int y) const {
        const D old = before.get(x, y);
        if (!selects(x, y)) return old;
        Pixel<T, D> pixel{{}, src2.get(x, y), old, own};
        for (int c = 0; c < function.channels; ++c) pixel.a[c] = src.get(x, y, c);
        return function.formula(pixel);
    }

    ZmoStatus status() const {
        for (int y = 0; y < src.size().height; ++y) {
            for (int x = 0; x < src.size().width; ++x) {
                if (selects(x, y)) return zmoStsNoErr;
            }
        }
        return zmoStsEmptyMask;
    }

    void expectOracle(const Values& own) {
        kit::forEachLevel([&] {
            dst = before;
            EXPECT_EQ(kit::watched([&] { return function.run(args(own)); }), status());
            kit::expectPixels(dst, [&](int x, int y) { return expected(own, x, y); });
            dst.expectSurroundingsUntouched("result");
        });
        src.expectUntouched("source");
        src2.expectUntouched("second source");
        mask.expectUntouched("mask");
    }

    const Function<T, D>& function;
    kit::Image<T> src;
    kit::Image<T> src2;
    kit::Image<Zmo8u> mask;
    kit::Image<D> before;
    kit::Image<D> dst;
};

template <class T, class D, class Draw, class DrawOld>
void expectOracle(const std::vector<Function<T, D>>& functions, const std::vector<ZmoiSize>& sizes,
                  kit::Random& random, Draw draw, DrawOld drawOld) {
    const auto layouts = kit::layouts();
    size_t turn = 0;
    for (const auto& function : functions) {
        for (const ZmoiSize size : sizes) {
            // No size meets the same layout and kind of mask with every function.
            const size_t shift = static_cast<size_t>(&function - functions.data());
            const kit::Layout layout = layouts[(turn + shift) % layouts.size()];
            const auto how = static_cast<kit::Masked>((turn / 3 + shift) % 4);
            const Values& own = function.values[turn % function.values.size()];
            ++turn;
            SCOPED_TRACE(testing::Message() << function.name << " " << size << " " << layout
                                            << " mask " << static_cast<int>(how));
            Case<T, D> c(function, size, layout);
            c.fill(random, how, draw, drawOld);
            c.expectOracle(own);
        }
    }
}

template <class T>
class Arith : public testing::Test {
  protected:
    Tables<T> tables;
    kit::Random random{61};
    static constexpr bool whole = std::is_integral_v<T>;

    // The whole range of integers, often its ends.
    double draw() {
        if (!whole) return random.uniform(-1000, 1000);
        constexpr int64_t most = whole ? static_cast<int64_t>(std::numeric_limits<T>::max()) : 0;
        const int64_t any = random.between(-most / 2, most + most / 2);
        return static_cast<double>(std::clamp<int64_t>(any, 0, most));
    }
    double drawHuge() { return whole ? draw() : random.uniform(-1, 1) * 1e18; }
    double drawOld() { return random.uniform(0, 200); }
};
using Elements = testing::Types<Zmo8u, Zmo16u, Zmo32f>;
TYPED_TEST_SUITE(Arith, Elements);

TYPED_TEST(Arith, Oracle) {
    const auto draw = [this] { return this->draw(); };
    // Longer than the stretches that masks are looked at in.
    auto sizes = kit::sizes();
    sizes.push_back({600, 2});
    expectOracle(this->tables.accumulators, sizes, this->random, draw,
                 [this] { return this->drawOld(); });
    expectOracle(this->tables.pixelwise, sizes, this->random, draw, draw);
}

TYPED_TEST(Arith, HugeValues) {
    const auto draw = [this] { return this->drawHuge(); };
    const std::vector<ZmoiSize> sizes = {{1, 1}, {31, 4}, {67, 9}};
    expectOracle(this->tables.accumulators, sizes, this->random, draw,
                 [this] { return this->random.uniform(-1e30, 1e30); });
    expectOracle(this->tables.pixelwise, sizes, this->random, draw, draw);
}

template <class T, class D, class Draw, class DrawOld>
void expectValuesMatter(const std::vector<Function<T, D>>& functions, kit::Random& random,
                        Draw draw, DrawOld drawOld) {
    for (const auto& function : functions) {
        SCOPED_TRACE(function.name);
        Case<T, D> c(function, {40, 9}, {});
        c.fill(random, kit::Masked::some, draw, drawOld);
        std::vector<kit::Image<D>> results;
        for (const Values& own : function.values) {
            c.dst = c.before;
            EXPECT_EQ(function.run(c.args(own)), zmoStsNoErr);
            for (const auto& other : results) EXPECT_FALSE(kit::samePixels(c.dst, other));
            results.push_back(c.dst);
        }
    }
}

TYPED_TEST(Arith, EveryValueMatters) {
    const auto draw = [this] { return this->draw(); };
    expectValuesMatter(this->tables.accumulators, this->random, draw,
                       [this] { return this->drawOld(); });
    expectValuesMatter(this->tables.pixelwise, this->random, draw, draw);
}

template <class T, class D>
void expectBadArguments(const std::vector<Function<T, D>>& functions, kit::Random& random) {
    using A = Args<T, D>;
    constexpr int element = sizeof(T);
    constexpr int dstElement = sizeof(D);
    for (const auto& function : functions) {
        SCOPED_TRACE(function.name);
        const int row = 12 * function.channels * element;
        std::vector<kit::Fault<A>> faults = {
            {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
            {"null result", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }}};
        const auto add = [&](bool applies, kit::Fault<A> fault) {
            if (applies) faults.push_back(std::move(fault));
        };
        add(function.two, {"null source 2", zmoStsNullPtrErr, [](A& a) { a.pSrc2 = nullptr; }});
        add(function.masked, {"null mask", zmoStsNullPtrErr, [](A& a) { a.pMask = nullptr; }});
        add(true, {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }});
        add(true, {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }});
        add(true, {"source step short", zmoStsStepErr, [=](A& a) { a.srcStep = row - element; }});
        add(true, {"source step negative", zmoStsStepErr, [](A& a) { a.srcStep = -a.srcStep; }});
        add(element > 1, {"source step odd", zmoStsStepErr, [=](A& a) { a.srcStep = row + 1; }});
        add(function.two, {"source 2 step short", zmoStsStepErr, [](A& a) { a.src2Step = 11; }});
        add(function.masked, {"mask step short", zmoStsStepErr, [](A& a) { a.maskStep = 11; }});
        add(true, {"result step short", zmoStsStepErr, [](A& a) { a.dstStep = 11 * dstElement; }});
        for (const auto& fault : function.faults) faults.push_back(fault);
        Case<T, D> c(function, {12, 4}, {0, 8});
        c.fill(
            random, kit::Masked::all, [] { return 9; }, [] { return 5; });
        kit::expectFaults(c.args(function.values[0]), function.run, faults,
                          [&] { c.dst.expectUntouched("result"); });
    }
}

TYPED_TEST(Arith, BadArguments) {
    expectBadArguments(this->tables.accumulators, this->random);
    expectBadArguments(this->tables.pixelwise, this->random);
}

float drawOdd(kit::Random& random) {
    const float values[] = {
        NAN,  -NAN, std::bit_cast<float>(0x7fc12345), HUGE_VALF, -HUGE_VALF, 3e38F, -0.0F, 1e-40F,
        2.0F, 0.0F};
    return values[random.between(0, 9)];
}

// Unselected pixels may be anything, raise no flag, and keep their bits.
TEST(ArithFloat, UnselectedHaveNoInfluence) {
    kit::Random random(62);
    for (const auto& function : Tables<Zmo32f>().accumulators) {
        if (!function.masked) continue;
        SCOPED_TRACE(function.name);
        Case<Zmo32f, Zmo32f> c(function, {301, 5}, {1, 3});
        const auto draw = [&] { return random.uniform(-9, 9); };
        c.fill(random, kit::Masked::some, draw, draw);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 301; ++x) {
                if (c.selects(x, y)) continue;
                c.src.set(x, y, drawOdd(random));
                c.src2.set(x, y, drawOdd(random));
                c.before.set(x, y, drawOdd(random));
            }
        }
        c.src.snapshot();
        c.src2.snapshot();
        c.expectOracle(function.values.back());
    }
}

// Where the formula gives a number, so does the function; all levels agree in every bit.
TEST(ArithFloat, InfiniteAndNotANumber) {
    kit::Random random(63);
    const Tables<Zmo32f> tables;
    for (const auto* functions : {&tables.accumulators, &tables.pixelwise}) {
        for (const auto& function : *functions) {
            SCOPED_TRACE(function.name);
            Case<Zmo32f, Zmo32f> c(function, {67, 9}, {1, 3});
            const auto draw = [&] { return drawOdd(random); };
            c.fill(random, kit::Masked::some, draw, draw);
            const Values& own = function.values.back();
            std::vector<kit::Image<Zmo32f>> results;
            kit::forEachLevel([&] {
                c.dst = c.before;
                EXPECT_EQ(function.run(c.args(own)), zmoStsNoErr);
                results.push_back(c.dst);
                kit::expectPixels(c.dst, [&](int x, int y) { return results.front().get(x, y); });
            });
            if (function.formula == gray<Zmo32f>) continue;  // a maximum with NaN is any
            kit::expectPixels(c.dst, [&](int x, int y) {
                const float want = c.expected(own, x, y);
                const float have = c.dst.get(x, y);
                return std::isnan(want) && std::isnan(have) ? have : want;
            });
        }
    }
}

}  // namespace
