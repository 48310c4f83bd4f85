#include "zmocv/norm.h"

#include "common/blocks.h"
#include "common/wide.h"

// Unselected pixels are loaded as 0 and then have no influence on a norm. Blocks without any
// selected pixel are not read at all.
namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
[[gnu::noinline]] T largest(const Elem<T>* block, ptrdiff_t count) {
    T most = 0;
    for (ptrdiff_t i = 0; i < count; ++i) most = block[i] > most ? block[i] : most;
    return most;
}

// Two values at a time: a plain loop would stay scalar, since the order of comparisons decides what
// becomes of a NaN.
[[gnu::noinline]] double largest(const double* block, ptrdiff_t count) {
    typedef double Pair __attribute__((vector_size(16), aligned(8), may_alias));
    Pair most[4] = {};
    for (ptrdiff_t i = 0; i < count; i += 8) {
        for (int k = 0; k < 4; ++k) {
            const Pair next = *reinterpret_cast<const Pair*>(block + i + 2 * k);
            most[k] = most[k] < next ? next : most[k];
        }
    }
    const Pair left = most[0] < most[1] ? most[1] : most[0];
    const Pair right = most[2] < most[3] ? most[3] : most[2];
    const Pair both = left < right ? right : left;
    return both[0] < both[1] ? both[1] : both[0];
}

// The sizes of floats have the order of their bits without the sign.
[[gnu::noinline]] double largestSize(const float* block, ptrdiff_t count) {
    int32_t most = 0;
    for (ptrdiff_t i = 0; i < count; ++i) {
        const int32_t bits = bitsOf(block[i]) & 0x7fffffff;
        most = bits > most ? bits : most;
    }
    return floatOf(most);
}

// The maximum or sum over an image, fed block by block.
template <class T, ZmoNormType kind>
class Norm {
  public:
    [[gnu::noinline]] void add(const Elem<T>* a, ptrdiff_t count) {
        if constexpr (kind == zmoNormInf) {
            const T most = largest<T>(a, count);
            m_total = most > m_total ? most : m_total;
        } else {
            m_row += kind == zmoNormL1 ? sumOf(a, count) : sumOfSquares(a, count);
        }
    }

    [[gnu::noinline]] void addDifference(const T* __restrict a, const T* __restrict b,
                                         ptrdiff_t count) {
        T sizes[blockLength];
        for (ptrdiff_t i = 0; i < count; ++i) {
            const T high = a[i] > b[i] ? a[i] : b[i];
            const T low = a[i] > b[i] ? b[i] : a[i];
            sizes[i] = static_cast<T>(high - low);
        }
        add(sizes, count);
    }

    void endRow() {
        m_total += m_row;
        m_row = 0;
    }

    double total() const { return static_cast<double>(m_total); }

  private:
    uint64_t m_row = 0;
    uint128 m_total = 0;
};

template <ZmoNormType kind>
class Norm<float, kind> {
  public:
    [[gnu::noinline]] void add(const float* a, ptrdiff_t count) {
        if constexpr (kind == zmoNormInf) {
            raise(largestSize(a, count));
        } else {
            addTerms(m_row, count, [a](ptrdiff_t i) { return term(a[i]); });
        }
    }

    [[gnu::noinline]] void addDifference(const float* a, const float* b, ptrdiff_t count) {
        if constexpr (kind == zmoNormInf) {
            double sizes[blockLength];
            for (ptrdiff_t i = 0; i < (count + 7) / 8 * 8; ++i) {
                sizes[i] = __builtin_fabs(static_cast<double>(a[i]) - b[i]);
            }
            raise(largest(sizes, count));
        } else {
            addTerms(m_row, count,
                     [a, b](ptrdiff_t i) { return term(static_cast<double>(a[i]) - b[i]); });
        }
    }

    void endRow() {
        m_total += folded(m_row);
        m_row = {};
    }

    double total() const { return m_total; }

  private:
    static double term(double value) {
        return kind == zmoNormL1 ? __builtin_fabs(value) : value * value;
    }

    void raise(double size) { m_total = m_total < size ? size : m_total; }

    Lanes m_row = {};
    double m_total = 0;
};

template <class T, int channels, ZmoNormType kind, NormUse use>
void norm(Source src, Source src2, Source mask, Region roi, NormSums* sums) {
    Norm<T, kind> first;
    Norm<T, kind> divisor;
    T a[blockLength];
    T b[blockLength];
    bool selected = false;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const uint8_t* const chosen = rowOf<uint8_t>(mask, y);
        for (ptrdiff_t x = 0; x < roi.width; x += blockLength) {
            const ptrdiff_t count = blockAt(x, roi.width);
            if (!selectsAny(chosen + x, count)) continue;
            selected = true;
            loadBlock<T, channels>(a, rowOf<T>(src, y) + x * channels, chosen + x, count, T(0));
            if constexpr (use == normOfImage) {
                first.add(a, count);
            } else {
                loadBlock<T, channels>(b, rowOf<T>(src2, y) + x * channels, chosen + x, count,
                                       T(0));
                first.addDifference(a, b, count);
            }
            if constexpr (use == normOfBoth) divisor.add(b, count);
        }
        first.endRow();
        divisor.endRow();
    }
    *sums = {selected, first.total(), divisor.total()};
}

#define ZMO_NORM_TYPE(T, kind, use) \
    { norm<T, 1, kind, use>, norm<T, 3, kind, use> }
#define ZMO_NORM_KIND(kind, use)                                               \
    {                                                                          \
        ZMO_NORM_TYPE(uint8_t, kind, use), ZMO_NORM_TYPE(uint16_t, kind, use), \
            ZMO_NORM_TYPE(float, kind, use)                                    \
    }
#define ZMO_NORM_USE(use) \
    { ZMO_NORM_KIND(zmoNormInf, use), ZMO_NORM_KIND(zmoNormL1, use), ZMO_NORM_KIND(zmoNormL2, use) }

}  // namespace

const NormKernels normKernels = {
    {ZMO_NORM_USE(normOfImage), ZMO_NORM_USE(normOfDifference), ZMO_NORM_USE(normOfBoth)}};

}  // namespace zmo::ZMO_LEVEL
