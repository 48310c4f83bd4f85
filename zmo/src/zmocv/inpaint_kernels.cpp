#include "zmocv/inpaint.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

constexpr float leastAlignment = 0.01F;
constexpr float misaligned = 1e-6F;
constexpr int lanes = inpaintBlock;

// For the vectors r from the pixels q of a neighbourhood to its middle: 1 / |r| and 1 / |r|^2,
// which are 0 where q is not part of it. Rows by |ry|; column i stands for rx = reach - i.
class Disc {
  public:
    Disc(float radius, Carver& carver)
        : reach(static_cast<int>(radius)),
          columns((2 * reach + lanes) / lanes * lanes),
          m_ofLength(carver.take<float>((reach + 1) * columns)),
          m_ofSquare(carver.take<float>((reach + 1) * columns)) {
        const double most = static_cast<double>(radius) * radius;
        for (int ry = 0; ry <= reach; ++ry) {
            for (int i = 0; i < columns; ++i) {
                const int r2 = (reach - i) * (reach - i) + ry * ry;
                const bool inside = r2 > 0 && r2 <= most && i <= 2 * reach;
                const float square = inside ? static_cast<float>(r2) : 1.0F;
                m_ofLength[ry * columns + i] = inside ? 1.0F / __builtin_sqrtf(square) : 0.0F;
                m_ofSquare[ry * columns + i] = inside ? 1.0F / square : 0.0F;
            }
        }
    }

    const float* ofLength(int ry) const { return m_ofLength + (ry < 0 ? -ry : ry) * columns; }
    const float* ofSquare(int ry) const { return m_ofSquare + (ry < 0 ? -ry : ry) * columns; }

    const int reach;
    const int columns;

  private:
    float* m_ofLength;
    float* m_ofSquare;
};

// Where the pixels of the region lie in the work planes.
struct Layout {
    Layout(Region roi, const Disc& disc)
        : margin(disc.reach + lanes),
          step(static_cast<int>(roi.width) + 2 * margin),
          count(ptrdiff_t{step} * (roi.height + 2)) {}

    ptrdiff_t at(int x, int y) const { return ptrdiff_t{step} * (y + 1) + margin + x; }

    int margin;
    int step;
    ptrdiff_t count;
};

// Twice the derivative, where before and behind count when they are known (not 0).
inline int twiceDerivative(int knowsBefore, int before, int middle, int knowsBehind, int behind) {
    const int low = knowsBefore != 0 ? before : middle;
    const int high = knowsBehind != 0 ? behind : middle;
    const int twice = high - low;
    return (knowsBefore & knowsBehind) != 0 ? twice : 2 * twice;
}

// The neighbours q of a pixel p in one row, of one channel. The first column stands for the vector
// (rx, ry) from q to p, each one that follows for an rx smaller by one.
struct Row {
    ptrdiff_t first;  // its place in the work planes
    int rx;
    int ry;
    const uint8_t* values;
    const int16_t* dx;  // twice the gradient
    const int16_t* dy;
};

// The rules write the weight of each of a row's pixels to weights, as if all of them were known.

inline float alignment(float value) {
    return value <= leastAlignment ? misaligned : value;
}

// By the direction in which the front moves at p, by the distance, and by the difference of times.
class ByMarching {
  public:
    static constexpr bool isMarching = true;

    ByMarching(const float* times, const uint8_t* known, ptrdiff_t p, ptrdiff_t step)
        : m_times(times),
          m_time(times[p]),
          m_tx(derivative(known, p, 1)),
          m_ty(derivative(known, p, step)) {}

    void weigh(const Disc& disc, const Row& row, float* __restrict weights) const {
        const float* const ofLength = disc.ofLength(row.ry);
        const float* const ofSquare = disc.ofSquare(row.ry);
        const float* const times = m_times + row.first;
        const float alongY = static_cast<float>(row.ry) * m_ty;
        for (int i = 0; i < disc.columns; ++i) {
            const float along = static_cast<float>(row.rx - i) * m_tx + alongY;
            const float direction = alignment(__builtin_fabsf(along) * ofLength[i]);
            const float level = 1.0F / (1.0F + __builtin_fabsf(m_time - times[i]));
            weights[i] = direction * ofSquare[i] * level;
        }
    }
    // The estimate of p from q, twice.
    static int twice(int value, int dx, int dy, int rx, int ry) {
        return 2 * value + dx * rx + dy * ry;
    }

  private:
    float derivative(const uint8_t* known, ptrdiff_t p, ptrdiff_t side) const {
        const bool before = known[p - side] != 0;
        const bool behind = known[p + side] != 0;
        const float low = before ? m_times[p - side] : m_time;
        const float high = behind ? m_times[p + side] : m_time;
        return before && behind ? 0.5F * (high - low) : high - low;
    }

    const float* m_times;
    float m_time;
    float m_tx;
    float m_ty;
};

// By the distance, and by whether q's level line points to p: from twice the gradient the squared
// cosine of the angle between the two, or 1 where the gradient is small.
class ByDiffusion {
  public:
    static constexpr bool isMarching = false;

    ByDiffusion(const float*, const uint8_t*, ptrdiff_t, ptrdiff_t) {}

    static void weigh(const Disc& disc, const Row& row, float* __restrict weights) {
        const float* const ofSquare = disc.ofSquare(row.ry);
        const int16_t* const dx = row.dx;
        const int16_t* const dy = row.dy;
        for (int i = 0; i < disc.columns; ++i) {
            const int rx = row.rx - i;
            const float cross = static_cast<float>(dy[i] * rx - dx[i] * row.ry);
            const int r2 = rx * rx + row.ry * row.ry;
            // The middle has no direction, and no weight either.
            const float length = static_cast<float>(r2 + (r2 == 0));
            const float square = static_cast<float>(dx[i] * dx[i] + dy[i] * dy[i] + 4);
            const float flow = (cross * cross + 4.0F * length) / (square * length);
            weights[i] = flow * ofSquare[i] * ofSquare[i];
        }
    }
    static int twice(int value, int, int, int, int) { return 2 * value; }
};

// The first lane is the total.
inline float folded(float* sums) {
    for (int half = lanes / 2; half > 0; half /= 2) {
        for (int k = 0; k < half; ++k) sums[k] += sums[k + half];
    }
    return sums[0];
}

template <int channels, class Rule>
class Inpainting {
  public:
    Inpainting(Target dst, Region roi, float radius, void* buffer)
        : m_dst(dst),
          m_width(static_cast<int>(roi.width)),
          m_height(static_cast<int>(roi.height)),
          m_radius(radius),
          m_carver(buffer),
          m_disc(radius, m_carver),
          m_layout(roi, m_disc),
          m_pixels(m_carver.take<FrontPixel>(roi.width * roi.height)),
          m_places(m_carver.take<int>(roi.width * roi.height)),
          m_times(m_carver.take<float>(m_layout.count)),
          m_known(m_carver.take<uint8_t>(m_layout.count)),
          m_front({m_times + m_layout.at(0, 0), m_layout.step * ptrdiff_t{sizeof(float)}}, roi,
                  m_pixels, m_places) {
        for (uint8_t*& values : m_values) values = m_carver.take<uint8_t>(m_layout.count);
    }

    void run(Source mask) {
        load(mask);
        if constexpr (Rule::isMarching) marchOutward(mask);
        marchInward(mask);
    }

  private:
    static bool isSelected(Source mask, int x, int y) { return rowOf<uint8_t>(mask, y)[x] != 0; }
    bool isEdge(Source mask, int x, int y) const {
        return !isSelected(mask, x, y) && ((x > 0 && isSelected(mask, x - 1, y)) ||
                                           (x + 1 < m_width && isSelected(mask, x + 1, y)) ||
                                           (y > 0 && isSelected(mask, x, y - 1)) ||
                                           (y + 1 < m_height && isSelected(mask, x, y + 1)));
    }
    template <class Body>
    void forEachPixel(Body body) const {
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) body(x, y);
        }
    }

    // Nothing is known in the margins.
    void load(Source mask) {
        for (ptrdiff_t i = 0; i < m_layout.count; ++i) m_known[i] = 0;
        for (ptrdiff_t i = 0; i < m_layout.count; ++i) m_times[i] = 0;
        for (int y = 0; y < m_height; ++y) {
            const Elem<uint8_t>* const selected = rowOf<uint8_t>(mask, y);
            uint8_t* const known = m_known + m_layout.at(0, y);
            for (int x = 0; x < m_width; ++x) known[x] = selected[x] == 0;
            for (int c = 0; c < channels; ++c) {
                const Elem<uint8_t>* const from = rowOf<uint8_t>(m_dst, y) + c;
                uint8_t* __restrict const to = m_values[c] + m_layout.at(0, y);
                for (int x = 0; x < m_width; ++x) to[x] = from[ptrdiff_t{x} * channels];
            }
        }
    }

    void marchOutward(Source mask) {
        forEachPixel([&](int x, int y) {
            if (isSelected(mask, x, y)) return m_front.setClosed(x, y);
            if (isEdge(mask, x, y)) return m_front.setReached(x, y, 0);
            m_front.setUnseen(x, y);
            m_front.timeOf(x, y) = m_radius;
        });
        startFromEdge(mask, m_radius);
        m_front.advance(m_radius, [](int, int) {});
    }

    void marchInward(Source mask) {
        forEachPixel([&](int x, int y) {
            if (isSelected(mask, x, y)) return m_front.setUnseen(x, y);
            m_front.setReached(x, y, -m_front.timeOf(x, y));
        });
        constexpr float never = 3e38F;
        startFromEdge(mask, never);
        m_front.advance(never, [this](int x, int y) { fill(x, y); });
    }

    void startFromEdge(Source mask, float limit) {
        forEachPixel([&](int x, int y) {
            if (isEdge(mask, x, y)) m_front.leave(x, y, limit);
        });
    }

    void fill(int x, int y) const {
        const ptrdiff_t p = m_layout.at(x, y);
        const Rule rule(m_times, m_known, p, m_layout.step);
        float sums[channels][lanes] = {};
        float totals[channels][lanes] = {};
        const int reach = m_disc.reach;
        const int top = y < reach ? -y : -reach;
        const int bottom = m_height - 1 - y < reach ? m_height - 1 - y : reach;
        float weights[inpaintColumns] = {};
        float products[inpaintColumns] = {};
        int16_t dx[inpaintColumns] = {};
        int16_t dy[inpaintColumns] = {};
        for (int j = top; j <= bottom; ++j) {
            const ptrdiff_t first = m_layout.at(x - reach, y + j);
            for (int c = 0; c < channels; ++c) {
                const Row row{first, reach, -j, m_values[c] + first, dx, dy};
                derive(row, dx, dy);
                if (c == 0 || !Rule::isMarching) {
                    rule.weigh(m_disc, row, weights);
                    forget(row, weights);
                }
                multiply(row, weights, products);
                addLanes(sums[c], products);
                addLanes(totals[c], weights);
            }
        }
        Elem<uint8_t>* const pixel = rowOf<uint8_t>(m_dst, y) + ptrdiff_t{x} * channels;
        for (int c = 0; c < channels; ++c) {
            pixel[c] = rounded(folded(sums[c]) / folded(totals[c]));
            m_values[c][p] = pixel[c];
        }
        m_known[p] = 1;
    }

    void derive(const Row& row, int16_t* __restrict dx, int16_t* __restrict dy) const {
        const ptrdiff_t step = m_layout.step;
        const uint8_t* const value = row.values;
        const uint8_t* const known = m_known + row.first;
        for (int i = 0; i < m_disc.columns; ++i) {
            dx[i] = static_cast<int16_t>(
                twiceDerivative(known[i - 1], value[i - 1], value[i], known[i + 1], value[i + 1]));
            dy[i] = static_cast<int16_t>(twiceDerivative(known[i - step], value[i - step], value[i],
                                                         known[i + step], value[i + step]));
        }
    }

    // What is not known has no weight.
    void forget(const Row& row, float* __restrict weights) const {
        const uint8_t* const known = m_known + row.first;
        for (int i = 0; i < m_disc.columns; ++i) weights[i] *= static_cast<float>(known[i]);
    }

    void multiply(const Row& row, const float* __restrict weights,
                  float* __restrict products) const {
        for (int i = 0; i < m_disc.columns; ++i) {
            const int twice = Rule::twice(row.values[i], row.dx[i], row.dy[i], row.rx - i, row.ry);
            products[i] = weights[i] * (0.5F * static_cast<float>(twice));
        }
    }

    void addLanes(float* __restrict sums, const float* __restrict values) const {
        for (int i = 0; i < m_disc.columns; i += lanes) {
            for (int k = 0; k < lanes; ++k) sums[k] += values[i + k];
        }
    }

    static uint8_t rounded(float value) {
        const float low = value > 0 ? value : 0;
        const float limited = low < 255 ? low : 255;
        return static_cast<uint8_t>(wholeOf(limited));
    }

    Target m_dst;
    int m_width;
    int m_height;
    float m_radius;
    Carver m_carver;
    Disc m_disc;
    Layout m_layout;
    FrontPixel* m_pixels;
    int* m_places;
    float* m_times;
    uint8_t* m_known;
    Front m_front;
    uint8_t* m_values[channels];
};

bool selectsAny(Source mask, Region roi) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<uint8_t>* const row = rowOf<uint8_t>(mask, y);
        uint8_t any = 0;
        for (ptrdiff_t x = 0; x < roi.width; ++x) any |= row[x];
        if (any != 0) return true;
    }
    return false;
}

template <int channels, class Rule>
bool inpaint(Source src, Source mask, Target dst, Region roi, float radius, void* buffer) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<uint8_t>* __restrict const from = rowOf<uint8_t>(src, y);
        Elem<uint8_t>* __restrict const to = rowOf<uint8_t>(dst, y);
        for (ptrdiff_t i = 0; i < roi.width * channels; ++i) to[i] = from[i];
    }
    if (!selectsAny(mask, roi)) return false;
    Inpainting<channels, Rule>(dst, roi, radius, buffer).run(mask);
    return true;
}

}  // namespace

const InpaintKernels inpaintKernels = {{inpaint<1, ByMarching>, inpaint<3, ByMarching>},
                                       {inpaint<1, ByDiffusion>, inpaint<3, ByDiffusion>}};

}  // namespace zmo::ZMO_LEVEL
