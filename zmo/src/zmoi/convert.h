// Conversion of element types: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

struct ConvertKernels {
    void (*from8uTo32f)(Source src, Target dst, Region roi);
};
ZMO_LEVEL_TABLES(ConvertKernels, convertKernels);

}  // namespace zmo
