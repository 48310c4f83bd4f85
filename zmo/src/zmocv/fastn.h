// Corners by the segment test: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

constexpr ptrdiff_t fastRadius = 3;
// Rows of scores that are alive at a time, with an empty pixel on either side.
constexpr ptrdiff_t fastRows = 3;

struct FastNKernels {
    // The number of corners in dst. The buffer holds fastRows rows of bytes.
    int64_t (*find)(Source src, Target dst, Region roi, int n, int threshold, bool suppress,
                    void* buffer);
    // The number of places in the list, of at most `room`; says whether there are more.
    int (*list)(Source map, ZmoiPoint* points, Region roi, int room, bool* more);
};
ZMO_LEVEL_TABLES(FastNKernels, fastNKernels);

}  // namespace zmo
