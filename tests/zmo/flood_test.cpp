#include <algorithm>
#include <cmath>

#include "call.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

enum class Rule { equal, range, gradient };

template <class T>
struct Flood {
    ZmoiPoint seed;
    T value;
    T minDelta;
    T maxDelta;
};

// One of the two forms is there.
template <class T>
struct Function {
    const char* name;
    Rule rule;
    int connectivity;
    ZmoStatus (*fill)(T*, int, ZmoiSize, ZmoiPoint, T, ZmoiFloodRegion*, Zmo8u*);
    ZmoStatus (*fillDelta)(T*, int, ZmoiSize, ZmoiPoint, T, T, T, ZmoiFloodRegion*, Zmo8u*);

    // Not watched: a NaN raises flags.
    ZmoStatus run(kit::Image<T>& image, const Flood<T>& a, ZmoiFloodRegion* region) const {
        kit::Buffer buffer =
            kit::bufferOf(zmoiFloodFillGetBufferSize, image.size(), kit::typeOf<T>, 1);
        return fill ? kit::runUnwatched(fill, image, image.size(), a.seed, a.value, region, buffer)
                    : kit::runUnwatched(fillDelta, image, image.size(), a.seed, a.value, a.minDelta,
                                        a.maxDelta, region, buffer);
    }
};

#define FLOOD(con, type) \
    { #con " " #type, Rule::equal, con, zmoiFloodFill_##con##Con_##type##_C1IR, nullptr }
#define FLOOD_DELTA(Base, rule, con, type) \
    { #Base #con " " #type, Rule::rule, con, nullptr, zmoiFloodFill_##Base##con##Con_##type##_C1IR }
#define FLOODS(type)                                                              \
    FLOOD(4, type), FLOOD(8, type), FLOOD_DELTA(Range, range, 4, type),           \
        FLOOD_DELTA(Range, range, 8, type), FLOOD_DELTA(Grad, gradient, 4, type), \
        FLOOD_DELTA(Grad, gradient, 8, type)

template <class T>
const std::vector<Function<T>> functions;
template <>
const std::vector<Function<Zmo8u>> functions<Zmo8u> = {FLOODS(8u)};
template <>
const std::vector<Function<Zmo32s>> functions<Zmo32s> = {FLOOD(4, 32s), FLOOD(8, 32s)};
template <>
const std::vector<Function<Zmo32f>> functions<Zmo32f> = {FLOODS(32f)};

// Sums of the small test values are exact in float and in double alike.
template <class T>
std::vector<ZmoiPoint> expectedPixels(const Function<T>& function, const kit::Image<T>& image,
                                      const Flood<T>& a) {
    const double seed = image.get(a.seed.x, a.seed.y);
    return oracle::reached(
        image.size(), a.seed, function.connectivity, [&](ZmoiPoint p, ZmoiPoint q) {
            const double value = image.get(q.x, q.y);
            if (function.rule == Rule::equal) return value == seed;
            const double from = function.rule == Rule::range ? seed : image.get(p.x, p.y);
            return value >= from - a.minDelta && value <= from + a.maxDelta;
        });
}

// Returns the number of filled pixels.
template <class T>
size_t expectOracle(const Function<T>& function, kit::Image<T> image, const Flood<T>& a) {
    const std::vector<ZmoiPoint> pixels = expectedPixels(function, image, a);
    kit::Image<T> after = image;
    ZmoiPoint first = a.seed;
    ZmoiPoint last = a.seed;
    for (const ZmoiPoint p : pixels) {
        after.set(p.x, p.y, a.value);
        first = {std::min(first.x, p.x), std::min(first.y, p.y)};
        last = {std::max(last.x, p.x), std::max(last.y, p.y)};
    }
    ZmoiFloodRegion region{};
    kit::succeed([&] { return function.run(image, a, &region); });
    kit::expectPixels(image, after);
    EXPECT_EQ(region.area, static_cast<double>(pixels.size()));
    EXPECT_EQ(region.value, static_cast<double>(a.value));
    EXPECT_EQ(region.rect.x, first.x);
    EXPECT_EQ(region.rect.y, first.y);
    EXPECT_EQ(region.rect.width, last.x - first.x + 1);
    EXPECT_EQ(region.rect.height, last.y - first.y + 1);
    return pixels.size();
}

// Few different values, so that regions branch, meet again and enclose others. The deltas differ,
// so that it matters in which direction a step is taken.
template <class T>
void expectOracleEverywhere(const std::vector<T>& values, const std::vector<T>& deltas) {
    for (const auto& function : functions<T>) {
        SCOPED_TRACE(function.name);
        size_t most = 0;
        kit::forEachCase(61, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t) {
            kit::Image<T> image(size, layout);
            image.fill([&] { return random.between(0, 2) ? values[0] : random.pick(values); });
            const ZmoiPoint seed{static_cast<int>(random.between(0, size.width - 1)),
                                 static_cast<int>(random.between(0, size.height - 1))};
            const Flood<T> a{seed, random.pick(values), random.pick(deltas), random.pick(deltas)};
            most = std::max(most, expectOracle(function, image, a));
        });
        EXPECT_GT(most, 500U) << "never given a large region";
    }
}

TEST(Flood, Oracle) {
    expectOracleEverywhere<Zmo8u>({100, 101, 103, 0, 255}, {0, 1, 2, 101, 255});
    expectOracleEverywhere<Zmo32s>({-7, 9, INT32_MIN, INT32_MAX}, {0});
    expectOracleEverywhere<Zmo32f>({1.5F, 1.75F, 2.5F, -900, 0}, {0, 0.25F, 1, 1e3F});
}

// No pixel equals one that is not a number, not even itself, but the seed belongs to its region.
TEST(Flood, SeedThatIsNotANumber) {
    for (const auto& function : functions<Zmo32f>) {
        SCOPED_TRACE(function.name);
        kit::Image<Zmo32f> image({9, 3});
        image.fill([] { return std::numeric_limits<float>::quiet_NaN(); });
        ZmoiFloodRegion region{};
        EXPECT_EQ(function.run(image, {{4, 1}, 7, 1, 1}, &region), zmoStsNoErr);
        EXPECT_EQ(region.area, 1);
        EXPECT_EQ(image.get(4, 1), 7);
        EXPECT_TRUE(std::isnan(image.get(3, 1)));
    }
}

template <class T>
void expectBadArguments() {
    for (const auto& function : functions<T>) {
        SCOPED_TRACE(function.name);
        kit::Image<T> image({12, 4});
        image.fill([] { return 3; });
        kit::Buffer buffer(4096);
        ZmoiFloodRegion region{-1, {}, 0};
        std::vector<kit::Wrong> wrong;
        for (const ZmoiPoint seed : {ZmoiPoint{-1, 1}, {12, 1}, {1, -1}, {1, 4}}) {
            wrong.push_back({3, seed, zmoStsPointErr});
        }
        const auto expect = [&](auto run, auto... deltas) {
            kit::expectBadArguments(run, wrong, image, image.size(), ZmoiPoint{1, 1}, 9, deltas...,
                                    &region, buffer);
        };
        if (function.fill) {
            expect(function.fill);
            continue;
        }
        if (std::is_floating_point_v<T>) {
            wrong.push_back({5, -1, zmoStsRangeErr});
            wrong.push_back({6, NAN, zmoStsRangeErr});
        }
        expect(function.fillDelta, 1, 1);
    }
}

TEST(Flood, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo32s>();
    expectBadArguments<Zmo32f>();
}

}  // namespace
