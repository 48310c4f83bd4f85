// Fast marching: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// A pixel that waits in the heap, at its index in the region.
struct MarchingPixel {
    float time;
    int index;
};

// The buffer holds a MarchingPixel and an int for every pixel.
struct MarchingKernels {
    void (*run)(Source src, Target dst, Region roi, float radius, void* buffer);
};
ZMO_LEVEL_TABLES(MarchingKernels, marchingKernels);

}  // namespace zmo
