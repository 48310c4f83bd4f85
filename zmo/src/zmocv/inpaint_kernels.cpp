#include "zmocv/inpaint.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

constexpr float leastAlignment = 0.01F;
constexpr float misaligned = 1e-6F;

// 1 / length and 1 / length^2 of vectors, by their squared length, and the half widths of the rows of
// the neighbourhood.
struct Disc {
    Disc(float radius, Carver& carver)
        : reach(static_cast<int>(radius)),
          ofLength(carver.take<float>(inpaintWeights)),
          ofSquare(carver.take<float>(inpaintWeights)) {
        const int most = static_cast<int>(static_cast<double>(radius) * radius);
        for (int r2 = 1; r2 <= most; ++r2) {
            ofLength[r2] = 1.0F / __builtin_sqrtf(static_cast<float>(r2));
            ofSquare[r2] = 1.0F / static_cast<float>(r2);
        }
        for (int j = 0; j <= reach; ++j) {
            halfWidth[j] = reach;
            while (halfWidth[j] * halfWidth[j] + j * j > most) --halfWidth[j];
        }
    }

    int reach;
    float* ofLength;
    float* ofSquare;
    int halfWidth[inpaintRadius + 1];
};

// A pixel's neighbours that are known, as 0 or 1.
struct KnownSides {
    KnownSides(const Front& front, int x, int y)
        : left(front.isReachedInside(x - 1, y)),
          right(front.isReachedInside(x + 1, y)),
          up(front.isReachedInside(x, y - 1)),
          down(front.isReachedInside(x, y + 1)) {}

    int left, right, up, down;
};

// Twice the derivative, where before and behind count when they are known.
template <class Value>
Value twiceDerivative(int knowsBefore, Value before, Value middle, int knowsBehind, Value behind) {
    if (knowsBefore && knowsBehind) return behind - before;
    if (knowsBehind) return 2 * (behind - middle);
    return knowsBefore ? 2 * (middle - before) : 0;
}

template <int channels>
class Picture {
  public:
    explicit Picture(Target image) : m_image(image) {}

    int at(int x, int y, int c) const { return pixel(x, y)[c]; }
    void set(int x, int y, int c, float value) const {
        const float low = value > 0 ? value : 0;
        const float limited = low < 255 ? low : 255;
        // Adding 2^23 leaves no room for a fraction, which rounds half to even.
        pixel(x, y)[c] = static_cast<uint8_t>((limited + 8388608.0F) - 8388608.0F);
    }
    int twiceDx(int x, int y, int c, KnownSides known) const {
        const uint8_t* const p = pixel(x, y) + c;
        return twiceDerivative<int>(known.left, known.left ? p[-channels] : 0, *p, known.right,
                                    known.right ? p[channels] : 0);
    }
    int twiceDy(int x, int y, int c, KnownSides known) const {
        return twiceDerivative<int>(known.up, known.up ? at(x, y - 1, c) : 0, at(x, y, c),
                                    known.down, known.down ? at(x, y + 1, c) : 0);
    }

  private:
    Elem<uint8_t>* pixel(int x, int y) const {
        return rowOf<uint8_t>(m_image, y) + ptrdiff_t{x} * channels;
    }

    Target m_image;
};

inline float alignment(float value) {
    return value <= leastAlignment ? misaligned : value;
}

// How a known pixel q counts for the pixel p, r = p - q: by the direction in which the front moves,
// by the distance, and by the difference of their times.
template <int channels>
class ByMarching {
  public:
    static constexpr bool usesTimes = true;

    ByMarching(const Front& front, const Picture<channels>& picture, const Disc& disc, int x, int y)
        : m_front(front), m_picture(picture), m_disc(disc), m_time(front.timeOf(x, y)) {
        const KnownSides known(front, x, y);
        const auto time = [&](int isKnown, int toX, int toY) {
            return isKnown ? float(front.timeOf(toX, toY)) : 0.0F;
        };
        m_tx = 0.5F * twiceDerivative<float>(known.left, time(known.left, x - 1, y), m_time,
                                             known.right, time(known.right, x + 1, y));
        m_ty = 0.5F * twiceDerivative<float>(known.up, time(known.up, x, y - 1), m_time, known.down,
                                             time(known.down, x, y + 1));
    }

    void add(int x, int y, int rx, int ry, float* values, float* weights) const {
        const int r2 = rx * rx + ry * ry;
        const float along = static_cast<float>(rx) * m_tx + static_cast<float>(ry) * m_ty;
        const float direction = alignment(__builtin_fabsf(along) * m_disc.ofLength[r2]);
        const float later = m_time - m_front.timeOf(x, y);
        const float level = 1.0F / (1.0F + __builtin_fabsf(later));
        const float weight = direction * m_disc.ofSquare[r2] * level;
        const KnownSides known(m_front, x, y);
        for (int c = 0; c < channels; ++c) {
            const int twice = 2 * m_picture.at(x, y, c) + m_picture.twiceDx(x, y, c, known) * rx +
                              m_picture.twiceDy(x, y, c, known) * ry;
            values[c] += weight * (0.5F * static_cast<float>(twice));
            weights[c] += weight;
        }
    }

  private:
    const Front& m_front;
    const Picture<channels>& m_picture;
    const Disc& m_disc;
    float m_time;
    float m_tx;
    float m_ty;
};

// By the distance, and by whether q's level line points to p.
template <int channels>
class ByDiffusion {
  public:
    static constexpr bool usesTimes = false;

    ByDiffusion(const Front& front, const Picture<channels>& picture, const Disc& disc, int, int)
        : m_front(front), m_picture(picture), m_disc(disc) {}

    void add(int x, int y, int rx, int ry, float* values, float* weights) const {
        const int r2 = rx * rx + ry * ry;
        const KnownSides known(m_front, x, y);
        for (int c = 0; c < channels; ++c) {
            const int gx = m_picture.twiceDx(x, y, c, known);
            const int gy = m_picture.twiceDy(x, y, c, known);
            const float near = m_disc.ofSquare[r2];
            const float weight = flow(gx, gy, rx, ry, r2) * near * near;
            values[c] += weight * static_cast<float>(m_picture.at(x, y, c));
            weights[c] += weight;
        }
    }

  private:
    // From twice the gradient: the squared cosine of the angle between the level line and r, or 1
    // where the gradient is small.
    static float flow(int gx, int gy, int rx, int ry, int r2) {
        const float cross = static_cast<float>(gy * rx - gx * ry);
        const float length = static_cast<float>(r2);
        const float square = static_cast<float>(gx * gx + gy * gy + 4);
        return (cross * cross + 4.0F * length) / (square * length);
    }

    const Front& m_front;
    const Picture<channels>& m_picture;
    const Disc& m_disc;
};

template <int channels, template <int> class Rule>
class Inpainting {
  public:
    Inpainting(Target dst, Region roi, float radius, void* buffer)
        : m_width(static_cast<int>(roi.width)),
          m_height(static_cast<int>(roi.height)),
          m_radius(radius),
          m_carver(buffer),
          m_disc(radius, m_carver),
          m_pixels(m_carver.take<FrontPixel>(roi.width * roi.height)),
          m_places(m_carver.take<int>(roi.width * roi.height)),
          m_times{m_carver.take<float>(roi.width * roi.height),
                  roi.width * static_cast<ptrdiff_t>(sizeof(float))},
          m_front(m_times, roi, m_pixels, m_places),
          m_picture(dst) {}

    void run(Source mask) {
        if constexpr (Rule<channels>::usesTimes) marchOutward(mask);
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
            m_front.setReached(x, y, Rule<channels>::usesTimes ? -m_front.timeOf(x, y) : 0);
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
        const Rule<channels> rule(m_front, m_picture, m_disc, x, y);
        float values[channels] = {};
        float weights[channels] = {};
        const int top = y < m_disc.reach ? -y : -m_disc.reach;
        const int bottom = m_height - 1 - y < m_disc.reach ? m_height - 1 - y : m_disc.reach;
        for (int j = top; j <= bottom; ++j) {
            const int half = m_disc.halfWidth[j < 0 ? -j : j];
            const int left = x < half ? -x : -half;
            const int right = m_width - 1 - x < half ? m_width - 1 - x : half;
            for (int i = left; i <= right; ++i) {
                if (m_front.isReached(x + i, y + j))
                    rule.add(x + i, y + j, -i, -j, values, weights);
            }
        }
        for (int c = 0; c < channels; ++c) m_picture.set(x, y, c, values[c] / weights[c]);
    }

    int m_width;
    int m_height;
    float m_radius;
    Carver m_carver;
    Disc m_disc;
    FrontPixel* m_pixels;
    int* m_places;
    Target m_times;
    Front m_front;
    Picture<channels> m_picture;
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

template <int channels, template <int> class Rule>
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
