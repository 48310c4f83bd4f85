// Helpers of kernel sources. Everything here has internal linkage inside the level's namespace, so
// that each level keeps its own compiled copy. Kernel sources include no other library headers than
// <stdint.h> and <stddef.h>.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/image.h"

#ifndef ZMO_LEVEL
#error "kernel sources are compiled once a processor level, with ZMO_LEVEL defined as its name"
#endif

namespace zmo::ZMO_LEVEL {
namespace {

// Elem<T> is T at any address. Image data is accessed through it only.
template <class T>
struct Unaligned;
template <>
struct Unaligned<uint8_t> {
    typedef uint8_t type __attribute__((may_alias));
};
template <>
struct Unaligned<int8_t> {
    typedef int8_t type __attribute__((may_alias));
};
template <>
struct Unaligned<uint16_t> {
    typedef uint16_t type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<int16_t> {
    typedef int16_t type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<uint32_t> {
    typedef uint32_t type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<int32_t> {
    typedef int32_t type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<uint64_t> {
    typedef uint64_t type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<int64_t> {
    typedef int64_t type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<float> {
    typedef float type __attribute__((aligned(1), may_alias));
};
template <>
struct Unaligned<double> {
    typedef double type __attribute__((aligned(1), may_alias));
};
template <class T>
using Elem = typename Unaligned<T>::type;

template <class T>
[[maybe_unused]] const Elem<T>* rowOf(Source image, ptrdiff_t y) {
    return reinterpret_cast<const Elem<T>*>(static_cast<const char*>(image.data) + y * image.step);
}

template <class T>
[[maybe_unused]] Elem<T>* rowOf(Target image, ptrdiff_t y) {
    return reinterpret_cast<Elem<T>*>(static_cast<char*>(image.data) + y * image.step);
}

// Cuts arrays off the caller's work buffer, each on a 64-byte boundary. A size query adds 63 bytes
// for every array and 64 for the start.
class Carver {
  public:
    explicit Carver(void* buffer) : m_next(static_cast<char*>(buffer)) {}

    template <class T>
    T* take(ptrdiff_t count) {
        const uintptr_t misalign = reinterpret_cast<uintptr_t>(m_next) & 63;
        char* const start = m_next + ((64 - misalign) & 63);
        m_next = start + static_cast<size_t>(count) * sizeof(T);
        return reinterpret_cast<T*>(start);
    }

  private:
    char* m_next;
};

// Which of two NaNs a sum or product passes on depends on the order that the compiler puts the
// operands in. Results that may have met two are the same at all levels after this.
[[maybe_unused]] float withOneNan(float value) {
    return value == value ? value : __builtin_nanf("");
}

// The bits of a number, and back.
[[maybe_unused]] inline int32_t bitsOf(float value) {
    return __builtin_bit_cast(int32_t, value);
}
[[maybe_unused]] inline int64_t bitsOf(double value) {
    return __builtin_bit_cast(int64_t, value);
}
[[maybe_unused]] inline float floatOf(int32_t bits) {
    return __builtin_bit_cast(float, bits);
}

constexpr float largestFloat = 3.40282347e38F;

// Rounded half to even, at every level by the same two sums: the first leaves no room for a
// fraction. The value lies between -2^22 and 2^22.
[[maybe_unused]] inline int32_t wholeOf(float value) {
    return static_cast<int32_t>((value + 0x1.8p23F) - 0x1.8p23F);
}

// The coordinate inside 0..n-1 whose pixel stands for coordinate i under a replicated border.
[[maybe_unused]] ptrdiff_t replicated(ptrdiff_t i, ptrdiff_t n) {
    return i < 0 ? 0 : i < n ? i : n - 1;
}

// The same under a mirrored border.
[[maybe_unused]] ptrdiff_t mirrored(ptrdiff_t i, ptrdiff_t n) {
    if (n == 1) return 0;
    const ptrdiff_t period = 2 * (n - 1);
    i %= period;
    if (i < 0) i += period;
    return i < n ? i : period - i;
}

}  // namespace
}  // namespace zmo::ZMO_LEVEL
