// Labels, speckles and bounds: functions that work on all regions of an image.
#include <algorithm>
#include <cmath>

#include "call.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

// Calls body(pixels) for each component of the pixels for which counts holds, in reading order.
template <class Counts, class Joined, class Body>
void forEachComponent(ZmoiSize size, int connectivity, Counts counts, Joined joined, Body body) {
    kit::Image<Zmo8u> seen(size);
    seen.fill([] { return 0; });
    kit::forEachPixel(size, [&](int x, int y) {
        if (!counts({x, y}) || seen.get(x, y) != 0) return;
        const auto pixels =
            oracle::reached(size, {x, y}, connectivity,
                            [&](ZmoiPoint p, ZmoiPoint q) { return counts(q) && joined(p, q); });
        for (const ZmoiPoint p : pixels) seen.set(p.x, p.y, 1);
        body(pixels);
    });
}

// Hands out images of values near each other and far apart, about half of them `values[0]`, so that
// components branch and join late. check(random, image) returns what the image becomes.
template <class T, class Check>
void forEachImage(const std::vector<T>& values, Check check) {
    int changed = 0;
    kit::forEachCase(71, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t) {
        kit::Image<T> image(size, layout);
        image.fill([&] { return random.between(0, 1) ? values[0] : random.pick(values); });
        const kit::Image<T> after = check(random, image);
        kit::forEachPixel(
            size, [&](int x, int y) { changed += after.get(x, y) != image.get(x, y) ? 1 : 0; });
    });
    EXPECT_GT(changed, 4000);
}
const std::vector<Zmo8u> values8u = {0, 0, 3, 1, 254, 255};
const std::vector<Zmo16u> values16u = {0, 0, 300, 301, 65535};

struct Labels {
    int low;
    int high;
    int connectivity;

    // Labels the image and returns how many there are.
    template <class S, class D>
    int draw(const kit::Image<S>& src, kit::Image<D>& labels) const {
        int found = 0;
        labels.fill([] { return 0; });
        forEachComponent(
            src.size(), connectivity, [&](ZmoiPoint p) { return src.get(p.x, p.y) != 0; },
            [](ZmoiPoint, ZmoiPoint) { return true; },
            [&](const std::vector<ZmoiPoint>& pixels) {
                const int label = low + found++;
                for (const ZmoiPoint p : pixels) {
                    labels.set(p.x, p.y, static_cast<D>(label <= high ? label : 0));
                }
            });
        return found;
    }
    // run(labels, size, low, high, connectivity, count, buffer) is the library's call.
    template <class S, class D, class Run>
    void expect(const kit::Image<S>& src, kit::Image<D>& dst, Run run) const {
        kit::Image<D> want(src.size());
        const int found = draw(src, want);
        kit::Buffer buffer =
            kit::bufferOf(zmoiLabelMarkersGetBufferSize, src.size(), kit::typeOf<S>, 1);
        int count = -1;
        EXPECT_EQ(run(dst, src.size(), low, high, connectivity, &count, buffer),
                  found > high - low + 1 ? zmoStsTruncated : zmoStsNoErr);
        EXPECT_EQ(count, found);
        kit::expectPixels(dst, want);
    }
};

template <class T>
using Labelling = ZmoStatus (*)(T*, int, ZmoiSize, int, int, int, int*, Zmo8u*);

template <class T>
void expectLabels(Labelling<T> function, const std::vector<T>& values) {
    forEachImage(values, [&](kit::Random& random, const kit::Image<T>& src) {
        const int low = random.pick<int>({1, 2, 7, 30});
        Labels labels{low, low + random.pick<int>({0, 3, 90}), random.pick<int>({4, 8})};
        kit::Image<T> image = src;
        labels.expect(src, image, [&](auto&&... given) { return kit::run(function, given...); });
        // The form that is not in place holds larger ones.
        if constexpr (std::is_same_v<T, Zmo8u>) {
            labels.low *= 100000;
            labels.high *= 100000;
            kit::Image<Zmo32s> wide(src.size(), {random.pick<int>({0, 1, 7}), 3});
            labels.expect(src, wide, [&](auto&&... given) {
                return kit::run(zmoiLabelMarkers_8u32s_C1R, src, given...);
            });
        }
        return image;
    });
}

TEST(LabelMarkers, Oracle) {
    expectLabels(zmoiLabelMarkers_8u_C1IR, values8u);
    expectLabels(zmoiLabelMarkers_16u_C1IR, values16u);
}

template <class T>
using Speckles = ZmoStatus (*)(T*, int, ZmoiSize, T, int, T, int, Zmo8u*);

template <class T>
void expectSpeckles(Speckles<T> function, const std::vector<T>& values,
                    const std::vector<T>& diffs) {
    forEachImage(values, [&](kit::Random& random, const kit::Image<T>& src) {
        const T value = random.pick(values);
        const int maxSize = random.pick<int>({1, 2, 7, 30});
        const T maxDiff = random.pick(diffs);
        const int connectivity = random.pick<int>({4, 8});
        const auto at = [&](ZmoiPoint p) { return static_cast<double>(src.get(p.x, p.y)); };
        kit::Image<T> want = src;
        forEachComponent(
            src.size(), connectivity, [&](ZmoiPoint p) { return at(p) != value; },
            [&](ZmoiPoint p, ZmoiPoint q) { return std::fabs(at(p) - at(q)) <= maxDiff; },
            [&](const std::vector<ZmoiPoint>& pixels) {
                if (static_cast<int>(pixels.size()) > maxSize) return;
                for (const ZmoiPoint p : pixels) want.set(p.x, p.y, value);
            });
        kit::Image<T> image = src;
        kit::Buffer buffer =
            kit::bufferOf(zmoiMarkSpecklesGetBufferSize, src.size(), kit::typeOf<T>, 1);
        kit::succeed(function, image, src.size(), value, maxSize, maxDiff, connectivity, buffer);
        kit::expectPixels(image, want);
        return image;
    });
}

TEST(MarkSpeckles, Oracle) {
    expectSpeckles(zmoiMarkSpeckles_8u_C1IR, values8u, {0, 1, 2, 255});
    expectSpeckles(zmoiMarkSpeckles_16u_C1IR, values16u, {0, 1, 300, 65535});
    expectSpeckles(zmoiMarkSpeckles_16s_C1IR, {0, 5, -5, INT16_MIN, INT16_MAX},
                   {0, 5, 10, INT16_MAX});
    expectSpeckles(zmoiMarkSpeckles_32f_C1IR, {0, 0.5F, -0.25F, 1e6F, -1e6F},
                   {0, 0.25F, 0.75F, 2e6F});
}

template <class T>
using Bounds = ZmoStatus (*)(T*, int, ZmoiSize, T, int);

template <class T>
void expectBounds(Bounds<T> function, const std::vector<T>& values) {
    forEachImage(values, [&](kit::Random& random, const kit::Image<T>& src) {
        const T value = random.pick(values);
        const int connectivity = random.pick<int>({4, 8});
        kit::Image<T> image = src;
        kit::succeed(function, image, src.size(), value, connectivity);
        kit::expectPixels(image, [&](int x, int y) {
            const auto differs = [&](int i, int j) {
                return kit::contains(src.size(), i, j) && src.get(i, j) != src.get(x, y);
            };
            const bool corners = differs(x - 1, y + 1) || differs(x + 1, y + 1);
            const bool isBound =
                differs(x + 1, y) || differs(x, y + 1) || (connectivity == 8 && corners);
            return isBound ? value : src.get(x, y);
        });
        return image;
    });
}

TEST(BoundSegments, Oracle) {
    expectBounds(zmoiBoundSegments_8u_C1IR, values8u);
    expectBounds(zmoiBoundSegments_16u_C1IR, values16u);
}

template <class T>
void expectBadArguments(Labelling<T> label, Speckles<T> mark, Bounds<T> bound) {
    const ZmoiSize size{12, 4};
    kit::Image<T> image(size);
    kit::Buffer buffer(4096);
    int count = -1;
    image.fill([] { return 3; });
    if (label) {
        kit::expectBadArguments(label,
                                {{3, 0, zmoStsRangeErr},
                                 {4, {1, 65536}, zmoStsRangeErr},
                                 {5, 6, zmoStsConnectivityErr}},
                                image, size, 2, 5, 4, &count, buffer);
        kit::expectBadArguments(bound, {{4, 6, zmoStsConnectivityErr}}, image, size, 9, 4);
    }
    std::vector<kit::Wrong> wrong = {{4, 0, zmoStsRangeErr}};
    if (std::is_signed_v<T>) wrong.push_back({5, -1, zmoStsRangeErr});
    wrong.push_back({6, 6, zmoStsConnectivityErr});
    kit::expectBadArguments(mark, wrong, image, size, 9, 2, 1, 4, buffer);
}

TEST(Regions, BadArguments) {
    expectBadArguments(zmoiLabelMarkers_8u_C1IR, zmoiMarkSpeckles_8u_C1IR,
                       zmoiBoundSegments_8u_C1IR);
    expectBadArguments(zmoiLabelMarkers_16u_C1IR, zmoiMarkSpeckles_16u_C1IR,
                       zmoiBoundSegments_16u_C1IR);
    expectBadArguments<Zmo16s>(nullptr, zmoiMarkSpeckles_16s_C1IR, nullptr);
    expectBadArguments<Zmo32f>(nullptr, zmoiMarkSpeckles_32f_C1IR, nullptr);
    kit::Image<Zmo8u> src({12, 4});
    kit::Image<Zmo32s> dst({12, 4});
    kit::Buffer buffer(4096);
    int count = -1;
    kit::expectBadArguments(zmoiLabelMarkers_8u32s_C1R,
                            {{5, 0, zmoStsRangeErr}, {7, 6, zmoStsConnectivityErr}}, src, dst,
                            src.size(), 1, 5, 4, &count, buffer);
}

}  // namespace
