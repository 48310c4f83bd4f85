// Marking of speckles: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// value and maxDiff point to elements of the image's type. The buffer holds a 12-byte run and an
// int for every pixel, an int for each row and one more, and five rows of bytes.
using SpecklesKernel = void (*)(Target image, Region roi, const void* value, int maxSize,
                                const void* maxDiff, int connectivity, void* buffer);

// 8u, 16u, 16s, 32f.
struct SpecklesKernels {
    SpecklesKernel at[4];
};
ZMO_LEVEL_TABLES(SpecklesKernels, specklesKernels);

}  // namespace zmo
