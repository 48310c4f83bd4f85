// Chamfer distances: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Lengths of the steps (1, 0), (1, 1) and (2, 1), the last for 5x5 only. Integer kernels take
// integers no larger than the destination's largest value.
struct ChamferSteps {
    float straight;
    float diagonal;
    float knight;
};

using ChamferKernel = void (*)(Source src, Target dst, Region roi, ChamferSteps steps);

// By mask (3x3, 5x5) and destination (8u, 16u, 32f). The source of the first may be its
// destination.
struct ChamferKernels {
    ChamferKernel at[2][3];
};
ZMO_LEVEL_TABLES(ChamferKernels, chamferKernels);

}  // namespace zmo
