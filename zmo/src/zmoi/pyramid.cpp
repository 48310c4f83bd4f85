#include "zmoi/pyramid.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "common/check.h"
#include "zmoi_pyramid.h"

namespace zmo {
namespace {

constexpr uint32_t pyramidMagic = 0x9b7a3d05;
constexpr int maxWeights = 181;  // 65535 times its square fits 32 bits

struct PyramidState {
    uint32_t magic;
    ZmoDataType type;
    ZmoiBorderType border;
    Zmo8u value[12];  // elements of the type
    PyramidTaps taps;
};

bool isType(ZmoDataType type) {
    return type == zmo8u || type == zmo16u || type == zmo32f;
}

template <class T>
T convert(Zmo32f value) {
    if constexpr (std::is_same_v<T, Zmo32f>) {
        return value;
    } else {
        constexpr Zmo32f high = std::is_same_v<T, Zmo8u> ? 255 : 65535;
        if (!(value > 0)) return 0;
        return static_cast<T>(value < high ? std::nearbyintf(value) : high);
    }
}

template <class T>
void storeValue(PyramidState& state, const Zmo32f* values) {
    for (int c = 0; c < state.taps.channels; ++c) {
        const T value = convert<T>(values[c]);
        std::memcpy(state.value + static_cast<size_t>(c) * sizeof(T), &value, sizeof(T));
    }
}

// Each phase has weights that can be divided by their sum.
bool badWeights(const PyramidTaps& taps) {
    int sizes = 0;
    for (int i = 0; i < taps.size; ++i) sizes += std::abs(static_cast<int>(taps.weights[i]));
    if (sizes > maxWeights) return true;
    for (int phase = 0; phase < taps.rate; ++phase) {
        int sum = 0;
        for (int i = phase; i < taps.size; i += taps.rate) sum += taps.weights[i];
        if (sum < 1) return true;
    }
    return false;
}

ZmoStatus initPyramid(const Zmo16s* pKernel, int kernelSize, int rate, ZmoiBorderType border,
                      const Zmo32f* pBorderValue, ZmoDataType type, int channels,
                      ZmoiPyramidState* pState) {
    static constexpr Zmo16s usual[] = {1, 4, 6, 4, 1};
    if (pState == nullptr) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    const int size = pKernel == nullptr ? 5 : kernelSize;
    if (size < 1 || size > pyramidMaxTaps || size % 2 == 0) return zmoStsMaskSizeErr;
    if (rate < 2 || rate > pyramidMaxRate) return zmoStsRangeErr;
    PyramidState state = {pyramidMagic, type, border, {}, {{}, size, rate, channels}};
    std::memcpy(state.taps.weights, pKernel == nullptr ? usual : pKernel,
                static_cast<size_t>(size) * sizeof(Zmo16s));
    if (badWeights(state.taps)) return zmoStsRangeErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    if (!isType(type)) return zmoStsDataTypeErr;
    if (channels != 1 && channels != 3) return zmoStsChannelsErr;
    if (border == zmoiBorderConst) {
        if (type == zmo8u) storeValue<Zmo8u>(state, pBorderValue);
        if (type == zmo16u) storeValue<Zmo16u>(state, pBorderValue);
        if (type == zmo32f) storeValue<Zmo32f>(state, pBorderValue);
    }
    std::memcpy(static_cast<void*>(pState), &state, sizeof state);
    return zmoStsNoErr;
}

// A row of sums and a row of phases of at most 4 bytes an element, and a row of constants, for the
// larger layer and all taps on either side.
int64_t pyramidBufferSize(int64_t width, int channels) {
    return rowBytes(width, 2 * pyramidMaxTaps + 2 * pyramidMaxRate, channels, 12) + 64 + 3 * 63;
}

template <class Size, class Int>
ZmoStatus pyramidSize(Size roi, ZmoDataType type, int channels, Int* pStateSize, Int* pBufferSize) {
    if (anyNull(pStateSize, pBufferSize)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!isType(type)) return zmoStsDataTypeErr;
    if (channels != 1 && channels != 3) return zmoStsChannelsErr;
    return storeSizes(sizeof(PyramidState), pyramidBufferSize(roi.width, channels), pStateSize,
                      pBufferSize);
}

template <class Size>
bool isReduced(Size small, Size large, int rate) {
    const auto reduced = [rate](int64_t side) { return side / rate + (side % rate != 0); };
    return small.width == reduced(large.width) && small.height == reduced(large.height);
}

enum class Way { down, up };

template <Way way, int channels, class T, class Step, class Size>
ZmoStatus makeLayer(const T* pSrc, Step srcStep, Size srcRoi, T* pDst, Step dstStep, Size roi,
                    const ZmoiPyramidState* pState, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pState, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(srcRoi) || isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(srcStep, srcRoi.width)) return zmoStsStepErr;
    if (badStep<T, channels>(dstStep, roi.width)) return zmoStsStepErr;
    PyramidState state;
    std::memcpy(&state, static_cast<const void*>(pState), sizeof state);
    if (state.magic != pyramidMagic || state.type != dataTypeOf<T>() ||
        state.taps.channels != channels) {
        return zmoStsStateErr;
    }
    const bool isDown = way == Way::down;
    if (!isReduced(isDown ? roi : srcRoi, isDown ? srcRoi : roi, state.taps.rate)) {
        return zmoStsSizeErr;
    }
    const PyramidKernels& kernels = kernelsInUse(pyramidKernelsByLevel);
    constexpr int type = std::is_same_v<T, Zmo8u> ? 0 : std::is_same_v<T, Zmo16u> ? 1 : 2;
    (isDown ? kernels.down : kernels.up)[type]({pSrc, srcStep}, regionOf(srcRoi), {pDst, dstStep},
                                               regionOf(roi), {state.border, state.value},
                                               &state.taps, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiPyramidGetSize(ZmoiSize roi, ZmoDataType type, int channels, int* pStateSize,
                             int* pBufferSize) {
    return zmo::pyramidSize(roi, type, channels, pStateSize, pBufferSize);
}

ZmoStatus zmoiPyramidGetSize_L(ZmoiSizeL roi, ZmoDataType type, int channels, int64_t* pStateSize,
                               int64_t* pBufferSize) {
    return zmo::pyramidSize(roi, type, channels, pStateSize, pBufferSize);
}

ZmoStatus zmoiPyramidInit(const Zmo16s* pKernel, int kernelSize, int rate, ZmoiBorderType border,
                          const Zmo32f* pBorderValue, ZmoDataType type, int channels,
                          ZmoiPyramidState* pState) {
    return zmo::initPyramid(pKernel, kernelSize, rate, border, pBorderValue, type, channels,
                            pState);
}

ZmoStatus zmoiPyramidInit_L(const Zmo16s* pKernel, int kernelSize, int rate, ZmoiBorderType border,
                            const Zmo32f* pBorderValue, ZmoDataType type, int channels,
                            ZmoiPyramidState* pState) {
    return zmo::initPyramid(pKernel, kernelSize, rate, border, pBorderValue, type, channels,
                            pState);
}

#define ZMO_LAYER(name, way, T, channels, Step, Size)                                             \
    ZmoStatus name(const T* pSrc, Step srcStep, Size srcRoi, T* pDst, Step dstStep, Size roi,     \
                   const ZmoiPyramidState* pState, Zmo8u* pBuffer) {                              \
        return zmo::makeLayer<zmo::Way::way, channels>(pSrc, srcStep, srcRoi, pDst, dstStep, roi, \
                                                       pState, pBuffer);                          \
    }
#define ZMO_LAYERS(type, channels)                                                          \
    ZMO_LAYER(zmoiPyramidLayerDown_##type##_C##channels##R, down, Zmo##type, channels, int, \
              ZmoiSize)                                                                     \
    ZMO_LAYER(zmoiPyramidLayerUp_##type##_C##channels##R, up, Zmo##type, channels, int, ZmoiSize)

ZMO_LAYERS(8u, 1)
ZMO_LAYERS(8u, 3)
ZMO_LAYERS(16u, 1)
ZMO_LAYERS(16u, 3)
ZMO_LAYERS(32f, 1)
ZMO_LAYERS(32f, 3)
ZMO_LAYER(zmoiPyramidLayerDown_32f_C1R_L, down, Zmo32f, 1, int64_t, ZmoiSizeL)
ZMO_LAYER(zmoiPyramidLayerUp_32f_C1R_L, up, Zmo32f, 1, int64_t, ZmoiSizeL)
