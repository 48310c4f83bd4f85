// Inpainting: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"
#include "zmocv/front.h"

namespace zmo {

// The largest radius; weights by squared distance have an entry for each up to its square.
constexpr int inpaintRadius = 64;
constexpr int inpaintWeights = inpaintRadius * inpaintRadius + 1;

// True when the mask selects anything. The buffer holds a FrontPixel, an int and a float for every
// pixel, and two floats for each weight.
using InpaintKernel = bool (*)(Source src, Source mask, Target dst, Region roi, float radius,
                               void* buffer);

// By channels (1, 3).
struct InpaintKernels {
    InpaintKernel marching[2];
    InpaintKernel diffusion[2];
};
ZMO_LEVEL_TABLES(InpaintKernels, inpaintKernels);

}  // namespace zmo
