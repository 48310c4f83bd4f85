#include "zmocv/linesuppression.h"

#include "common/runs.h"

// Sums of products of differences down the columns are moved from row to row, and along the row
// from response to response: the radius costs next to nothing.
namespace zmo::ZMO_LEVEL {
namespace {

// Sums of gx gx, gy gy and gx gy; of columns, from `radius` columns left of the region on.
struct ColumnSums {
    int32_t* xx;
    int32_t* yy;
    int32_t* xy;
    ptrdiff_t count;
};

struct WindowSums {
    int32_t xx = 0;
    int32_t yy = 0;
    int32_t xy = 0;

    void add(const ColumnSums& columns, ptrdiff_t i) {
        xx += columns.xx[i];
        yy += columns.yy[i];
        xy += columns.xy[i];
    }
    void remove(const ColumnSums& columns, ptrdiff_t i) {
        xx -= columns.xx[i];
        yy -= columns.yy[i];
        xy -= columns.xy[i];
    }
    // 1020 (ab - cc) <= threshold (a + b)(a + b); with radius 15 both sides are below 2^62.
    bool areOfLine(int threshold) const {
        const int64_t trace = int64_t{xx} + yy;
        return 1020 * (int64_t{xx} * yy - int64_t{xy} * xy) <= threshold * (trace * trace);
    }
};

// A row of the picture with margins of radius + 1 pixels.
const uint8_t* padRow(const LineSuppressionArgs& a, ptrdiff_t y, uint8_t* padded) {
    const ptrdiff_t margin = a.radius + 1;
    const uint8_t* const row = rowOf<uint8_t>(a.picture, replicated(y, a.roi.height));
    fillRun<uint8_t>(padded, 0, margin, row[0]);
    __builtin_memcpy(padded + margin, row, static_cast<size_t>(a.roi.width));
    fillRun<uint8_t>(padded, margin + a.roi.width, a.roi.width + 2 * margin, row[a.roi.width - 1]);
    return padded + 1;
}

// The rows begin a pixel before the first column.
template <int sign>
void addProducts(const uint8_t* __restrict above, const uint8_t* __restrict row,
                 const uint8_t* __restrict below, const ColumnSums& columns) {
    int32_t* __restrict xx = columns.xx;
    int32_t* __restrict yy = columns.yy;
    int32_t* __restrict xy = columns.xy;
    for (ptrdiff_t i = 0; i < columns.count; ++i) {
        const auto gx = static_cast<int16_t>(row[i + 1] - row[i - 1]);
        const auto gy = static_cast<int16_t>(below[i] - above[i]);
        xx[i] += sign * (gx * gx);
        yy[i] += sign * (gy * gy);
        xy[i] += sign * (gx * gy);
    }
}

class Rows {
  public:
    Rows(const LineSuppressionArgs& args, Carver& carver) : m_args(args) {
        const ptrdiff_t length = args.roi.width + 2 * args.radius + 2;
        for (uint8_t*& row : m_padded) row = carver.take<uint8_t>(length);
    }
    // Adds the products of row y, or takes them away.
    template <int sign>
    void addTo(const ColumnSums& columns, ptrdiff_t y) const {
        addProducts<sign>(padRow(m_args, y - 1, m_padded[0]), padRow(m_args, y, m_padded[1]),
                          padRow(m_args, y + 1, m_padded[2]), columns);
    }

  private:
    const LineSuppressionArgs& m_args;
    uint8_t* m_padded[3];
};

void suppressRow(const LineSuppressionArgs& a, const ColumnSums& columns, ptrdiff_t y) {
    const uint8_t* const responses = rowOf<uint8_t>(a.responses, y);
    uint8_t* const dst = rowOf<uint8_t>(a.dst, y);
    fillRun<uint8_t>(dst, 0, a.roi.width, 0);
    const ptrdiff_t window = 2 * a.radius + 1;
    WindowSums sums;
    ptrdiff_t end = 0;  // of the columns in sums
    for (ptrdiff_t x = findNonZero(responses, 0, a.roi.width); x < a.roi.width;
         x = findNonZero(responses, x + 1, a.roi.width)) {
        if (x >= end) {
            sums = WindowSums();
            for (end = x; end < x + window; ++end) sums.add(columns, end);
        }
        for (; end < x + window; ++end) {
            sums.add(columns, end);
            sums.remove(columns, end - window);
        }
        if (!sums.areOfLine(a.threshold)) dst[x] = responses[x];
    }
}

void run(const LineSuppressionArgs& a) {
    Carver carver(a.buffer);
    const Rows rows(a, carver);
    const ptrdiff_t count = a.roi.width + 2 * a.radius;
    int32_t* const sums = carver.take<int32_t>(3 * count);
    fillRun<int32_t>(sums, 0, 3 * count, 0);
    const ColumnSums columns{sums, sums + count, sums + 2 * count, count};
    for (ptrdiff_t y = -a.radius; y < a.radius; ++y) rows.addTo<1>(columns, y);
    for (ptrdiff_t y = 0; y < a.roi.height; ++y) {
        rows.addTo<1>(columns, y + a.radius);
        suppressRow(a, columns, y);
        rows.addTo<-1>(columns, y - a.radius);
    }
}

}  // namespace

const LineSuppressionKernels lineSuppressionKernels = {run};

}  // namespace zmo::ZMO_LEVEL
