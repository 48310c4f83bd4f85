#include "zmocv/canny.h"

#include "common/derivative.h"

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
[[gnu::noinline]] void sizesOfRow(const Elem<T>* __restrict dx, const Elem<T>* __restrict dy,
                                  S* __restrict sizes, ptrdiff_t width) {
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
[[gnu::noinline]] void classifyRow(const Elem<T>* __restrict dx, const Elem<T>* __restrict dy,
                                   const S* __restrict above, const S* __restrict here,
                                   const S* __restrict below, Elem<uint8_t>* __restrict out,
                                   ptrdiff_t width, S low, S high) {
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

// Places of pixels, each in one word: x in as many low bits as the width needs, y above. Both fit,
// as an image of more than 2^63 pixels does not exist.
class Stack {
  public:
    Stack(CannyPixel* memory, ptrdiff_t width)
        : m_bottom(memory),
          m_top(memory),
          m_bitsOfX(64 - __builtin_clzll(static_cast<uint64_t>(width))) {}

    void push(ptrdiff_t x, ptrdiff_t y) {
        *m_top++ = static_cast<uint64_t>(y) << m_bitsOfX | static_cast<uint64_t>(x);
    }
    bool isEmpty() const { return m_top == m_bottom; }
    void pop(ptrdiff_t& x, ptrdiff_t& y) {
        const uint64_t pixel = *--m_top;
        x = static_cast<ptrdiff_t>(pixel & ((uint64_t{1} << m_bitsOfX) - 1));
        y = static_cast<ptrdiff_t>(pixel >> m_bitsOfX);
    }

  private:
    CannyPixel* m_bottom;
    CannyPixel* m_top;
    int m_bitsOfX;
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
[[gnu::noinline]] void grow(Target dst, Region roi, Stack& stack) {
    while (!stack.isEmpty()) {
        ptrdiff_t x;
        ptrdiff_t y;
        stack.pop(x, y);
        const ptrdiff_t left = x > 0 ? x - 1 : 0;
        const ptrdiff_t right = x < roi.width - 1 ? x + 1 : x;
        const ptrdiff_t upper = y > 0 ? y - 1 : 0;
        const ptrdiff_t lower = y < roi.height - 1 ? y + 1 : y;
        for (ptrdiff_t j = upper; j <= lower; ++j) {
            Elem<uint8_t>* const row = rowOf<uint8_t>(dst, j);
            for (ptrdiff_t i = left; i <= right; ++i) {
                if (row[i] != candidate) continue;
                row[i] = edge;
                stack.push(i, j);
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

// Derivatives that the caller has computed.
template <class T>
class GivenGradients {
  public:
    using Value = T;

    GivenGradients(Source dx, Source dy) : m_dx(dx), m_dy(dy) {}

    void reach(ptrdiff_t) {}
    const Elem<T>* dx(ptrdiff_t y) const { return rowOf<T>(m_dx, y); }
    const Elem<T>* dy(ptrdiff_t y) const { return rowOf<T>(m_dy, y); }

  private:
    Source m_dx;
    Source m_dy;
};

// Derivatives of a picture. Two rows of each are kept: the last one reached and the one before.
template <class Rows>
class DerivedGradients {
  public:
    using Value = typename Rows::Value;

    DerivedGradients(Source src, Region roi, Border border, Carver& memory)
        : m_make(src, roi, border, memory) {
        for (Value*& row : m_rows) row = memory.take<Value>(roi.width);
    }

    void reach(ptrdiff_t y) { m_make.make(y, m_rows[y & 1], m_rows[2 + (y & 1)]); }
    const Elem<Value>* dx(ptrdiff_t y) const { return m_rows[y & 1]; }
    const Elem<Value>* dy(ptrdiff_t y) const { return m_rows[2 + (y & 1)]; }

  private:
    Rows m_make;
    Value* m_rows[4];
};

template <bool l2, class Gradients, class T = typename Gradients::Value,
          class S = typename GradientSize<T>::type>
void findEdges(Gradients gradients, Target dst, Region roi, S low, S high, Carver& memory) {
    S* rows[3];
    for (S*& row : rows) {
        row = memory.take<S>(roi.width + 2) + 1;
        for (ptrdiff_t x = -1; x <= roi.width; ++x) row[x] = 0;
    }
    Stack stack(memory.take<CannyPixel>(roi.width * roi.height), roi.width);

    gradients.reach(0);
    sizesOfRow<T, l2, S>(gradients.dx(0), gradients.dy(0), rows[1], roi.width);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        S* const above = rows[0];
        S* const here = rows[1];
        S* const below = rows[2];
        if (y + 1 < roi.height) {
            gradients.reach(y + 1);
            sizesOfRow<T, l2, S>(gradients.dx(y + 1), gradients.dy(y + 1), below, roi.width);
        } else {
            for (ptrdiff_t x = 0; x < roi.width; ++x) below[x] = 0;
        }
        Elem<uint8_t>* const out = rowOf<uint8_t>(dst, y);
        classifyRow<T, S>(gradients.dx(y), gradients.dy(y), above, here, below, out, roi.width, low,
                          high);
        pushSeeds(out, y, roi.width, stack);
        rows[0] = here;
        rows[1] = below;
        rows[2] = above;
    }
    grow(dst, roi, stack);
    dropCandidates(dst, roi);
}

template <class T, bool l2, class S = typename GradientSize<T>::type>
void canny(Source dx, Source dy, Target dst, Region roi, S low, S high, void* buffer) {
    Carver memory(buffer);
    findEdges<l2>(GivenGradients<T>(dx, dy), dst, roi, low, high, memory);
}

template <class Rows, bool l2>
void cannyBorder(Source src, Target dst, Region roi, Border border, int low, int high,
                 void* buffer) {
    Carver memory(buffer);
    findEdges<l2>(DerivedGradients<Rows>(src, roi, border, memory), dst, roi, low, high, memory);
}

}  // namespace

const CannyKernels cannyKernels = {
    canny<int16_t, false>,
    canny<int16_t, true>,
    canny<float, false>,
    canny<float, true>,
    {{cannyBorder<Sobel3<uint8_t>, false>, cannyBorder<Sobel5<uint8_t>, false>,
      cannyBorder<Scharr3<uint8_t>, false>},
     {cannyBorder<Sobel3<uint8_t>, true>, cannyBorder<Sobel5<uint8_t>, true>,
      cannyBorder<Scharr3<uint8_t>, true>}}};

}  // namespace zmo::ZMO_LEVEL
