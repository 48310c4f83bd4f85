#include "zmoi/convert.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class T, class D>
void convertRow(const Elem<T>* __restrict src, Elem<D>* __restrict dst, ptrdiff_t count) {
    for (ptrdiff_t x = 0; x < count; ++x) dst[x] = static_cast<D>(src[x]);
}

template <class T, class D>
void convert(Source src, Target dst, Region roi) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        convertRow<T, D>(rowOf<T>(src, y), rowOf<D>(dst, y), roi.width);
    }
}

}  // namespace

const ConvertKernels convertKernels = {convert<uint8_t, float>};

}  // namespace zmo::ZMO_LEVEL
