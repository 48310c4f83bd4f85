// Filters whose kernel is a column times a row: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Weights are floats where the filter computes in single precision, else 16-bit integers with a
// divisor. An anchor is the tap that lies on the pixel.
struct SeparableTaps {
    const void* row;
    const void* column;
    ptrdiff_t rowSize;
    ptrdiff_t columnSize;
    ptrdiff_t rowAnchor;
    ptrdiff_t columnAnchor;
    int64_t divisor;
    ptrdiff_t channels;
};

// buffer holds separableBufferSize bytes.
using SeparableKernel = void (*)(Source src, Target dst, Region roi, Border border,
                                 const SeparableTaps* taps, void* buffer);

struct SeparableKernels {
    SeparableKernel floats[4];    // 8u, 16s, 16u, 32f: single precision
    SeparableKernel integers[4];  // 8u, 8u16s, 16s, 16u: sums of 32 bits
    SeparableKernel wide[4];      // the same with sums beyond 32 bits
};
ZMO_LEVEL_TABLES(SeparableKernels, separableKernels);

}  // namespace zmo
