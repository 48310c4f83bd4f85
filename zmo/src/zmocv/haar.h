// Stages of cascades: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// The state lies in the caller's memory, on any byte: a head, the classifiers, and their rectangles
// in the same order. Numbers of either type are exact in double.
struct HaarHead {
    uint32_t kind;
    int32_t type;
    int32_t classifiers;
    int32_t rectangles;
    int32_t columns;   // of the table, that a window needs from its own cell on
    double magnitude;  // of all sums of low and high
};

struct HaarClassifier {
    double threshold;
    double low;
    double high;
    double rest;  // the most that the later classifiers can add
    int32_t rectangles;
};

// A sum over the rectangle is (farthest - far) - (near - nearest); cells are relative to the
// window's.
enum HaarCorner { haarFarthest, haarFar, haarNear, haarNearest, haarCorners };
struct HaarRectangle {
    int32_t x[haarCorners];
    int32_t y[haarCorners];
    double weight;
};

struct HaarArgs {
    Source sums;
    Source deviations;
    Target mask;
    Region roi;
    double threshold;
    double scale;   // of the classifiers' thresholds
    double slack;   // rounding errors in a sum of low and high are smaller
    int32_t count;  // of classifiers
    const char* classifiers;
    const char* rectangles;
};

struct HaarCount {
    int64_t selected;
    int64_t positive;
};

struct HaarKernels {
    HaarCount (*from32f)(const HaarArgs& args);
    HaarCount (*from32s)(const HaarArgs& args);
};
ZMO_LEVEL_TABLES(HaarKernels, haarKernels);

}  // namespace zmo
