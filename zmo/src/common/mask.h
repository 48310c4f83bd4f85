// Fixed masks of 3x3 and 5x5 that are a column times a row, or such a product plus its transpose:
// every destination row takes one pass down the columns of its source rows and one pass along the
// sums. Only a few sums at the ends depend on the border.
#pragma once

#include "common/extend.h"

namespace zmo::ZMO_LEVEL {
namespace {

// smooth: 1 2 1 and 1 4 6 4 1; first: -1 0 1 and -1 -2 0 2 1; second: 1 -2 1 and 1 0 -2 0 1;
// scharr: 3 10 3 only.
enum class Weights { smooth, first, second, scharr };

// The values at -radius..radius are the arguments.
template <Weights weights, class A>
inline A weigh(A a, A b, A c) {
    if constexpr (weights == Weights::smooth) return static_cast<A>((a + c) + 2 * b);
    if constexpr (weights == Weights::first) return static_cast<A>(c - a);
    if constexpr (weights == Weights::scharr) return static_cast<A>(3 * (a + c) + 10 * b);
    return static_cast<A>((a + c) - 2 * b);
}
template <Weights weights, class A>
inline A weigh(A a, A b, A c, A d, A e) {
    if constexpr (weights == Weights::smooth)
        return static_cast<A>(((a + e) + 4 * (b + d)) + 6 * c);
    if constexpr (weights == Weights::first) return static_cast<A>((e - a) + 2 * (d - b));
    return static_cast<A>((a + e) - 2 * c);
}

template <class T, class A, Weights weights, ptrdiff_t radius>
void downColumns(const Elem<T>* const* rows, A* __restrict sums, ptrdiff_t count) {
    const Elem<T>* a = rows[0];
    const Elem<T>* b = rows[1];
    const Elem<T>* c = rows[2];
    if constexpr (radius == 1) {
        for (ptrdiff_t x = 0; x < count; ++x) sums[x] = weigh<weights>(A(a[x]), A(b[x]), A(c[x]));
    } else {
        const Elem<T>* d = rows[3];
        const Elem<T>* e = rows[4];
        for (ptrdiff_t x = 0; x < count; ++x) {
            sums[x] = weigh<weights>(A(a[x]), A(b[x]), A(c[x]), A(d[x]), A(e[x]));
        }
    }
}

template <Weights weights, ptrdiff_t radius, class A>
inline A weighAlong(const A* s) {
    if constexpr (radius == 1) {
        return weigh<weights>(s[-1], s[0], s[1]);
    } else {
        return weigh<weights>(s[-2], s[-1], s[0], s[1], s[2]);
    }
}

// A mask: its weights along x and along y. withTranspose adds the mask with x and y exchanged.
template <Weights x, Weights y, bool transpose = false>
struct Mask {
    static constexpr Weights alongX = x;
    static constexpr Weights alongY = y;
    static constexpr bool withTranspose = transpose;
};

// Sums down the columns of one row's window, with `radius` sums on either side of the region.
template <class T, class A, ptrdiff_t radius>
class ColumnSums {
  public:
    // Takes a row of T off the memory.
    ColumnSums(Source src, Region roi, Border border, Carver& memory)
        : m_src(src),
          m_roi(roi),
          m_border(border.type),
          m_outside(border.type == zmoiBorderInMem ? radius : 0),
          m_constantRow(memory.take<T>(roi.width)) {
        fillConstantRow(m_constantRow, roi.width, 1, border);
    }

    void moveTo(ptrdiff_t y) {
        for (ptrdiff_t j = -radius; j <= radius; ++j) {
            m_rows[j + radius] =
                extendedRow<T>(m_src, y + j, m_roi.height, m_border, m_constantRow) - m_outside;
        }
    }

    // Fills row[-radius] to row[width - 1 + radius].
    template <Weights weights>
    void sum(A* row) const {
        downColumns<T, A, weights, radius>(m_rows, row - m_outside, m_roi.width + 2 * m_outside);
        if (m_outside != 0) return;
        A constant = 0;
        if (m_border == zmoiBorderConst) {
            const Elem<T>* constants[] = {m_constantRow, m_constantRow, m_constantRow,
                                          m_constantRow, m_constantRow};
            downColumns<T, A, weights, radius>(constants, &constant, 1);
        }
        extendRow<A>(row, m_roi.width, 1, radius, radius, m_border, &constant);
    }

  private:
    Source m_src;
    Region m_roi;
    ZmoiBorderType m_border;
    ptrdiff_t m_outside;
    T* m_constantRow;
    const Elem<T>* m_rows[2 * radius + 1];
};

// Finish is a class with `static D of(A sum)`. The buffer holds maskBufferSize(roi.width) bytes.
template <class T, class A, class D, ptrdiff_t radius, class M, class Finish>
void filterByMask(Source src, Target dst, Region roi, Border border, void* buffer) {
    Carver memory(buffer);
    ColumnSums<T, A, radius> columns(src, roi, border, memory);
    A* const sums = memory.take<A>(roi.width + 2 * radius) + radius;
    A* const transposed =
        M::withTranspose ? memory.take<A>(roi.width + 2 * radius) + radius : nullptr;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        columns.moveTo(y);
        columns.template sum<M::alongY>(sums);
        Elem<D>* __restrict out = rowOf<D>(dst, y);
        if constexpr (M::withTranspose) {
            columns.template sum<M::alongX>(transposed);
            for (ptrdiff_t x = 0; x < roi.width; ++x) {
                out[x] = Finish::of(static_cast<A>(weighAlong<M::alongX, radius>(sums + x) +
                                                   weighAlong<M::alongY, radius>(transposed + x)));
            }
        } else {
            for (ptrdiff_t x = 0; x < roi.width; ++x) {
                out[x] = Finish::of(weighAlong<M::alongX, radius>(sums + x));
            }
        }
    }
}

template <class D>
struct Unchanged {
    static D of(D sum) { return sum; }
};

}  // namespace
}  // namespace zmo::ZMO_LEVEL
