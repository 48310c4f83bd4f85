// What lies around an image, for filters that read a window.
#pragma once

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The source row that stands for row y, which may lie outside.
template <class T>
const Elem<T>* extendedRow(Source src, ptrdiff_t y, ptrdiff_t height, ZmoiBorderType border,
                           const T* constantRow) {
    if ((y >= 0 && y < height) || border == zmoiBorderInMem) return rowOf<T>(src, y);
    if (border == zmoiBorderConst) return constantRow;
    const bool replicate = border == zmoiBorderReplicate;
    return rowOf<T>(src, replicate ? replicated(y, height) : mirrored(y, height));
}

// A row of the border's value, for zmoiBorderConst only.
template <class T>
void fillConstantRow(T* row, ptrdiff_t width, ptrdiff_t channels, Border border) {
    if (border.type != zmoiBorderConst) return;
    const Elem<T>* const value = static_cast<const Elem<T>*>(border.value);
    for (ptrdiff_t x = 0; x < width; ++x) {
        for (ptrdiff_t c = 0; c < channels; ++c) row[x * channels + c] = value[c];
    }
}

// Writes the pixels before and after a row that is not a border in memory. Filters that have summed
// the columns already extend the sums: constants are the sums of a column of the border's value.
template <class T>
void extendRow(T* row, ptrdiff_t width, ptrdiff_t channels, ptrdiff_t before, ptrdiff_t after,
               ZmoiBorderType border, const T* constants) {
    const auto extend = [=](ptrdiff_t x) {
        const ptrdiff_t inside =
            border == zmoiBorderReplicate ? replicated(x, width) : mirrored(x, width);
        const T* const from = border == zmoiBorderConst ? constants : row + inside * channels;
        for (ptrdiff_t c = 0; c < channels; ++c) row[x * channels + c] = from[c];
    };
    for (ptrdiff_t x = -before; x < 0; ++x) extend(x);
    for (ptrdiff_t x = width; x < width + after; ++x) extend(x);
}

}  // namespace
}  // namespace zmo::ZMO_LEVEL
