// Segmentation from markers: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Work planes have a frame of one pixel. With N pixels in a plane and n in the region, the buffer
// holds for
//   watershed   N cells of 8 bytes, N links (an int each); for 32f 2 n ints and 2 n 64-bit numbers
//   growing     N cells of 8 bytes, 2 N links
using WatershedKernel = void (*)(Source relief, Target markers, Region roi, int connectivity,
                                 bool drawLines, void* buffer);
using GrowKernel = void (*)(Source image, Target markers, Region roi, int connectivity,
                            void* buffer);

struct SegmentKernels {
    WatershedKernel watershed[3];  // 8u, 8u16u, 32f16u
    GrowKernel grow[2];            // by channels (1, 3)
};
ZMO_LEVEL_TABLES(SegmentKernels, segmentKernels);

}  // namespace zmo
