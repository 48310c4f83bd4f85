#include "zmocv/optflow.h"

#include "common/kernel.h"

// Windows in memory have whole vectors of 8 columns. What the padded columns hold counts for
// nothing: their slopes are 0, and their differences are masked before they are used. Sums run down
// the columns, which needs no order within a vector, and are folded at the end.
namespace zmo::ZMO_LEVEL {
namespace {

constexpr ptrdiff_t mostColumns = flowColumns(mostFlowWindow);

struct Point {
    float x;
    float y;
};

Point pointAt(const ZmoiPoint32f* points, ptrdiff_t i) {
    const Elem<float>* const at = reinterpret_cast<const Elem<float>*>(points) + 2 * i;
    return {at[0], at[1]};
}

struct Layer {
    Source image;
    Region size;
};

Layer layerOf(const ZmoiPyramidLevels* levels, int k) {
    return {{levels->pImage[k], levels->step[k]}, {levels->roi[k].width, levels->roi[k].height}};
}

bool isInside(Point p, Region size) {
    const double right = static_cast<double>(size.width) - 0.5;
    const double below = static_cast<double>(size.height) - 0.5;
    return p.x >= -0.5F && static_cast<double>(p.x) <= right && p.y >= -0.5F &&
           static_cast<double>(p.y) <= below;
}

// The largest whole number up to a value above -1.
ptrdiff_t floorOf(float value) {
    return value < 0 ? -1 : static_cast<ptrdiff_t>(value);
}

// line[x] = (1 - fx) row[left + x] + fx row[left + x + 1], the row continued by its end pixels.
template <class T>
[[gnu::noinline]] void loadLine(float* __restrict line, const Elem<T>* row, ptrdiff_t width,
                                ptrdiff_t left, ptrdiff_t columns, float fx) {
    const float rest = 1.0F - fx;
    if (left >= 0 && left + columns < width) {
        const Elem<T>* const from = row + left;
        for (ptrdiff_t x = 0; x < columns; ++x) {
            line[x] = rest * static_cast<float>(from[x]) + fx * static_cast<float>(from[x + 1]);
        }
        return;
    }
    float next = static_cast<float>(row[replicated(left, width)]);
    for (ptrdiff_t x = 0; x < columns; ++x) {
        const float here = next;
        next = static_cast<float>(row[replicated(left + x + 1, width)]);
        line[x] = rest * here + fx * next;
    }
}

// The rows of a window around a point, from `radius` pixels left of it and above, handed to
// body(y, upper, lower, fy): the window's row y is (1 - fy) upper + fy lower.
template <class T, class Body>
void forRows(Layer layer, Point center, ptrdiff_t radius, ptrdiff_t columns, Body body) {
    const ptrdiff_t wholeX = floorOf(center.x);
    const ptrdiff_t wholeY = floorOf(center.y);
    const float fx = center.x - static_cast<float>(wholeX);
    const float fy = center.y - static_cast<float>(wholeY);
    float lines[2][mostColumns + 8];
    float* upper = lines[0];
    float* lower = lines[1];
    const auto load = [&](float* line, ptrdiff_t y) {
        const ptrdiff_t row = replicated(wholeY - radius + y, layer.size.height);
        loadLine<T>(line, rowOf<T>(layer.image, row), layer.size.width, wholeX - radius, columns,
                    fx);
    };
    load(upper, 0);
    for (ptrdiff_t y = 0; y <= 2 * radius; ++y) {
        load(lower, y + 1);
        body(y, upper, lower, fy);
        float* const used = upper;
        upper = lower;
        lower = used;
    }
}

[[gnu::noinline]] void blendLines(float* __restrict row, const float* __restrict upper,
                                  const float* __restrict lower, ptrdiff_t columns, float fy) {
    const float rest = 1.0F - fy;
    for (ptrdiff_t x = 0; x < columns; ++x) row[x] = rest * upper[x] + fy * lower[x];
}

// Sums of a window by column.
struct Sums {
    explicit Sums(ptrdiff_t columns) {
        for (ptrdiff_t x = 0; x < columns; ++x) at[x] = 0;
    }

    float total(ptrdiff_t columns) const {
        float lanes[8] = {};
        for (ptrdiff_t x = 0; x < columns; x += 8) {
            // Columns are whole lanes. NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign)
            for (ptrdiff_t k = 0; k < 8; ++k) lanes[k] += at[x + k];
        }
        return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) +
               ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7]));
    }

    float at[mostColumns];
};

float kept(float value, int32_t mask) {
    return floatOf(bitsOf(value) & mask);
}

// The window of the first picture in one layer.
class Pattern {
  public:
    Pattern(ptrdiff_t window, void* buffer)
        : m_window(window), m_columns(flowColumns(window)), m_stride(flowColumns(window + 2)) {
        Carver carver(buffer);
        m_patch = carver.take<float>(flowPatchSize(window));
        m_dx = carver.take<float>(flowSlopesSize(window));
        m_dy = carver.take<float>(flowSlopesSize(window));
        for (ptrdiff_t x = 0; x < 8; ++x) m_patch[m_stride * (window + 2) + x] = 0;
        for (ptrdiff_t x = 0; x < m_columns; ++x) m_mask[x] = x < window ? -1 : 0;
    }

    template <class T>
    void load(Layer layer, Point center) {
        forRows<T>(layer, center, m_window / 2 + 1, m_stride,
                   [&](ptrdiff_t y, const float* upper, const float* lower, float fy) {
                       blendLines(m_patch + y * m_stride, upper, lower, m_stride, fy);
                   });
        Sums xx(m_columns);
        Sums xy(m_columns);
        Sums yy(m_columns);
        for (ptrdiff_t y = 0; y < m_window; ++y) {
            addSlopes(m_dx + y * m_columns, m_dy + y * m_columns, m_patch + y * m_stride, xx.at,
                      xy.at, yy.at);
        }
        m_xx = static_cast<double>(xx.total(m_columns));
        m_xy = static_cast<double>(xy.total(m_columns));
        m_yy = static_cast<double>(yy.total(m_columns));
        m_det = m_xx * m_yy - m_xy * m_xy;
    }

    bool hasTexture() const { return m_det > 0x1p-10 * ((m_xx + m_yy) * (m_xx + m_yy)); }

    // How far the window moves from a place in the layer of the second picture.
    template <class T>
    Point step(Layer layer, Point center) const {
        Sums sumX(m_columns);
        Sums sumY(m_columns);
        forRows<T>(layer, center, m_window / 2, m_columns,
                   [&](ptrdiff_t y, const float* upper, const float* lower, float fy) {
                       addDifferences(upper, lower, fy, patchRow(y), m_dx + y * m_columns,
                                      m_dy + y * m_columns, sumX.at, sumY.at);
                   });
        const double bx = static_cast<double>(sumX.total(m_columns));
        const double by = static_cast<double>(sumY.total(m_columns));
        return {static_cast<float>((m_yy * bx - m_xy * by) / m_det),
                static_cast<float>((m_xx * by - m_xy * bx) / m_det)};
    }

    // The mean size of the differences there.
    template <class T>
    float error(Layer layer, Point center) const {
        Sums sum(m_columns);
        forRows<T>(layer, center, m_window / 2, m_columns,
                   [&](ptrdiff_t y, const float* upper, const float* lower, float fy) {
                       addSizes(upper, lower, fy, patchRow(y), sum.at);
                   });
        return withOneNan(sum.total(m_columns) / static_cast<float>(m_window * m_window));
    }

  private:
    const float* patchRow(ptrdiff_t y) const { return m_patch + (y + 1) * m_stride + 1; }

    [[gnu::noinline]] void addSlopes(float* __restrict dx, float* __restrict dy,
                                     const float* __restrict patch, float* __restrict xx,
                                     float* __restrict xy, float* __restrict yy) const {
        const float* const here = patch + m_stride;
        const float* const below = here + m_stride;
        for (ptrdiff_t x = 0; x < m_columns; ++x) {
            const float slopeX = kept((here[x + 2] - here[x]) * 0.5F, m_mask[x]);
            const float slopeY = kept((below[x + 1] - patch[x + 1]) * 0.5F, m_mask[x]);
            dx[x] = slopeX;
            dy[x] = slopeY;
            xx[x] += slopeX * slopeX;
            xy[x] += slopeX * slopeY;
            yy[x] += slopeY * slopeY;
        }
    }

    [[gnu::noinline]] void addDifferences(const float* __restrict upper,
                                          const float* __restrict lower, float fy,
                                          const float* __restrict patch, const float* __restrict dx,
                                          const float* __restrict dy, float* __restrict sumX,
                                          float* __restrict sumY) const {
        const float rest = 1.0F - fy;
        for (ptrdiff_t x = 0; x < m_columns; ++x) {
            const float there = rest * upper[x] + fy * lower[x];
            const float difference = kept(patch[x] - there, m_mask[x]);
            sumX[x] += difference * dx[x];
            sumY[x] += difference * dy[x];
        }
    }

    [[gnu::noinline]] void addSizes(const float* __restrict upper, const float* __restrict lower,
                                    float fy, const float* __restrict patch,
                                    float* __restrict sum) const {
        const float rest = 1.0F - fy;
        for (ptrdiff_t x = 0; x < m_columns; ++x) {
            const float there = rest * upper[x] + fy * lower[x];
            sum[x] += kept(patch[x] - there, m_mask[x] & INT32_MAX);
        }
    }

    ptrdiff_t m_window;
    ptrdiff_t m_columns;
    ptrdiff_t m_stride;  // of the patch, which has a pixel around the window
    float* m_patch;
    float* m_dx;
    float* m_dy;
    int32_t m_mask[mostColumns];
    double m_xx = 0;
    double m_xy = 0;
    double m_yy = 0;
    double m_det = 0;
};

// Moves the position within one layer; false when the layer fails.
template <class T>
bool trackInLayer(Pattern& pattern, Layer first, Layer second, Point from, Point& position,
                  const FlowRules* rules) {
    if (!isInside(from, first.size) || !isInside(position, second.size)) return false;
    pattern.load<T>(first, from);
    if (!pattern.hasTexture()) return false;
    const double epsilon = static_cast<double>(rules->epsilon);
    for (int i = 0; i < rules->maxIterations; ++i) {
        const Point step = pattern.step<T>(second, position);
        position = {position.x + step.x, position.y + step.y};
        if (!isInside(position, second.size)) return false;
        const double x = static_cast<double>(step.x);
        const double y = static_cast<double>(step.y);
        if (x * x + y * y < epsilon * epsilon) break;
    }
    return true;
}

template <class T>
void track(const ZmoiPyramidLevels* first, const ZmoiPyramidLevels* second,
           const FlowPoints* points, const FlowRules* rules, void* buffer) {
    Pattern pattern(rules->window, buffer);
    Elem<float>* const to = reinterpret_cast<Elem<float>*>(points->to);
    Elem<float>* const errors = reinterpret_cast<Elem<float>*>(points->error);
    for (ptrdiff_t i = 0; i < points->count; ++i) {
        const Point from = pointAt(points->from, i);
        Point position = pointAt(points->to, i);
        float scale = 1.0F / static_cast<float>(1 << rules->maxLevel);
        position = {position.x * scale, position.y * scale};
        bool found = false;
        for (int k = rules->maxLevel; k >= 0; --k) {
            Point moved = position;
            found = trackInLayer<T>(pattern, layerOf(first, k), layerOf(second, k),
                                    {from.x * scale, from.y * scale}, moved, rules);
            if (found) position = moved;
            if (k > 0) {
                position = {position.x * 2, position.y * 2};
                scale *= 2;
            }
        }
        points->found[i] = found;
        errors[i] = found ? pattern.error<T>(layerOf(second, 0), position) : 0.0F;
        if (found) {
            to[2 * i] = position.x;
            to[2 * i + 1] = position.y;
        }
    }
}

}  // namespace

const FlowKernels flowKernels = {{track<uint8_t>, track<uint16_t>, track<float>}};

}  // namespace zmo::ZMO_LEVEL
