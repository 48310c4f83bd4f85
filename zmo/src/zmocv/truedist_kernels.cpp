#include "zmocv/truedist.h"

#include "common/kernel.h"

// First the distance to the nearest zero pixel of the column, in two passes over rows; it stands in
// the destination as an integer. Then, row by row, the lower envelope of the parabolas that these
// distances raise over their columns.
namespace zmo::ZMO_LEVEL {
namespace {

constexpr int32_t none = 1 << 30;  // no zero pixel in the column

void countRow(Elem<int32_t>* __restrict row, const uint8_t* __restrict src,
              const Elem<int32_t>* __restrict above, ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        const int32_t next = above[x] + 1;
        const int32_t most = next < none ? next : none;
        row[x] = src[x] == 0 ? 0 : most;
    }
}

void countFirstRow(Elem<int32_t>* __restrict row, const uint8_t* __restrict src, ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) row[x] = src[x] == 0 ? 0 : none;
}

void countBack(Elem<int32_t>* __restrict row, const Elem<int32_t>* __restrict below,
               ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        const int32_t next = below[x] + 1;
        row[x] = next < row[x] ? next : row[x];
    }
}

// One row's parabolas (x - column)^2 + height, those of the lower envelope from left to right, each
// from the abscissa `start` on.
class Envelope {
  public:
    Envelope(Carver& carver, ptrdiff_t width)
        : m_columns(carver.take<int32_t>(width)),
          m_heights(carver.take<double>(width)),
          m_starts(carver.take<double>(width)),
          m_bounds(carver.take<int32_t>(width + 1)) {}

    void build(const Elem<int32_t>* row, ptrdiff_t width) {
        m_count = 0;
        for (ptrdiff_t x = 0; x < width; ++x) {
            if (row[x] == none) continue;
            const double distance = row[x];
            add(static_cast<int32_t>(x), distance * distance);
        }
    }

    // Lays the distances over the row; false when there is no parabola.
    bool lay(Elem<float>* row, ptrdiff_t width) {
        if (m_count == 0) return false;
        // The first column of each parabola: starts are above -1, and truncating suits them.
        for (ptrdiff_t k = 0; k < m_count; ++k) {
            const double start = m_starts[k];
            m_bounds[k] = start < 0 ? 0
                          : start >= static_cast<double>(width - 1)
                              ? static_cast<int32_t>(width)
                              : static_cast<int32_t>(start) + 1;
        }
        m_bounds[m_count] = static_cast<int32_t>(width);
        for (ptrdiff_t k = 0; k < m_count; ++k) {
            layOne(row, m_bounds[k], m_bounds[k + 1], m_columns[k], m_heights[k]);
        }
        return true;
    }

  private:
    void add(int32_t column, double height) {
        const double x = column;
        const double own = height + x * x;
        double start = -1;
        while (m_count > 0) {
            const double other = m_columns[m_count - 1];
            start = (own - (m_heights[m_count - 1] + other * other)) / (2 * (x - other));
            if (start > m_starts[m_count - 1]) break;
            --m_count;
            start = -1;
        }
        m_columns[m_count] = column;
        m_heights[m_count] = height;
        m_starts[m_count] = start;
        ++m_count;
    }

    static void layOne(Elem<float>* row, int32_t first, int32_t end, int32_t column,
                       double height) {
        for (int32_t x = first; x < end; ++x) {
            const double dx = x - column;
            row[x] = static_cast<float>(__builtin_sqrt(dx * dx + height));
        }
    }

    int32_t* m_columns;
    double* m_heights;
    double* m_starts;
    int32_t* m_bounds;
    ptrdiff_t m_count = 0;
};

void trueDistance(Source src, Target dst, Region roi, void* buffer) {
    const ptrdiff_t width = roi.width;
    countFirstRow(rowOf<int32_t>(dst, 0), rowOf<uint8_t>(src, 0), width);
    for (ptrdiff_t y = 1; y < roi.height; ++y) {
        countRow(rowOf<int32_t>(dst, y), rowOf<uint8_t>(src, y), rowOf<int32_t>(dst, y - 1), width);
    }
    for (ptrdiff_t y = roi.height - 2; y >= 0; --y) {
        countBack(rowOf<int32_t>(dst, y), rowOf<int32_t>(dst, y + 1), width);
    }
    Carver carver(buffer);
    Envelope envelope(carver, width);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        envelope.build(rowOf<int32_t>(dst, y), width);
        Elem<float>* const row = rowOf<float>(dst, y);
        if (envelope.lay(row, width)) continue;
        for (ptrdiff_t x = 0; x < width; ++x) row[x] = largestFloat;
    }
}

}  // namespace

const TrueDistanceKernels trueDistanceKernels = {trueDistance};

}  // namespace zmo::ZMO_LEVEL
