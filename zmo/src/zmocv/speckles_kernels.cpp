#include "zmocv/speckles.h"

#include "common/components.h"

// A run is a row's longest stretch of pixels each of which is close to the next. Runs of two rows
// belong together when any two touching pixels of them are close.
namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
bool isClose(T a, T b, T maxDiff) {
    if constexpr (T(0.5) != T(0)) {
        return __builtin_fabsf(a - b) <= maxDiff;
    } else {
        const int difference = a - b;
        return (difference < 0 ? -difference : difference) <= maxDiff;
    }
}

template <class T>
void flagOthers(uint8_t* __restrict flags, const Elem<T>* __restrict row, ptrdiff_t width,
                T value) {
    for (ptrdiff_t x = 0; x < width; ++x) flags[x] = row[x] != value;
}

// flags[x] is set where a[x] and b[x] are close.
template <class T>
void flagClose(uint8_t* __restrict flags, const Elem<T>* a, const Elem<T>* b, ptrdiff_t count,
               T maxDiff) {
    for (ptrdiff_t x = 0; x < count; ++x) flags[x] = isClose<T>(a[x], b[x], maxDiff);
}

void intersect(uint8_t* __restrict flags, const uint8_t* __restrict others, ptrdiff_t count) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        flags[x] = static_cast<uint8_t>(flags[x] & others[x] & others[x + 1]);
    }
}

ptrdiff_t larger(ptrdiff_t a, ptrdiff_t b) {
    return a > b ? a : b;
}
ptrdiff_t smaller(ptrdiff_t a, ptrdiff_t b) {
    return a < b ? a : b;
}

// Which pixels of a row are close to their neighbours in the row above.
template <class T>
class LinksUp {
  public:
    LinksUp(Carver& carver, ptrdiff_t width, int reach)
        : m_width(width), m_reach(reach), m_same(carver.take<uint8_t>(width)) {
        m_fromLeft = carver.take<uint8_t>(width);
        m_fromRight = carver.take<uint8_t>(width);
    }

    void load(const Elem<T>* above, const Elem<T>* row, T maxDiff) {
        flagClose<T>(m_same, above, row, m_width, maxDiff);
        if (m_reach == 0) return;
        flagClose<T>(m_fromLeft + 1, above, row + 1, m_width - 1, maxDiff);
        flagClose<T>(m_fromRight, above + 1, row, m_width - 1, maxDiff);
    }

    bool operator()(PixelRun above, PixelRun run) const {
        return any(m_same, above.first, above.end, run) ||
               (m_reach != 0 && (any(m_fromLeft, above.first + 1, above.end + 1, run) ||
                                 any(m_fromRight, above.first - 1, above.end - 1, run)));
    }

  private:
    static bool any(const uint8_t* flags, ptrdiff_t first, ptrdiff_t end, PixelRun run) {
        const ptrdiff_t last = smaller(end, run.end);
        const ptrdiff_t start = larger(first, run.first);
        return start < last && findSet(flags, start, last) < last;
    }

    ptrdiff_t m_width;
    int m_reach;
    uint8_t* m_same;
    uint8_t* m_fromLeft;   // of the pixel up and left
    uint8_t* m_fromRight;  // of the pixel up and right
};

template <class T>
void markSpeckles(Target image, Region roi, const void* pValue, int maxSize, const void* pMaxDiff,
                  int connectivity, void* buffer) {
    const T value = *static_cast<const T*>(pValue);
    const T maxDiff = *static_cast<const T*>(pMaxDiff);
    const int reach = connectivity == 8 ? 1 : 0;
    const ptrdiff_t width = roi.width;
    Carver carver(buffer);
    PixelRun* const runs = carver.take<PixelRun>(width * roi.height);
    int32_t* const sizes = carver.take<int32_t>(width * roi.height);
    Components components(runs, carver.take<int32_t>(roi.height + 1));
    uint8_t* const others = carver.take<uint8_t>(width);
    uint8_t* const joined = carver.take<uint8_t>(width);  // with the next pixel
    LinksUp<T> links(carver, width, reach);

    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<T>* const row = rowOf<T>(image, y);
        components.beginRow(y);
        flagOthers<T>(others, row, width, value);
        flagClose<T>(joined, row, row + 1, width - 1, maxDiff);
        intersect(joined, others, width - 1);
        for (ptrdiff_t x = findSet(others, 0, width); x < width; x = findSet(others, x, width)) {
            const ptrdiff_t last = findClear(joined, x, width - 1);
            components.add(x, last + 1);
            x = last + 1;
        }
        if (y == 0) continue;
        links.load(rowOf<T>(image, y - 1), row, maxDiff);
        components.joinWithRowAbove(y, reach, links);
    }
    components.endRows(roi.height);

    for (int32_t i = 0; i < components.count(); ++i) {
        PixelRun& run = components[i];
        if (run.parent == i) sizes[i] = 0;
        run.parent = components[run.parent].parent;
        sizes[run.parent] += run.end - run.first;
    }
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        components.forRow(y, [&](PixelRun run) {
            if (sizes[run.parent] > maxSize) return;
            fillRun<Elem<T>>(rowOf<T>(image, y), run.first, run.end, value);
        });
    }
}

}  // namespace

const SpecklesKernels specklesKernels = {
    {markSpeckles<uint8_t>, markSpeckles<uint16_t>, markSpeckles<int16_t>, markSpeckles<float>}};

}  // namespace zmo::ZMO_LEVEL
