#include "zmocv/add.h"

#include "common/blocks.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The weights of a new frame and of what is there.
struct Weights {
    float fresh;
    float old;
};

Weights weightsOf(float alpha) {
    return {alpha, 1.0F - alpha};
}

template <AddUse use>
inline float grown(float acc, float a, float b, Weights weights) {
    if (use == addSquare) return acc + a * a;
    if (use == addProduct) return acc + a * b;
    if (use == addWeighted) return a * weights.fresh + acc * weights.old;
    return acc + a;
}

// The sum for elements of type T; of integers none is NaN.
template <AddUse use, class T>
inline float grownBy(float acc, T a, T b, Weights weights) {
    const float sum = grown<use>(acc, static_cast<float>(a), static_cast<float>(b), weights);
    return T(0.5F) == 0 ? sum : withOneNan(sum);
}

// src2 is read for addProduct only.
template <AddUse use, class T>
void addRow(const Elem<T>* __restrict src, const Elem<T>* __restrict src2,
            Elem<float>* __restrict acc, ptrdiff_t count, Weights weights) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        const T b = use == addProduct ? src2[x] : T(0);
        acc[x] = grownBy<use, T>(acc[x], src[x], b, weights);
    }
}

// Unselected pixels are computed as zeros, so that nothing in them can raise a floating-point flag,
// and then keep their bits.
template <AddUse use, class T>
void addSelected(const Elem<T>* __restrict src, const Elem<T>* __restrict src2,
                 const uint8_t* __restrict mask, Elem<float>* __restrict acc, ptrdiff_t count,
                 Weights weights) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        const int32_t chosen = mask[x] != 0 ? -1 : 0;
        const auto kept = [chosen](float value) { return floatOf(bitsOf(value) & chosen); };
        const float old = acc[x];
        const float b = use == addProduct ? kept(static_cast<float>(src2[x])) : 0.0F;
        const float a = kept(static_cast<float>(src[x]));
        const float sum = withOneNan(grown<use>(kept(old), a, b, weights));
        acc[x] = floatOf((bitsOf(sum) & chosen) | (bitsOf(old) & ~chosen));
    }
}

template <AddUse use, class T, bool masked>
bool add(Source src, Source src2, Source mask, Target acc, Region roi, float alpha) {
    const Weights weights = weightsOf(alpha);
    bool selected = !masked;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<T>* const a = rowOf<T>(src, y);
        const Elem<T>* const b = use == addProduct ? rowOf<T>(src2, y) : a;
        Elem<float>* const sums = rowOf<float>(acc, y);
        if (!masked) {
            addRow<use, T>(a, b, sums, roi.width, weights);
            continue;
        }
        const uint8_t* const chosen = rowOf<uint8_t>(mask, y);
        // Most masks are empty over long stretches.
        for (ptrdiff_t x = 0; x < roi.width; x += blockLength) {
            const ptrdiff_t count = blockAt(x, roi.width);
            if (!selectsAny(chosen + x, count)) continue;
            selected = true;
            addSelected<use, T>(a + x, b + x, chosen + x, sums + x, count, weights);
        }
    }
    return selected;
}

void blendRow(const Elem<float>* __restrict src, const Elem<float>* __restrict src2,
              Elem<float>* __restrict dst, ptrdiff_t count, Weights weights) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        dst[x] = grownBy<addWeighted, float>(src2[x], src[x], 0.0F, weights);
    }
}

void blend(Source src, Source src2, Target dst, Region roi, float alpha) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        blendRow(rowOf<float>(src, y), rowOf<float>(src2, y), rowOf<float>(dst, y), roi.width,
                 weightsOf(alpha));
    }
}

#define ZMO_ADD_TYPE(use, T) \
    { add<use, T, false>, add<use, T, true> }
#define ZMO_ADD_USE(use) \
    { ZMO_ADD_TYPE(use, uint8_t), ZMO_ADD_TYPE(use, uint16_t), ZMO_ADD_TYPE(use, float) }

}  // namespace

const AddKernels addKernels = {{ZMO_ADD_USE(addValue), ZMO_ADD_USE(addSquare),
                                ZMO_ADD_USE(addProduct), ZMO_ADD_USE(addWeighted)},
                               blend};

}  // namespace zmo::ZMO_LEVEL
