// Labels, speckles and bounds: functions that work on all regions of an image.
#include <cmath>

#include "case.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

// Calls body(pixels) for each component of the pixels for which counts holds, in reading order.
using Counts = std::function<bool(ZmoiPoint)>;
using Joined = std::function<bool(ZmoiPoint, ZmoiPoint)>;
void forEachComponent(ZmoiSize size, int connectivity, const Counts& counts, const Joined& joined,
                      const std::function<void(const std::vector<ZmoiPoint>& pixels)>& body) {
    kit::Image seen(size);
    kit::forEachPixel(size, [&](int x, int y) {
        if (!counts({x, y}) || seen(x, y) != 0) return;
        const auto pixels =
            oracle::reached(size, {x, y}, connectivity,
                            [&](ZmoiPoint p, ZmoiPoint q) { return counts(q) && joined(p, q); });
        for (const ZmoiPoint p : pixels) seen.set(p.x, p.y, 1);
        body(pixels);
    });
}

struct Row {
    kit::Function function;
    // Values near each other and far apart, and differences that join them.
    std::vector<double> values;
    std::vector<double> diffs = {};
};

const std::vector<double> values8u = {0, 0, 3, 1, 254, 255};
const std::vector<double> values16u = {0, 0, 300, 301, 65535};

// About half of the pixels have the first value, so that components branch and join late.
kit::Case caseOf(kit::Turn& t, const Row& row, int connectivity) {
    kit::Case c(row.function, t);
    c.src().fill([&] { return t.between(0, 1) ? row.values[0] : t.pick(row.values); });
    return c.with("connectivity", connectivity);
}

const std::vector<Row> labelling = {{ZMO(zmoiLabelMarkers_8u_C1IR), values8u},
                                    {ZMO(zmoiLabelMarkers_16u_C1IR), values16u},
                                    {ZMO(zmoiLabelMarkers_8u32s_C1R), values8u}};

TEST(LabelMarkers, Oracle) {
    kit::forEachCase({71, 4}, labelling, [](kit::Turn& t, const Row& row) {
        // The form that is not in place holds larger ones.
        const int unit = row.function.has("pDst") ? 100000 : 1;
        const int first = t.pick<int>({1, 2, 7, 30});
        const int low = first * unit;
        const int high = (first + t.pick<int>({0, 3, 90})) * unit;
        const int connectivity = t.pick<int>({4, 8});
        kit::Case c = caseOf(t, row, connectivity);
        c.with({{"minLabel", low}, {"maxLabel", high}}).sized(ZMO(zmoiLabelMarkersGetBufferSize));
        int found = 0;
        kit::Image labels(t.size);
        forEachComponent(
            t.size, connectivity, [&](ZmoiPoint p) { return c.src()(p.x, p.y) != 0; },
            [](ZmoiPoint, ZmoiPoint) { return true; },
            [&](const std::vector<ZmoiPoint>& pixels) {
                const int label = low + found++;
                for (const ZmoiPoint p : pixels) labels.set(p.x, p.y, label <= high ? label : 0);
            });
        return c.want(labels)
            .wantResult("pCount", found)
            .wantStatus(found > high - low + 1 ? zmoStsTruncated : zmoStsNoErr);
    });
}

const std::vector<Row> marking = {
    {ZMO(zmoiMarkSpeckles_8u_C1IR), values8u, {0, 1, 2, 255}},
    {ZMO(zmoiMarkSpeckles_16u_C1IR), values16u, {0, 1, 300, 65535}},
    {ZMO(zmoiMarkSpeckles_16s_C1IR), {0, 5, -5, INT16_MIN, INT16_MAX}, {0, 5, 10, INT16_MAX}},
    {ZMO(zmoiMarkSpeckles_32f_C1IR), {0, 0.5, -0.25, 1e6, -1e6}, {0, 0.25, 0.75, 2e6}}};

TEST(MarkSpeckles, Oracle) {
    kit::forEachCase({72, 4}, marking, [](kit::Turn& t, const Row& row) {
        const double value = t.pick(row.values);
        const int maxSize = t.pick<int>({1, 2, 7, 30});
        const double maxDiff = t.pick(row.diffs);
        const int connectivity = t.pick<int>({4, 8});
        kit::Case c = caseOf(t, row, connectivity);
        c.with({{"value", value}, {"maxSize", maxSize}, {"maxDiff", maxDiff}})
            .sized(ZMO(zmoiMarkSpecklesGetBufferSize));
        const auto at = [&](ZmoiPoint p) { return c.src()(p.x, p.y); };
        kit::Image want = c.src();
        forEachComponent(
            t.size, connectivity, [&](ZmoiPoint p) { return at(p) != value; },
            [&](ZmoiPoint p, ZmoiPoint q) { return std::fabs(at(p) - at(q)) <= maxDiff; },
            [&](const std::vector<ZmoiPoint>& pixels) {
                if (static_cast<int>(pixels.size()) > maxSize) return;
                for (const ZmoiPoint p : pixels) want.set(p.x, p.y, value);
            });
        return c.want(want);
    });
}

const std::vector<Row> bounding = {{ZMO(zmoiBoundSegments_8u_C1IR), values8u},
                                   {ZMO(zmoiBoundSegments_16u_C1IR), values16u}};

TEST(BoundSegments, Oracle) {
    kit::forEachCase({73, 4}, bounding, [](kit::Turn& t, const Row& row) {
        const double value = t.pick(row.values);
        const int connectivity = t.pick<int>({4, 8});
        kit::Case c = caseOf(t, row, connectivity).with("value", value);
        return c.want([&](int x, int y) {
            const auto differs = [&](int i, int j) {
                return kit::contains(t.size, i, j) && c.src()(i, j) != c.src()(x, y);
            };
            const bool corners = differs(x - 1, y + 1) || differs(x + 1, y + 1);
            const bool isBound =
                differs(x + 1, y) || differs(x, y + 1) || (connectivity == 8 && corners);
            return isBound ? value : c.src()(x, y);
        });
    });
}

TEST(Regions, BadArguments) {
    for (const Row& row : labelling) {
        std::vector<kit::Wrong> wrong = {{"minLabel", 0, zmoStsRangeErr},
                                         {"maxLabel", 1, zmoStsRangeErr}};
        if (!row.function.has("pDst")) wrong.push_back({"maxLabel", 65536, zmoStsRangeErr});
        kit::Case(row.function)
            .with({{"minLabel", 2}, {"maxLabel", 5}, {"connectivity", 4}})
            .sized(ZMO(zmoiLabelMarkersGetBufferSize))
            .expectBadArguments(wrong);
    }
    for (const Row& row : marking) {
        std::vector<kit::Wrong> wrong = {{"maxSize", 0, zmoStsRangeErr}};
        if (row.values[2] < 0) wrong.push_back({"maxDiff", -1, zmoStsRangeErr});
        kit::Case(row.function)
            .with({{"value", 9}, {"maxSize", 2}, {"maxDiff", 1}, {"connectivity", 4}})
            .sized(ZMO(zmoiMarkSpecklesGetBufferSize))
            .expectBadArguments(wrong);
    }
    for (const Row& row : bounding) {
        kit::Case(row.function).with({{"value", 9}, {"connectivity", 4}}).expectBadArguments();
    }
}

}  // namespace
