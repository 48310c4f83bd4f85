// Morphological reconstruction: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// A pixel whose neighbours are still to be looked at.
struct ReconstructPixel {
    int32_t x;
    int32_t y;
};

// Work memory: the queue, a pixel and a byte for each pixel of the region.
constexpr ptrdiff_t reconstructBytesOfPixel = sizeof(ReconstructPixel) + 1;

using ReconstructKernel = void (*)(Source limit, Source marker, Target result, Region roi,
                                   int connectivity, void* buffer);

// By 8u, 16u, 32f, 64f.
struct ReconstructKernels {
    ReconstructKernel dilate[4];
    ReconstructKernel erode[4];
};
ZMO_LEVEL_TABLES(ReconstructKernels, reconstructKernels);

}  // namespace zmo
