// Segmentation from markers: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// Work planes have a frame of one pixel. With N pixels in a plane and n in the region, the buffer
// holds for
//   watershed   N labels, N links, N levels (an int each), 2 n ints and 2 n 64-bit numbers for 32f
//   growing     N labels, 2 N links (an int each), N bytes of levels, N colours (4 bytes each)
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
