#include "zmocv/corner.h"

#include "common/derivative.h"

namespace zmo::ZMO_LEVEL {
namespace {

// Products of 16-bit derivatives and their differences fit an int; those of floats are exact in
// double.
template <class D>
struct ProductOf;
template <>
struct ProductOf<int16_t> {
    using type = int;
};
template <>
struct ProductOf<float> {
    using type = double;
};

// A row of both derivatives.
template <class D>
struct Gradients {
    D* dx;
    D* dy;
};

// The sums a, b and c of the tensor, of columns or of windows.
struct Tensors {
    double* a;
    double* b;
    double* c;
};

template <class D>
[[gnu::noinline]] void replaceProducts(Tensors sums, Gradients<D> in, Gradients<D> out,
                                       ptrdiff_t width) {
    using P = typename ProductOf<D>::type;
    double* __restrict a = sums.a;
    double* __restrict b = sums.b;
    double* __restrict c = sums.c;
    for (ptrdiff_t x = 0; x < width; ++x) {
        const P dx = in.dx[x];
        const P dy = in.dy[x];
        const P oldDx = out.dx[x];
        const P oldDy = out.dy[x];
        a[x] += static_cast<double>(dx * dx - oldDx * oldDx);
        b[x] += static_cast<double>(dx * dy - oldDx * oldDy);
        c[x] += static_cast<double>(dy * dy - oldDy * oldDy);
    }
}

// Sums of the derivatives' products down the columns of the window, kept up while the window moves
// from row to row: each row of derivatives is computed once and stays until the window has left it.
template <class Rows, class D>
class WindowColumns {
  public:
    [[gnu::noinline]] WindowColumns(Source src, Region roi, Border border, ptrdiff_t radius,
                                    Carver& memory)
        : m_border(border.type),
          m_radius(radius),
          m_outside(border.type == zmoiBorderInMem ? radius : 0),
          m_derived{roi.width + 2 * m_outside, roi.height + 2 * m_outside},
          m_kept(2 * radius + 2),
          m_make(shifted(src, m_outside), m_derived, border, memory),
          m_gradients(memory.take<D>(2 * m_derived.width * (m_kept + 1))) {
        const ptrdiff_t length = roi.width + 2 * radius + 1;
        double** const all[] = {&m_sums.a, &m_sums.b, &m_sums.c};
        for (double** sums : all) {
            *sums = memory.take<double>(length) + radius;
            for (ptrdiff_t x = -radius; x < length - radius; ++x) (*sums)[x] = 0;
        }
        const Gradients<D> none = slot(m_kept);
        for (ptrdiff_t x = 0; x < 2 * m_derived.width; ++x) none.dx[x] = 0;
        for (ptrdiff_t y = -radius; y < radius; ++y) replace(y, none);
    }

    // To the first row, then to the next one each time.
    [[gnu::noinline]] void moveTo(ptrdiff_t y) {
        replace(y + m_radius, y == 0 ? slot(m_kept) : row(y - m_radius - 1));
        if (m_border == zmoiBorderInMem) return;
        static constexpr double outside = 0;
        const ptrdiff_t width = m_derived.width;
        double* const all[] = {m_sums.a, m_sums.b, m_sums.c};
        for (double* sums : all) {
            extendRow<double>(sums, width, 1, m_radius, m_radius, m_border, &outside);
        }
    }

    // From -radius to the width - 1 + radius; one more may be read.
    const Tensors& sums() const { return m_sums; }

  private:
    static Source shifted(Source src, ptrdiff_t outside) {
        using T = typename Rows::Pixel;
        const char* const data = static_cast<const char*>(src.data);
        return {data - outside * (src.step + static_cast<ptrdiff_t>(sizeof(T))), src.step};
    }

    Gradients<D> slot(ptrdiff_t i) const {
        D* const dx = m_gradients + 2 * m_derived.width * i;
        return {dx, dx + m_derived.width};
    }

    // The derivatives of row y of the region, which may lie outside.
    [[gnu::noinline]] Gradients<D> row(ptrdiff_t y) {
        const ptrdiff_t height = m_derived.height;
        y += m_outside;
        if (y < 0 || y >= height) {
            if (m_border == zmoiBorderConst) return slot(m_kept);
            y = m_border == zmoiBorderReplicate ? replicated(y, height) : mirrored(y, height);
        }
        for (; m_made <= y; ++m_made) {
            const Gradients<D> next = slot(m_made % m_kept);
            m_make.make(m_made, next.dx, next.dy);
        }
        return slot(y % m_kept);
    }

    void replace(ptrdiff_t y, Gradients<D> out) {
        const Gradients<D> in = row(y);
        const Tensors first = {m_sums.a - m_outside, m_sums.b - m_outside, m_sums.c - m_outside};
        replaceProducts<D>(first, in, out, m_derived.width);
    }

    ZmoiBorderType m_border;
    ptrdiff_t m_radius;
    ptrdiff_t m_outside;
    Region m_derived;  // the region, grown by the window where the border is in memory
    ptrdiff_t m_kept;  // rows; one of zeros follows them
    Rows m_make;
    D* m_gradients;
    ptrdiff_t m_made = 0;
    Tensors m_sums;
};

// As many pixels as are judged at a time: their sums stay in the first-level cache.
constexpr ptrdiff_t block = 256;

struct TensorBlock {
    double a[block];
    double b[block];
    double c[block];
};

// Sums of the window at one pixel, in the place where the next block starts.
struct Carry {
    double a;
    double b;
    double c;
};

[[gnu::noinline]] Carry firstWindow(const Tensors& columns, ptrdiff_t radius) {
    Carry sums = {0, 0, 0};
    for (ptrdiff_t x = -radius; x <= radius; ++x) {
        sums.a += columns.a[x];
        sums.b += columns.b[x];
        sums.c += columns.c[x];
    }
    return sums;
}

// The three chains of additions run beside each other.
[[gnu::noinline]] void sumAlong(const Tensors& columns, ptrdiff_t first, ptrdiff_t count,
                                ptrdiff_t radius, Carry& carry, TensorBlock& sums) {
    const double* const a = columns.a + first;
    const double* const b = columns.b + first;
    const double* const c = columns.c + first;
    Carry s = carry;
    for (ptrdiff_t x = 0; x < count; ++x) {
        sums.a[x] = s.a;
        sums.b[x] = s.b;
        sums.c[x] = s.c;
        s.a += a[x + radius + 1] - a[x - radius];
        s.b += b[x + radius + 1] - b[x - radius];
        s.c += c[x + radius + 1] - c[x - radius];
    }
    carry = s;
}

// Comparisons of doubles, which may raise a flag, keep a loop from being vectorised; signs do not.
inline double bySign(double sign, double ofPositive, double ofNegative) {
    const int64_t mask = bitsOf(sign) >> 63;
    return __builtin_bit_cast(double, (bitsOf(ofPositive) & ~mask) | (bitsOf(ofNegative) & mask));
}

inline float rounded(double value) {
    return withOneNan(static_cast<float>(bySign(__builtin_fabs(value) - 0x1p-126, value, 0)));
}

struct Eigenvalues {
    double larger;
    double smaller;
    double half;  // of their difference
};

inline Eigenvalues eigenvalues(double a, double b, double c) {
    const double mean = (a + c) * 0.5;
    const double d = (a - c) * 0.5;
    const double r = __builtin_sqrt(d * d + b * b);
    const double smaller = bySign((mean - r) - mean * 0x1p-48, mean - r, 0);
    // The sign of what is not a number says nothing: the second sum makes that win.
    return {mean + r, smaller + (mean - mean), r};
}

// Each of the three writes the results of a block.
struct MinEigenVal {
    static constexpr ptrdiff_t floats = 1;
    [[gnu::noinline]] static void judge(const TensorBlock& sums, ptrdiff_t count,
                                        const CornerShape&, Elem<float>* __restrict dst) {
        for (ptrdiff_t x = 0; x < count; ++x) {
            dst[x] = rounded(eigenvalues(sums.a[x], sums.b[x], sums.c[x]).smaller);
        }
    }
};

struct EigenValsVecs {
    static constexpr ptrdiff_t floats = 6;
    [[gnu::noinline]] static void judge(const TensorBlock& sums, ptrdiff_t count,
                                        const CornerShape&, Elem<float>* __restrict dst) {
        float larger[block];
        float smaller[block];
        float along[block];
        float across[block];
        for (ptrdiff_t x = 0; x < count; ++x) {
            const double b = sums.b[x];
            const double d = (sums.a[x] - sums.c[x]) * 0.5;
            const Eigenvalues values = eigenvalues(sums.a[x], b, sums.c[x]);
            const double r = values.half;
            const double longer = __builtin_fabs(d) + r;
            const double u = bySign(0 - r, 1, bySign(d, longer, b)) + (r - r);
            const double v = bySign(0 - r, 0, bySign(d, b, longer)) + (r - r);
            const double q = 1 / __builtin_sqrt(u * u + v * v);
            larger[x] = rounded(values.larger);
            smaller[x] = rounded(values.smaller);
            along[x] = rounded(u * q);
            across[x] = rounded(v * q);
        }
        for (ptrdiff_t x = 0; x < count; ++x) {
            dst[6 * x] = larger[x];
            dst[6 * x + 1] = smaller[x];
            dst[6 * x + 2] = along[x];
            dst[6 * x + 3] = across[x];
            dst[6 * x + 4] = 0 - across[x];
            dst[6 * x + 5] = along[x];
        }
    }
};

struct HarrisResponse {
    static constexpr ptrdiff_t floats = 1;
    [[gnu::noinline]] static void judge(const TensorBlock& sums, ptrdiff_t count,
                                        const CornerShape& shape, Elem<float>* __restrict dst) {
        const double k = shape.k;
        const double scale = shape.scale;
        for (ptrdiff_t x = 0; x < count; ++x) {
            const double a = sums.a[x];
            const double b = sums.b[x];
            const double c = sums.c[x];
            const double trace = a + c;
            dst[x] = rounded(scale * ((a * c - b * b) - k * (trace * trace)));
        }
    }
};

template <class Judge, class Rows>
void judgeAll(Source src, Target dst, Region roi, Border border, const CornerShape& shape,
              void* buffer) {
    Carver memory(buffer);
    const ptrdiff_t radius = shape.windowRadius;
    WindowColumns<Rows, typename Rows::Value> columns(src, roi, border, radius, memory);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        columns.moveTo(y);
        Carry carry = firstWindow(columns.sums(), radius);
        for (ptrdiff_t x = 0; x < roi.width; x += block) {
            const ptrdiff_t count = roi.width - x < block ? roi.width - x : block;
            TensorBlock sums;
            sumAlong(columns.sums(), x, count, radius, carry, sums);
            Judge::judge(sums, count, shape, rowOf<float>(dst, y) + x * Judge::floats);
        }
    }
}

template <class Judge, class T>
void corners(Source src, Target dst, Region roi, Border border, const CornerShape& shape,
             void* buffer) {
    constexpr CornerKernel byDerivative[] = {judgeAll<Judge, Sobel3<T>>, judgeAll<Judge, Sobel5<T>>,
                                             judgeAll<Judge, Scharr3<T>>};
    byDerivative[static_cast<int>(shape.derivative)](src, dst, roi, border, shape, buffer);
}

}  // namespace

const CornerKernels cornerKernels = {
    {corners<MinEigenVal, uint8_t>, corners<MinEigenVal, float>},
    {corners<EigenValsVecs, uint8_t>, corners<EigenValsVecs, float>},
    {corners<HarrisResponse, uint8_t>, corners<HarrisResponse, float>}};

}  // namespace zmo::ZMO_LEVEL
