// First derivatives along x and y of a picture, row by row.
#pragma once

#include "common/mask.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
struct DerivativeOf;
template <>
struct DerivativeOf<uint8_t> {
    using type = int16_t;
};
template <>
struct DerivativeOf<float> {
    using type = float;
};

template <class T, class D, ptrdiff_t radius, Weights smoothing>
class DerivativeRows {
  public:
    using Pixel = T;
    using Value = D;

    DerivativeRows(Source src, Region roi, Border border, Carver& memory)
        : m_columns(src, roi, border, memory),
          m_width(roi.width),
          m_sums(memory.take<D>(roi.width + 2 * radius) + radius) {}

    void make(ptrdiff_t y, D* dx, D* dy) {
        m_columns.moveTo(y);
        m_columns.template sum<smoothing>(m_sums);
        alongRow<Weights::first>(dx);
        m_columns.template sum<Weights::first>(m_sums);
        alongRow<smoothing>(dy);
    }

  private:
    template <Weights weights>
    void alongRow(D* __restrict out) const {
        const D* const sums = m_sums;
        for (ptrdiff_t x = 0; x < m_width; ++x) out[x] = weighAlong<weights, radius>(sums + x);
    }

    ColumnSums<T, D, radius> m_columns;
    ptrdiff_t m_width;
    D* m_sums;
};

template <class T, class D = typename DerivativeOf<T>::type>
using Sobel3 = DerivativeRows<T, D, 1, Weights::smooth>;
template <class T, class D = typename DerivativeOf<T>::type>
using Sobel5 = DerivativeRows<T, D, 2, Weights::smooth>;
template <class T, class D = typename DerivativeOf<T>::type>
using Scharr3 = DerivativeRows<T, D, 1, Weights::scharr>;

}  // namespace
}  // namespace zmo::ZMO_LEVEL
