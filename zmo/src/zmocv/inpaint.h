// Inpainting: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"
#include "zmocv/front.h"

namespace zmo {

constexpr int inpaintRadius = 64;  // the largest one

// Neighbourhoods are read in blocks of columns, so that the work planes have margins: of a block
// more than the radius left and right, and of one row above and below.
constexpr int inpaintBlock = 8;
constexpr int inpaintColumns =
    (2 * inpaintRadius + 1 + inpaintBlock - 1) / inpaintBlock * inpaintBlock;

// True when the mask selects anything. The buffer holds a FrontPixel and an int for every pixel of
// the region; a float, a byte and one more a channel for every pixel of the planes; and two floats
// for each place of half a neighbourhood.
using InpaintKernel = bool (*)(Source src, Source mask, Target dst, Region roi, float radius,
                               void* buffer);

// By channels (1, 3).
struct InpaintKernels {
    InpaintKernel marching[2];
    InpaintKernel diffusion[2];
};
ZMO_LEVEL_TABLES(InpaintKernels, inpaintKernels);

}  // namespace zmo
