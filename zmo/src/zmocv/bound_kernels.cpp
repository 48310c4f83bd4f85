#include "zmocv/bound.h"

#include "common/kernel.h"

// A pixel is compared only with later ones, none of which has been marked yet.
namespace zmo::ZMO_LEVEL {
namespace {

// `below` is the next row, or the row itself where there is none. reach is 1 for eight neighbours.
template <class T, int reach>
void markRow(Elem<T>* row, const Elem<T>* below, ptrdiff_t width, T value) {
    const auto markAt = [&](ptrdiff_t x, ptrdiff_t left, ptrdiff_t right) {
        const T label = row[x];
        bool differs = (row[right] != label) | (below[x] != label);
        if (reach != 0) differs |= (below[left] != label) | (below[right] != label);
        row[x] = differs ? value : label;
    };
    const ptrdiff_t last = width - 1;
    if (last == 0) {
        markAt(0, 0, 0);
        return;
    }
    markAt(0, 0, 1);
    for (ptrdiff_t x = 1; x < last; ++x) markAt(x, x - 1, x + 1);
    markAt(last, last - 1, last);
}

// The last row has no later neighbours but the one to the right.
template <class T>
void markLastRow(Elem<T>* row, ptrdiff_t width, T value) {
    for (ptrdiff_t x = 0; x < width - 1; ++x) {
        const T label = row[x];
        row[x] = row[x + 1] != label ? value : label;
    }
}

template <class T>
void markBounds(Target image, Region roi, int value, int connectivity) {
    const T mark = static_cast<T>(value);
    const auto markOne = connectivity == 8 ? markRow<T, 1> : markRow<T, 0>;
    for (ptrdiff_t y = 0; y < roi.height - 1; ++y) {
        markOne(rowOf<T>(image, y), rowOf<T>(image, y + 1), roi.width, mark);
    }
    markLastRow<T>(rowOf<T>(image, roi.height - 1), roi.width, mark);
}

}  // namespace

const BoundKernels boundKernels = {markBounds<uint8_t>, markBounds<uint16_t>};

}  // namespace zmo::ZMO_LEVEL
