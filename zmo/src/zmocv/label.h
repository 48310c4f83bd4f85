// Labelling of markers: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// The buffer holds a 12-byte run for every other pixel of a row (rounded up), a row of bytes, and
// an int for each row and one more. Returns the number of components.
using LabelKernel = int (*)(Source src, Target dst, Region roi, int minLabel, int maxLabel,
                            int connectivity, void* buffer);

struct LabelKernels {
    LabelKernel from8uTo8u;
    LabelKernel from16uTo16u;
    LabelKernel from8uTo32s;
};
ZMO_LEVEL_TABLES(LabelKernels, labelKernels);

}  // namespace zmo
