// Exact Euclidean distances: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// The buffer holds two ints and two doubles for every column.
struct TrueDistanceKernels {
    void (*run)(Source src, Target dst, Region roi, void* buffer);
};
ZMO_LEVEL_TABLES(TrueDistanceKernels, trueDistanceKernels);

// Squares of sides that large, and their sums, are exact in double precision, and no rounding moves
// a quotient of the lower envelope across a whole column.
constexpr int mostTrueDistanceSide = 1 << 20;

}  // namespace zmo
