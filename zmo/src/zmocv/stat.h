// Extremes, means and deviations: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"
#include "common/wide.h"

namespace zmo {

// count 0: the mask selects nothing, and the rest is 0.

template <class T>
struct Extremes {
    bool selected;
    T min;
    T max;
    ZmoiPoint minPos;
    ZmoiPoint maxPos;
};

// The squares are summed only by kernels that are asked for them.
struct IntegerSums {
    uint64_t count;
    uint64_t sum;
    uint128 squares;
};

// distances is the sum of the squared distances to the mean.
struct FloatSums {
    uint64_t count;
    double sum;
    double distances;
};

template <class T>
struct SumsFor {
    using type = IntegerSums;
};
template <>
struct SumsFor<float> {
    using type = FloatSums;
};
template <class T>
using Sums = typename SumsFor<T>::type;

// The source points to the channel of interest of the first pixel; mask.data is null where there is
// no mask.
template <class T>
using ExtremesKernel = void (*)(Source src, Source mask, Region roi, Extremes<T>* result);
template <class T>
using SumsKernel = void (*)(Source src, Source mask, Region roi, Sums<T>* result);

// By one channel or three.
template <class T>
struct StatKernelsOf {
    ExtremesKernel<T> extremes[2];
    SumsKernel<T> mean[2];
    SumsKernel<T> meanAndDeviation[2];
};

struct StatKernels {
    StatKernelsOf<uint8_t> of8u;
    StatKernelsOf<uint16_t> of16u;
    StatKernelsOf<float> of32f;
};
ZMO_LEVEL_TABLES(StatKernels, statKernels);

}  // namespace zmo
