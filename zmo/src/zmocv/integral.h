// Tables of sums: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Fills a table of roi.width + 1 columns and roi.height + 1 rows. start fits the table's type.
using TableKernel = void (*)(Source src, Target table, Region roi, double start);

// What is summed and into which type.
enum TableContent { values32s, values32f, squares32s, squares64f, tableContents };

// Of 8u: upright or tilted first. of32f: upright values of a 32f picture into 32f.
struct IntegralKernels {
    TableKernel of8u[2][tableContents];
    TableKernel of32f;
};
ZMO_LEVEL_TABLES(IntegralKernels, integralKernels);

}  // namespace zmo
