// Optical flow: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Each of `count` elements, at any address.
struct FlowPoints {
    const ZmoiPoint32f* from;
    ZmoiPoint32f* to;
    Zmo8u* found;
    Zmo32f* error;
    ptrdiff_t count;
};

struct FlowRules {
    ptrdiff_t window;  // odd
    int maxLevel;
    int maxIterations;
    float epsilon;
};

using FlowKernel = void (*)(const ZmoiPyramidLevels* first, const ZmoiPyramidLevels* second,
                            const FlowPoints* points, const FlowRules* rules, void* buffer);

struct FlowKernels {
    FlowKernel of[3];  // 8u, 16u, 32f
};
ZMO_LEVEL_TABLES(FlowKernels, flowKernels);

constexpr int mostFlowWindow = 127;

// Columns of a window in memory: whole lanes.
static constexpr ptrdiff_t flowColumns(ptrdiff_t window) {
    return (window + 7) / 8 * 8;
}

// Floats in the work buffer: the window of the first picture with a pixel around it, and its
// slopes. Gradients of padded columns read up to two pixels past the last row.
static constexpr ptrdiff_t flowPatchSize(ptrdiff_t window) {
    return flowColumns(window + 2) * (window + 2) + 8;
}
static constexpr ptrdiff_t flowSlopesSize(ptrdiff_t window) {
    return flowColumns(window) * window;
}

}  // namespace zmo
