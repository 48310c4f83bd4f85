// Checks of arguments, for entry points. They are made in the order of convention 6.
#pragma once

#include <climits>
#include <cmath>
#include <cstdint>

#include "zmotypes.h"

namespace zmo {

template <class... Pointers>
bool anyNull(const Pointers*... pointers) {
    return (... || (pointers == nullptr));
}

inline bool isEmpty(ZmoiSize roi) {
    return roi.width < 1 || roi.height < 1;
}
inline bool isEmpty(ZmoiSizeL roi) {
    return roi.width < 1 || roi.height < 1;
}

// width counts pixels of `channels` elements of T.
template <class T, int channels = 1>
bool badStep(int64_t step, int64_t width) {
    constexpr int64_t element = sizeof(T);
    return step < 1 || step % element != 0 || step / element / channels < width;
}

// False for what is not a number, without a floating-point flag.
inline bool isWithin(Zmo32f value, Zmo32f low, Zmo32f high) {
    return std::isgreaterequal(value, low) && std::islessequal(value, high);
}

inline bool isKnown(ZmoNormType norm) {
    return norm >= zmoNormInf && norm <= zmoNormL2;
}

inline bool isKnown(ZmoiBorderType border) {
    return border >= zmoiBorderReplicate && border <= zmoiBorderInMem;
}

inline bool isKnown(ZmoiMaskSize mask) {
    return mask == zmoiMask3x3 || mask == zmoiMask5x5;
}

inline bool isKnown(ZmoiNorm norm) {
    return norm == zmoiNormL1 || norm == zmoiNormL2;
}

// Stores a size of work memory that was computed in 64 bits.
inline ZmoStatus storeSize(int64_t bytes, int* pSize) {
    if (bytes > INT_MAX) return zmoStsTooLargeErr;
    *pSize = bytes < 64 ? 64 : static_cast<int>(bytes);
    return zmoStsNoErr;
}

}  // namespace zmo
