#include "zmoi/pipeline.h"

#include <cstdlib>

#include "common/check.h"
#include "zmoi_filter.h"

namespace zmo {
namespace {

constexpr int maxTaps = 255;
constexpr int64_t maxWeights = 32767;  // sum of sizes, so that 32 bits hold the sums

bool isTaps(int size) {
    return size >= 1 && size <= maxTaps;
}

bool badWeights(const Zmo16s* kernel, int taps, int divisor) {
    int64_t sum = 0;
    for (int i = 0; i < taps; ++i) sum += std::abs(static_cast<int>(kernel[i]));
    return divisor < 1 || sum > maxWeights;
}

template <class T>
bool anyNullRow(T* const* rows, int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
        if (rows[i] == nullptr) return true;
    }
    return false;
}

// A kernel that neither divides nor limits its weights.
struct Undivided {};

bool badWeights(const void*, int, Undivided) {
    return false;
}
int64_t divisorOf(int divisor) {
    return divisor;
}
int64_t divisorOf(Undivided) {
    return 1;
}

template <int channels, class T, class D, class K, class Divisor>
ZmoStatus filterRows(RowPipelineKernel PipelineKernels::*run, const T* pSrc, int srcStep, D** ppDst,
                     ZmoiSize roi, const K* pKernel, int kernelSize, int anchor, Divisor divisor,
                     ZmoiBorderType border, const T* pBorderValue, Zmo8u* pBuffer) {
    if (anyNull(pSrc, ppDst, pKernel, pBuffer)) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (anyNullRow(ppDst, roi.height)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (!isTaps(kernelSize)) return zmoStsMaskSizeErr;
    if (anchor < 0 || anchor >= kernelSize) return zmoStsAnchorErr;
    if (badWeights(pKernel, kernelSize, divisor)) return zmoStsRangeErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    const PipelineTaps taps = {pKernel, kernelSize, anchor, divisorOf(divisor), channels};
    (kernelsInUse(pipelineKernelsByLevel).*run)(
        {pSrc, srcStep}, reinterpret_cast<void* const*>(ppDst), regionOf(roi),
        {border, pBorderValue}, &taps, pBuffer);
    return zmoStsNoErr;
}

template <int channels, class T, class D, class K, class Divisor>
ZmoStatus filterColumns(ColumnPipelineKernel PipelineKernels::*run, const T** ppSrc, D* pDst,
                        int dstStep, ZmoiSize roi, const K* pKernel, int kernelSize,
                        Divisor divisor, Zmo8u* pBuffer) {
    if (anyNull(ppSrc, pDst, pKernel, pBuffer)) return zmoStsNullPtrErr;
    // Without a valid size nobody knows how many rows there are.
    if (!isEmpty(roi) && isTaps(kernelSize) &&
        anyNullRow(ppSrc, int64_t(roi.height) + kernelSize - 1)) {
        return zmoStsNullPtrErr;
    }
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<D, channels>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isTaps(kernelSize)) return zmoStsMaskSizeErr;
    if (badWeights(pKernel, kernelSize, divisor)) return zmoStsRangeErr;
    const PipelineTaps taps = {pKernel, kernelSize, 0, divisorOf(divisor), channels};
    (kernelsInUse(pipelineKernelsByLevel).*run)(reinterpret_cast<const void* const*>(ppSrc),
                                                {pDst, dstStep}, regionOf(roi), &taps);
    return zmoStsNoErr;
}

ZmoStatus bufferSize(ZmoiSize roi, int kernelSize, bool knownType, int channels, int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!isTaps(kernelSize)) return zmoStsMaskSizeErr;
    if (!knownType) return zmoStsDataTypeErr;
    if (channels != 1 && channels != 3) return zmoStsChannelsErr;
    return storeSize(rowBytes(roi.width, kernelSize, channels, 4) + 64 + 63, pSize);
}

bool isSumType(ZmoDataType type) {
    return type == zmo16u || type == zmo16s || type == zmo32f;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiFilterRowBorderPipelineGetBufferSize(ZmoiSize roi, int kernelSize, ZmoDataType type,
                                                   int channels, int* pSize) {
    return zmo::bufferSize(roi, kernelSize, type == zmo8u || zmo::isSumType(type), channels, pSize);
}

ZmoStatus zmoiFilterColumnPipelineGetBufferSize(ZmoiSize roi, int kernelSize, ZmoDataType type,
                                                int channels, int* pSize) {
    return zmo::bufferSize(roi, kernelSize, zmo::isSumType(type), channels, pSize);
}

#define ZMO_ROWS(types, T, D, channels, run)                                                    \
    ZmoStatus zmoiFilterRowBorderPipeline_##types##_C##channels##R(                             \
        const T* pSrc, int srcStep, D** ppDst, ZmoiSize roi, const Zmo16s* pKernel,             \
        int kernelSize, int anchor, int divisor, ZmoiBorderType border, const T* pBorderValue,  \
        Zmo8u* pBuffer) {                                                                       \
        return zmo::filterRows<channels>(&zmo::PipelineKernels::run, pSrc, srcStep, ppDst, roi, \
                                         pKernel, kernelSize, anchor, divisor, border,          \
                                         pBorderValue, pBuffer);                                \
    }
#define ZMO_ROWS_UNDIVIDED(types, T, channels, run)                                             \
    ZmoStatus zmoiFilterRowBorderPipeline_##types##_C##channels##R(                             \
        const T* pSrc, int srcStep, T** ppDst, ZmoiSize roi, const T* pKernel, int kernelSize,  \
        int anchor, ZmoiBorderType border, const T* pBorderValue, Zmo8u* pBuffer) {             \
        return zmo::filterRows<channels>(&zmo::PipelineKernels::run, pSrc, srcStep, ppDst, roi, \
                                         pKernel, kernelSize, anchor, zmo::Undivided(), border, \
                                         pBorderValue, pBuffer);                                \
    }
#define ZMO_COLUMNS(types, T, D, channels, run)                                                    \
    ZmoStatus zmoiFilterColumnPipeline_##types##_C##channels##R(                                   \
        const T** ppSrc, D* pDst, int dstStep, ZmoiSize roi, const Zmo16s* pKernel,                \
        int kernelSize, int divisor, Zmo8u* pBuffer) {                                             \
        return zmo::filterColumns<channels>(&zmo::PipelineKernels::run, ppSrc, pDst, dstStep, roi, \
                                            pKernel, kernelSize, divisor, pBuffer);                \
    }
#define ZMO_COLUMNS_UNDIVIDED(types, T, channels, run)                                             \
    ZmoStatus zmoiFilterColumnPipeline_##types##_C##channels##R(                                   \
        const T** ppSrc, T* pDst, int dstStep, ZmoiSize roi, const T* pKernel, int kernelSize,     \
        Zmo8u* pBuffer) {                                                                          \
        return zmo::filterColumns<channels>(&zmo::PipelineKernels::run, ppSrc, pDst, dstStep, roi, \
                                            pKernel, kernelSize, zmo::Undivided(), pBuffer);       \
    }

#define ZMO_PIPELINES(channels)                              \
    ZMO_ROWS(8u16s, Zmo8u, Zmo16s, channels, row8u16s)       \
    ZMO_ROWS(16u, Zmo16u, Zmo16u, channels, row16u)          \
    ZMO_ROWS(16s, Zmo16s, Zmo16s, channels, row16s)          \
    ZMO_ROWS_UNDIVIDED(32f, Zmo32f, channels, row32f)        \
    ZMO_ROWS_UNDIVIDED(Low_16s, Zmo16s, channels, rowLow16s) \
    ZMO_COLUMNS(16u, Zmo16u, Zmo16u, channels, column16u)    \
    ZMO_COLUMNS(16s, Zmo16s, Zmo16s, channels, column16s)    \
    ZMO_COLUMNS(16s8u, Zmo16s, Zmo8u, channels, column16s8u) \
    ZMO_COLUMNS(16s8s, Zmo16s, Zmo8s, channels, column16s8s) \
    ZMO_COLUMNS_UNDIVIDED(32f, Zmo32f, channels, column32f)  \
    ZMO_COLUMNS_UNDIVIDED(Low_16s, Zmo16s, channels, columnLow16s)

ZMO_PIPELINES(1)
ZMO_PIPELINES(3)
