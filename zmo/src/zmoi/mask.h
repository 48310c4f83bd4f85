// Filters with fixed masks: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// buffer holds maskBufferSize(width) bytes.
using MaskKernel = void (*)(Source src, Target dst, Region roi, Border border, void* buffer);

// For masks of 3x3 and 5x5.
struct MaskKernelPair {
    MaskKernel at[2];
};

struct MaskKernels {
    MaskKernelPair sobelVert8u;
    MaskKernelPair sobelHoriz8u;
    MaskKernelPair sobelVert32f;
    MaskKernelPair sobelHoriz32f;
    MaskKernelPair sobelCross32f;
    MaskKernelPair laplacian8u;
    MaskKernelPair laplacian32f;
    MaskKernelPair lowpass8u;
    MaskKernelPair lowpass32f;
};
ZMO_LEVEL_TABLES(MaskKernels, maskKernels);

}  // namespace zmo
