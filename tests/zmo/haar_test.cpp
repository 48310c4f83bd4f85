#include <algorithm>
#include <cmath>
#include <vector>

#include "case.h"
#include "zmocv.h"

namespace {

template <class T>
constexpr bool isFloat = std::is_floating_point_v<T>;

// What zmoiHaarInit takes.
template <class T>
struct Stage {
    std::vector<ZmoiRect> rects;
    std::vector<T> weights;
    std::vector<int> counts;
    std::vector<T> thresholds;
    std::vector<T> low;
    std::vector<T> high;
    bool tilted = false;
};

template <class T>
const kit::Function apply = ZMO(zmoiApplyHaarClassifier_32f_C1R);
template <>
const kit::Function apply<Zmo32s> = ZMO(zmoiApplyHaarClassifier_32s_C1RSfs);
template <class T>
const kit::Function init = ZMO(zmoiHaarInit_32f);
template <>
const kit::Function init<Zmo32s> = ZMO(zmoiHaarInit_32s);

// What has a stage makes a state of it.
template <class T>
kit::Case& withStage(kit::Case& c, const Stage<T>& s) {
    return c
        .with({{"pRects", s.rects.data()},
               {"pWeights", s.weights.data()},
               {"pRectCounts", s.counts.data()},
               {"pThresholds", s.thresholds.data()},
               {"pLow", s.low.data()},
               {"pHigh", s.high.data()},
               {"classifiers", s.low.size()},
               {"rectangles", s.rects.size()},
               {"tilted", s.tilted}})
        .sized(ZMO(zmoiHaarGetSize))
        .prepared(init<T>);
}

// Largest values of the parts of a random stage and its data; `unit` divides all numbers.
struct Range {
    int64_t sum;
    int64_t weight;
    int64_t deviation;
    int64_t threshold;
    int64_t value;
    double unit;
};

template <class T>
T drawn(kit::Random& random, int64_t largest, const Range& range) {
    const auto value = static_cast<double>(random.between(-largest, largest));
    return static_cast<T>(std::clamp(value / range.unit,
                                     static_cast<double>(std::numeric_limits<T>::lowest()),
                                     static_cast<double>(std::numeric_limits<T>::max())));
}

constexpr int reach = 20;  // rectangles end within so many columns and rows

template <class T>
Stage<T> randomStage(kit::Random& random, const Range& range, int classifiers, bool tilted) {
    Stage<T> s;
    s.tilted = tilted;
    const auto number = [&](int low, int high) {
        return static_cast<int>(random.between(low, high));
    };
    for (int k = 0; k < classifiers; ++k) {
        s.counts.push_back(number(1, 3));
        for (int i = 0; i < s.counts.back(); ++i) {
            const int width = number(1, 6);
            const int height = number(1, 6);
            s.rects.push_back({number(tilted ? height : 0, 12), number(0, 8), width, height});
            s.weights.push_back(drawn<T>(random, range.weight, range));
        }
        s.thresholds.push_back(drawn<T>(random, range.threshold, range));
        s.low.push_back(drawn<T>(random, range.value, range));
        s.high.push_back(drawn<T>(random, range.value, range));
    }
    return s;
}

// The sum of a window's votes; Real is float, or a double that holds all integers that occur.
template <class T, class Real>
Real votes(const Stage<T>& s, const kit::Image<T>& table, T deviation, int x, int y,
           int scaleFactor) {
    Real sum = 0;
    size_t r = 0;
    for (size_t k = 0; k < s.low.size(); ++k) {
        Real feature = 0;
        for (const size_t end = r + static_cast<size_t>(s.counts[k]); r < end; ++r) {
            const ZmoiRect& rect = s.rects[r];
            const int left = x + rect.x, top = y + rect.y, w = rect.width, h = rect.height;
            const auto at = [&](int i, int j) { return table.get(left + i, top + j); };
            const auto difference = [](T a, T b) {
                if constexpr (isFloat<T>) return a - b;
                return static_cast<T>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
            };
            const T inside = s.tilted ? difference(difference(at(w - h, w + h), at(w, w)),
                                                   difference(at(-h, h), at(0, 0)))
                                      : difference(difference(at(w, h), at(0, h)),
                                                   difference(at(w, 0), at(0, 0)));
            feature += static_cast<Real>(s.weights[r]) * static_cast<Real>(inside);
        }
        const Real limit = std::ldexp(
            static_cast<Real>(s.thresholds[k]) * static_cast<Real>(deviation), -scaleFactor);
        sum += static_cast<Real>(feature < limit ? s.low[k] : s.high[k]);
    }
    return sum;
}

// The integral image reaches beyond the windows.
template <class T>
kit::Case caseOf(const Stage<T>& stage, ZmoiSize size, kit::Layout layout, int beyond,
                 double threshold, int scaleFactor) {
    kit::Case c(apply<T>, size, layout, {{"pSrc", {size.width + beyond, size.height + beyond}}});
    withStage(c, stage);
    return c.with({{"threshold", threshold}, {"scaleFactor", scaleFactor}});
}

template <class T>
void expectOracle(const Range& range) {
    using Real = std::conditional_t<isFloat<T>, float, double>;
    double allSelected = 0;
    double allPositive = 0;
    kit::forEachCase(
        {91, 4}, apply<T>,
        [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int density = std::array{100, 0, 4, 60}[turn / 3 % 4];
            const auto stage = randomStage<T>(random, range, static_cast<int>(turn) / 3 % 9 + 1,
                                              turn / 3 % 2 == 1);
            const T threshold = drawn<T>(random, range.value, range);
            const auto divisor = static_cast<int64_t>(turn % 3 + 1);
            const int scale = isFloat<T> ? 0 : static_cast<int>(random.between(-31, 31) / divisor);
            kit::Case c = caseOf(stage, size, layout, reach, threshold, scale);
            c.src().fill([&] { return drawn<T>(random, range.sum, range); });
            c.image("pSrc2").fill([&] { return drawn<T>(random, range.deviation, range); });
            c.mask().fill([&] {
                return random.between(0, 99) < density ? random.between(1, 255) : int64_t{0};
            });
            int selected = 0;
            int positive = 0;
            c.want("pMask", [&](int x, int y) {
                if (c.mask().get(x, y) == 0) return Zmo8u{0};
                ++selected;
                const Real sum = votes<T, Real>(stage, c.src().as<T>(),
                                                c.image(1).as<T>().get(x, y), x, y, scale);
                if (sum < static_cast<Real>(threshold)) return Zmo8u{0};
                ++positive;
                return c.mask().get(x, y);
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
    expectOracle<Zmo32f>({40, 3, 6, 12, 2, 1});
    expectOracle<Zmo32f>({1000000, 3000, 100000, 5000, 1000, 777});
}
TEST(Haar, Oracle32s) {
    expectOracle<Zmo32s>({40, 3, 6, 12, 2, 1});
    expectOracle<Zmo32s>({INT32_MAX, 600000, INT32_MAX, 1 << 21, INT32_MAX / 2, 1});
    expectOracle<Zmo32s>({int64_t{1} << 33, 3, int64_t{1} << 33, 1 << 21, 2, 1});
}

template <class T>
Stage<T> oneRectangle(ZmoiRect rect, T threshold, T low) {
    return {{rect}, {1}, {1}, {threshold}, {low}, {1}};
}

// What is not a number lies below no threshold: every window gets the high value.
TEST(Haar, NoNumbersIn32f) {
    kit::Case c = caseOf(oneRectangle<Zmo32f>({0, 0, 3, 2}, 1, -1), {37, 1}, {}, 3, 1, 0);
    const auto infinite = [] { return HUGE_VAL; };
    c.fillAll(infinite, [] { return 5; });
    c.want("pMask", [](int, int) { return 5; }).wantResult("pPositive", 37);
    kit::expectSameAtAllLevels(c);
}

// The rectangle's 2 + 3 columns more than there are windows are missed only when it is placed.
template <class T, class Other>
void expectBadArguments(std::vector<kit::Wrong> wrong) {
    constexpr ZmoiRect rect{2, 1, 3, 2};
    kit::Case c = caseOf(oneRectangle<T>(rect, 1, 0), {12, 4}, {}, 5, 2, 0);
    kit::Case other = caseOf(oneRectangle<Other>(rect, 1, 0), {12, 4}, {}, 5, 2, 0);
    c.setRowNeeded("pSrc", 12);
    wrong.push_back({"pState", other.memory("pState").ptr(), zmoStsStateErr});
    wrong.push_back({{{"srcStep", 64}, {"pState", c.memory("pState").ptr()}}, zmoStsRectErr});
    c.expectBadArguments(wrong);
}

TEST(Haar, BadArguments) {
    expectBadArguments<Zmo32f, Zmo32s>({{"threshold", HUGE_VAL, zmoStsThresholdErr}});
    expectBadArguments<Zmo32s, Zmo32f>({});
}

template <class T>
void expectBadStages(T badNumber) {
    static constexpr ZmoiRect badRects[][2] = {{{1, 1, 2, 2}, {}},
                                               {{2, 1, 2, 2}, {3, -1, 1, 2}},
                                               {{2, 1, 2, 0}, {}},
                                               {{2, 1, 65537, 2}, {}}};
    static constexpr int noCounts[] = {0};
    static constexpr int manyCounts[] = {65537};
    const T badNumbers[] = {badNumber, 1};
    const Stage<T> stage{{{2, 1, 2, 2}, {3, 0, 1, 2}}, {1, -1}, {2}, {1}, {1}, {1}, true};
    kit::Case c(init<T>);
    withStage(c.with("type", kit::typeOf<T>), stage)
        .expectBadArguments({{"classifiers", {0, 65537}, zmoStsRangeErr},
                             {"pRectCounts", {&noCounts[0], &manyCounts[0]}, zmoStsRangeErr},
                             {"pRects",
                              {&badRects[0][0], &badRects[1][0], &badRects[2][0], &badRects[3][0]},
                              zmoStsRectErr},
                             {"pWeights", &badNumbers[0], zmoStsRangeErr},
                             {"pThresholds", &badNumbers[0], zmoStsRangeErr}});
    kit::Case(ZMO(zmoiHaarGetSize))
        .with({{"classifiers", 1}, {"rectangles", 2}, {"type", kit::typeOf<T>}})
        .expectBadArguments({{"classifiers", {0, 3}, zmoStsRangeErr},
                             {"rectangles", 65537, zmoStsRangeErr},
                             {"type", zmo16s, zmoStsDataTypeErr}});
}

TEST(Haar, BadStages) {
    expectBadStages<Zmo32f>(NAN);
    expectBadStages<Zmo32s>(-(1 << 21) - 1);
}

}  // namespace
