// Boundaries of segments: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

using BoundKernel = void (*)(Target image, Region roi, int value, int connectivity);

struct BoundKernels {
    BoundKernel mark8u;
    BoundKernel mark16u;
};
ZMO_LEVEL_TABLES(BoundKernels, boundKernels);

}  // namespace zmo
