// Rows of flags as runs of set and clear bytes, eight bytes a step. A byte is set when its lowest
// bit is.
#pragma once

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The first x in [x, end) whose flag, exclusive-or `flip`, is set; end when there is none. flip 0
// looks for a set byte, ~0 for a clear one.
[[maybe_unused]] ptrdiff_t findFlag(const uint8_t* flags, ptrdiff_t x, ptrdiff_t end,
                                    uint64_t flip) {
    constexpr uint64_t lowest = 0x0101010101010101U;
    for (; x + 8 <= end; x += 8) {
        uint64_t eight;
        __builtin_memcpy(&eight, flags + x, sizeof eight);
        const uint64_t found = (eight ^ flip) & lowest;
        if (found != 0) return x + (__builtin_ctzll(found) >> 3);
    }
    while (x < end && ((flags[x] ^ flip) & 1) == 0) ++x;
    return x;
}

[[maybe_unused]] ptrdiff_t findSet(const uint8_t* flags, ptrdiff_t x, ptrdiff_t end) {
    return findFlag(flags, x, end, 0);
}
[[maybe_unused]] ptrdiff_t findClear(const uint8_t* flags, ptrdiff_t x, ptrdiff_t end) {
    return findFlag(flags, x, end, ~uint64_t{0});
}

// The first x in [x, end) whose byte is not 0, whatever its bits; end when there is none.
[[maybe_unused]] ptrdiff_t findNonZero(const uint8_t* bytes, ptrdiff_t x, ptrdiff_t end) {
    for (; x + 8 <= end; x += 8) {
        uint64_t eight;
        __builtin_memcpy(&eight, bytes + x, sizeof eight);
        if (eight != 0) return x + (__builtin_ctzll(eight) >> 3);
    }
    while (x < end && bytes[x] == 0) ++x;
    return x;
}

// The row may lie on any byte, which no template argument says of its type: it comes without
// one, and the stores go through memcpy.
template <class T>
void fillRun(void* __restrict row, ptrdiff_t first, ptrdiff_t end, T value) {
    char* const bytes = static_cast<char*>(row);
    for (ptrdiff_t x = first; x < end; ++x) {
        __builtin_memcpy(bytes + x * static_cast<ptrdiff_t>(sizeof(T)), &value, sizeof(T));
    }
}

}  // namespace
}  // namespace zmo::ZMO_LEVEL
