// Straight lines: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// A cell that is a line; index counts the cells angle by angle.
struct HoughPeak {
    int32_t votes;
    int32_t index;
};

// Pixels are voted for in portions of this size.
constexpr int houghPortion = 2048;

struct HoughSpace {
    ptrdiff_t angles;
    ptrdiff_t distances;
};

// In memory the cells have an empty angle before the first and behind the last, and by angle an
// empty cell on either side and one that takes the votes out of range.
constexpr ptrdiff_t houghMargin = 3;

struct HoughArgs {
    Source edges;
    Region roi;
    HoughSpace space;
    const double* cosines;  // by angle, over the distance of neighbouring cells
    const double* sines;
    double offset;
    int32_t threshold;
    int32_t maxLines;
    HoughPeak* peaks;  // room for maxLines, strongest first
    // For the cells, two doubles and an int for each pixel of a portion, and a byte for each
    // distance.
    void* buffer;
};

struct HoughKernels {
    // The number of lines, also of those that found no room.
    int64_t (*run)(const HoughArgs& args);
};
ZMO_LEVEL_TABLES(HoughKernels, houghKernels);

}  // namespace zmo
