#include "zmocv/flood.h"

#include "common/runs.h"

// Scan-line fill. A run of pixels that is found enters a map of bytes and a stack; a run taken from
// the stack is looked at from the row above and the row below. The image is painted at the end, so
// that all comparisons are of the values that it had.
namespace zmo::ZMO_LEVEL {
namespace {

// The map's entry of a pixel; 0 of one that no fill enters.
constexpr uint8_t openPixel = 1;  // the lowest bit is what findSet looks for
constexpr uint8_t filledPixel = 2;

struct Map {
    uint8_t* bytes;
    ptrdiff_t width;

    uint8_t* row(ptrdiff_t y) const { return bytes + y * width; }
};

// A pixel belongs to the region by its own value: it is open when low <= value <= high. Rows are
// classified when they are first met, so that a small region in a large image stays cheap.
template <class T>
class ByValue {
  public:
    ByValue(Target image, Map map, uint8_t* classified, T low, T high)
        : m_image(image), m_map(map), m_classified(classified), m_low(low), m_high(high) {}

    void meet(ptrdiff_t y) {
        if (m_classified[y]) return;
        m_classified[y] = 1;
        classify(rowOf<T>(m_image, y), m_map.row(y));
    }

    FloodSpan runAt(ptrdiff_t x, ptrdiff_t y) const {
        const uint8_t* const row = m_map.row(y);
        ptrdiff_t first = x;
        while (first > 0 && row[first - 1] == openPixel) --first;
        return {static_cast<int>(y), static_cast<int>(first),
                static_cast<int>(findClear(row, x + 1, m_map.width))};
    }

    ptrdiff_t findEntry(FloodSpan, ptrdiff_t y, ptrdiff_t x, ptrdiff_t end, ptrdiff_t) const {
        return findSet(m_map.row(y), x, end);
    }

  private:
    void classify(const Elem<T>* __restrict pixels, uint8_t* __restrict flags) const {
        const T low = m_low;
        const T high = m_high;
        for (ptrdiff_t x = 0; x < m_map.width; ++x) {
            const T value = pixels[x];
            flags[x] = static_cast<uint8_t>((value >= low) & (value <= high));
        }
    }

    Target m_image;
    Map m_map;
    uint8_t* m_classified;
    T m_low;
    T m_high;
};

// A pixel belongs to the region through a neighbour of nearly its value.
template <class T>
class ByNeighbour {
  public:
    using Wide = decltype(T() + T());

    ByNeighbour(Target image, Map map, uint8_t* met, T minDelta, T maxDelta)
        : m_image(image), m_map(map), m_met(met), m_minDelta(minDelta), m_maxDelta(maxDelta) {}

    void meet(ptrdiff_t y) {
        if (m_met[y]) return;
        m_met[y] = 1;
        fillRun(m_map.row(y), 0, m_map.width, openPixel);
    }

    FloodSpan runAt(ptrdiff_t x, ptrdiff_t y) const {
        const uint8_t* const flags = m_map.row(y);
        const Elem<T>* const row = rowOf<T>(m_image, y);
        ptrdiff_t first = x;
        while (first > 0 && flags[first - 1] == openPixel && leads(row[first], row[first - 1])) {
            --first;
        }
        ptrdiff_t end = x + 1;
        while (end < m_map.width && flags[end] == openPixel && leads(row[end - 1], row[end])) ++end;
        return {static_cast<int>(y), static_cast<int>(first), static_cast<int>(end)};
    }

    // reach is 1 when diagonal neighbours count, else 0.
    ptrdiff_t findEntry(FloodSpan from, ptrdiff_t y, ptrdiff_t x, ptrdiff_t end,
                        ptrdiff_t reach) const {
        const uint8_t* const flags = m_map.row(y);
        const Elem<T>* const row = rowOf<T>(m_image, y);
        const Elem<T>* const other = rowOf<T>(m_image, from.y);
        for (x = findSet(flags, x, end); x < end; x = findSet(flags, x + 1, end)) {
            const ptrdiff_t first = x - reach < from.first ? from.first : x - reach;
            const ptrdiff_t last = x + reach >= from.end ? from.end - 1 : x + reach;
            for (ptrdiff_t i = first; i <= last; ++i) {
                if (leads(other[i], row[x])) return x;
            }
        }
        return end;
    }

  private:
    bool leads(T from, T to) const {
        return to >= static_cast<Wide>(from - m_minDelta) &&
               to <= static_cast<Wide>(from + m_maxDelta);
    }

    Target m_image;
    Map m_map;
    uint8_t* m_met;
    T m_minDelta;
    T m_maxDelta;
};

// What has been found so far: the runs not yet looked at, and the sum of all.
class Growth {
  public:
    Growth(Map map, FloodSpan* stack) : m_map(map), m_stack(stack) {}

    void add(FloodSpan run) {
        fillRun(m_map.row(run.y), run.first, run.end, filledPixel);
        m_stack[m_waiting++] = run;
        m_area += run.end - run.first;
        m_left = run.first < m_left ? run.first : m_left;
        m_right = run.end > m_right ? run.end : m_right;
        m_top = run.y < m_top ? run.y : m_top;
        m_bottom = run.y >= m_bottom ? run.y + 1 : m_bottom;
    }
    bool take(FloodSpan& run) {
        if (m_waiting == 0) return false;
        run = m_stack[--m_waiting];
        return true;
    }
    int64_t area() const { return m_area; }
    ZmoiRect rect() const { return {m_left, m_top, m_right - m_left, m_bottom - m_top}; }

  private:
    Map m_map;
    FloodSpan* m_stack;
    ptrdiff_t m_waiting = 0;
    int64_t m_area = 0;
    int m_left = 0x7fffffff;
    int m_right = 0;
    int m_top = 0x7fffffff;
    int m_bottom = 0;
};

template <class Rule>
void grow(Rule& rule, Growth& growth, Region roi, ZmoiPoint seed, ptrdiff_t reach) {
    growth.add(rule.runAt(seed.x, seed.y));
    FloodSpan run;
    while (growth.take(run)) {
        const ptrdiff_t begin = run.first > reach ? run.first - reach : 0;
        const ptrdiff_t end = run.end + reach < roi.width ? run.end + reach : roi.width;
        for (ptrdiff_t y = run.y - 1; y <= run.y + 1; y += 2) {
            if (y < 0 || y >= roi.height) continue;
            rule.meet(y);
            ptrdiff_t x = begin;
            while ((x = rule.findEntry(run, y, x, end, reach)) < end) {
                const FloodSpan found = rule.runAt(x, y);
                growth.add(found);
                x = found.end;
            }
        }
    }
}

template <class T>
void paintRow(Elem<T>* __restrict row, const uint8_t* __restrict flags, ptrdiff_t first,
              ptrdiff_t end, T value) {
    for (ptrdiff_t x = first; x < end; ++x) {
        const T old = row[x];
        row[x] = flags[x] == filledPixel ? value : old;
    }
}

// low = value - delta inside the range of T.
template <class T>
T below(T value, T delta) {
    if constexpr (sizeof(T) == 1) return static_cast<T>(value > delta ? value - delta : 0);
    return static_cast<T>(value - delta);
}
template <class T>
T above(T value, T delta) {
    if constexpr (sizeof(T) == 1) return static_cast<T>(value + delta < 255 ? value + delta : 255);
    return static_cast<T>(value + delta);
}

template <class T, FloodRule rule>
void flood(Target image, Region roi, ZmoiPoint seed, const void* value, const void* minDelta,
           const void* maxDelta, int connectivity, ZmoiFloodRegion* region, void* buffer) {
    Carver carver(buffer);
    FloodSpan* const stack = carver.take<FloodSpan>(roi.width * roi.height);
    const Map map{carver.take<uint8_t>(roi.width * roi.height), roi.width};
    uint8_t* const met = carver.take<uint8_t>(roi.height);
    fillRun<uint8_t>(met, 0, roi.height, 0);
    Growth growth(map, stack);
    const ptrdiff_t reach = connectivity == 8 ? 1 : 0;
    const auto start = [&](auto byRule) {
        byRule.meet(seed.y);
        map.row(seed.y)[seed.x] = openPixel;  // even if it is not a number
        grow(byRule, growth, roi, seed, reach);
    };
    const T given = rowOf<T>(image, seed.y)[seed.x];
    if constexpr (rule == floodEqual) {
        start(ByValue<T>(image, map, met, given, given));
    } else {
        const T less = *static_cast<const T*>(minDelta);
        const T more = *static_cast<const T*>(maxDelta);
        if constexpr (rule == floodRange) {
            start(ByValue<T>(image, map, met, below(given, less), above(given, more)));
        } else {
            start(ByNeighbour<T>(image, map, met, less, more));
        }
    }
    const T paint = *static_cast<const T*>(value);
    const ZmoiRect rect = growth.rect();
    for (int y = rect.y; y < rect.y + rect.height; ++y) {
        paintRow(rowOf<T>(image, y), map.row(y), rect.x, rect.x + rect.width, paint);
    }
    *region = {static_cast<double>(growth.area()), rect, static_cast<double>(paint)};
}

}  // namespace

const FloodKernels floodKernels = {
    {flood<uint8_t, floodEqual>, flood<int32_t, floodEqual>, flood<float, floodEqual>},
    {flood<uint8_t, floodRange>, flood<float, floodRange>},
    {flood<uint8_t, floodGradient>, flood<float, floodGradient>}};

}  // namespace zmo::ZMO_LEVEL
