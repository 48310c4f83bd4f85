// Checks of arguments, for entry points. They are made in the order of convention 6.
#pragma once

#include <climits>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "common/differential.h"
#include "common/image.h"
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

// As kernels take them.
template <class Size>
Region regionOf(Size roi) {
    return {static_cast<ptrdiff_t>(roi.width), static_cast<ptrdiff_t>(roi.height)};
}

// The image from the first element of its channel of interest, from 1.
template <class T>
Source channelOf(Source image, int coi) {
    return {static_cast<const char*>(image.data) + (coi - 1) * static_cast<int>(sizeof(T)),
            image.step};
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

// The same.
template <class T>
bool isPositive(T value) {
    if constexpr (std::is_floating_point_v<T>) return std::isgreater(value, T{0});
    return value > 0;
}
template <class T>
bool isNotNegative(T value) {
    if constexpr (std::is_floating_point_v<T>) return std::isgreaterequal(value, T{0});
    return value >= 0;
}

inline bool isConnectivity(int neighbours) {
    return neighbours == 4 || neighbours == 8;
}

inline bool isScale(int scaleFactor) {
    return scaleFactor >= -31 && scaleFactor <= 31;
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

// ZmoiKernelType and ZmoiDifferentialKernel have the same values.
template <class Kernel>
bool isScharr(Kernel kernel) {
    return int{kernel} == zmoiKernelScharr;
}
template <class Kernel>
bool isKnownKernel(Kernel kernel) {
    return int{kernel} == zmoiKernelSobel || isScharr(kernel);
}
// Sobel has masks of 3x3 and 5x5, Scharr of 3x3.
template <class Kernel>
bool isKnownKernelSize(Kernel kernel, int size) {
    return size == 3 || (size == 5 && !isScharr(kernel));
}
template <class Kernel>
Derivative derivativeOf(Kernel kernel, int size) {
    if (isScharr(kernel)) return Derivative::scharr3;
    return size == 3 ? Derivative::sobel3 : Derivative::sobel5;
}

template <class T>
constexpr ZmoDataType dataTypeOf() {
    if (std::is_same_v<T, Zmo8u>) return zmo8u;
    if (std::is_same_v<T, Zmo8s>) return zmo8s;
    if (std::is_same_v<T, Zmo16u>) return zmo16u;
    if (std::is_same_v<T, Zmo16s>) return zmo16s;
    return zmo32f;
}

// Bytes of work memory for a row of width + more pixels, `size` bytes an element; saturates
// instead of overflowing.
inline int64_t rowBytes(int64_t width, int64_t more, int64_t channels, int64_t size) {
    const int64_t element = channels * size;
    return width > INT64_MAX / 4 / element - more ? INT64_MAX / 4 : (width + more) * element;
}

// The same for so many items, pixels or whatever kernels count in an int, and what else is needed.
inline int64_t itemBytes(int64_t items, int64_t bytesOfItem, int64_t more) {
    return items > INT_MAX ? INT64_MAX : items * bytesOfItem + more;
}

// What the queries for the size of a work buffer check that depends on nothing else.
inline ZmoStatus checkQuery(const int* pSize, ZmoiSize roi, bool knownType, bool knownChannels) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!knownType) return zmoStsDataTypeErr;
    return knownChannels ? zmoStsNoErr : zmoStsChannelsErr;
}

// Stores a size of work memory that was computed in 64 bits.
inline ZmoStatus storeSize(int64_t bytes, int* pSize) {
    if (bytes > INT_MAX) return zmoStsTooLargeErr;
    *pSize = bytes < 64 ? 64 : static_cast<int>(bytes);
    return zmoStsNoErr;
}
inline ZmoStatus storeSize(int64_t bytes, int64_t* pSize) {
    if (bytes >= INT64_MAX / 4) return zmoStsTooLargeErr;
    *pSize = bytes < 64 ? 64 : bytes;
    return zmoStsNoErr;
}
// Of a state and a buffer; neither is stored when one is too large.
template <class Int>
ZmoStatus storeSizes(int64_t state, int64_t buffer, Int* pStateSize, Int* pBufferSize) {
    Int stateSize = 0;
    const ZmoStatus status = storeSize(state, &stateSize);
    if (status != zmoStsNoErr) return status;
    const ZmoStatus bufferStatus = storeSize(buffer, pBufferSize);
    if (bufferStatus == zmoStsNoErr) *pStateSize = stateSize;
    return bufferStatus;
}

}  // namespace zmo
