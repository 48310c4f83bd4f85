// Suppression of responses on lines: what entry points and kernels share.
#pragma once

#include <stdint.h>

#include "common/image.h"
#include "common/level.h"

namespace zmo {

struct LineSuppressionArgs {
    Source picture;
    Source responses;
    Target dst;
    Region roi;
    int radius;
    int threshold;
    // Three rows of bytes and three of int32_t, each of width + 2 radius + 2.
    void* buffer;
};

struct LineSuppressionKernels {
    void (*run)(const LineSuppressionArgs& args);
};
ZMO_LEVEL_TABLES(LineSuppressionKernels, lineSuppressionKernels);

}  // namespace zmo
