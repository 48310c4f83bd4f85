#include "zmoi/rotate.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// Rounds half to even, for sizes far below 2^51: the sum has no bits left below the unit.
inline double roundHalfEven(double value) {
    constexpr double bias = 6755399441055744.0;
    return (value + bias) - bias;
}

inline double bilinear(Source src, Region roi, double x, double y) {
    const ptrdiff_t left = static_cast<ptrdiff_t>(x);
    const ptrdiff_t upper = static_cast<ptrdiff_t>(y);
    // Beyond the last column or row the weight is 0, and any readable pixel will do.
    const ptrdiff_t right = replicated(left + 1, roi.width);
    const ptrdiff_t lower = replicated(upper + 1, roi.height);
    const Elem<uint8_t>* const first = rowOf<uint8_t>(src, upper);
    const Elem<uint8_t>* const second = rowOf<uint8_t>(src, lower);
    const double f = x - static_cast<double>(left);
    const double g = y - static_cast<double>(upper);
    const double top = first[left] + f * (first[right] - first[left]);
    const double bottom = second[left] + f * (second[right] - second[left]);
    return top + g * (bottom - top);
}

void rotate8u(Source src, Region srcRoi, Target dst, Region roi, Rotation rotation) {
    const double xLast = static_cast<double>(srcRoi.width - 1);
    const double yLast = static_cast<double>(srcRoi.height - 1);
    for (ptrdiff_t row = 0; row < roi.height; ++row) {
        Elem<uint8_t>* const out = rowOf<uint8_t>(dst, row);
        const double v = static_cast<double>(row) - rotation.yShift;
        for (ptrdiff_t column = 0; column < roi.width; ++column) {
            const double u = static_cast<double>(column) - rotation.xShift;
            const double x = rotation.c * u - rotation.s * v;
            const double y = rotation.s * u + rotation.c * v;
            if (x >= 0 && x <= xLast && y >= 0 && y <= yLast) {
                out[column] = static_cast<uint8_t>(roundHalfEven(bilinear(src, srcRoi, x, y)));
            }
        }
    }
}

}  // namespace

const RotateKernels rotateKernels = {rotate8u};

}  // namespace zmo::ZMO_LEVEL
