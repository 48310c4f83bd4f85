#include "zmoi/pipeline.h"

#include "common/extend.h"
#include "common/taps.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class S, class A, class D, Add add = Add::exact>
void filterRows(Source src, void* const* dst, Region roi, Border border, const PipelineTaps* taps,
                void* buffer) {
    const ptrdiff_t channels = taps->channels;
    const ptrdiff_t before = taps->anchor;
    const ptrdiff_t after = taps->size - 1 - before;
    const ptrdiff_t count = roi.width * channels;
    const Quotient by = quotientBy(taps->divisor);
    S* const extended = Carver(buffer).take<S>((before + roi.width + after) * channels);
    S constants[4] = {};
    fillConstantRow(constants, 1, channels, border);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<S>* row = rowOf<S>(src, y);
        if (border.type != zmoiBorderInMem) {
            S* const inside = extended + before * channels;
            for (ptrdiff_t x = 0; x < count; ++x) inside[x] = row[x];
            extendRow<S>(inside, roi.width, channels, before, after, border.type, constants);
            row = inside;
        }
        filterRow<A, S, D, add>(static_cast<Elem<D>*>(dst[y]), count,
                                static_cast<const Elem<Weight<A>>*>(taps->weights), taps->size, by,
                                [=](ptrdiff_t i) { return row + (i - before) * channels; });
    }
}

template <class S, class A, class D, Add add = Add::exact>
void filterColumns(const void* const* src, Target dst, Region roi, const PipelineTaps* taps) {
    const Quotient by = quotientBy(taps->divisor);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        filterRow<A, S, D, add>(
            rowOf<D>(dst, y), roi.width * taps->channels,
            static_cast<const Elem<Weight<A>>*>(taps->weights), taps->size, by,
            [=](ptrdiff_t j) { return static_cast<const Elem<S>*>(src[y + j]); });
    }
}

}  // namespace

const PipelineKernels pipelineKernels = {
    filterRows<uint8_t, int32_t, int16_t>,
    filterRows<uint16_t, int32_t, uint16_t>,
    filterRows<int16_t, int32_t, int16_t>,
    filterRows<float, float, float>,
    filterRows<int16_t, int32_t, int16_t, Add::saturating16>,
    filterColumns<uint16_t, int32_t, uint16_t>,
    filterColumns<int16_t, int32_t, int16_t>,
    filterColumns<int16_t, int32_t, uint8_t>,
    filterColumns<int16_t, int32_t, int8_t>,
    filterColumns<float, float, float>,
    filterColumns<int16_t, int32_t, int16_t, Add::saturating16>};

}  // namespace zmo::ZMO_LEVEL
