// Norms under a mask: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

enum NormUse { normOfImage, normOfDifference, normOfBoth };

// Maxima and sums, before a root or a quotient is taken. Sums are of squares for zmoNormL2.
struct NormSums {
    bool selected;   // false: the mask selects nothing
    double first;    // of the image or the difference
    double divisor;  // of the second image, for normOfBoth only
};

// The source points to the channel of interest of the first pixel; src2 counts for two of the uses.
using NormKernel = void (*)(Source src, Source src2, Source mask, Region roi, NormSums* sums);

// By NormUse, ZmoNormType, element type (8u, 16u, 32f), one channel or three.
struct NormKernels {
    NormKernel at[3][3][3][2];
};
ZMO_LEVEL_TABLES(NormKernels, normKernels);

}  // namespace zmo
