// Fast marching: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"
#include "zmocv/front.h"

namespace zmo {

// The buffer holds a FrontPixel and an int for every pixel.
struct MarchingKernels {
    void (*run)(Source src, Target dst, Region roi, float radius, void* buffer);
};
ZMO_LEVEL_TABLES(MarchingKernels, marchingKernels);

}  // namespace zmo
