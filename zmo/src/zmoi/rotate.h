// Rotation: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// From destination to source: x = c u - s v, y = s u + c v with u = X - xShift, v = Y - yShift.
struct Rotation {
    double c;
    double s;
    double xShift;
    double yShift;
};

struct RotateKernels {
    void (*rotate8u)(Source src, Region srcRoi, Target dst, Region roi, Rotation rotation);
};
ZMO_LEVEL_TABLES(RotateKernels, rotateKernels);

}  // namespace zmo
