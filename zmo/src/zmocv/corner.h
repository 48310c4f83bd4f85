// Corners from the structure tensor: what entry points and kernels share.
#pragma once

#include "common/differential.h"
#include "common/image.h"
#include "common/level.h"

namespace zmo {

struct CornerShape {
    Derivative derivative;
    ptrdiff_t windowRadius;
    // Of the response of Harris.
    double k;
    double scale;
};

// buffer holds cornerBufferSize bytes.
using CornerKernel = void (*)(Source src, Target dst, Region roi, Border border,
                              const CornerShape& shape, void* buffer);

// By element type: 8u, 32f.
struct CornerKernels {
    CornerKernel minEigenVal[2];
    CornerKernel eigenValsVecs[2];
    CornerKernel harris[2];
};
ZMO_LEVEL_TABLES(CornerKernels, cornerKernels);

}  // namespace zmo
