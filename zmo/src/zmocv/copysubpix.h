// Windows at fractional positions: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Where a window lies in the image: its first pixel at (left + fx, top + fy), 0 <= fx, fy < 1. Far
// outside any offset beyond the image does.
struct SubpixPlace {
    ptrdiff_t left;
    ptrdiff_t top;
    float fx;
    float fy;
};

// scale counts for 8u16u only.
using CopySubpixKernel = void (*)(Source src, Region image, Target dst, Region window,
                                  SubpixPlace place, float scale);

enum SubpixTypes { subpix8u, subpix16u, subpix8u16u, subpix8u32f, subpix16u32f, subpix32f };

struct CopySubpixKernels {
    CopySubpixKernel at[6];
};
ZMO_LEVEL_TABLES(CopySubpixKernels, copySubpixKernels);

}  // namespace zmo
