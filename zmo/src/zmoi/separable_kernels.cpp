#include "zmoi/separable.h"

#include "common/extend.h"
#include "common/taps.h"

// The columns of a destination row are summed into one row, which is extended by the border and
// filtered along. The row stays in cache, and every source pixel is multiplied once a tap.
namespace zmo::ZMO_LEVEL {
namespace {

template <class S, class A, class D>
void separable(Source src, Target dst, Region roi, Border border, const SeparableTaps* taps,
               void* buffer) {
    const ptrdiff_t channels = taps->channels;
    const ptrdiff_t before = taps->rowAnchor;
    const ptrdiff_t after = taps->rowSize - 1 - before;
    const auto* const rowWeights = static_cast<const Elem<Weight<A>>*>(taps->row);
    const auto* const columnWeights = static_cast<const Elem<Weight<A>>*>(taps->column);
    const Quotient by = quotientBy(taps->divisor);
    const bool inMemory = border.type == zmoiBorderInMem;
    Carver memory(buffer);
    A* const sums = memory.take<A>((before + roi.width + after) * channels) + before * channels;
    S* const constantRow = memory.take<S>(roi.width * channels);
    fillConstantRow(constantRow, roi.width, channels, border);
    A constantSums[4] = {};
    if (border.type == zmoiBorderConst) {
        sumRows<A, S>(constantSums, channels, columnWeights, taps->columnSize,
                      [=](ptrdiff_t) { return constantRow; });
    }
    const ptrdiff_t outside = inMemory ? before * channels : 0;
    const ptrdiff_t summed = (roi.width + (inMemory ? before + after : 0)) * channels;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        sumRows<A, S>(sums - outside, summed, columnWeights, taps->columnSize, [&](ptrdiff_t j) {
            return extendedRow<S>(src, y + j - taps->columnAnchor, roi.height, border.type,
                                  constantRow) -
                   outside;
        });
        if (!inMemory) {
            extendRow<A>(sums, roi.width, channels, before, after, border.type, constantSums);
        }
        filterRow<A, A, D>(rowOf<D>(dst, y), roi.width * channels, rowWeights, taps->rowSize, by,
                           [=](ptrdiff_t i) { return sums + (i - before) * channels; });
    }
}

}  // namespace

const SeparableKernels separableKernels = {
    {separable<uint8_t, float, uint8_t>, separable<int16_t, float, int16_t>,
     separable<uint16_t, float, uint16_t>, separable<float, float, float>},
    {separable<uint8_t, int32_t, uint8_t>, separable<uint8_t, int32_t, int16_t>,
     separable<int16_t, int32_t, int16_t>, separable<uint16_t, int32_t, uint16_t>},
    {separable<uint8_t, double, uint8_t>, separable<uint8_t, double, int16_t>,
     separable<int16_t, double, int16_t>, separable<uint16_t, double, uint16_t>}};

}  // namespace zmo::ZMO_LEVEL
