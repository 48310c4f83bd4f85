#include <cmath>

#include "kit.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

// What any of the functions tells; the rest stays as it was.
struct Result {
    Zmo32f min = -1;
    Zmo32f max = -1;
    ZmoiPoint minPos{-1, -1};
    ZmoiPoint maxPos{-1, -1};
    Zmo64f mean = -1;
    Zmo64f stdDev = -1;
};

std::ostream& operator<<(std::ostream& out, const Result& r) {
    return out << r.min << " at (" << r.minPos.x << ", " << r.minPos.y << "), " << r.max << " at ("
               << r.maxPos.x << ", " << r.maxPos.y << "), mean " << r.mean << ", deviation "
               << r.stdDev;
}

bool sameBits(const Result& a, const Result& b) {
    const auto same = [](const auto& x, const auto& y) {
        return std::memcmp(&x, &y, sizeof x) == 0;
    };
    return same(a.min, b.min) && same(a.max, b.max) && same(a.minPos, b.minPos) &&
           same(a.maxPos, b.maxPos) && same(a.mean, b.mean) && same(a.stdDev, b.stdDev);
}

template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    const Zmo8u* pMask;
    int maskStep;
    ZmoiSize roi;
    int coi;
    // Where the results go, in the order of the arguments; unused ones are not looked at.
    void* results[4];
};

// The four descriptors of a function, as one.
template <class T, class... Results>
ZmoStatus call(ZmoStatus (*run)(const T*, int, ZmoiSize, Results...), const Args<T>& a,
               Results... results) {
    return run(a.pSrc, a.srcStep, a.roi, results...);
}
template <class T, class... Results>
ZmoStatus call(ZmoStatus (*run)(const T*, int, ZmoiSize, int, Results...), const Args<T>& a,
               Results... results) {
    return run(a.pSrc, a.srcStep, a.roi, a.coi, results...);
}
template <class T, class... Results>
ZmoStatus call(ZmoStatus (*run)(const T*, int, const Zmo8u*, int, ZmoiSize, Results...),
               const Args<T>& a, Results... results) {
    return run(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roi, results...);
}
template <class T, class... Results>
ZmoStatus call(ZmoStatus (*run)(const T*, int, const Zmo8u*, int, ZmoiSize, int, Results...),
               const Args<T>& a, Results... results) {
    return run(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roi, a.coi, results...);
}

enum class Base { minMaxIndx, mean, meanStdDev };

constexpr int resultCount(Base base) {
    return base == Base::minMaxIndx ? 4 : base == Base::mean ? 1 : 2;
}

template <class T>
struct Function {
    const char* name;
    Base base;
    bool masked;
    int channels;
    std::function<ZmoStatus(const Args<T>&)> run;
};

template <Base base, class T, class Run>
ZmoStatus callWithResults(Run run, const Args<T>& a) {
    void* const* const r = a.results;
    if constexpr (base == Base::minMaxIndx) {
        return call<T, Zmo32f*, Zmo32f*, ZmoiPoint*, ZmoiPoint*>(
            run, a, static_cast<Zmo32f*>(r[0]), static_cast<Zmo32f*>(r[1]),
            static_cast<ZmoiPoint*>(r[2]), static_cast<ZmoiPoint*>(r[3]));
    } else if constexpr (base == Base::mean) {
        return call<T, Zmo64f*>(run, a, static_cast<Zmo64f*>(r[0]));
    } else {
        return call<T, Zmo64f*, Zmo64f*>(run, a, static_cast<Zmo64f*>(r[0]),
                                         static_cast<Zmo64f*>(r[1]));
    }
}

#define STAT(fn, base, masked, channels)                                                        \
    {                                                                                           \
#fn, base, masked, channels, [](const auto& a) { return callWithResults<base>(fn, a); } \
    }
#define STAT_PLAIN(function, base, type)                 \
    STAT(zmoi##function##_##type##_C1R, base, false, 1), \
        STAT(zmoi##function##_##type##_C3CR, base, false, 3)
#define STAT_MASKED(function, base, type)                \
    STAT(zmoi##function##_##type##_C1MR, base, true, 1), \
        STAT(zmoi##function##_##type##_C3CMR, base, true, 3)
#define STAT_ALL(type)                                                                        \
    STAT_PLAIN(MinMaxIndx, Base::minMaxIndx, type),                                           \
        STAT_MASKED(MinMaxIndx, Base::minMaxIndx, type), STAT_MASKED(Mean, Base::mean, type), \
        STAT_PLAIN(Mean_StdDev, Base::meanStdDev, type),                                      \
        STAT_MASKED(Mean_StdDev, Base::meanStdDev, type)

std::vector<Function<Zmo8u>> functions(Zmo8u) {
    return {STAT_ALL(8u)};
}
std::vector<Function<Zmo16u>> functions(Zmo16u) {
    return {STAT_ALL(16u)};
}
std::vector<Function<Zmo32f>> functions(Zmo32f) {
    return {STAT_ALL(32f)};
}

template <class T>
struct Case {
    Case(ZmoiSize size, const Function<T>& function, kit::Layout layout, kit::Masked masked,
         int chosen)
        : src(size, layout, 0, function.channels),
          mask(size, {layout.misalign * 3 % 64, layout.padding + 1}),
          how(function.masked ? masked : kit::Masked::all),
          coi(chosen) {}

    template <class Draw>
    void fill(Draw draw, kit::Random& random) {
        kit::drawMask(mask, how, random);
        src.fill(draw);
    }
    Args<T> args(Base base, Result& r) {
        Args<T> a{src.ptr(),
                  src.step(),
                  mask.ptr(),
                  mask.step(),
                  src.size(),
                  coi,
                  {&r.mean, &r.stdDev, nullptr, nullptr}};
        if (base == Base::minMaxIndx) {
            void* const extremes[] = {&r.min, &r.max, &r.minPos, &r.maxPos};
            std::copy_n(extremes, 4, a.results);
        }
        return a;
    }

    kit::Image<T> src;
    kit::Image<Zmo8u> mask;
    kit::Masked how;
    int coi;
};

template <class T>
Result expected(Base base, const Case<T>& c) {
    const oracle::Selection selection{c.src.size(), &c.mask};
    const auto value = [&](int x, int y) { return c.src.get(x, y, c.coi - 1); };
    Result r;
    if (base == Base::minMaxIndx) {
        r.min = r.max = 0;
        r.minPos = r.maxPos = {0, 0};
        bool first = true;
        selection.forEach([&](int x, int y) {
            const float v = value(x, y);
            if (first || v < r.min) r.min = v, r.minPos = {x, y};
            if (first || v > r.max) r.max = v, r.maxPos = {x, y};
            first = false;
        });
        return r;
    }
    r.mean = oracle::mean<T>(selection, value);
    if (base == Base::meanStdDev) r.stdDev = oracle::deviation<T>(selection, value);
    return r;
}

template <class T>
void expectOracle(const Function<T>& function, Case<T>& c) {
    const bool none = oracle::Selection{c.src.size(), &c.mask}.count() == 0;
    const Result want = expected(function.base, c);
    kit::forEachLevel([&] {
        Result have;
        EXPECT_EQ(kit::watched([&] { return function.run(c.args(function.base, have)); }),
                  none ? zmoStsEmptyMask : zmoStsNoErr);
        EXPECT_TRUE(sameBits(have, want))
            << have << "\ninstead of " << want << "\nZMO_TEST_SEED=" << kit::runSeed();
    });
    c.src.expectUntouched("image");
    c.mask.expectUntouched("mask");
}

template <class T, class Draw>
void expectOracleEverywhere(kit::Random& random, Draw draw) {
    size_t turn = 0;
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        for (const ZmoiSize size : kit::sizes()) {
            const kit::Layout layout = kit::layouts()[turn % kit::layouts().size()];
            const auto masked = static_cast<kit::Masked>(turn / 3 % 4);
            const int coi = 1 + static_cast<int>(turn) % function.channels;
            ++turn;
            SCOPED_TRACE(testing::Message() << size << " " << layout << " mask "
                                            << static_cast<int>(masked) << " channel " << coi);
            Case<T> c(size, function, layout, masked, coi);
            c.fill(draw, random);
            expectOracle(function, c);
        }
    }
}

TEST(Stat, EightBitOracle) {
    kit::Random random(51);
    expectOracleEverywhere<Zmo8u>(random, [&] { return random.between(0, 255); });
    expectOracleEverywhere<Zmo8u>(random, [&] { return random.between(0, 1) * 255; });
}

TEST(Stat, SixteenBitOracle) {
    kit::Random random(52);
    expectOracleEverywhere<Zmo16u>(random, [&] { return random.between(0, 65535); });
    expectOracleEverywhere<Zmo16u>(random, [&] { return random.between(0, 1) * 65535; });
}

// Few different values, so that extremes have several places, and zeros of either sign are among
// them.
TEST(Stat, FloatOracle) {
    kit::Random random(53);
    expectOracleEverywhere<Zmo32f>(random, [&] { return random.uniform(-1000, 1000); });
    expectOracleEverywhere<Zmo32f>(
        random, [&] { return static_cast<double>(random.between(-1, 1)) * -0.0; });
    expectOracleEverywhere<Zmo32f>(random, [&] { return -1e30 * double(random.between(1, 3)); });
}

// What is not selected, or in another channel, may be anything.
TEST(Stat, UnselectedFloatsHaveNoInfluence) {
    kit::Random random(54);
    for (const auto& function : functions(Zmo32f())) {
        SCOPED_TRACE(function.name);
        Case<Zmo32f> c({300, 5}, function, {1, 3}, kit::Masked::some, function.channels);
        c.fill([&] { return random.uniform(-9, 9); }, random);
        const float odd[] = {std::numeric_limits<float>::quiet_NaN(), HUGE_VALF, -HUGE_VALF, 3e38F};
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 300; ++x) {
                for (int channel = 0; channel < function.channels; ++channel) {
                    if (c.mask.get(x, y) != 0 && channel == c.coi - 1) continue;
                    c.src.set(x, y, channel, odd[(x + y + channel) % 4]);
                }
            }
        }
        c.src.snapshot();
        expectOracle(function, c);
    }
}

TEST(Stat, InfinitiesAreExtremes) {
    kit::Random random(55);
    for (const auto& function : functions(Zmo32f())) {
        if (function.base != Base::minMaxIndx) continue;
        SCOPED_TRACE(function.name);
        for (const double infinity : {HUGE_VAL, -HUGE_VAL}) {
            Case<Zmo32f> c({70, 3}, function, {}, kit::Masked::some, 1);
            c.fill([&] { return random.between(0, 9) == 0 ? infinity : random.uniform(-1, 1); },
                   random);
            expectOracle(function, c);
            c.fill([=] { return infinity; }, random);
            expectOracle(function, c);
        }
    }
}

TEST(Stat, NotANumberGivesTheSameAtAllLevels) {
    kit::Random random(56);
    for (const auto& function : functions(Zmo32f())) {
        SCOPED_TRACE(function.name);
        Case<Zmo32f> c({67, 3}, function, {}, kit::Masked::all, 1);
        c.fill([&] { return random.uniform(-9, 9); }, random);
        c.src.set(5, 1, std::numeric_limits<float>::quiet_NaN());
        std::vector<Result> results;
        kit::forEachLevel([&] {
            Result& r = results.emplace_back();
            EXPECT_EQ(function.run(c.args(function.base, r)), zmoStsNoErr);
            EXPECT_TRUE(sameBits(r, results.front())) << r << "\nbaseline " << results.front();
        });
    }
}

// A small deviation around a large mean: squares of the values would need 70 bits.
TEST(Stat, LargeImageKeepsTheLastDigits) {
    const ZmoiSize size{8192, 8192};
    kit::Image<Zmo32f> image(size);
    kit::Image<Zmo8u> mask(size);
    for (int y = 0; y < size.height; ++y) {
        Zmo32f* const row = image.ptr() + static_cast<ptrdiff_t>(y) * size.width;
        for (int x = 0; x < size.width; ++x) row[x] = 8388608.0F + static_cast<float>((x + y) % 5);
    }
    std::fill_n(mask.ptr(), static_cast<size_t>(size.width) * 8192, Zmo8u{1});
    // Of n = 2^26 pixels, 13421773 have each of four values, one more than the fifth.
    int64_t sum = 0;
    int64_t squares = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            sum += (x + y) % 5;
            squares += (x + y) % 5 * ((x + y) % 5);
        }
    }
    const double n = 0x1p26;
    const double mean = 8388608 + static_cast<double>(sum) / n;
    const double apart = static_cast<double>(sum) / n;
    const double stdDev = std::sqrt(static_cast<double>(squares) / n - apart * apart);
    double have = 0;
    double haveStdDev = 0;
    kit::succeed([&] {
        return zmoiMean_32f_C1MR(image.ptr(), image.step(), mask.ptr(), mask.step(), size, &have);
    });
    EXPECT_DOUBLE_EQ(have, mean);
    kit::succeed([&] {
        return zmoiMean_StdDev_32f_C1R(image.ptr(), image.step(), size, &have, &haveStdDev);
    });
    EXPECT_DOUBLE_EQ(have, mean);
    EXPECT_NEAR(haveStdDev, stdDev, 1e-13);
}

// Sums of 16-bit squares beyond 2^53, whose last bits decide about a deviation this small.
TEST(Stat, LongIntegerSumsAreExact) {
    for (const auto& function : functions(Zmo16u())) {
        if (function.base != Base::meanStdDev || function.channels != 1) continue;
        SCOPED_TRACE(function.name);
        kit::Random random(57);
        Case<Zmo16u> c({2600, 2048}, function, {}, kit::Masked::all, 1);
        c.fill([&] { return 65535; }, random);
        c.src.set(1000, 1000, 65534);
        c.src.snapshot();
        expectOracle(function, c);
    }
}

template <class T>
void expectBadArguments() {
    constexpr int element = sizeof(T);
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        using A = Args<T>;
        const int row = 12 * function.channels * element;
        std::vector<kit::Fault<A>> faults = {
            {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }}};
        for (int i = 0; i < resultCount(function.base); ++i) {
            faults.push_back(
                {"null result", zmoStsNullPtrErr, [i](A& a) { a.results[i] = nullptr; }});
        }
        if (function.masked) {
            faults.push_back({"null mask", zmoStsNullPtrErr, [](A& a) { a.pMask = nullptr; }});
        }
        faults.push_back({"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }});
        faults.push_back({"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }});
        faults.push_back(
            {"source step short", zmoStsStepErr, [=](A& a) { a.srcStep = row - element; }});
        faults.push_back({"source step 0", zmoStsStepErr, [](A& a) { a.srcStep = 0; }});
        if (element > 1) {
            faults.push_back(
                {"source step odd", zmoStsStepErr, [=](A& a) { a.srcStep = row + 1; }});
        }
        if (function.masked) {
            faults.push_back({"mask step short", zmoStsStepErr, [](A& a) { a.maskStep = 11; }});
        }
        if (function.channels == 3) {
            faults.push_back({"channel 0", zmoStsCoiErr, [](A& a) { a.coi = 0; }});
            faults.push_back({"channel 4", zmoStsCoiErr, [](A& a) { a.coi = 4; }});
        }
        Case<T> c({12, 4}, function, {}, kit::Masked::all, 1);
        kit::Random random(58);
        c.fill([] { return 9; }, random);
        Result result;
        kit::expectFaults(c.args(function.base, result), function.run, faults,
                          [&] { EXPECT_TRUE(sameBits(result, Result())) << result; });
    }
}

TEST(Stat, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16u>();
    expectBadArguments<Zmo32f>();
}

}  // namespace
