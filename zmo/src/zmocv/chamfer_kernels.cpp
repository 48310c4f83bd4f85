#include "zmocv/chamfer.h"

#include "common/kernel.h"

// Each row takes the steps from the rows before it in a vectorised loop, then those along the row
// in a serial one.
namespace zmo::ZMO_LEVEL {
namespace {

// Sum is a type for a distance and a step.
template <class T>
struct Arithmetic;
template <>
struct Arithmetic<uint8_t> {
    using Sum = uint16_t;
    static constexpr uint16_t far = 255;
};
template <>
struct Arithmetic<uint16_t> {
    using Sum = uint32_t;
    static constexpr uint32_t far = 65535;
};
template <>
struct Arithmetic<float> {
    using Sum = float;
    static constexpr float far = largestFloat;
};
template <class T>
using Sum = typename Arithmetic<T>::Sum;

template <class T>
Sum<T> nearer(Sum<T> distance, T from, Sum<T> step) {
    const Sum<T> other = static_cast<Sum<T>>(from + step);
    return other < distance ? other : distance;
}

template <class T>
void markZeros(Elem<T>* row, const uint8_t* src, ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        row[x] = static_cast<T>(src[x] == 0 ? Sum<T>(0) : Arithmetic<T>::far);
    }
}

// Steps of dx columns to the left and to the right, from another row.
template <class T>
void stepSideways(Elem<T>* __restrict row, const Elem<T>* __restrict from, ptrdiff_t width,
                  ptrdiff_t dx, Sum<T> step) {
    if (width <= dx) return;
    for (ptrdiff_t x = 0; x < dx && x < width - dx; ++x) {
        row[x] = static_cast<T>(nearer<T>(row[x], from[x + dx], step));
    }
    for (ptrdiff_t x = dx; x < width - dx; ++x) {
        const Sum<T> once = nearer<T>(row[x], from[x - dx], step);
        row[x] = static_cast<T>(nearer<T>(once, from[x + dx], step));
    }
    for (ptrdiff_t x = width - dx > dx ? width - dx : dx; x < width; ++x) {
        row[x] = static_cast<T>(nearer<T>(row[x], from[x - dx], step));
    }
}

template <class T>
void stepStraight(Elem<T>* __restrict row, const Elem<T>* __restrict from, ptrdiff_t width,
                  Sum<T> step) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        row[x] = static_cast<T>(nearer<T>(row[x], from[x], step));
    }
}

template <class T>
void alongRow(Elem<T>* row, ptrdiff_t first, ptrdiff_t end, ptrdiff_t direction, Sum<T> step) {
    T last = row[first];
    for (ptrdiff_t x = first; x != end; x += direction) {
        last = static_cast<T>(nearer<T>(row[x], last, step));
        row[x] = last;
    }
}

// direction is 1 for the pass from the top, -1 for the one from the bottom.
template <class T, bool large>
void passRow(Target dst, Region roi, ptrdiff_t y, ptrdiff_t direction, ChamferSteps steps) {
    const Sum<T> straight = static_cast<Sum<T>>(steps.straight);
    const Sum<T> diagonal = static_cast<Sum<T>>(steps.diagonal);
    const Sum<T> knight = static_cast<Sum<T>>(steps.knight);
    const ptrdiff_t before = direction > 0 ? y : roi.height - 1 - y;  // rows
    Elem<T>* const row = rowOf<T>(dst, y);
    if (before > 0) {
        const Elem<T>* const from = rowOf<T>(dst, y - direction);
        stepStraight<T>(row, from, roi.width, straight);
        stepSideways<T>(row, from, roi.width, 1, diagonal);
        if (large) stepSideways<T>(row, from, roi.width, 2, knight);
    }
    if (large && before > 1) {
        stepSideways<T>(row, rowOf<T>(dst, y - 2 * direction), roi.width, 1, knight);
    }
    if (direction > 0) {
        alongRow<T>(row, 0, roi.width, 1, straight);
    } else {
        alongRow<T>(row, roi.width - 1, -1, -1, straight);
    }
}

template <class T, bool large>
void chamfer(Source src, Target dst, Region roi, ChamferSteps steps) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        markZeros<T>(rowOf<T>(dst, y), rowOf<uint8_t>(src, y), roi.width);
        passRow<T, large>(dst, roi, y, 1, steps);
    }
    for (ptrdiff_t y = roi.height - 1; y >= 0; --y) passRow<T, large>(dst, roi, y, -1, steps);
}

}  // namespace

const ChamferKernels chamferKernels = {
    {{chamfer<uint8_t, false>, chamfer<uint16_t, false>, chamfer<float, false>},
     {chamfer<uint8_t, true>, chamfer<uint16_t, true>, chamfer<float, true>}}};

}  // namespace zmo::ZMO_LEVEL
