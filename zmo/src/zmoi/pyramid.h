// Layers of a pyramid: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

constexpr int pyramidMaxTaps = 31;
constexpr int pyramidMaxRate = 8;

struct PyramidTaps {
    short weights[pyramidMaxTaps];
    int size;
    int rate;
    int channels;
};

// Both regions count pixels of their own layer; the border lies around the source.
using PyramidKernel = void (*)(Source src, Region srcRoi, Target dst, Region roi, Border border,
                               const PyramidTaps* taps, void* buffer);

// 8u, 16u, 32f.
struct PyramidKernels {
    PyramidKernel down[3];
    PyramidKernel up[3];
};
ZMO_LEVEL_TABLES(PyramidKernels, pyramidKernels);

}  // namespace zmo
