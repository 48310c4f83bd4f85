// Norms, extremes, means and deviations, of images and of what a mask selects.
#include <cmath>
#include <map>

#include "anycall.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

class Case;

struct Expected {
    ZmoStatus status;
    std::vector<kit::Slot> results;
};

struct Row {
    kit::Function function;
    Expected (*formula)(const Case&, ZmoNormType);
    ZmoNormType kind = zmoNormInf;
};

class Case : public kit::AnyCall {
  public:
    // coi is not looked at by functions of one channel.
    Case(const Row& r, ZmoiSize size, kit::Layout layout, int chosen)
        : AnyCall(r.function, size, layout),
          row(r),
          coi(chosen),
          whole(!r.function.isNamed("_32f_")) {
        if (!r.function.values().empty()) setValue(0, coi);
    }

    template <class Draw>
    void draw(Draw drawPixel, kit::Masked how, kit::Random& random) {
        fillAll(drawPixel, drawPixel);
        if (function().masked()) kit::drawMask(mask(), how, random);
    }

    oracle::Selection selection() const {
        return {roi(), [this](int x, int y) { return selects(x, y); }};
    }
    auto source(size_t i) const {
        return [this, i](int x, int y) { return get(i, x, y, coi - 1); };
    }

    Expected expected() const { return row.formula(*this, row.kind); }
    void expectOracle() { expect(expected()); }
    void expect(const Expected& want) {
        EXPECT_EQ(run(), want.status);
        EXPECT_EQ(results(), want.results) << "ZMO_TEST_SEED=" << kit::runSeed();
    }

    const Row& row;
    int coi;
    bool whole;
};

// ---- What the functions tell

ZmoStatus statusOf(const Case& c) {
    return c.selection().count() == 0 ? zmoStsEmptyMask : zmoStsNoErr;
}

Expected norm(const Case& c, ZmoNormType kind) {
    return {statusOf(c), {kit::Slot::of(oracle::norm(kind, c.whole, c.selection(), c.source(0)))}};
}
double difference(const Case& c, ZmoNormType kind) {
    return oracle::norm(kind, c.whole, c.selection(),
                        [&](int x, int y) { return c.source(0)(x, y) - c.source(1)(x, y); });
}
Expected normDiff(const Case& c, ZmoNormType kind) {
    return {statusOf(c), {kit::Slot::of(difference(c, kind))}};
}
Expected normRel(const Case& c, ZmoNormType kind) {
    const double apart = difference(c, kind);
    const double divisor = oracle::norm(kind, c.whole, c.selection(), c.source(1));
    if (statusOf(c) != zmoStsNoErr) return {statusOf(c), {kit::Slot::of(0.0)}};
    if (divisor == 0) return {zmoStsDivByZero, {kit::Slot::of(apart == 0 ? 0.0 : HUGE_VAL)}};
    return {zmoStsNoErr, {kit::Slot::of(apart / divisor)}};
}

Expected minMaxIndx(const Case& c, ZmoNormType) {
    float min = 0;
    float max = 0;
    ZmoiPoint minPos{0, 0};
    ZmoiPoint maxPos{0, 0};
    bool first = true;
    c.selection().forEach([&](int x, int y) {
        const auto v = static_cast<float>(c.source(0)(x, y));
        if (first || v < min) min = v, minPos = {x, y};
        if (first || v > max) max = v, maxPos = {x, y};
        first = false;
    });
    return {statusOf(c),
            {kit::Slot::of(min), kit::Slot::of(max), kit::Slot::of(minPos), kit::Slot::of(maxPos)}};
}
Expected mean(const Case& c, ZmoNormType) {
    return {statusOf(c), {kit::Slot::of(oracle::mean(c.whole, c.selection(), c.source(0)))}};
}
Expected meanStdDev(const Case& c, ZmoNormType) {
    Expected expected = mean(c, {});
    expected.results.push_back(
        kit::Slot::of(oracle::deviation(c.whole, c.selection(), c.source(0))));
    return expected;
}

// ---- The functions

#define ROW(fn, ...)           \
    Row {                      \
        {#fn, fn}, __VA_ARGS__ \
    }
#define MASKED(base, type, ...) \
    ROW(zmoi##base##_##type##_C1MR, __VA_ARGS__), ROW(zmoi##base##_##type##_C3CMR, __VA_ARGS__)
#define PLAIN(base, type, ...) \
    ROW(zmoi##base##_##type##_C1R, __VA_ARGS__), ROW(zmoi##base##_##type##_C3CR, __VA_ARGS__)
#define NORMS(kind, type)                                       \
    MASKED(Norm_##kind, type, norm, zmoNorm##kind),             \
        MASKED(NormDiff_##kind, type, normDiff, zmoNorm##kind), \
        MASKED(NormRel_##kind, type, normRel, zmoNorm##kind)
#define ROWS(type)                                                                           \
    NORMS(Inf, type), NORMS(L1, type), NORMS(L2, type), PLAIN(MinMaxIndx, type, minMaxIndx), \
        MASKED(MinMaxIndx, type, minMaxIndx), MASKED(Mean, type, mean),                      \
        PLAIN(Mean_StdDev, type, meanStdDev), MASKED(Mean_StdDev, type, meanStdDev)

const std::vector<Row> rows = {ROWS(8u), ROWS(16u), ROWS(32f)};

bool ofFloats(const Row& row) {
    return row.function.isNamed("_32f_");
}

// ---- Comparison

// Integers over their whole range, or at its ends only; floats of an ordinary size, or large, or of
// few different values, so that extremes have several places and zeros of either sign are among them.
enum class Draw { any, ends, few };

double drawn(const Row& row, Draw how, kit::Random& random) {
    if (!ofFloats(row)) {
        const int64_t most = row.function.isNamed("_8u_") ? 255 : 65535;
        return static_cast<double>(how == Draw::any ? random.between(0, most)
                                                    : random.between(0, 1) * most);
    }
    if (how == Draw::any) return random.uniform(-1000, 1000);
    if (how == Draw::ends) return random.uniform(-1, 1) * 1e18;
    return static_cast<double>(random.between(-1, 1)) * -0.0;
}

TEST(Reduce, Oracle) {
    auto sizes = kit::sizes();
    // Longer than the blocks that rows are cut into.
    sizes.insert(sizes.end(), {{513, 3}, {776, 2}});
    kit::forEachRow(
        41, rows, sizes,
        [](kit::Random& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            Case c(row, size, layout, 1 + static_cast<int>(turn) / 2 % row.function.channels(0));
            c.draw([&] { return drawn(row, static_cast<Draw>(turn % 3), random); },
                   static_cast<kit::Masked>(turn / 3 % 4), random);
            c.expectOracle();
        });
}

// What is not selected, or in another channel, may be anything.
TEST(Reduce, UnselectedFloatsHaveNoInfluence) {
    const std::vector<double> odd = {NAN, HUGE_VAL, -HUGE_VAL, 3e38};
    kit::forEachRow(44, rows, [&](kit::Random& random, const Row& row) {
        if (!ofFloats(row)) return;
        const int channels = row.function.channels(0);
        Case c(row, {300, 5}, {1, 3}, channels);
        c.draw([&] { return random.uniform(-9, 9); }, kit::Masked::some, random);
        const size_t sources = row.function.images().size() - (row.function.masked() ? 1 : 0);
        for (int channel = 0; channel < channels; ++channel) {
            kit::forEachPixel(c.roi(), [&](int x, int y) {
                if (c.selects(x, y) && channel == c.coi - 1) return;
                for (size_t s = 0; s < sources; ++s) c.set(s, x, y, channel, random.pick(odd));
            });
        }
        c.expectOracle();
    });
}

// Infinities give what the formula tells where it gives a number, not-a-numbers the same bits at all
// levels.
TEST(Reduce, InfiniteAndNotANumber) {
    std::map<const Row*, std::vector<kit::Slot>> first;
    kit::forEachRow(45, rows, [&](kit::Random& random, const Row& row) {
        if (!ofFloats(row)) return;
        Case c(row, {70, 3}, {}, 1);
        c.draw([&] { return random.uniform(1, 9); }, kit::Masked::all, random);
        c.set(0, 37, 1, 0, -HUGE_VAL);
        const Expected want = c.expected();
        if (!std::isnan(want.results.back().as<double>())) c.expectOracle();
        c.set(0, 5, 2, 0, NAN);
        // Not watched: a NaN may raise flags.
        EXPECT_EQ(kit::runUnwatched(c.call()), zmoStsNoErr);
        EXPECT_EQ(c.results(), first.try_emplace(&row, c.results()).first->second);
    });
}

// Integer sums beyond 2^53, where a sum in double precision would have lost its last bits, and a
// deviation that those bits decide about.
TEST(Reduce, LongIntegerSumsAreExact) {
    for (const Row& row : rows) {
        const bool deviation = row.function.isNamed("StdDev_16u_C1");
        if (!deviation && !row.function.isNamed("_L2_16u_C1")) continue;
        SCOPED_TRACE(row.function.name());
        kit::Random random(46);
        Case c(row, {2600, 2048}, {}, 1);
        c.draw([&] { return deviation ? 65535 : random.between(65000, 65535); }, kit::Masked::all,
               random);
        c.set(0, 1000, 1000, 0, 65534);
        const Expected want = c.expected();
        kit::forEachLevel([&] { c.expect(want); });
    }
}

TEST(Reduce, RelativeToNothing) {
    kit::forEachRow(47, rows, [](kit::Random& random, const Row& row) {
        if (row.formula != normRel) return;
        Case c(row, {19, 4}, {}, row.function.channels(0));
        for (const int first : {5, 0}) {
            c.draw([=] { return first; }, kit::Masked::single, random);
            c.fill(1, [] { return 0; });
            c.expectOracle();
            EXPECT_EQ(c.results()[0].as<double>(), first == 0 ? 0 : HUGE_VAL);
        }
    });
}

TEST(Reduce, BadArguments) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.function.name());
        Case(row, {12, 4}, {}, 1).expectBadArguments({{0, {0, 4}, zmoStsCoiErr}});
    }
}

}  // namespace
