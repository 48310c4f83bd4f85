#include <algorithm>
#include <cmath>
#include <vector>

#include "call.h"
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
auto initOf() {
    if constexpr (isFloat<T>) {
        return zmoiHaarInit_32f;
    } else {
        return zmoiHaarInit_32s;
    }
}

// On an odd address, as a state may lie.
template <class T>
kit::Buffer stateOf(const Stage<T>& s) {
    const int classifiers = static_cast<int>(s.low.size());
    kit::Buffer state = kit::bufferOf(zmoiHaarGetSize, classifiers,
                                      static_cast<int>(s.rects.size()), kit::typeOf<T>);
    kit::succeed(initOf<T>(), s.rects.data(), s.weights.data(), s.counts.data(),
                 s.thresholds.data(), s.low.data(), s.high.data(), classifiers, s.tilted, state);
    return state;
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

template <class T>
void expectOracle(const Range& range) {
    using Real = std::conditional_t<isFloat<T>, float, double>;
    double allSelected = 0;
    double allPositive = 0;
    kit::forEachCase(91, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        const int density = std::array{100, 0, 4, 60}[turn / 3 % 4];
        const auto stage =
            randomStage<T>(random, range, static_cast<int>(turn) / 3 % 9 + 1, turn / 3 % 2 == 1);
        kit::Buffer state = stateOf(stage);
        kit::Image<T> table({size.width + reach, size.height + reach}, layout);
        kit::Image<T> deviations(size, layout);
        kit::Image<Zmo8u> mask(size, layout);
        table.fill([&] { return drawn<T>(random, range.sum, range); });
        deviations.fill([&] { return drawn<T>(random, range.deviation, range); });
        mask.fill(
            [&] { return random.between(0, 99) < density ? random.between(1, 255) : int64_t{0}; });
        const T threshold = drawn<T>(random, range.value, range);
        const auto divisor = static_cast<int64_t>(turn % 3 + 1);
        const int scale = isFloat<T> ? 0 : static_cast<int>(random.between(-31, 31) / divisor);
        const kit::Image<Zmo8u> before = mask;
        int count = -1;
        const auto run = [&](auto function, auto... scaleFactor) {
            return kit::run(function, table, deviations, mask, size, threshold, &count, state,
                            scaleFactor...);
        };
        ZmoStatus status = zmoStsNoErr;
        if constexpr (isFloat<T>) {
            status = run(zmoiApplyHaarClassifier_32f_C1R);
        } else {
            status = run(zmoiApplyHaarClassifier_32s_C1RSfs, scale);
        }
        int selected = 0;
        int positive = 0;
        kit::expectPixels(mask, [&](int x, int y) {
            if (before.get(x, y) == 0) return Zmo8u{0};
            ++selected;
            const Real sum = votes<T, Real>(stage, table, deviations.get(x, y), x, y, scale);
            if (sum < static_cast<Real>(threshold)) return Zmo8u{0};
            ++positive;
            return before.get(x, y);
        });
        EXPECT_EQ(status, selected == 0 ? zmoStsEmptyMask : zmoStsNoErr);
        EXPECT_EQ(count, positive);
        allSelected += selected;
        allPositive += positive;
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

// What is not a number lies below no threshold: every window gets the high value.
TEST(Haar, NoNumbersIn32f) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const Stage<Zmo32f> stage{{{0, 0, 3, 2}}, {1}, {1}, {1}, {-1}, {1}};
    kit::Buffer state = stateOf(stage);
    kit::forEachLevel([&] {
        kit::Image<Zmo32f> table({40, 3});
        kit::Image<Zmo8u> mask({37, 1});
        table.fill([] { return infinity; });
        mask.fill([] { return 5; });
        int count = -1;
        EXPECT_EQ(kit::runUnwatched(zmoiApplyHaarClassifier_32f_C1R, table, table, mask,
                                    mask.size(), 1, &count, state),
                  zmoStsNoErr);
        EXPECT_EQ(count, 37);
    });
}

// The rectangle's 2 + 3 columns more than there are windows are missed only when it is placed.
template <class T, class... P, class... Scale>
void expectBadArguments(ZmoStatus (*function)(P...), kit::Buffer foreign,
                        std::vector<kit::Wrong> wrong, Scale... scale) {
    kit::Buffer state = stateOf(Stage<T>{{{2, 1, 3, 2}}, {1}, {1}, {1}, {0}, {1}});
    const kit::Image<T> table({17, 7});
    const kit::Image<T> deviations({12, 4});
    kit::Image<Zmo8u> mask({12, 4});
    mask.fill([] { return 1; });
    int count = -1;
    const auto* const other = foreign.as<ZmoiHaarState>();
    wrong.insert(wrong.end(),
                 {{1, 69, zmoStsStepErr}, {9, other, zmoStsStateErr}, {1, 64, zmoStsRectErr}});
    kit::expectBadArguments(function, wrong, table.ptr(), table.step(), deviations, mask,
                            mask.size(), 2, &count, state, scale...);
}

TEST(Haar, BadArguments) {
    expectBadArguments<Zmo32f>(zmoiApplyHaarClassifier_32f_C1R,
                               stateOf(Stage<Zmo32s>{{{2, 1, 3, 2}}, {1}, {1}, {1}, {0}, {1}}),
                               {{7, std::numeric_limits<float>::infinity(), zmoStsThresholdErr}});
    expectBadArguments<Zmo32s>(zmoiApplyHaarClassifier_32s_C1RSfs,
                               stateOf(Stage<Zmo32f>{{{2, 1, 3, 2}}, {1}, {1}, {1}, {0}, {1}}),
                               {{10, {-32, 32}, zmoStsScaleErr}}, 0);
}

template <class T>
void expectBadStages(T badNumber) {
    static constexpr ZmoiRect rects[] = {{2, 1, 2, 2}, {3, 0, 1, 2}};
    static constexpr ZmoiRect badRects[][2] = {
        {{1, 1, 2, 2}, {}}, {rects[0], {3, -1, 1, 2}}, {{2, 1, 2, 0}, {}}, {{2, 1, 65537, 2}, {}}};
    const T numbers[] = {1, -1};
    const T badNumbers[] = {badNumber, 1};
    const int counts[] = {2};
    const int noCounts[] = {0};
    const int manyCounts[] = {65537};
    kit::Buffer state(1024);
    kit::expectBadArguments(
        initOf<T>(),
        {{6, {0, 65537}, zmoStsRangeErr},
         {2, {noCounts, manyCounts}, zmoStsRangeErr},
         {0, {badRects[0], badRects[1], badRects[2], badRects[3]}, zmoStsRectErr},
         {1, badNumbers, zmoStsRangeErr},
         {3, badNumbers, zmoStsRangeErr}},
        &rects[0], &numbers[0], &counts[0], &numbers[0], &numbers[0], &numbers[0], 1, 1, state);
    int size = -1;
    kit::expectBadArguments(
        zmoiHaarGetSize,
        {{0, {0, 3}, zmoStsRangeErr}, {1, 65537, zmoStsRangeErr}, {2, zmo16s, zmoStsDataTypeErr}},
        1, 2, kit::typeOf<T>, &size);
}

TEST(Haar, BadStages) {
    expectBadStages<Zmo32f>(std::numeric_limits<float>::quiet_NaN());
    expectBadStages<Zmo32s>(-(1 << 21) - 1);
}

}  // namespace
