// Labels, speckles and bounds: functions that work on all regions of an image.
#include <algorithm>
#include <cmath>
#include <map>

#include "kit.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

// All arguments that any of the functions takes.
template <class T>
struct Args {
    T* pSrcDst;
    int srcDstStep;
    ZmoiSize roi;
    T value;
    int low;  // minLabel, or the largest speckle
    int high;
    T maxDiff;
    int connectivity;
    int* pCount;
    Zmo8u* pBuffer;
};

struct Result {
    ZmoStatus status = zmoStsNoErr;
    int count = -1;
};

template <class T>
struct Function {
    const char* name;
    ZmoStatus (*run)(const Args<T>&);
    // What the function makes of the image, pixel by pixel.
    Result (*expect)(kit::Image<T>& image, const Args<T>& a);
    ZmoStatus (*bufferSize)(ZmoiSize, ZmoDataType, int, int*);
    bool labels;
};

// Calls body(pixels) for each component of the pixels for which counts holds, in reading order.
template <class Counts, class Joined, class Body>
void forEachComponent(ZmoiSize size, int connectivity, Counts counts, Joined joined, Body body) {
    kit::Image<Zmo8u> seen(size);
    seen.fill([] { return 0; });
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            if (!counts({x, y}) || seen.get(x, y) != 0) continue;
            const auto pixels = oracle::reached(
                size, {x, y}, connectivity,
                [&](ZmoiPoint p, ZmoiPoint q) { return counts(q) && joined(p, q); });
            for (const ZmoiPoint p : pixels) seen.set(p.x, p.y, 1);
            body(pixels);
        }
    }
}

template <class T>
auto valuesOf(const kit::Image<T>& image) {
    return [&image](ZmoiPoint p) { return static_cast<double>(image.get(p.x, p.y)); };
}

template <class T>
Result expectLabels(kit::Image<T>& image, const Args<T>& a) {
    const kit::Image<T> before = image;
    const auto value = valuesOf(before);
    int found = 0;
    forEachComponent(
        a.roi, a.connectivity, [&](ZmoiPoint p) { return value(p) != 0; },
        [](ZmoiPoint, ZmoiPoint) { return true; },
        [&](const std::vector<ZmoiPoint>& pixels) {
            const int label = a.low + found++;
            for (const ZmoiPoint p : pixels) {
                image.set(p.x, p.y, static_cast<T>(label <= a.high ? label : 0));
            }
        });
    return {found > a.high - a.low + 1 ? zmoStsTruncated : zmoStsNoErr, found};
}

template <class T>
Result expectSpeckles(kit::Image<T>& image, const Args<T>& a) {
    const kit::Image<T> before = image;
    const auto value = valuesOf(before);
    forEachComponent(
        a.roi, a.connectivity, [&](ZmoiPoint p) { return value(p) != a.value; },
        [&](ZmoiPoint p, ZmoiPoint q) { return std::fabs(value(p) - value(q)) <= a.maxDiff; },
        [&](const std::vector<ZmoiPoint>& pixels) {
            if (static_cast<int>(pixels.size()) > a.low) return;
            for (const ZmoiPoint p : pixels) image.set(p.x, p.y, a.value);
        });
    return {};
}

template <class T>
Result expectBounds(kit::Image<T>& image, const Args<T>& a) {
    const kit::Image<T> before = image;
    for (int y = 0; y < a.roi.height; ++y) {
        for (int x = 0; x < a.roi.width; ++x) {
            const auto differs = [&](int i, int j) {
                return i >= 0 && i < a.roi.width && j < a.roi.height &&
                       before.get(i, j) != before.get(x, y);
            };
            const bool corners = differs(x - 1, y + 1) || differs(x + 1, y + 1);
            if (differs(x + 1, y) || differs(x, y + 1) || (a.connectivity == 8 && corners)) {
                image.set(x, y, a.value);
            }
        }
    }
    return {};
}

#define LABEL(type)                                                                          \
    Function<Zmo##type> {                                                                    \
        "LabelMarkers_" #type,                                                               \
            [](const auto& a) {                                                              \
                return zmoiLabelMarkers_##type##_C1IR(a.pSrcDst, a.srcDstStep, a.roi, a.low, \
                                                      a.high, a.connectivity, a.pCount,      \
                                                      a.pBuffer);                            \
            },                                                                               \
            expectLabels<Zmo##type>, zmoiLabelMarkersGetBufferSize, true                     \
    }
#define SPECKLES(type)                                                                         \
    Function<Zmo##type> {                                                                      \
        "MarkSpeckles_" #type,                                                                 \
            [](const auto& a) {                                                                \
                return zmoiMarkSpeckles_##type##_C1IR(a.pSrcDst, a.srcDstStep, a.roi, a.value, \
                                                      a.low, a.maxDiff, a.connectivity,        \
                                                      a.pBuffer);                              \
            },                                                                                 \
            expectSpeckles<Zmo##type>, zmoiMarkSpecklesGetBufferSize, false                    \
    }
#define BOUND(type)                                                                             \
    Function<Zmo##type> {                                                                       \
        "BoundSegments_" #type,                                                                 \
            [](const auto& a) {                                                                 \
                return zmoiBoundSegments_##type##_C1IR(a.pSrcDst, a.srcDstStep, a.roi, a.value, \
                                                       a.connectivity);                         \
            },                                                                                  \
            expectBounds<Zmo##type>, nullptr, false                                             \
    }

template <class T>
std::vector<Function<T>> functions();
template <>
std::vector<Function<Zmo8u>> functions() {
    return {LABEL(8u), SPECKLES(8u), BOUND(8u)};
}
template <>
std::vector<Function<Zmo16u>> functions() {
    return {LABEL(16u), SPECKLES(16u), BOUND(16u)};
}
template <>
std::vector<Function<Zmo16s>> functions() {
    return {SPECKLES(16s)};
}
template <>
std::vector<Function<Zmo32f>> functions() {
    return {SPECKLES(32f)};
}

template <class T>
constexpr ZmoDataType typeOf = zmo8u;
template <>
constexpr ZmoDataType typeOf<Zmo16u> = zmo16u;
template <>
constexpr ZmoDataType typeOf<Zmo16s> = zmo16s;
template <>
constexpr ZmoDataType typeOf<Zmo32f> = zmo32f;

template <class T>
int bufferBytes(const Function<T>& function, ZmoiSize size) {
    int bytes = 64;
    if (function.bufferSize) {
        EXPECT_EQ(function.bufferSize(size, typeOf<T>, 1, &bytes), zmoStsNoErr);
    }
    return bytes;
}

// Returns the number of pixels that changed.
template <class T>
int expectOracle(const Function<T>& function, const kit::Image<T>& before, Args<T> a) {
    kit::Image<T> after = before;
    const Result want = function.expect(after, a);
    kit::forEachLevel([&] {
        kit::Image<T> image = before;
        kit::Buffer buffer(bufferBytes(function, a.roi));
        int count = -1;
        a.pSrcDst = image.ptr();
        a.srcDstStep = image.step();
        a.pCount = &count;
        a.pBuffer = buffer.ptr();
        EXPECT_EQ(kit::watched([&] { return function.run(a); }), want.status);
        EXPECT_EQ(count, want.count);
        kit::expectPixels(image, [&](int x, int y) { return after.get(x, y); });
        image.expectSurroundingsUntouched("image");
        buffer.expectSurroundingsUntouched();
    });
    int changed = 0;
    for (int y = 0; y < a.roi.height; ++y) {
        for (int x = 0; x < a.roi.width; ++x) changed += after.get(x, y) != before.get(x, y);
    }
    return changed;
}

// The label form that is not in place: its source has a step of its own and stays.
void expectWideLabels(const kit::Image<Zmo8u>& src, kit::Layout layout, Args<Zmo32s> a) {
    kit::Image<Zmo32s> labels(src.size());
    labels.fill([] { return 0; });
    for (int y = 0; y < src.size().height; ++y) {
        for (int x = 0; x < src.size().width; ++x) labels.set(x, y, src.get(x, y));
    }
    const Result want = expectLabels(labels, a);
    int bytes = 0;
    EXPECT_EQ(zmoiLabelMarkersGetBufferSize(a.roi, zmo8u, 1, &bytes), zmoStsNoErr);
    kit::forEachLevel([&] {
        kit::Image<Zmo32s> dst(src.size(), layout);
        kit::Buffer buffer(bytes);
        int count = -1;
        EXPECT_EQ(kit::watched([&] {
                      return zmoiLabelMarkers_8u32s_C1R(src.ptr(), src.step(), dst.ptr(),
                                                        dst.step(), a.roi, a.low, a.high,
                                                        a.connectivity, &count, buffer.ptr());
                  }),
                  want.status);
        EXPECT_EQ(count, want.count);
        kit::expectPixels(dst, [&](int x, int y) { return labels.get(x, y); });
        dst.expectSurroundingsUntouched("labels");
        buffer.expectSurroundingsUntouched();
    });
    src.expectUntouched("source");
}

// Values near each other and far apart, about half of them `values[0]`, so that components branch and
// join late.
template <class T>
void expectOracleEverywhere(const std::vector<T>& values, const std::vector<T>& diffs) {
    kit::Random random(71);
    const auto pick = [&](const auto& from) {
        return from[static_cast<size_t>(random.between(0, static_cast<int64_t>(from.size()) - 1))];
    };
    for (const auto& function : functions<T>()) {
        int changed = 0;
        for (const ZmoiSize size : kit::sizes()) {
            for (const kit::Layout layout : kit::layouts()) {
                SCOPED_TRACE(testing::Message() << function.name << " " << size << " " << layout);
                kit::Image<T> image(size, layout);
                image.fill([&] { return random.between(0, 1) != 0 ? values[0] : pick(values); });
                const int low = pick(std::vector<int>{1, 2, 7, 30});
                const Args<T> a{nullptr,     0,
                                size,        pick(values),
                                low,         low + pick(std::vector<int>{0, 3, 90}),
                                pick(diffs), pick(std::vector<int>{4, 8}),
                                nullptr,     nullptr};
                changed += expectOracle(function, image, a);
                if constexpr (std::is_same_v<T, Zmo8u>) {
                    if (function.expect == expectLabels<Zmo8u>) {
                        expectWideLabels(image, layout,
                                         {nullptr, 0, size, 0, low * 100000, a.high * 100000, 0,
                                          a.connectivity, nullptr, nullptr});
                    }
                }
            }
        }
        EXPECT_GT(changed, 1000) << function.name;
    }
}

TEST(Regions, Oracle) {
    expectOracleEverywhere<Zmo8u>({0, 0, 3, 1, 254, 255}, {0, 1, 2, 255});
    expectOracleEverywhere<Zmo16u>({0, 0, 300, 301, 65535}, {0, 1, 300, 65535});
    expectOracleEverywhere<Zmo16s>({0, 5, -5, INT16_MIN, INT16_MAX}, {0, 5, 10, INT16_MAX});
    expectOracleEverywhere<Zmo32f>({0, 0.5F, -0.25F, 1e6F, -1e6F}, {0, 0.25F, 0.75F, 2e6F});
}

template <class T>
void expectBadArguments() {
    using A = Args<T>;
    for (const auto& function : functions<T>()) {
        SCOPED_TRACE(function.name);
        kit::Image<T> image({12, 4});
        image.fill([] { return 3; });
        kit::Buffer buffer(bufferBytes(function, {12, 4}));
        int count = -1;
        std::vector<kit::Fault<A>> faults = {
            {"null image", zmoStsNullPtrErr, [](A& a) { a.pSrcDst = nullptr; }},
            {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
            {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
            {"step short", zmoStsStepErr,
             [](A& a) { a.srcDstStep -= static_cast<int>(sizeof(T)); }},
            {"connectivity", zmoStsConnectivityErr, [](A& a) { a.connectivity = 6; }},
        };
        const auto add = [&](const char* name, ZmoStatus status, void (*apply)(A&)) {
            const auto at = status == zmoStsNullPtrErr ? faults.begin() : faults.end() - 1;
            faults.insert(at, {name, status, apply});
        };
        if (function.bufferSize) {
            add("null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; });
            add("low 0", zmoStsRangeErr, [](A& a) { a.low = 0; });
            int size = -1;
            EXPECT_EQ(function.bufferSize({4, 4}, zmo8u, 1, nullptr), zmoStsNullPtrErr);
            EXPECT_EQ(function.bufferSize({4, 0}, zmo64f, 1, &size), zmoStsSizeErr);
            EXPECT_EQ(function.bufferSize({4, 4}, zmo64f, 3, &size), zmoStsDataTypeErr);
            EXPECT_EQ(function.bufferSize({4, 4}, zmo8u, 3, &size), zmoStsChannelsErr);
            EXPECT_EQ(function.bufferSize({65536, 65536}, zmo8u, 1, &size), zmoStsTooLargeErr);
            EXPECT_EQ(size, -1);
        }
        if (function.labels) {
            add("null count", zmoStsNullPtrErr, [](A& a) { a.pCount = nullptr; });
            add("high below low", zmoStsRangeErr, [](A& a) { a.high = a.low - 1; });
            add("high above type", zmoStsRangeErr, [](A& a) { a.high = 65536; });
        } else if (function.bufferSize && std::is_signed_v<T>) {
            add("negative difference", zmoStsRangeErr, [](A& a) { a.maxDiff = T(-1); });
        }
        kit::expectFaults(
            A{image.ptr(), image.step(), {12, 4}, 9, 2, 5, 1, 4, &count, buffer.ptr()},
            function.run, faults, [&] {
                image.expectUntouched("image");
                buffer.expectUntouched();
                EXPECT_EQ(count, -1);
            });
    }
}

TEST(Regions, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16u>();
    expectBadArguments<Zmo16s>();
    expectBadArguments<Zmo32f>();
    int count = -1;
    Zmo8u src = 1;
    Zmo32s dst = 7;
    Zmo8u buffer[512];
    const auto run = [&](int srcStep, int dstStep) {
        return zmoiLabelMarkers_8u32s_C1R(&src, srcStep, &dst, dstStep, {1, 1}, 3, 3, 4, &count,
                                          buffer);
    };
    EXPECT_EQ(run(0, 4), zmoStsStepErr);
    EXPECT_EQ(run(1, 6), zmoStsStepErr);
    EXPECT_EQ(dst, 7);
    EXPECT_EQ(run(1, 4), zmoStsNoErr);
    EXPECT_EQ(dst, 3);
}

}  // namespace
