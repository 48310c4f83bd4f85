// Pixels along a line: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// The line's steps from pixel to pixel, in bytes of the image, and its Bresenham counts: after
// `longer` steps `aside` has been added `shorter` times. 0 <= shorter <= longer.
struct LineSteps {
    ptrdiff_t along;
    ptrdiff_t aside;
    ptrdiff_t longer;
    ptrdiff_t shorter;
};

// first points to the line's first pixel.
using SampleLineKernel = void (*)(const void* first, LineSteps steps, void* line);

// By element size (1, 2, 4 bytes), one channel or three.
struct SampleLineKernels {
    SampleLineKernel at[3][2];
};
ZMO_LEVEL_TABLES(SampleLineKernels, sampleLineKernels);

}  // namespace zmo
