#include "zmocv/corner.h"

#include <cmath>

#include "common/check.h"
#include "zmocv.h"

namespace zmo {
namespace {

bool isKnownWindow(int size) {
    return size >= 1 && size <= 255 && size % 2 == 1;
}

// For a region that grows by the window where the border is in memory: rows of both derivatives, a
// window and two more; three rows of double sums; a row of the border's value and one of the sums
// that make a row of derivatives; and the alignment of all.
int64_t cornerBufferSize(ZmoiSize roi, int windowSize, ZmoDataType type) {
    const int64_t width = int64_t{roi.width} + windowSize - 1;
    const int64_t pixel = type == zmo8u ? 1 : 4;
    const int64_t derivative = type == zmo8u ? 2 : 4;
    return width * (derivative * 2 * (windowSize + 2) + pixel) + 3 * 8 * (width + 1) +
           derivative * (width + 4) + 64 + 6 * 63;
}

ZmoStatus bufferSize(ZmoiSize roi, int kernelSize, int windowSize, ZmoDataType type, int channels,
                     int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!isKnownKernelSize(zmoiKernelSobel, kernelSize)) return zmoStsMaskSizeErr;
    if (!isKnownWindow(windowSize)) return zmoStsMaskSizeErr;
    if (type != zmo8u && type != zmo32f) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    return storeSize(cornerBufferSize(roi, windowSize, type), pSize);
}

struct Harris {
    Zmo32f k;
    Zmo32f scale;
};
// For functions that have no such arguments.
constexpr Harris noHarris = {0, 1};

// floatsOfPixel counts those of the destination.
template <int floatsOfPixel, class T, class Kernel>
ZmoStatus judge(CornerKernel (CornerKernels::*kernels)[2], const T* pSrc, int srcStep, Zmo32f* pDst,
                int dstStep, ZmoiSize roi, Kernel kernel, int kernelSize, int windowSize,
                Harris harris, ZmoiBorderType border, const T* pBorderValue, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo32f, floatsOfPixel>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isKnownKernel(kernel)) return zmoStsFlagErr;
    if (!isKnownKernelSize(kernel, kernelSize)) return zmoStsMaskSizeErr;
    if (!isKnownWindow(windowSize)) return zmoStsMaskSizeErr;
    if (!isWithin(harris.k, 0, 0.25F)) return zmoStsRangeErr;
    if (!std::isfinite(harris.scale) || harris.scale <= 0) return zmoStsRangeErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    const CornerShape shape = {derivativeOf(kernel, kernelSize), windowSize / 2, harris.k,
                               harris.scale};
    (kernelsInUse(cornerKernelsByLevel).*kernels)[std::is_same_v<T, Zmo8u> ? 0 : 1](
        {pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), {border, pBorderValue}, shape, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_EIGEN(Base, types, T, floats, kernels)                                                 \
    ZmoStatus zmoi##Base##_##types##_C1R(const T* pSrc, int srcStep, Zmo32f* pDst, int dstStep,    \
                                         ZmoiSize roi, ZmoiKernelType kernel, int kernelSize,      \
                                         int windowSize, Zmo8u* pBuffer) {                         \
        return zmo::judge<floats, T>(&zmo::CornerKernels::kernels, pSrc, srcStep, pDst, dstStep,   \
                                     roi, kernel, kernelSize, windowSize, zmo::noHarris,           \
                                     zmoiBorderReplicate, nullptr, pBuffer);                       \
    }                                                                                              \
    ZmoStatus zmoi##Base##Border_##types##_C1R(                                                    \
        const T* pSrc, int srcStep, Zmo32f* pDst, int dstStep, ZmoiSize roi,                       \
        ZmoiKernelType kernel, int kernelSize, int windowSize, ZmoiBorderType border,              \
        const T* pBorderValue, Zmo8u* pBuffer) {                                                   \
        return zmo::judge<floats>(&zmo::CornerKernels::kernels, pSrc, srcStep, pDst, dstStep, roi, \
                                  kernel, kernelSize, windowSize, zmo::noHarris, border,           \
                                  pBorderValue, pBuffer);                                          \
    }
#define ZMO_HARRIS(types, T)                                                                   \
    ZmoStatus zmoiHarrisCorner_##types##_C1R(                                                  \
        const T* pSrc, int srcStep, Zmo32f* pDst, int dstStep, ZmoiSize roi,                   \
        ZmoiDifferentialKernel kernel, int kernelSize, int windowSize, Zmo32f k, Zmo32f scale, \
        ZmoiBorderType border, const T* pBorderValue, Zmo8u* pBuffer) {                        \
        return zmo::judge<1>(&zmo::CornerKernels::harris, pSrc, srcStep, pDst, dstStep, roi,   \
                             kernel, kernelSize, windowSize, {k, scale}, border, pBorderValue, \
                             pBuffer);                                                         \
    }
#define ZMO_CORNER_BUFFER(Base)                                                       \
    ZmoStatus zmoi##Base##GetBufferSize(ZmoiSize roi, int kernelSize, int windowSize, \
                                        ZmoDataType type, int channels, int* pSize) { \
        return zmo::bufferSize(roi, kernelSize, windowSize, type, channels, pSize);   \
    }

ZMO_EIGEN(MinEigenVal, 8u32f, Zmo8u, 1, minEigenVal)
ZMO_EIGEN(MinEigenVal, 32f, Zmo32f, 1, minEigenVal)
ZMO_EIGEN(EigenValsVecs, 8u32f, Zmo8u, 6, eigenValsVecs)
ZMO_EIGEN(EigenValsVecs, 32f, Zmo32f, 6, eigenValsVecs)
ZMO_HARRIS(8u32f, Zmo8u)
ZMO_HARRIS(32f, Zmo32f)
ZMO_CORNER_BUFFER(MinEigenVal)
ZMO_CORNER_BUFFER(MinEigenValBorder)
ZMO_CORNER_BUFFER(EigenValsVecs)
ZMO_CORNER_BUFFER(EigenValsVecsBorder)
ZMO_CORNER_BUFFER(HarrisCorner)
