// Canny edges: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// limits are for the compared size: |dx| + |dy| (L1) or dx dx + dy dy (L2). A pixel passes a limit
// when its size is greater. A 16s limit stays below the largest int, which stands for a size of
// 2^31.
template <class Limit>
using CannyKernel = void (*)(Source dx, Source dy, Target dst, Region roi, Limit low, Limit high,
                             void* buffer);

// From a picture.
using CannyBorderKernel = void (*)(Source src, Target dst, Region roi, Border border, int low,
                                   int high, void* buffer);

struct CannyKernels {
    CannyKernel<int> l1From16s;
    CannyKernel<int> l2From16s;
    CannyKernel<float> l1From32f;
    CannyKernel<float> l2From32f;
    CannyBorderKernel border[2][3];  // by norm and Derivative
};
ZMO_LEVEL_TABLES(CannyKernels, cannyKernels);

// A pixel on the stack of pixels whose neighbours are still to be looked at.
using CannyPixel = uint64_t;

}  // namespace zmo
