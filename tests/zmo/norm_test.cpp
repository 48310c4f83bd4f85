#include <cmath>

#include "kit.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

enum class Use { image, difference, relative };

template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    const T* pSrc2;
    int src2Step;
    const Zmo8u* pMask;
    int maskStep;
    ZmoiSize roi;
    int coi;
    Zmo64f* pNorm;
};

// The four shapes of the functions, as one.
template <class T>
ZmoStatus call(ZmoStatus (*run)(const T*, int, const Zmo8u*, int, ZmoiSize, Zmo64f*),
               const Args<T>& a) {
    return run(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roi, a.pNorm);
}
template <class T>
ZmoStatus call(ZmoStatus (*run)(const T*, int, const Zmo8u*, int, ZmoiSize, int, Zmo64f*),
               const Args<T>& a) {
    return run(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roi, a.coi, a.pNorm);
}
template <class T>
ZmoStatus call(ZmoStatus (*run)(const T*, int, const T*, int, const Zmo8u*, int, ZmoiSize, Zmo64f*),
               const Args<T>& a) {
    return run(a.pSrc, a.srcStep, a.pSrc2, a.src2Step, a.pMask, a.maskStep, a.roi, a.pNorm);
}
template <class T>
ZmoStatus call(ZmoStatus (*run)(const T*, int, const T*, int, const Zmo8u*, int, ZmoiSize, int,
                                Zmo64f*),
               const Args<T>& a) {
    return run(a.pSrc, a.srcStep, a.pSrc2, a.src2Step, a.pMask, a.maskStep, a.roi, a.coi, a.pNorm);
}

template <class T>
struct Function {
    const char* name;
    Use use;
    ZmoNormType kind;
    int channels;
    std::function<ZmoStatus(const Args<T>&)> run;
};

#define NORM(fn, use, kind, channels)                                                     \
    {                                                                                     \
#fn, Use::use, zmoNorm##kind, channels, [](const auto& a) { return call(fn, a); } \
    }
#define NORM_CHANNELS(base, use, kind, type)                 \
    NORM(zmoi##base##_##kind##_##type##_C1MR, use, kind, 1), \
        NORM(zmoi##base##_##kind##_##type##_C3CMR, use, kind, 3)
#define NORM_USES(kind, type)                                                                \
    NORM_CHANNELS(Norm, image, kind, type), NORM_CHANNELS(NormDiff, difference, kind, type), \
        NORM_CHANNELS(NormRel, relative, kind, type)
#define NORM_KINDS(type) NORM_USES(Inf, type), NORM_USES(L1, type), NORM_USES(L2, type)

std::vector<Function<Zmo8u>> functions(Zmo8u) {
    return {NORM_KINDS(8u)};
}
std::vector<Function<Zmo16u>> functions(Zmo16u) {
    return {NORM_KINDS(16u)};
}
std::vector<Function<Zmo32f>> functions(Zmo32f) {
    return {NORM_KINDS(32f)};
}

// The arithmetic of the oracle.
template <class T>
using Wide = std::conditional_t<std::is_same_v<T, float>, double, int64_t>;

template <class T>
struct Case {
    Case(ZmoiSize size, int channels, kit::Layout layout, kit::Masked masked, int chosen)
        : src(size, layout, 0, channels),
          src2(size, {layout.misalign * 5 % 64, layout.padding + 2}, 0, channels),
          mask(size, {layout.misalign * 3 % 64, layout.padding + 1}),
          how(masked),
          coi(chosen) {}

    template <class Draw>
    void fill(Draw draw, kit::Random& random) {
        kit::drawMask(mask, how, random);
        src.fill(draw);
        src2.fill(draw);
    }
    Args<T> args(double* pNorm) {
        return {src.ptr(),   src.step(), src2.ptr(), src2.step(), mask.ptr(),
                mask.step(), src.size(), coi,        pNorm};
    }
    void expectUntouched() const {
        src.expectUntouched("first image");
        src2.expectUntouched("second image");
        mask.expectUntouched("mask");
    }

    kit::Image<T> src;
    kit::Image<T> src2;
    kit::Image<Zmo8u> mask;
    kit::Masked how;
    int coi;
};

struct Expected {
    double norm;
    ZmoStatus status;
};

template <class T>
Expected expected(const Function<T>& function, const Case<T>& c) {
    const oracle::Selection selection{c.src.size(), &c.mask};
    const auto a = [&](int x, int y) { return static_cast<Wide<T>>(c.src.get(x, y, c.coi - 1)); };
    const auto b = [&](int x, int y) { return static_cast<Wide<T>>(c.src2.get(x, y, c.coi - 1)); };
    if (selection.count() == 0) return {0, zmoStsEmptyMask};
    if (function.use == Use::image) {
        return {oracle::norm<T>(function.kind, selection, a), zmoStsNoErr};
    }
    const double difference =
        oracle::norm<T>(function.kind, selection, [&](int x, int y) { return a(x, y) - b(x, y); });
    if (function.use == Use::difference) return {difference, zmoStsNoErr};
    const double divisor = oracle::norm<T>(function.kind, selection, b);
    if (divisor == 0) return {difference == 0 ? 0 : HUGE_VAL, zmoStsDivByZero};
    return {difference / divisor, zmoStsNoErr};
}

template <class T>
void expectOracle(const Function<T>& function, Case<T>& c) {
    const Expected want = expected(function, c);
    kit::forEachLevel([&] {
        double have = -1;
        EXPECT_EQ(kit::watched([&] { return function.run(c.args(&have)); }), want.status);
        EXPECT_EQ(have, want.norm) << "ZMO_TEST_SEED=" << kit::runSeed();
    });
    c.expectUntouched();
}

template <class T, class Draw>
void expectOracleEverywhere(kit::Random& random, Draw draw) {
    auto sizes = kit::sizes();
    sizes.insert(sizes.end(), {{513, 3}, {776, 2}});
    const auto layouts = kit::layouts();
    size_t turn = 0;
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        for (const ZmoiSize size : sizes) {
            const kit::Layout layout = layouts[turn % layouts.size()];
            const auto masked = static_cast<kit::Masked>(turn / 3 % 4);
            const int coi = 1 + static_cast<int>(turn) % function.channels;
            ++turn;
            SCOPED_TRACE(testing::Message() << size << " " << layout << " mask "
                                            << static_cast<int>(masked) << " channel " << coi);
            Case<T> c(size, function.channels, layout, masked, coi);
            c.fill(draw, random);
            expectOracle(function, c);
        }
    }
}

TEST(Norm, EightBitOracle) {
    kit::Random random(41);
    expectOracleEverywhere<Zmo8u>(random, [&] { return random.between(0, 255); });
    expectOracleEverywhere<Zmo8u>(random, [&] { return random.between(0, 1) * 255; });
}

TEST(Norm, SixteenBitOracle) {
    kit::Random random(42);
    expectOracleEverywhere<Zmo16u>(random, [&] { return random.between(0, 65535); });
    expectOracleEverywhere<Zmo16u>(random, [&] { return random.between(0, 1) * 65535; });
}

TEST(Norm, FloatOracle) {
    kit::Random random(43);
    expectOracleEverywhere<Zmo32f>(random, [&] { return random.uniform(-1000, 1000); });
    expectOracleEverywhere<Zmo32f>(random, [&] { return random.uniform(-1, 1) * 1e18; });
}

// What is not selected, or in another channel, may be anything.
TEST(Norm, UnselectedFloatsHaveNoInfluence) {
    kit::Random random(44);
    for (const auto& function : functions(Zmo32f())) {
        SCOPED_TRACE(function.name);
        Case<Zmo32f> c({70, 5}, function.channels, {1, 3}, kit::Masked::some, function.channels);
        c.fill([&] { return random.uniform(-9, 9); }, random);
        const float odd[] = {std::numeric_limits<float>::quiet_NaN(), HUGE_VALF, -HUGE_VALF, 3e38F};
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 70; ++x) {
                for (int channel = 0; channel < function.channels; ++channel) {
                    if (c.mask.get(x, y) != 0 && channel == c.coi - 1) continue;
                    c.src.set(x, y, channel, odd[(x + y) % 4]);
                    c.src2.set(x, y, channel, odd[(x + y + channel) % 4]);
                }
            }
        }
        c.src.snapshot();
        c.src2.snapshot();
        expectOracle(function, c);
    }
}

// Not-a-numbers give the same bits at all levels, infinities what the formula tells.
TEST(Norm, InfiniteAndNotANumber) {
    kit::Random random(45);
    for (const auto& function : functions(Zmo32f())) {
        SCOPED_TRACE(function.name);
        Case<Zmo32f> c({67, 3}, function.channels, {}, kit::Masked::all, 1);
        c.fill([&] { return random.uniform(1, 9); }, random);
        c.src.set(37, 1, -HUGE_VALF);
        std::vector<double> notANumber;
        const auto run = [&] {
            double norm = 0;
            EXPECT_EQ(function.run(c.args(&norm)), zmoStsNoErr);
            return norm;
        };
        kit::forEachLevel([&] { EXPECT_EQ(run(), HUGE_VAL); });
        c.src.set(5, 2, std::numeric_limits<float>::quiet_NaN());
        kit::forEachLevel([&] { notANumber.push_back(run()); });
        for (const double norm : notANumber) {
            EXPECT_EQ(std::memcmp(&norm, notANumber.data(), sizeof norm), 0);
        }
    }
}

// Integer sums beyond 2^53, where a sum in double precision would have lost its last bits.
TEST(Norm, LongSumsAreExact) {
    const ZmoiSize size{2600, 2048};
    Case<Zmo16u> c(size, 1, {}, kit::Masked::all, 1);
    kit::Random random(46);
    c.fill([&] { return random.between(65000, 65535); }, random);
    for (const auto& function : functions(Zmo16u())) {
        if (function.channels == 1 && function.kind == zmoNormL2) expectOracle(function, c);
    }
}

template <class T>
void expectZeroDivisors() {
    for (const auto& function : functions(T())) {
        if (function.use != Use::relative) continue;
        SCOPED_TRACE(function.name);
        Case<T> c({19, 4}, function.channels, {}, kit::Masked::single, function.channels);
        kit::Random random(47);
        c.fill([] { return 5; }, random);
        c.src2.fill([] { return 0; });
        const auto expect = [&](double norm) {
            kit::forEachLevel([&] {
                double have = -1;
                EXPECT_EQ(kit::watched([&] { return function.run(c.args(&have)); }),
                          zmoStsDivByZero);
                EXPECT_EQ(have, norm);
            });
        };
        expect(HUGE_VAL);
        c.src.fill([] { return 0; });
        expect(0);
    }
}

TEST(Norm, RelativeToNothing) {
    expectZeroDivisors<Zmo8u>();
    expectZeroDivisors<Zmo16u>();
    expectZeroDivisors<Zmo32f>();
}

template <class T>
void expectBadArguments() {
    constexpr int element = sizeof(T);
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        const int row = 12 * function.channels * element;
        Case<T> c({12, 4}, function.channels, {}, kit::Masked::all, 1);
        kit::Random random(48);
        c.fill([] { return 9; }, random);
        double norm = -1;
        using A = Args<T>;
        const bool two = function.use != Use::image;
        std::vector<kit::Fault<A>> faults = {
            {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
            {"null mask", zmoStsNullPtrErr, [](A& a) { a.pMask = nullptr; }},
            {"null result", zmoStsNullPtrErr, [](A& a) { a.pNorm = nullptr; }},
            {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
            {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
            {"source step short", zmoStsStepErr, [=](A& a) { a.srcStep = row - element; }},
            {"source step 0", zmoStsStepErr, [](A& a) { a.srcStep = 0; }},
            {"mask step short", zmoStsStepErr, [](A& a) { a.maskStep = 11; }},
        };
        if (two) {
            faults.insert(faults.begin(),
                          {"null source 2", zmoStsNullPtrErr, [](A& a) { a.pSrc2 = nullptr; }});
            faults.push_back(
                {"source 2 step short", zmoStsStepErr, [=](A& a) { a.src2Step = row - element; }});
        }
        if (element > 1) {
            faults.push_back(
                {"source step odd", zmoStsStepErr, [=](A& a) { a.srcStep = row + 1; }});
        }
        if (function.channels == 3) {
            faults.push_back({"channel 0", zmoStsCoiErr, [](A& a) { a.coi = 0; }});
            faults.push_back({"channel 4", zmoStsCoiErr, [](A& a) { a.coi = 4; }});
        }
        kit::expectFaults(c.args(&norm), function.run, faults, [&] { EXPECT_EQ(norm, -1); });
    }
}

TEST(Norm, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16u>();
    expectBadArguments<Zmo32f>();
}

}  // namespace
