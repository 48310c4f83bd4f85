// Rows in short blocks, for kernels that reduce an image to a few numbers: one channel laid side by
// side in a buffer, unselected pixels replaced, so that the loops which reduce it know neither
// channels nor mask. A block stays in the first-level cache. One call a block costs nothing;
// inlined into every kernel, these loops would make the library several times larger.
#pragma once

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// 256 bytes sum to less than 2^16 and 256 values of 16 bits to less than 2^32, so that sums over a
// block fit narrow integers, of which a vector holds more. A multiple of 8: in every block a
// pixel's lane is its column modulo 8.
constexpr ptrdiff_t blockLength = 256;

[[maybe_unused]] ptrdiff_t blockAt(ptrdiff_t x, ptrdiff_t width) {
    return width - x < blockLength ? width - x : blockLength;
}

[[maybe_unused, gnu::noinline]] bool selectsAny(const uint8_t* mask, ptrdiff_t count) {
    uint8_t any = 0;
    for (ptrdiff_t i = 0; i < count; ++i) any = static_cast<uint8_t>(any | mask[i]);
    return any != 0;
}

[[maybe_unused, gnu::noinline]] uint32_t countSelected(const uint8_t* mask, ptrdiff_t count) {
    uint16_t selected = 0;
    for (ptrdiff_t i = 0; i < count; ++i) {
        selected = static_cast<uint16_t>(selected + (mask[i] != 0));
    }
    return selected;
}

// Fills block[0..count-1] with one channel of count pixels; `other` stands where the mask (may be
// null) selects nothing, and up to the next multiple of 8.
template <class T, int channels>
[[gnu::noinline]] void loadBlock(T* __restrict block, const Elem<T>* __restrict pixels,
                                 const uint8_t* __restrict mask, ptrdiff_t count, T other) {
    if (channels == 1 && mask != nullptr) {
        for (ptrdiff_t i = 0; i < count; ++i) {
            const T value = pixels[i];
            block[i] = mask[i] != 0 ? value : other;
        }
    } else {
        for (ptrdiff_t i = 0; i < count; ++i) block[i] = pixels[i * channels];
        if (mask != nullptr) {
            for (ptrdiff_t i = 0; i < count; ++i) block[i] = mask[i] != 0 ? block[i] : other;
        }
    }
    for (ptrdiff_t i = count; i % 8 != 0; ++i) block[i] = other;
}

// The same block where it can be read: in the image itself when nothing has to be moved or
// replaced.
template <class T, int channels>
const Elem<T>* readBlock(T* memory, const Elem<T>* pixels, const uint8_t* mask, ptrdiff_t count,
                         T other) {
    if (channels == 1 && mask == nullptr && count % 8 == 0) return pixels;
    loadBlock<T, channels>(memory, pixels, mask, count, other);
    return memory;
}

[[maybe_unused, gnu::noinline]] uint32_t sumOf(const Elem<uint8_t>* block, ptrdiff_t count) {
    uint16_t sum = 0;
    for (ptrdiff_t i = 0; i < count; ++i) sum = static_cast<uint16_t>(sum + block[i]);
    return sum;
}
[[maybe_unused, gnu::noinline]] uint32_t sumOf(const Elem<uint16_t>* block, ptrdiff_t count) {
    uint32_t sum = 0;
    for (ptrdiff_t i = 0; i < count; ++i) sum += block[i];
    return sum;
}

[[maybe_unused, gnu::noinline]] uint64_t sumOfSquares(const Elem<uint8_t>* block, ptrdiff_t count) {
    int sum = 0;
    for (ptrdiff_t i = 0; i < count; ++i) {
        const int16_t value = block[i];
        sum += value * value;
    }
    return static_cast<uint64_t>(sum);
}
[[maybe_unused, gnu::noinline]] uint64_t sumOfSquares(const Elem<uint16_t>* block,
                                                      ptrdiff_t count) {
    uint64_t sum = 0;
    for (ptrdiff_t i = 0; i < count; ++i) {
        const uint32_t value = block[i];
        sum += value * value;
    }
    return sum;
}

// Eight sums in double precision, by column modulo 8.
struct Lanes {
    double at[8];
};

[[maybe_unused]] double folded(const Lanes& lanes) {
    const double* a = lanes.at;
    return ((a[0] + a[1]) + (a[2] + a[3])) + ((a[4] + a[5]) + (a[6] + a[7]));
}

// Adds term(i) for each i up to the next multiple of 8 to lane i modulo 8. Eight named variables
// become vectors at every level; an array of eight stays in memory at some.
template <class Term>
inline void addTerms(Lanes& lanes, ptrdiff_t count, Term term) {
    double* const a = lanes.at;
    double a0 = a[0], a1 = a[1], a2 = a[2], a3 = a[3];
    double a4 = a[4], a5 = a[5], a6 = a[6], a7 = a[7];
    for (ptrdiff_t i = 0; i < count; i += 8) {
        a0 += term(i);
        a1 += term(i + 1);
        a2 += term(i + 2);
        a3 += term(i + 3);
        a4 += term(i + 4);
        a5 += term(i + 5);
        a6 += term(i + 6);
        a7 += term(i + 7);
    }
    a[0] = a0, a[1] = a1, a[2] = a2, a[3] = a3;
    a[4] = a4, a[5] = a5, a[6] = a6, a[7] = a7;
}

}  // namespace
}  // namespace zmo::ZMO_LEVEL
