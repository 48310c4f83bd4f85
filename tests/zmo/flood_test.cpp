#include <algorithm>
#include <cmath>

#include "kit.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

enum class Rule { equal, range, gradient };

template <class T>
struct Args {
    T* pSrcDst;
    int srcDstStep;
    ZmoiSize roi;
    ZmoiPoint seed;
    T value;
    T minDelta;
    T maxDelta;
    ZmoiFloodRegion* pRegion;
    Zmo8u* pBuffer;
};

template <class T>
struct Function {
    const char* name;
    Rule rule;
    int connectivity;
    ZmoStatus (*run)(const Args<T>&);
};

#define FLOOD(con, type)                                                                          \
    {                                                                                             \
        "FloodFill_" #con "Con_" #type, Rule::equal, con, [](const auto& a) {                     \
            return zmoiFloodFill_##con##Con_##type##_C1IR(a.pSrcDst, a.srcDstStep, a.roi, a.seed, \
                                                          a.value, a.pRegion, a.pBuffer);         \
        }                                                                                         \
    }
#define FLOOD_DELTA(Base, rule, con, type)                                                         \
    {                                                                                              \
        "FloodFill_" #Base #con "Con_" #type, Rule::rule, con, [](const auto& a) {                 \
            return zmoiFloodFill_##Base##con##Con_##type##_C1IR(a.pSrcDst, a.srcDstStep, a.roi,    \
                                                                a.seed, a.value, a.minDelta,       \
                                                                a.maxDelta, a.pRegion, a.pBuffer); \
        }                                                                                          \
    }
#define FLOODS(type)                                                              \
    FLOOD(4, type), FLOOD(8, type), FLOOD_DELTA(Range, range, 4, type),           \
        FLOOD_DELTA(Range, range, 8, type), FLOOD_DELTA(Grad, gradient, 4, type), \
        FLOOD_DELTA(Grad, gradient, 8, type)

std::vector<Function<Zmo8u>> functions(Zmo8u) {
    return {FLOODS(8u)};
}
std::vector<Function<Zmo32s>> functions(Zmo32s) {
    return {FLOOD(4, 32s), FLOOD(8, 32s)};
}
std::vector<Function<Zmo32f>> functions(Zmo32f) {
    return {FLOODS(32f)};
}

template <class T>
constexpr ZmoDataType typeOf = sizeof(T) == 1          ? zmo8u
                               : std::is_integral_v<T> ? zmo32s
                                                       : zmo32f;

template <class T>
kit::Buffer bufferFor(ZmoiSize size, int misalign) {
    int bytes = 0;
    EXPECT_EQ(zmoiFloodFillGetBufferSize(size, typeOf<T>, 1, &bytes), zmoStsNoErr);
    return kit::Buffer(bytes, misalign);
}

template <class T>
std::vector<ZmoiPoint> expectedPixels(const Function<T>& function, const kit::Image<T>& image,
                                      const Args<T>& a) {
    // Sums of the small test values are exact in float and in double alike.
    const double seed = image.get(a.seed.x, a.seed.y);
    return oracle::reached(a.roi, a.seed, function.connectivity, [&](ZmoiPoint p, ZmoiPoint q) {
        const double value = image.get(q.x, q.y);
        if (function.rule == Rule::equal) return value == seed;
        const double from = function.rule == Rule::range ? seed : image.get(p.x, p.y);
        return value >= from - a.minDelta && value <= from + a.maxDelta;
    });
}

// Runs at every level on copies of `before`; returns the number of filled pixels.
template <class T>
size_t expectOracle(const Function<T>& function, const kit::Image<T>& before, Args<T> a) {
    const std::vector<ZmoiPoint> pixels = expectedPixels(function, before, a);
    kit::Image<T> after = before;
    int left = a.seed.x, right = a.seed.x, top = a.seed.y, bottom = a.seed.y;
    for (const ZmoiPoint p : pixels) {
        after.set(p.x, p.y, a.value);
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
    }
    kit::forEachLevel([&] {
        kit::Image<T> image = before;
        kit::Buffer buffer = bufferFor<T>(a.roi, 1);
        ZmoiFloodRegion region{};
        a.pSrcDst = image.ptr();
        a.srcDstStep = image.step();
        a.pRegion = &region;
        a.pBuffer = buffer.ptr();
        kit::succeed([&] { return function.run(a); });
        kit::expectPixels(image, [&](int x, int y) { return after.get(x, y); });
        image.expectSurroundingsUntouched("image");
        buffer.expectSurroundingsUntouched();
        EXPECT_EQ(region.area, static_cast<double>(pixels.size()));
        EXPECT_EQ(region.value, static_cast<double>(a.value));
        EXPECT_EQ(region.rect.x, left);
        EXPECT_EQ(region.rect.y, top);
        EXPECT_EQ(region.rect.width, right - left + 1);
        EXPECT_EQ(region.rect.height, bottom - top + 1);
    });
    return pixels.size();
}

// Few different values, so that regions branch, meet again and enclose others. The deltas differ,
// so that it matters in which direction a step is taken.
template <class T>
void expectOracleEverywhere(const std::vector<T>& values, const std::vector<T>& deltas) {
    kit::Random random(61);
    const auto pick = [&](const std::vector<T>& from) {
        return from[static_cast<size_t>(random.between(0, static_cast<int64_t>(from.size()) - 1))];
    };
    for (const auto& function : functions(T())) {
        size_t most = 0;
        for (const ZmoiSize size : kit::sizes()) {
            for (const kit::Layout layout : kit::layouts()) {
                SCOPED_TRACE(testing::Message() << function.name << " " << size << " " << layout);
                kit::Image<T> image(size, layout);
                image.fill([&] { return random.between(0, 2) != 0 ? values[0] : pick(values); });
                const ZmoiPoint seed{static_cast<int>(random.between(0, size.width - 1)),
                                     static_cast<int>(random.between(0, size.height - 1))};
                const size_t area = expectOracle(function, image,
                                                 {nullptr, 0, size, seed, pick(values),
                                                  pick(deltas), pick(deltas), nullptr, nullptr});
                most = std::max(most, area);
            }
        }
        EXPECT_GT(most, 500U) << function.name << " was never given a large region";
    }
}

TEST(Flood, Oracle) {
    expectOracleEverywhere<Zmo8u>({100, 101, 103, 0, 255}, {0, 1, 2, 101, 255});
    expectOracleEverywhere<Zmo32s>({-7, 9, INT32_MIN, INT32_MAX}, {0});
    expectOracleEverywhere<Zmo32f>({1.5F, 1.75F, 2.5F, -900, 0}, {0, 0.25F, 1, 1e3F});
}

// No pixel equals one that is not a number, not even itself, but the seed belongs to its region.
TEST(Flood, SeedThatIsNotANumber) {
    for (const auto& function : functions(Zmo32f())) {
        kit::Image<Zmo32f> image({9, 3});
        image.fill([] { return std::numeric_limits<float>::quiet_NaN(); });
        kit::Buffer buffer = bufferFor<Zmo32f>({9, 3}, 0);
        ZmoiFloodRegion region{};
        EXPECT_EQ(function.run(
                      {image.ptr(), image.step(), {9, 3}, {4, 1}, 7, 1, 1, &region, buffer.ptr()}),
                  zmoStsNoErr);
        EXPECT_EQ(region.area, 1) << function.name;
        EXPECT_EQ(image.get(4, 1), 7) << function.name;
        EXPECT_TRUE(std::isnan(image.get(3, 1))) << function.name;
    }
}

template <class T>
void expectBadArguments() {
    using A = Args<T>;
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        kit::Image<T> image({12, 4});
        image.fill([] { return 3; });
        kit::Buffer buffer = bufferFor<T>({12, 4}, 0);
        ZmoiFloodRegion region{-1, {}, 0};
        std::vector<kit::Fault<A>> faults = {
            {"null image", zmoStsNullPtrErr, [](A& a) { a.pSrcDst = nullptr; }},
            {"null region", zmoStsNullPtrErr, [](A& a) { a.pRegion = nullptr; }},
            {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }},
            {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
            {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
            {"step short", zmoStsStepErr,
             [](A& a) { a.srcDstStep -= static_cast<int>(sizeof(T)); }},
            {"seed left", zmoStsPointErr, [](A& a) { a.seed.x = -1; }},
            {"seed right", zmoStsPointErr, [](A& a) { a.seed.x = 12; }},
            {"seed above", zmoStsPointErr, [](A& a) { a.seed.y = -1; }},
            {"seed below", zmoStsPointErr, [](A& a) { a.seed.y = 4; }},
        };
        if (std::is_floating_point_v<T> && function.rule != Rule::equal) {
            faults.push_back({"negative", zmoStsRangeErr, [](A& a) { a.minDelta = T(-1); }});
            faults.push_back({"no number", zmoStsRangeErr,
                              [](A& a) { a.maxDelta = std::numeric_limits<T>::quiet_NaN(); }});
        }
        kit::expectFaults(
            A{image.ptr(), image.step(), {12, 4}, {1, 1}, 9, 1, 1, &region, buffer.ptr()},
            function.run, faults, [&] {
                image.expectUntouched("image");
                buffer.expectUntouched();
                EXPECT_EQ(region.area, -1);
            });
    }
}

TEST(Flood, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo32s>();
    expectBadArguments<Zmo32f>();
    int size = -1;
    EXPECT_EQ(zmoiFloodFillGetBufferSize({4, 4}, zmo8u, 1, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(zmoiFloodFillGetBufferSize({0, 4}, zmo16u, 3, &size), zmoStsSizeErr);
    EXPECT_EQ(zmoiFloodFillGetBufferSize({4, 4}, zmo16u, 3, &size), zmoStsDataTypeErr);
    EXPECT_EQ(zmoiFloodFillGetBufferSize({4, 4}, zmo8u, 3, &size), zmoStsChannelsErr);
    EXPECT_EQ(zmoiFloodFillGetBufferSize({65536, 65536}, zmo8u, 1, &size), zmoStsTooLargeErr);
    EXPECT_EQ(size, -1);
}

}  // namespace
