// Norms, extremes, means and deviations, of images and of what a mask selects.
#include <cmath>

#include "case.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

// The numbers that a function sees: a channel of one image, or of two.
struct Seen : oracle::Selection {
    Seen(const kit::Case& own, int coi)
        : Selection{own.roi(), own.src().isWhole(),
                    [&](int x, int y) { return own.selects(x, y); }},
          c(own),
          channel(own.src().channels() == 1 ? 0 : coi - 1) {}

    oracle::Number image(size_t i) const {
        return [this, i](int x, int y) { return c.image(i)(x, y, channel); };
    }

    const kit::Case& c;
    int channel;
};

struct Row {
    kit::Function function;
    void (*formula)(kit::Case&, const Seen&, ZmoNormType);
    ZmoNormType kind = zmoNormInf;

    bool ofFloats() const { return function.isNamed("_32f_"); }
};

// ---- What the functions return

void norm(kit::Case& c, const Seen& s, ZmoNormType kind) {
    c.wantResult("pNorm", s.norm(kind, s.image(0)));
}
double difference(const Seen& s, ZmoNormType kind) {
    return s.norm(kind, [&](int x, int y) { return s.image(0)(x, y) - s.image(1)(x, y); });
}
void normDiff(kit::Case& c, const Seen& s, ZmoNormType kind) {
    c.wantResult("pNorm", difference(s, kind));
}
void normRel(kit::Case& c, const Seen& s, ZmoNormType kind) {
    const double apart = difference(s, kind);
    const double divisor = s.norm(kind, s.image(1));
    const bool divides = divisor != 0;
    c.wantResult("pNorm", divides ? apart / divisor : apart == 0 ? 0.0 : HUGE_VAL);
    if (!divides && s.count() != 0) c.wantStatus(zmoStsDivByZero);
}

void minMaxIndx(kit::Case& c, const Seen& s, ZmoNormType) {
    float min = 0;
    float max = 0;
    ZmoiPoint minPos{0, 0};
    ZmoiPoint maxPos{0, 0};
    bool first = true;
    s.forEach([&](int x, int y) {
        const auto v = static_cast<float>(s.image(0)(x, y));
        if (first || v < min) min = v, minPos = {x, y};
        if (first || v > max) max = v, maxPos = {x, y};
        first = false;
    });
    c.wantResult("pMin", min).wantResult("pMax", max);
    c.wantResult("pMinPos", minPos).wantResult("pMaxPos", maxPos);
}
void mean(kit::Case& c, const Seen& s, ZmoNormType) {
    c.wantResult("pMean", s.mean(s.image(0)));
}
void meanStdDev(kit::Case& c, const Seen& s, ZmoNormType) {
    mean(c, s, {});
    c.wantResult("pStdDev", s.deviation(s.image(0)));
}

// ---- The functions

#define ROW(fn, ...) \
    { ZMO(fn), __VA_ARGS__ }
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

// ---- Comparison

// coi is not looked at by functions of one channel.
kit::Case caseOf(const Row& row, const kit::Turn& t, int coi = 1) {
    return kit::Case(row.function, t).with("coi", coi);
}

kit::Case& wantFormula(kit::Case& c, const Row& row, int coi = 1) {
    const Seen seen(c, coi);
    c.wantStatus(seen.count() == 0 ? zmoStsEmptyMask : zmoStsNoErr);
    row.formula(c, seen, row.kind);
    return c;
}

void fill(kit::Case& c, kit::Random& random, kit::Masked how, const kit::Pixels& pixels) {
    c.fillAll(pixels, pixels);
    if (c.function().masked()) kit::drawMask(c.mask(), how, random);
}

// What is not selected, or in another channel, may be anything.
void drawUnselected(kit::Case& c, kit::Random& random, int channel) {
    const std::vector<double> odd = {NAN, HUGE_VAL, -HUGE_VAL, 3e38};
    const size_t sources = c.imageCount() - (c.function().masked() ? 1 : 0);
    for (int k = 0; k < c.src().channels(); ++k) {
        kit::forEachPixel(c.roi(), [&](int x, int y) {
            if (c.selects(x, y) && k == channel) return;
            for (size_t s = 0; s < sources; ++s) c.image(s).set(x, y, random.pick(odd), k);
        });
    }
}

TEST(Reduce, Oracle) {
    // Longer than the blocks that rows are cut into.
    kit::forEachCase({41, 1, {{513, 3}, {776, 2}}}, rows, [](kit::Turn& t, const Row& row) {
        const int coi = 1 + static_cast<int>(t.number) / 2 % row.function.srcChannels();
        kit::Case c = caseOf(row, t, coi);
        for (size_t i = 0; i < c.imageCount(); ++i) draw(t, c.image(i));
        // So few floats that extremes have several places, of zeros of either sign.
        if (row.ofFloats() && t.number % 3 == 2) {
            c.fillAll([&] { return t.between(-1, 1) * -0.0; }, 0);
        }
        // A relation to nothing.
        if (row.formula == normRel && t.number % 4 == 0) c.image(1).fill(0);
        const auto how = static_cast<kit::Masked>(t.number / 3 % 4);
        if (row.function.masked()) kit::drawMask(c.mask(), how, t);
        if (row.ofFloats() && t.number % 2 == 0) drawUnselected(c, t, coi - 1);
        return wantFormula(c, row, coi);
    });
}

// Infinities give what the formula gives where that is a number, not-a-numbers the same bits at all
// levels.
TEST(Reduce, InfiniteAndNotANumber) {
    kit::Turn t(45, {70, 3});
    for (const Row& row : rows) {
        if (!row.ofFloats()) continue;
        kit::Case c = caseOf(row, t);
        fill(c, t, kit::Masked::all, [&] { return t.uniform(1, 9); });
        c.src().set(37, 1, -HUGE_VAL);
        kit::Case odd = c;
        wantFormula(c, row);
        if (row.formula != meanStdDev) kit::expectAtAllLevels(c);
        odd.src().set(5, 2, NAN);
        kit::expectSameAtAllLevels(odd);
    }
}

// Integer sums beyond 2^53, where a sum in double precision would have lost its last bits, and a
// deviation that those bits decide about.
TEST(Reduce, LongIntegerSumsAreExact) {
    for (const Row& row : rows) {
        const bool deviation = row.function.isNamed("StdDev_16u_C1");
        if (!deviation && !row.function.isNamed("_L2_16u_C1")) continue;
        // The sums of one image will do under the sanitizers.
        if (kit::sanitized && row.function.has("pSrc2")) continue;
        kit::Turn t(46, {1500, 1500});
        kit::Case c = caseOf(row, t);
        fill(c, t, kit::Masked::all, [&] { return deviation ? 65535 : t.between(65000, 65535); });
        c.src().set(1000, 1000, 65534);
        wantFormula(c, row);
        kit::forLevels([&] { c.expect(); });
    }
}

TEST(Reduce, BadArguments) {
    for (const Row& row : rows) caseOf(row, kit::Turn(48, {12, 4})).expectBadArguments();
}

}  // namespace
