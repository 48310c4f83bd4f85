#include "zmoi/sobel.h"

#include "common/kernel.h"

// Each mask is a column times a row: every destination row takes one pass down the columns of its
// source rows and one pass along the sums. Only a few sums at the ends depend on the border.
namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
struct SobelSum;
template <>
struct SobelSum<uint8_t> {
    using type = int16_t;
};
template <>
struct SobelSum<float> {
    using type = float;
};

// The values at -radius..radius are the arguments.
template <class D>
inline D smooth(D a, D b, D c) {
    return static_cast<D>((a + c) + 2 * b);
}
template <class D>
inline D smooth(D a, D b, D c, D d, D e) {
    return static_cast<D>(((a + e) + 4 * (b + d)) + 6 * c);
}
template <class D>
inline D differ(D a, D, D c) {
    return static_cast<D>(c - a);
}
template <class D>
inline D differ(D a, D b, D, D d, D e) {
    return static_cast<D>((e - a) + 2 * (d - b));
}

template <bool derive, class D, class... Rest>
inline D weigh(D first, Rest... rest) {
    if constexpr (derive) {
        return differ(first, rest...);
    } else {
        return smooth(first, rest...);
    }
}

template <class T, class D, bool derive>
void downColumns(const Elem<T>* const* rows, D* __restrict sums, ptrdiff_t count,
                 ptrdiff_t radius) {
    const Elem<T>* a = rows[0];
    const Elem<T>* b = rows[1];
    const Elem<T>* c = rows[2];
    if (radius == 1) {
        for (ptrdiff_t x = 0; x < count; ++x) {
            sums[x] = weigh<derive, D>(D(a[x]), D(b[x]), D(c[x]));
        }
        return;
    }
    const Elem<T>* d = rows[3];
    const Elem<T>* e = rows[4];
    for (ptrdiff_t x = 0; x < count; ++x) {
        sums[x] = weigh<derive, D>(D(a[x]), D(b[x]), D(c[x]), D(d[x]), D(e[x]));
    }
}

template <class D, ptrdiff_t radius, bool derive>
void alongRow(const D* __restrict sums, Elem<D>* __restrict dst, ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        if constexpr (radius == 1) {
            dst[x] = weigh<derive, D>(sums[x - 1], sums[x], sums[x + 1]);
        } else {
            dst[x] = weigh<derive, D>(sums[x - 2], sums[x - 1], sums[x], sums[x + 1], sums[x + 2]);
        }
    }
}

template <class T, class D, ptrdiff_t radius, bool derive>
D sumOfConstants(T value) {
    const D v = D(value);
    if constexpr (radius == 1) {
        return weigh<derive, D>(v, v, v);
    } else {
        return weigh<derive, D>(v, v, v, v, v);
    }
}

template <class D>
void extendSums(D* sums, ptrdiff_t width, ptrdiff_t radius, ZmoiBorderType border, D constant) {
    for (ptrdiff_t i = 1; i <= radius; ++i) {
        const ptrdiff_t right = width - 1 + i;
        if (border == zmoiBorderConst) {
            sums[-i] = constant;
            sums[right] = constant;
        } else if (border == zmoiBorderReplicate) {
            sums[-i] = sums[0];
            sums[right] = sums[width - 1];
        } else {
            sums[-i] = sums[mirrored(-i, width)];
            sums[right] = sums[mirrored(right, width)];
        }
    }
}

// The source row that stands for row y, which may lie outside.
template <class T>
const Elem<T>* extendedRow(Source src, ptrdiff_t y, ptrdiff_t height, ZmoiBorderType border,
                           const T* constantRow) {
    if ((y >= 0 && y < height) || border == zmoiBorderInMem) return rowOf<T>(src, y);
    if (border == zmoiBorderConst) return constantRow;
    const bool replicate = border == zmoiBorderReplicate;
    return rowOf<T>(src, replicate ? replicated(y, height) : mirrored(y, height));
}

template <class T, ptrdiff_t radius, bool alongX>
void sobel(Source src, Target dst, Region roi, Border border, void* buffer) {
    using D = typename SobelSum<T>::type;
    Carver memory(buffer);
    D* const sums = memory.take<D>(roi.width + 2 * radius) + radius;
    T* const constantRow = memory.take<T>(roi.width);
    D constantSum = 0;
    if (border.type == zmoiBorderConst) {
        const T value = *static_cast<const Elem<T>*>(border.value);
        for (ptrdiff_t x = 0; x < roi.width; ++x) constantRow[x] = value;
        constantSum = sumOfConstants<T, D, radius, !alongX>(value);
    }
    const ptrdiff_t outside = border.type == zmoiBorderInMem ? radius : 0;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<T>* rows[2 * radius + 1];
        for (ptrdiff_t j = -radius; j <= radius; ++j) {
            rows[j + radius] =
                extendedRow<T>(src, y + j, roi.height, border.type, constantRow) - outside;
        }
        downColumns<T, D, !alongX>(rows, sums - outside, roi.width + 2 * outside, radius);
        if (outside == 0) extendSums<D>(sums, roi.width, radius, border.type, constantSum);
        alongRow<D, radius, alongX>(sums, rowOf<D>(dst, y), roi.width);
    }
}

}  // namespace

const SobelKernels sobelKernels = {sobel<uint8_t, 1, true>,  sobel<uint8_t, 2, true>,
                                   sobel<uint8_t, 1, false>, sobel<uint8_t, 2, false>,
                                   sobel<float, 1, true>,    sobel<float, 2, true>,
                                   sobel<float, 1, false>,   sobel<float, 2, false>};

}  // namespace zmo::ZMO_LEVEL
