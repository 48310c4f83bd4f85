// Flat and grey-level morphology: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

// A point of the structuring element, seen from the first pixel of a destination row: data is that
// pixel's neighbour. shift, below 64, counts only for 1u rows, whose pixels have no address. value
// counts only for grey-level elements.
struct MorphTap {
    const void* data;
    int shift;
    float value;
};

// Bytes behind each work row: up to a multiple of this many are computed without a use, so that
// loops need no scalar rest. Twice as many can be read, and hold no not-a-numbers that would raise
// flags.
constexpr ptrdiff_t morphPadding = 64;

// Loops over rows, for one element type and one of minimum and maximum. Counts are elements; rows
// of 1u are words of 64 pixels, the first one in the most significant bit. Destinations may lie on
// any byte, except for words, and overlap nothing.
struct MorphLoops {
    void (*combine)(const void* a, const void* b, void* dst, ptrdiff_t count);
    // next = before with row, dst = next with suffix: one step of a running extremum.
    void (*sweep)(const void* before, const void* row, const void* suffix, void* next, void* dst,
                  ptrdiff_t count);
    // dst[i] = extremum of row[i + first + k stride], k from 0 to length - 1, length > 1. Words:
    // first and stride count pixels, and up to length / 64 + 4 words behind the last pixel are
    // read. scratch: three rows as long as the row, pitch bytes apart.
    void (*window)(const void* row, void* dst, ptrdiff_t count, ptrdiff_t first, ptrdiff_t stride,
                   ptrdiff_t length, void* scratch, ptrdiff_t pitch);
    void (*points)(const MorphTap* taps, ptrdiff_t tapCount, void* dst, ptrdiff_t count);
};

struct MorphKernels {
    // By MorphType.
    MorphLoops min[5];
    MorphLoops max[5];
    // dst = a - b, saturated.
    void (*difference[5])(const void* a, const void* b, void* dst, ptrdiff_t count);
    // Grey-level elements of 8u and 32f: extremum of the taps' pixels minus (min) or plus (max)
    // their values, saturated.
    void (*grayMin[2])(const MorphTap* taps, ptrdiff_t tapCount, void* dst, ptrdiff_t count);
    void (*grayMax[2])(const MorphTap* taps, ptrdiff_t tapCount, void* dst, ptrdiff_t count);
};
ZMO_LEVEL_TABLES(MorphKernels, morphKernels);

enum MorphType { morph8u, morph16u, morph16s, morph32f, morph1u };

}  // namespace zmo
