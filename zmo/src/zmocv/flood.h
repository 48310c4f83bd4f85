// Flood fills: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

enum FloodRule { floodEqual, floodRange, floodGradient };

// first..end-1 of a row.
struct FloodSpan {
    int y;
    int first;
    int end;
};

// The buffer holds a span for every pixel, a byte for every pixel and one for every row. value and
// the deltas point to elements of the image's type.
using FloodKernel = void (*)(Target image, Region roi, ZmoiPoint seed, const void* value,
                             const void* minDelta, const void* maxDelta, int connectivity,
                             ZmoiFloodRegion* region, void* buffer);

// Entries by element type: 8u, 32s (equal only), 32f.
struct FloodKernels {
    FloodKernel equal[3];
    FloodKernel range[2];
    FloodKernel gradient[2];
};
ZMO_LEVEL_TABLES(FloodKernels, floodKernels);

}  // namespace zmo
