// Norms, extremes, means and deviations, of images and of what a mask selects.
#include <cmath>

#include "case.h"
#include "oracle/reduce.h"
#include "zmocv.h"

namespace {

// The numbers that a function sees: a channel of one image, or of two.
struct Seen {
    explicit Seen(const kit::Case& own, int coi)
        : c(own),
          channel(own.src().channels() == 1 ? 0 : coi - 1),
          whole(own.src().most() != 0),
          selection{own.roi(), [&own](int x, int y) { return own.selects(x, y); }} {}

    auto image(size_t i) const {
        return [this, i](int x, int y) { return c.image(i).get(x, y, channel); };
    }

    const kit::Case& c;
    int channel;
    bool whole;
    oracle::Selection selection;
};

struct Row {
    kit::Function function;
    void (*formula)(kit::Case&, const Seen&, ZmoNormType);
    ZmoNormType kind = zmoNormInf;

    bool ofFloats() const { return function.isNamed("_32f_"); }
};

// ---- What the functions tell

void norm(kit::Case& c, const Seen& s, ZmoNormType kind) {
    c.wantResult("pNorm", oracle::norm(kind, s.whole, s.selection, s.image(0)));
}
double difference(const Seen& s, ZmoNormType kind) {
    return oracle::norm(kind, s.whole, s.selection,
                        [&](int x, int y) { return s.image(0)(x, y) - s.image(1)(x, y); });
}
void normDiff(kit::Case& c, const Seen& s, ZmoNormType kind) {
    c.wantResult("pNorm", difference(s, kind));
}
void normRel(kit::Case& c, const Seen& s, ZmoNormType kind) {
    const double apart = difference(s, kind);
    const double divisor = oracle::norm(kind, s.whole, s.selection, s.image(1));
    const bool divides = divisor != 0;
    c.wantResult("pNorm", divides ? apart / divisor : apart == 0 ? 0.0 : HUGE_VAL);
    if (!divides && s.selection.count() != 0) c.wantStatus(zmoStsDivByZero);
}

void minMaxIndx(kit::Case& c, const Seen& s, ZmoNormType) {
    float min = 0;
    float max = 0;
    ZmoiPoint minPos{0, 0};
    ZmoiPoint maxPos{0, 0};
    bool first = true;
    s.selection.forEach([&](int x, int y) {
        const auto v = static_cast<float>(s.image(0)(x, y));
        if (first || v < min) min = v, minPos = {x, y};
        if (first || v > max) max = v, maxPos = {x, y};
        first = false;
    });
    c.wantResult("pMin", min).wantResult("pMax", max);
    c.wantResult("pMinPos", minPos).wantResult("pMaxPos", maxPos);
}
void mean(kit::Case& c, const Seen& s, ZmoNormType) {
    c.wantResult("pMean", oracle::mean(s.whole, s.selection, s.image(0)));
}
void meanStdDev(kit::Case& c, const Seen& s, ZmoNormType) {
    mean(c, s, {});
    c.wantResult("pStdDev", oracle::deviation(s.whole, s.selection, s.image(0)));
}

// ---- The functions

#define ROW(fn, ...)         \
    Row {                    \
        ZMO(fn), __VA_ARGS__ \
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

// ---- Comparison

// coi is not looked at by functions of one channel.
kit::Case caseOf(const Row& row, ZmoiSize size, kit::Layout layout = {}, int coi = 1) {
    return kit::Case(row.function, size, layout).with("coi", coi);
}

kit::Case& wantFormula(kit::Case& c, const Row& row, int coi = 1) {
    const Seen seen(c, coi);
    c.wantStatus(seen.selection.count() == 0 ? zmoStsEmptyMask : zmoStsNoErr);
    row.formula(c, seen, row.kind);
    return c;
}

template <class Draw>
void fill(kit::Case& c, kit::Random& random, kit::Masked how, Draw draw) {
    c.fillAll(draw, draw);
    if (c.function().masked()) kit::drawMask(c.mask(), how, random);
}

// Integers over their whole range, or at its ends only; floats of an ordinary size, or large, or of
// few different values, so that extremes have several places and zeros of either sign are among them.
enum class Draw { any, ends, few };

double drawn(const kit::Case& c, Draw how, kit::Random& random) {
    if (const auto most = static_cast<int64_t>(c.src().most()); most != 0) {
        return static_cast<double>(how == Draw::any ? random.between(0, most)
                                                    : random.between(0, 1) * most);
    }
    if (how == Draw::any) return random.uniform(-1000, 1000);
    if (how == Draw::ends) return random.uniform(-1, 1) * 1e18;
    return static_cast<double>(random.between(-1, 1)) * -0.0;
}

TEST(Reduce, Oracle) {
    // Longer than the blocks that rows are cut into.
    kit::forEachCase(
        {41, 1, {{513, 3}, {776, 2}}}, rows,
        [](auto& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int coi = 1 + static_cast<int>(turn) / 2 % row.function.srcChannels();
            kit::Case c = caseOf(row, size, layout, coi);
            fill(c, random, static_cast<kit::Masked>(turn / 3 % 4),
                 [&] { return drawn(c, static_cast<Draw>(turn % 3), random); });
            return wantFormula(c, row, coi);
        });
}

// What is not selected, or in another channel, may be anything.
TEST(Reduce, UnselectedFloatsHaveNoInfluence) {
    const std::vector<double> odd = {NAN, HUGE_VAL, -HUGE_VAL, 3e38};
    kit::Random random(44);
    for (const Row& row : rows) {
        if (!row.ofFloats()) continue;
        const int coi = row.function.srcChannels();
        kit::Case c = caseOf(row, {300, 5}, {1, 3}, coi);
        fill(c, random, kit::Masked::some, [&] { return random.uniform(-9, 9); });
        const size_t sources = c.imageCount() - (row.function.masked() ? 1 : 0);
        for (int channel = 0; channel < coi; ++channel) {
            kit::forEachPixel(c.roi(), [&](int x, int y) {
                if (c.selects(x, y) && channel == coi - 1) return;
                for (size_t s = 0; s < sources; ++s) {
                    c.image(s).set(x, y, channel, random.pick(odd));
                }
            });
        }
        kit::expectAtAllLevels(wantFormula(c, row, coi));
    }
}

// Infinities give what the formula tells where it gives a number, not-a-numbers the same bits at all
// levels.
TEST(Reduce, InfiniteAndNotANumber) {
    kit::Random random(45);
    for (const Row& row : rows) {
        if (!row.ofFloats()) continue;
        kit::Case c = caseOf(row, {70, 3});
        fill(c, random, kit::Masked::all, [&] { return random.uniform(1, 9); });
        kit::Case odd = c;
        c.src().set(37, 1, 0, -HUGE_VAL);
        wantFormula(c, row);
        if (row.formula != meanStdDev) kit::expectAtAllLevels(c);
        odd.src().set(37, 1, 0, -HUGE_VAL);
        odd.src().set(5, 2, 0, NAN);
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
        kit::Random random(46);
        kit::Case c = caseOf(row, {2600, 2048});
        fill(c, random, kit::Masked::all,
             [&] { return deviation ? 65535 : random.between(65000, 65535); });
        c.src().set(1000, 1000, 0, 65534);
        wantFormula(c, row);
        kit::forLevels([&] { c.expect(); });
    }
}

TEST(Reduce, RelativeToNothing) {
    kit::Random random(47);
    for (const Row& row : rows) {
        if (row.formula != normRel) continue;
        for (const int first : {5, 0}) {
            kit::Case c = caseOf(row, {19, 4}, {}, row.function.srcChannels());
            fill(c, random, kit::Masked::single, [=] { return first; });
            c.image(1).fill([] { return 0; });
            c.wantStatus(zmoStsDivByZero).wantResult("pNorm", first == 0 ? 0 : HUGE_VAL);
            kit::expectAtAllLevels(c);
        }
    }
}

TEST(Reduce, BadArguments) {
    for (const Row& row : rows) caseOf(row, {12, 4}).expectBadArguments();
}

}  // namespace
