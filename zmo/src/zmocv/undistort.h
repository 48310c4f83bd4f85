// Lens distortion: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

struct Camera {
    float fx, fy, cx, cy;
    float k1, k2, p1, p2;
};

// The buffer holds a float for each column.
using UndistortKernel = void (*)(Source src, Target dst, Region roi, const Camera* camera,
                                 void* buffer);

// radial by element type (8u, 16u, 32f) and channels (1, 3).
struct UndistortKernels {
    UndistortKernel radial[3][2];
    void (*map)(Target mapX, Target mapY, Region roi, const Camera* camera);
};
ZMO_LEVEL_TABLES(UndistortKernels, undistortKernels);

}  // namespace zmo
