// Deviations in a moving rectangle: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// A cell of a table, relative to the one that belongs to the destination's pixel.
struct Cell {
    ptrdiff_t x;
    ptrdiff_t y;
};

// A sum over the rectangle is (farthest - far) - (near - nearest).
struct Corners {
    Cell farthest;
    Cell far;
    Cell near;
    Cell nearest;
};

struct RectStdDevArgs {
    Source sums;
    Source squares;
    Target dst;
    Region roi;
    Corners corners;
    double count;  // pixels in the rectangle
    double scale;  // for 32s results only
};

struct RectStdDevKernels {
    void (*from32s32sTo32s)(const RectStdDevArgs& args);
    void (*from32s64fTo32f)(const RectStdDevArgs& args);
    void (*from32f64fTo32f)(const RectStdDevArgs& args);
};
ZMO_LEVEL_TABLES(RectStdDevKernels, rectStdDevKernels);

}  // namespace zmo
