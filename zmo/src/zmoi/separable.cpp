#include "zmoi/separable.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "common/check.h"
#include "zmoi_filter.h"

namespace zmo {
namespace {

constexpr int maxTaps = 255;
constexpr int64_t maxWeights = 32767;  // sum of sizes, so that 32 bits hold the sums of a column

// What a state starts with; the row kernel and the column kernel follow it.
struct SeparableHeader {
    uint32_t magic;
    ZmoDataType srcType;
    ZmoDataType dstType;
    int channels;
    ZmoiSize size;
    ZmoiPoint anchor;
    int divisor;
    int wide;  // sums may exceed 32 bits
    int weightBytes;
};
constexpr uint32_t separableMagic = 0x5e9a7ab1;
constexpr uint32_t gaussianMagic = 0x6a055141;

bool isTaps(int size) {
    return size >= 1 && size <= maxTaps;
}
bool isGaussianSize(int size) {
    return isTaps(size) && size % 2 == 1;
}

bool isIntegerPair(ZmoDataType src, ZmoDataType dst) {
    return (src == dst && (src == zmo8u || src == zmo16s || src == zmo16u)) ||
           (src == zmo8u && dst == zmo16s);
}
bool isSeparablePair(ZmoDataType src, ZmoDataType dst) {
    return isIntegerPair(src, dst) || (src == zmo32f && dst == zmo32f);
}
bool isGaussianType(ZmoDataType type) {
    return type == zmo8u || type == zmo16u || type == zmo16s || type == zmo32f;
}

// Sums of at most 8 bytes and constants of at most 4, with their alignment.
int64_t separableBufferSize(int64_t width, int taps, int channels) {
    return rowBytes(width, taps, channels, 12) + 64 + 2 * 63;
}
int64_t separableStateSize(ZmoiSize kernel) {
    return static_cast<int64_t>(sizeof(SeparableHeader)) + 4 * (kernel.width + kernel.height);
}

void writeState(const SeparableHeader& header, const void* row, const void* column, void* state) {
    char* next = static_cast<char*>(state);
    const auto append = [&next](const void* data, int bytes) {
        std::memcpy(next, data, static_cast<size_t>(bytes));
        next += bytes;
    };
    append(&header, sizeof header);
    append(row, header.size.width * header.weightBytes);
    append(column, header.size.height * header.weightBytes);
}

int64_t sumOfSizes(const Zmo16s* kernel, int taps) {
    int64_t sum = 0;
    for (int i = 0; i < taps; ++i) sum += std::abs(static_cast<int>(kernel[i]));
    return sum;
}
bool allFinite(const Zmo32f* kernel, int taps) {
    for (int i = 0; i < taps; ++i) {
        if (!std::isfinite(kernel[i])) return false;
    }
    return true;
}

bool isAnchor(ZmoiPoint anchor, ZmoiSize kernel) {
    return anchor.x >= 0 && anchor.x < kernel.width && anchor.y >= 0 && anchor.y < kernel.height;
}

bool isChannels(int channels) {
    return channels == 1 || channels == 3 || channels == 4;
}

ZmoStatus initGaussian(int taps, Zmo32f sigma, ZmoDataType type, int channels, void* pState) {
    if (pState == nullptr) return zmoStsNullPtrErr;
    if (!isGaussianSize(taps)) return zmoStsMaskSizeErr;
    if (!std::isfinite(sigma) || sigma < 1e-6F) return zmoStsRangeErr;
    if (!isGaussianType(type)) return zmoStsDataTypeErr;
    if (channels != 1 && channels != 3) return zmoStsChannelsErr;
    double g[maxTaps];
    double sum = 0;
    for (int i = 0; i < taps; ++i) {
        const int offset = i - taps / 2;
        const double distance = offset;
        const double exponent = -(distance * distance) / (2.0 * sigma * sigma);
        // exp of very small exponents would raise "underflow".
        g[i] = exponent < -40 * 0.69314718055994531 ? 0 : std::exp(exponent);
        sum += g[i];
    }
    Zmo32f weights[maxTaps];
    for (int i = 0; i < taps; ++i) weights[i] = static_cast<Zmo32f>(g[i] / sum);
    const int anchor = taps / 2;
    writeState({gaussianMagic, type, type, channels, {taps, taps}, {anchor, anchor}, 1, 0, 4},
               weights, weights, pState);
    return zmoStsNoErr;
}

template <class T, class D>
constexpr int separableIndex = std::is_same_v<T, Zmo8u>    ? (std::is_same_v<D, Zmo8u> ? 0 : 1)
                               : std::is_same_v<T, Zmo16s> ? 2
                               : std::is_same_v<T, Zmo16u> ? 3
                                                           : 4;

template <class T, class D>
SeparableKernel chooseKernel(const SeparableKernels& kernels, const SeparableHeader& header) {
    constexpr int index = separableIndex<T, D>;
    if (header.weightBytes == 2) return (header.wide ? kernels.wide : kernels.integers)[index % 4];
    return kernels.floats[index == 0 ? 0 : index - 1];
}

template <int channels, class T, class D, class Step, class Size>
ZmoStatus separable(uint32_t magic, const T* pSrc, Step srcStep, D* pDst, Step dstStep, Size roi,
                    ZmoiBorderType border, const T* pBorderValue, const void* pState,
                    Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pBuffer) || pState == nullptr) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<D, channels>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    SeparableHeader header;
    std::memcpy(&header, pState, sizeof header);
    if (header.magic != magic || header.channels != channels || header.srcType != dataTypeOf<T>() ||
        header.dstType != dataTypeOf<D>()) {
        return zmoStsStateErr;
    }
    const char* const row = static_cast<const char*>(pState) + sizeof header;
    const SeparableTaps taps = {row,
                                row + header.size.width * header.weightBytes,
                                header.size.width,
                                header.size.height,
                                header.anchor.x,
                                header.anchor.y,
                                header.divisor,
                                channels};
    chooseKernel<T, D>(kernelsInUse(separableKernelsByLevel), header)(
        {pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), {border, pBorderValue}, &taps, pBuffer);
    return zmoStsNoErr;
}

template <class Size, class Int>
ZmoStatus gaussianSize(Size roi, int taps, ZmoDataType type, int channels, Int* pStateSize,
                       Int* pBufferSize) {
    if (anyNull(pStateSize, pBufferSize)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!isGaussianSize(taps)) return zmoStsMaskSizeErr;
    if (!isGaussianType(type)) return zmoStsDataTypeErr;
    if (channels != 1 && channels != 3) return zmoStsChannelsErr;
    return storeSizes(separableStateSize({taps, taps}),
                      separableBufferSize(roi.width, taps, channels), pStateSize, pBufferSize);
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiFilterSeparableGetSize_L(ZmoiSizeL roi, ZmoiSize kernelSize, ZmoDataType srcType,
                                       ZmoDataType dstType, int channels, int64_t* pStateSize,
                                       int64_t* pBufferSize) {
    if (zmo::anyNull(pStateSize, pBufferSize)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (!zmo::isTaps(kernelSize.width) || !zmo::isTaps(kernelSize.height)) return zmoStsMaskSizeErr;
    if (!zmo::isSeparablePair(srcType, dstType)) return zmoStsDataTypeErr;
    if (!zmo::isChannels(channels)) return zmoStsChannelsErr;
    return zmo::storeSizes(zmo::separableStateSize(kernelSize),
                           zmo::separableBufferSize(roi.width, kernelSize.width, channels),
                           pStateSize, pBufferSize);
}

ZmoStatus zmoiFilterSeparableInit_16s_L(const Zmo16s* pRowKernel, const Zmo16s* pColumnKernel,
                                        ZmoiSize kernelSize, ZmoiPoint anchor, int divisor,
                                        ZmoDataType srcType, ZmoDataType dstType, int channels,
                                        ZmoiSeparableState* pState) {
    if (zmo::anyNull(pRowKernel, pColumnKernel, pState)) return zmoStsNullPtrErr;
    if (!zmo::isTaps(kernelSize.width) || !zmo::isTaps(kernelSize.height)) return zmoStsMaskSizeErr;
    if (!zmo::isAnchor(anchor, kernelSize)) return zmoStsAnchorErr;
    const int64_t row = zmo::sumOfSizes(pRowKernel, kernelSize.width);
    const int64_t column = zmo::sumOfSizes(pColumnKernel, kernelSize.height);
    if (divisor < 1 || row > zmo::maxWeights || column > zmo::maxWeights) return zmoStsRangeErr;
    if (!zmo::isIntegerPair(srcType, dstType)) return zmoStsDataTypeErr;
    if (!zmo::isChannels(channels)) return zmoStsChannelsErr;
    const int64_t largest = srcType == zmo8u ? 255 : srcType == zmo16s ? 32768 : 65535;
    const int wide = row * column * largest > INT32_MAX;
    zmo::writeState({zmo::separableMagic, srcType, dstType, channels, kernelSize, anchor, divisor,
                     wide, sizeof(Zmo16s)},
                    pRowKernel, pColumnKernel, pState);
    return zmoStsNoErr;
}

ZmoStatus zmoiFilterSeparableInit_32f_L(const Zmo32f* pRowKernel, const Zmo32f* pColumnKernel,
                                        ZmoiSize kernelSize, ZmoiPoint anchor, int channels,
                                        ZmoiSeparableState* pState) {
    if (zmo::anyNull(pRowKernel, pColumnKernel, pState)) return zmoStsNullPtrErr;
    if (!zmo::isTaps(kernelSize.width) || !zmo::isTaps(kernelSize.height)) return zmoStsMaskSizeErr;
    if (!zmo::isAnchor(anchor, kernelSize)) return zmoStsAnchorErr;
    if (!zmo::allFinite(pRowKernel, kernelSize.width) ||
        !zmo::allFinite(pColumnKernel, kernelSize.height)) {
        return zmoStsRangeErr;
    }
    if (!zmo::isChannels(channels)) return zmoStsChannelsErr;
    zmo::writeState(
        {zmo::separableMagic, zmo32f, zmo32f, channels, kernelSize, anchor, 1, 0, sizeof(Zmo32f)},
        pRowKernel, pColumnKernel, pState);
    return zmoStsNoErr;
}

ZmoStatus zmoiFilterGaussianGetSize(ZmoiSize roi, int kernelSize, ZmoDataType type, int channels,
                                    int* pStateSize, int* pBufferSize) {
    return zmo::gaussianSize(roi, kernelSize, type, channels, pStateSize, pBufferSize);
}

ZmoStatus zmoiFilterGaussianGetSize_L(ZmoiSizeL roi, int kernelSize, ZmoDataType type, int channels,
                                      int64_t* pStateSize, int64_t* pBufferSize) {
    return zmo::gaussianSize(roi, kernelSize, type, channels, pStateSize, pBufferSize);
}

ZmoStatus zmoiFilterGaussianInit(int kernelSize, Zmo32f sigma, ZmoDataType type, int channels,
                                 ZmoiGaussianState* pState) {
    return zmo::initGaussian(kernelSize, sigma, type, channels, pState);
}

ZmoStatus zmoiFilterGaussianInit_L(int kernelSize, Zmo32f sigma, ZmoDataType type, int channels,
                                   ZmoiGaussianState* pState) {
    return zmo::initGaussian(kernelSize, sigma, type, channels, pState);
}

#define ZMO_SEPARABLE(name, magic, State, Step, Size, channels, T, D)                          \
    ZmoStatus name(const T* pSrc, Step srcStep, D* pDst, Step dstStep, Size roi,               \
                   ZmoiBorderType border, const T* pBorderValue, const State* pState,          \
                   Zmo8u* pBuffer) {                                                           \
        return zmo::separable<channels>(zmo::magic, pSrc, srcStep, pDst, dstStep, roi, border, \
                                        pBorderValue, pState, pBuffer);                        \
    }
#define ZMO_GAUSSIAN(type, channels)                                                              \
    ZMO_SEPARABLE(zmoiFilterGaussianBorder_##type##_C##channels##R, gaussianMagic,                \
                  ZmoiGaussianState, int, ZmoiSize, channels, Zmo##type, Zmo##type)               \
    ZMO_SEPARABLE(zmoiFilterGaussian_##type##_C##channels##R_L, gaussianMagic, ZmoiGaussianState, \
                  int64_t, ZmoiSizeL, channels, Zmo##type, Zmo##type)
#define ZMO_FILTER_SEPARABLE(types, T, D, channels)                               \
    ZMO_SEPARABLE(zmoiFilterSeparable_##types##_C##channels##R_L, separableMagic, \
                  ZmoiSeparableState, int64_t, ZmoiSizeL, channels, T, D)
#define ZMO_FILTER_SEPARABLES(types, T, D) \
    ZMO_FILTER_SEPARABLE(types, T, D, 1)   \
    ZMO_FILTER_SEPARABLE(types, T, D, 3)   \
    ZMO_FILTER_SEPARABLE(types, T, D, 4)

ZMO_GAUSSIAN(8u, 1)
ZMO_GAUSSIAN(8u, 3)
ZMO_GAUSSIAN(16u, 1)
ZMO_GAUSSIAN(16u, 3)
ZMO_GAUSSIAN(16s, 1)
ZMO_GAUSSIAN(16s, 3)
ZMO_GAUSSIAN(32f, 1)
ZMO_GAUSSIAN(32f, 3)
ZMO_FILTER_SEPARABLES(8u, Zmo8u, Zmo8u)
ZMO_FILTER_SEPARABLES(8u16s, Zmo8u, Zmo16s)
ZMO_FILTER_SEPARABLES(16s, Zmo16s, Zmo16s)
ZMO_FILTER_SEPARABLES(16u, Zmo16u, Zmo16u)
ZMO_FILTER_SEPARABLES(32f, Zmo32f, Zmo32f)
