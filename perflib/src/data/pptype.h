// The element types of test data: their codes and properties, and the dispatch
// from a code to the C++ type of its components.
#pragma once

#include <array>
#include <cfloat>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

// Bits 0-7 hold the bits of one component; 0 is undefined.
using ppType = int;

inline constexpr ppType ppTypeSigned = 0x100;
inline constexpr ppType ppTypeFloat = 0x200;
inline constexpr ppType ppTypeComplex = 0x400;

inline constexpr ppType pp8u = 8, pp16u = 16, pp32u = 32, pp64u = 64;
inline constexpr ppType pp8s = 264, pp16s = 272, pp32s = 288, pp64s = 320;
inline constexpr ppType pp32f = 544, pp64f = 576;
inline constexpr ppType pp16uc = 1040, pp8sc = 1288, pp16sc = 1296, pp32sc = 1312, pp64sc = 1344;
inline constexpr ppType pp32fc = 1568, pp64fc = 1600;

// An element of a complex type.
template <class T>
struct ppComplex {
    T re;
    T im;
};

struct ppTypeInfo {
    const char* name;
    ppType code;
    int zmoCode;  // the library's own code of the type
    double min;
    double max;  // what fills are limited to: 2^63 for every 64-bit integer type
    double minAbs;
    const char* format;  // of one element
};

inline constexpr double pp2to63 = 9223372036854775808.0;

inline constexpr std::array<ppTypeInfo, 17> ppTypes{{
    {"8u", pp8u, 1, 0, 255, 1, "%4u"},
    {"16u", pp16u, 5, 0, 65535, 1, "%6u"},
    {"32u", pp32u, 9, 0, 4294967295.0, 1, "%11u"},
    {"64u", pp64u, 15, 0, pp2to63, 1, "%24llu"},
    {"8s", pp8s, 3, -128, 127, 1, "%5d"},
    {"16s", pp16s, 7, -32768, 32767, 1, "%7d"},
    {"32s", pp32s, 11, -2147483648.0, 2147483647, 1, "%12d"},
    {"64s", pp64s, 17, -pp2to63, pp2to63, 1, "%24lld"},
    {"32f", pp32f, 13, -FLT_MAX, FLT_MAX, FLT_MIN, "%14.6g"},
    {"64f", pp64f, 19, -DBL_MAX, DBL_MAX, DBL_MIN, "%20.12g"},
    {"16uc", pp16uc, 8, 0, 65535, 1, " (%6u,%6u)"},  // the code of 16sc: the library has no 16uc
    {"8sc", pp8sc, 0, -128, 127, 1, " (%5d,%5d)"},
    {"16sc", pp16sc, 8, -32768, 32767, 1, " (%7d,%7d)"},
    {"32sc", pp32sc, 12, -2147483648.0, 2147483647, 1, " (%12d,%12d)"},
    {"64sc", pp64sc, 18, -pp2to63, pp2to63, 1, " (%24lld,%24lld)"},
    {"32fc", pp32fc, 14, -FLT_MAX, FLT_MAX, FLT_MIN, " (%14.6g,%14.6g)"},
    {"64fc", pp64fc, 20, -DBL_MAX, DBL_MAX, DBL_MIN, " (%20.12g,%20.12g)"},
}};

// The row of a code; that of an unknown one has the name "undef", the range
// 0..1 and no format.
constexpr ppTypeInfo ppInfo(ppType type) {
    for (const ppTypeInfo& info : ppTypes) {
        if (info.code == type) return info;
    }
    return {"undef", type, 0, 0, 1.0, 0, nullptr};
}

constexpr bool ppIsFloat(ppType type) {
    return (type & ppTypeFloat) != 0;
}
constexpr bool ppIsSigned(ppType type) {
    return (type & ppTypeSigned) != 0;
}
constexpr bool ppIsComplex(ppType type) {
    return (type & ppTypeComplex) != 0;
}

// Bytes of one element.
constexpr int ppItem(ppType type) {
    return (type & 0xFF) / 8 * (ppIsComplex(type) ? 2 : 1);
}

// Data may lie on any byte.
template <class T>
T ppLoad(const void* p) {
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}
template <class T>
void ppStore(void* p, T value) {
    std::memcpy(p, &value, sizeof value);
}

// A double as an integer of 64 bits: truncated toward zero and saturated.
inline std::int64_t ppTruncate64(double value) {
    if (value >= pp2to63) return std::numeric_limits<std::int64_t>::max();
    if (value <= -pp2to63) return std::numeric_limits<std::int64_t>::min();
    return value == value ? static_cast<std::int64_t>(value) : 0;
}

// A double as a component: a real one is narrowed, an integer one keeps the low
// bits of the truncated value. It does not saturate at the component's width.
template <class T>
T ppConvert(double value) {
    if constexpr (std::floating_point<T>) {
        return static_cast<T>(value);
    } else {
        if constexpr (std::same_as<T, unsigned long long>) {
            if (value >= 2 * pp2to63) return std::numeric_limits<T>::max();
            if (value >= pp2to63) return static_cast<T>(value);
        }
        return static_cast<T>(ppTruncate64(value));
    }
}

// Calls visit(T()) with the C++ type T of the components of `type`; false for
// an unknown code.
template <class Visit>
bool ppVisitType(ppType type, Visit visit) {
    switch (type & ~ppTypeComplex) {
        case pp8u:
            return visit(static_cast<unsigned char>(0)), true;
        case pp8s:
            return visit(static_cast<signed char>(0)), true;
        case pp16u:
            return visit(static_cast<unsigned short>(0)), true;
        case pp16s:
            return visit(static_cast<short>(0)), true;
        case pp32u:
            return visit(0U), true;
        case pp32s:
            return visit(0), true;
        case pp64u:
            return visit(0ULL), true;
        case pp64s:
            return visit(0LL), true;
        case pp32f:
            return visit(0.0F), true;
        case pp64f:
            return visit(0.0), true;
        default:
            return false;
    }
}
