#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

const kit::Function ofIntegers = ZMO(zmoiApplyHaarClassifier_32s_C1RSfs);
const kit::Function ofFloats = ZMO(zmoiApplyHaarClassifier_32f_C1R);

bool isReal(const kit::Function& function) {
    return function.isNamed("32f");
}

// What the service takes that makes a state.
struct Stage {
    std::vector<ZmoiRect> rects;
    std::vector<double> weights;
    std::vector<double> counts;
    std::vector<double> thresholds;
    std::vector<double> low;
    std::vector<double> high;
    bool tilted = false;
};

kit::Case& withStage(kit::Case& c, const Stage& s) {
    return c
        .with({{"pRects", s.rects.data()},
               {"pWeights", s.weights},
               {"pRectCounts", s.counts},
               {"pThresholds", s.thresholds},
               {"pLow", s.low},
               {"pHigh", s.high},
               {"classifiers", s.low.size()},
               {"rectangles", s.rects.size()},
               {"tilted", s.tilted}})
        .sized(ZMO(zmoiHaarGetSize))
        .prepared(isReal(c.function()) ? ZMO(zmoiHaarInit_32f) : ZMO(zmoiHaarInit_32s));
}

// Largest values of the parts of a random stage and its data; `unit` divides all numbers.
struct Range {
    bool real;
    int64_t sum;
    int64_t weight;
    int64_t deviation;
    int64_t threshold;
    int64_t value;
    double unit = 1;

    double drawn(kit::Random& random, int64_t largest) const {
        const double number = static_cast<double>(random.between(-largest, largest)) / unit;
        return real ? kit::single(number) : std::clamp<double>(number, INT32_MIN, INT32_MAX);
    }
};

// Rectangles end within 20 columns and rows.
Stage randomStage(kit::Random& random, const Range& range, size_t classifiers, bool tilted) {
    Stage s;
    s.tilted = tilted;
    for (size_t k = 0; k < classifiers; ++k) {
        const int count = random.between(1, 3);
        s.counts.push_back(count);
        for (int i = 0; i < count; ++i) {
            const int height = random.between(1, 6);
            s.rects.push_back({random.between(tilted ? height : 0, 12), random.between(0, 8),
                               random.between(1, 6), height});
            s.weights.push_back(range.drawn(random, range.weight));
        }
        s.thresholds.push_back(range.drawn(random, range.threshold));
        s.low.push_back(range.drawn(random, range.value));
        s.high.push_back(range.drawn(random, range.value));
    }
    return s;
}

// The sum of a window's votes: integers exactly, but for sums of pixels, which wrap around.
double votes(const Stage& s, const kit::Image& table, double deviation, int x, int y, int scale) {
    const bool real = !table.isWhole();
    const auto rounded = [=](double v) { return real ? kit::single(v) : v; };
    const auto difference = [=](double a, double b) {
        if (real) return kit::single(a - b);
        return static_cast<double>(static_cast<int32_t>(static_cast<int64_t>(a - b)));
    };
    double sum = 0;
    size_t r = 0;
    for (size_t k = 0; k < s.low.size(); ++k) {
        double feature = 0;
        for (const size_t end = r + static_cast<size_t>(s.counts[k]); r < end; ++r) {
            const ZmoiRect& rect = s.rects[r];
            const int w = rect.width;
            const int h = rect.height;
            const auto at = [&](int i, int j) { return table(x + rect.x + i, y + rect.y + j); };
            const double inside = s.tilted ? difference(difference(at(w - h, w + h), at(w, w)),
                                                        difference(at(-h, h), at(0, 0)))
                                           : difference(difference(at(w, h), at(0, h)),
                                                        difference(at(w, 0), at(0, 0)));
            feature = rounded(feature + rounded(s.weights[r] * inside));
        }
        const double limit = std::ldexp(rounded(s.thresholds[k] * deviation), -scale);
        sum = rounded(sum + (feature < rounded(limit) ? s.low[k] : s.high[k]));
    }
    return sum;
}

// The integral image reaches beyond the windows.
kit::Case caseOf(const kit::Function& function, const kit::Turn& t, const Stage& stage, int beyond,
                 double threshold, int scale) {
    kit::Case c(function, t, {{"pSrc", {t.size.width + beyond, t.size.height + beyond}}});
    withStage(c, stage);
    return c.with({{"threshold", threshold}, {"scaleFactor", scale}});
}

void expectOracle(const Range& range) {
    double allSelected = 0;
    double allPositive = 0;
    kit::forEachCase({91, 4}, 1, [&](kit::Turn& t, size_t) {
        const int density = std::array{100, 0, 4, 60}[t.number / 3 % 4];
        const Stage stage = randomStage(t, range, t.number / 3 % 9 + 1, t.number / 3 % 2 == 1);
        const double threshold = range.drawn(t, range.value);
        const int scale = t.between(-31, 31) / static_cast<int>(t.number % 3 + 1);
        kit::Case c = caseOf(range.real ? ofFloats : ofIntegers, t, stage, 20, threshold, scale);
        c.src().fill([&] { return range.drawn(t, range.sum); });
        c.image("pSrc2").fill([&] { return range.drawn(t, range.deviation); });
        c.mask().fill([&] { return t.between(0, 99) < density ? t.between(1, 255) : 0; });
        int selected = 0;
        int positive = 0;
        c.want("pMask", [&](int x, int y) {
            if (!c.selects(x, y)) return 0.0;
            ++selected;
            const double sum =
                votes(stage, c.src(), c.image(1)(x, y), x, y, range.real ? 0 : scale);
            if (sum < threshold) return 0.0;
            ++positive;
            return c.mask()(x, y);
        });
        allSelected += selected;
        allPositive += positive;
        return c.wantResult("pPositive", positive)
            .wantStatus(selected == 0 ? zmoStsEmptyMask : zmoStsNoErr);
    });
    EXPECT_GT(allPositive, 0.1 * allSelected);
    EXPECT_LT(allPositive, 0.9 * allSelected);
}

// Small numbers, so that sums and thresholds are often equal; then fractions, then the largest.
TEST(Haar, Oracle32f) {
    expectOracle({true, 40, 3, 6, 12, 2});
    expectOracle({true, 1000000, 3000, 100000, 5000, 1000, 777});
}
TEST(Haar, Oracle32s) {
    expectOracle({false, 40, 3, 6, 12, 2});
    expectOracle({false, INT32_MAX, 600000, INT32_MAX, 1 << 21, INT32_MAX / 2});
    expectOracle({false, int64_t{1} << 33, 3, int64_t{1} << 33, 1 << 21, 2});
}

Stage oneRectangle(ZmoiRect rect, double low) {
    return {{rect}, {1}, {1}, {1}, {low}, {1}};
}

// What is not a number lies below no threshold: every window gets the high value.
TEST(Haar, NoNumbersIn32f) {
    kit::Case c = caseOf(ofFloats, kit::Turn(92, {37, 1}), oneRectangle({0, 0, 3, 2}, -1), 3, 1, 0);
    c.fillAll(HUGE_VAL, 5);
    c.want("pMask", 5).wantResult("pPositive", 37);
    kit::expectSameAtAllLevels(c);
}

// The rectangle's 2 + 3 columns more than there are windows are missed only when it is placed.
TEST(Haar, BadArguments) {
    const auto good = [](const kit::Function& function) {
        return caseOf(function, kit::Turn(93, {12, 4}), oneRectangle({2, 1, 3, 2}, 0), 5, 2, 0);
    };
    for (const auto& function : {ofIntegers, ofFloats}) {
        kit::Case c = good(function);
        kit::Case other = good(isReal(function) ? ofIntegers : ofFloats);
        c.setRowNeeded("pSrc", 12);
        std::vector<kit::Wrong> wrong = {
            {"pState", other.memory("pState").ptr(), zmoStsStateErr},
            {{{"srcStep", 64}, {"pState", c.memory("pState").ptr()}}, zmoStsRectErr}};
        if (isReal(function)) {
            wrong.insert(wrong.begin(), {"threshold", HUGE_VAL, zmoStsThresholdErr});
        }
        c.expectBadArguments(wrong);
    }
}

TEST(Haar, BadStages) {
    static constexpr ZmoiRect badRects[][2] = {{{1, 1, 2, 2}, {}},
                                               {{2, 1, 2, 2}, {3, -1, 1, 2}},
                                               {{2, 1, 2, 0}, {}},
                                               {{2, 1, 65537, 2}, {}}};
    const Stage stage{{{2, 1, 2, 2}, {3, 0, 1, 2}}, {1, -1}, {2}, {1}, {1}, {1}, true};
    using List = std::vector<double>;
    for (const auto& init : {ZMO(zmoiHaarInit_32f), ZMO(zmoiHaarInit_32s)}) {
        const double bad = isReal(init) ? NAN : -(1 << 21) - 1;
        const ZmoDataType type = isReal(init) ? zmo32f : zmo32s;
        std::vector<kit::Wrong> wrong = {
            {"classifiers", {0, 65537}, zmoStsRangeErr},
            {"pRectCounts", {List{0}, List{65537}}, zmoStsRangeErr},
            {"pRects",
             {&badRects[0][0], &badRects[1][0], &badRects[2][0], &badRects[3][0]},
             zmoStsRectErr},
            {"pWeights", List{1, bad}, zmoStsRangeErr}};
        for (const char* const name : {"pThresholds", "pLow", "pHigh"}) {
            const bool bounded = isReal(init) || name == std::string("pThresholds");
            if (bounded) wrong.push_back({name, List{bad}, zmoStsRangeErr});
        }
        kit::Case c(init);
        withStage(c.with("type", type), stage).expectBadArguments(wrong);
        kit::Case(ZMO(zmoiHaarGetSize))
            .with({{"classifiers", 1}, {"rectangles", 2}, {"type", type}})
            .expectBadArguments({{"classifiers", {0, 3}, zmoStsRangeErr},
                                 {"rectangles", 65537, zmoStsRangeErr},
                                 {"type", zmo16s, zmoStsDataTypeErr}});
    }
}

}  // namespace
