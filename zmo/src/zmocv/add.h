// Accumulation of frames: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

enum AddUse { addValue, addSquare, addProduct, addWeighted };

// src2 counts for addProduct only, alpha for addWeighted only. Tells whether any pixel was
// selected; mask.data counts for masked kernels only.
using AddKernel = bool (*)(Source src, Source src2, Source mask, Target acc, Region roi,
                           float alpha);

// By AddUse, element type (8u, 16u, 32f), plain or masked.
struct AddKernels {
    AddKernel at[4][3][2];
    void (*blend)(Source src, Source src2, Target dst, Region roi, float alpha);
};
ZMO_LEVEL_TABLES(AddKernels, addKernels);

}  // namespace zmo
