#include "zmocv/canny.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// What the destination holds while edges grow. A seed has its highest bit set, alone of the three.
constexpr uint8_t background = 0;
constexpr uint8_t candidate = 1;
constexpr uint8_t edge = 255;

template <class T>
struct GradientSize;
template <>
struct GradientSize<int16_t> {
    using type = int;
};
template <>
struct GradientSize<float> {
    using type = float;
};

inline int magnitude(int value) {
    return value < 0 ? -value : value;
}
inline float magnitude(float value) {
    return __builtin_fabsf(value);
}

inline int squares(int dx, int dy) {
    const unsigned sum = static_cast<unsigned>(dx * dx) + static_cast<unsigned>(dy * dy);
    // 2^31 is reached by one pair only, and becomes the largest int, which no other pair gives.
    return static_cast<int>(sum - (sum >> 31));
}
inline float squares(float dx, float dy) {
    return dx * dx + dy * dy;
}

template <class T, bool l2, class S>
void sizesOfRow(const Elem<T>* __restrict dx, const Elem<T>* __restrict dy, S* __restrict sizes,
                ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        const S a = dx[x];
        const S b = dy[x];
        sizes[x] = l2 ? squares(a, b) : magnitude(a) + magnitude(b);
    }
}

// True when the direction (along, across) lies within 22.5 degrees of the first axis.
inline bool near(int along, int across) {
    return 32768 * across <= 13573 * along;
}
inline bool near(float along, float across) {
    return across <= 0.41421356f * along;
}

// The three rows of sizes have a zero at -1 and at width.
template <class T, class S>
void classifyRow(const Elem<T>* __restrict dx, const Elem<T>* __restrict dy,
                 const S* __restrict above, const S* __restrict here, const S* __restrict below,
                 Elem<uint8_t>* __restrict out, ptrdiff_t width, S low, S high) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        const S a = dx[x];
        const S b = dy[x];
        const S size = here[x];
        const bool alongX = near(magnitude(a), magnitude(b));
        const bool alongY = near(magnitude(b), magnitude(a));
        const bool falling = (a < 0) == (b < 0);
        // All eight are read whatever the sector: then the choice is a blend of vectors.
        const S left = here[x - 1], right = here[x + 1];
        const S up = above[x], down = below[x];
        const S upLeft = above[x - 1], downRight = below[x + 1];
        const S upRight = above[x + 1], downLeft = below[x - 1];
        S earlier = falling ? upLeft : upRight;
        S later = falling ? downRight : downLeft;
        earlier = alongY ? up : earlier;
        later = alongY ? down : later;
        earlier = alongX ? left : earlier;
        later = alongX ? right : later;
        const bool isCandidate = (size > earlier) & (size >= later) & (size > low);
        const int passed = size > high ? edge : candidate;
        out[x] = static_cast<uint8_t>(isCandidate ? passed : background);
    }
}

class Stack {
  public:
    explicit Stack(CannyPixel* memory) : m_bottom(memory), m_top(memory) {}

    void push(ptrdiff_t x, ptrdiff_t y) { *m_top++ = {static_cast<int>(x), static_cast<int>(y)}; }
    bool isEmpty() const { return m_top == m_bottom; }
    CannyPixel pop() { return *--m_top; }

  private:
    CannyPixel* m_bottom;
    CannyPixel* m_top;
};

void pushSeeds(const Elem<uint8_t>* row, ptrdiff_t y, ptrdiff_t width, Stack& stack) {
    ptrdiff_t x = 0;
    for (; x + 8 <= width; x += 8) {
        uint64_t bits = *reinterpret_cast<const Elem<uint64_t>*>(row + x) & 0x8080808080808080U;
        for (; bits != 0; bits &= bits - 1) stack.push(x + __builtin_ctzll(bits) / 8, y);
    }
    for (; x < width; ++x) {
        if (row[x] == edge) stack.push(x, y);
    }
}

// Every pixel is pushed at most once: as a seed, or when it turns from candidate to edge.
void grow(Target dst, Region roi, Stack& stack) {
    while (!stack.isEmpty()) {
        const CannyPixel pixel = stack.pop();
        const ptrdiff_t left = pixel.x > 0 ? pixel.x - 1 : 0;
        const ptrdiff_t right = pixel.x < roi.width - 1 ? pixel.x + 1 : pixel.x;
        const ptrdiff_t upper = pixel.y > 0 ? pixel.y - 1 : 0;
        const ptrdiff_t lower = pixel.y < roi.height - 1 ? pixel.y + 1 : pixel.y;
        for (ptrdiff_t y = upper; y <= lower; ++y) {
            Elem<uint8_t>* const row = rowOf<uint8_t>(dst, y);
            for (ptrdiff_t x = left; x <= right; ++x) {
                if (row[x] != candidate) continue;
                row[x] = edge;
                stack.push(x, y);
            }
        }
    }
}

void dropCandidates(Target dst, Region roi) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        Elem<uint8_t>* const row = rowOf<uint8_t>(dst, y);
        for (ptrdiff_t x = 0; x < roi.width; ++x) row[x] = row[x] == edge ? edge : background;
    }
}

template <class T, bool l2, class S = typename GradientSize<T>::type>
void canny(Source dx, Source dy, Target dst, Region roi, S low, S high, void* buffer) {
    Carver memory(buffer);
    S* rows[3];
    for (S*& row : rows) {
        row = memory.take<S>(roi.width + 2) + 1;
        for (ptrdiff_t x = -1; x <= roi.width; ++x) row[x] = 0;
    }
    Stack stack(memory.take<CannyPixel>(roi.width * roi.height));

    sizesOfRow<T, l2, S>(rowOf<T>(dx, 0), rowOf<T>(dy, 0), rows[1], roi.width);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        S* const above = rows[0];
        S* const here = rows[1];
        S* const below = rows[2];
        if (y + 1 < roi.height) {
            sizesOfRow<T, l2, S>(rowOf<T>(dx, y + 1), rowOf<T>(dy, y + 1), below, roi.width);
        } else {
            for (ptrdiff_t x = 0; x < roi.width; ++x) below[x] = 0;
        }
        Elem<uint8_t>* const out = rowOf<uint8_t>(dst, y);
        classifyRow<T, S>(rowOf<T>(dx, y), rowOf<T>(dy, y), above, here, below, out, roi.width, low,
                          high);
        pushSeeds(out, y, roi.width, stack);
        rows[0] = here;
        rows[1] = below;
        rows[2] = above;
    }
    grow(dst, roi, stack);
    dropCandidates(dst, roi);
}

}  // namespace

const CannyKernels cannyKernels = {canny<int16_t, false>, canny<int16_t, true>, canny<float, false>,
                                   canny<float, true>};

}  // namespace zmo::ZMO_LEVEL
