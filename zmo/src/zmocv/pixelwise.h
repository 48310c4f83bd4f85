// Functions of single pixels: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Tables of this family are by element type: 8u, 16u, 32f.
struct PixelwiseKernels {
    void (*absDiff[3])(Source src, Source src2, Target dst, Region roi);
    // value points to one element of the source's type.
    void (*absDiffC[3])(Source src, Target dst, Region roi, const void* value);
    // By ZmoNormType first.
    void (*colorToGray[3][3])(Source src, Target dst, Region roi);
    // History below `oldest` is forgotten.
    void (*motionHistory[3])(Source silhouette, Target history, Region roi, float timestamp,
                             float oldest);
};
ZMO_LEVEL_TABLES(PixelwiseKernels, pixelwiseKernels);

}  // namespace zmo
