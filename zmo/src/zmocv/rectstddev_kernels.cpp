#include "zmocv/rectstddev.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The cells of a table's four corners for the pixels of one row.
template <class T>
struct CornerRows {
    const Elem<T>* farthest;
    const Elem<T>* far;
    const Elem<T>* near;
    const Elem<T>* nearest;
};

template <class T>
CornerRows<T> cornersAt(Source table, const Corners& c, ptrdiff_t y) {
    const auto cell = [&](Cell at) { return rowOf<T>(table, y + at.y) + at.x; };
    return {cell(c.farthest), cell(c.far), cell(c.near), cell(c.nearest)};
}

double sumAt(const CornerRows<int32_t>& c, ptrdiff_t x) {
    const auto wrapped = [x](const Elem<int32_t>* cells) {
        return static_cast<uint32_t>(cells[x]);
    };
    return static_cast<int32_t>((wrapped(c.farthest) - wrapped(c.far)) -
                                (wrapped(c.near) - wrapped(c.nearest)));
}
// Squares in 32s: the sum is not negative. Only signed numbers convert in one instruction.
double sumAt(const CornerRows<uint32_t>& c, ptrdiff_t x) {
    const uint32_t sum = (c.farthest[x] - c.far[x]) - (c.near[x] - c.nearest[x]);
    return static_cast<int32_t>(sum ^ 0x80000000U) + 0x1p31;
}
template <class T>
double sumAt(const CornerRows<T>& c, ptrdiff_t x) {
    return (static_cast<double>(c.farthest[x]) - c.far[x]) -
           (static_cast<double>(c.near[x]) - c.nearest[x]);
}

struct Scaling {
    double count;
    double reciprocal;  // of the square of count
    double scale;
};

template <class D>
D deviation(double distances, const Scaling& scaling);
template <>
float deviation(double distances, const Scaling& scaling) {
    return __builtin_sqrtf(static_cast<float>(distances * scaling.reciprocal));
}
template <>
int32_t deviation(double distances, const Scaling& scaling) {
    constexpr double largest = INT32_MAX;
    constexpr double ulpIsOne = 0x1.8p52;
    const double value = __builtin_sqrt(distances) / scaling.count * scaling.scale;
    const double shifted = (value < largest ? value : largest) + ulpIsOne;
    return static_cast<int32_t>(bitsOf(shifted));
}

template <class T, class Q, class D>
void deviationRow(CornerRows<T> sums, CornerRows<Q> squares, Elem<D>* __restrict dst,
                  ptrdiff_t width, Scaling scaling) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        const double sum = sumAt(sums, x);
        const double distances = scaling.count * sumAt(squares, x) - sum * sum;
        dst[x] = deviation<D>(distances > 0 ? distances : 0, scaling);
    }
}

template <class T, class Q, class D>
void deviations(const RectStdDevArgs& a) {
    const Scaling scaling{a.count, 1 / (a.count * a.count), a.scale};
    for (ptrdiff_t y = 0; y < a.roi.height; ++y) {
        deviationRow<T, Q, D>(cornersAt<T>(a.sums, a.corners, y),
                              cornersAt<Q>(a.squares, a.corners, y), rowOf<D>(a.dst, y),
                              a.roi.width, scaling);
    }
}

}  // namespace

const RectStdDevKernels rectStdDevKernels = {deviations<int32_t, uint32_t, int32_t>,
                                             deviations<int32_t, double, float>,
                                             deviations<float, double, float>};

}  // namespace zmo::ZMO_LEVEL
