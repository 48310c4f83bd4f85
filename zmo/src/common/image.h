// What entry points hand to kernels: plain records without member functions, because a shared
// inline function could be compiled for one level and called from another.
#pragma once

#include <stddef.h>

#include "zmotypes.h"

namespace zmo {

// Steps are in bytes.
struct Source {
    const void* data;
    ptrdiff_t step;
};

struct Target {
    void* data;
    ptrdiff_t step;
};

struct Region {
    ptrdiff_t width;
    ptrdiff_t height;
};

// value points to one element a channel, and only counts for zmoiBorderConst.
struct Border {
    ZmoiBorderType type;
    const void* value;
};

}  // namespace zmo
