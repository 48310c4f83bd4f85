// Sobel derivatives: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// buffer holds sobelBufferSize(width) bytes.
using SobelKernel = void (*)(Source src, Target dst, Region roi, Border border, void* buffer);

struct SobelKernels {
    SobelKernel vert8u3x3;
    SobelKernel vert8u5x5;
    SobelKernel horiz8u3x3;
    SobelKernel horiz8u5x5;
    SobelKernel vert32f3x3;
    SobelKernel vert32f5x5;
    SobelKernel horiz32f3x3;
    SobelKernel horiz32f5x5;
};
ZMO_LEVEL_TABLES(SobelKernels, sobelKernels);

}  // namespace zmo
