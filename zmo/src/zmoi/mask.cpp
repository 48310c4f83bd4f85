#include "zmoi/mask.h"

#include "common/check.h"
#include "zmoi.h"

namespace zmo {
namespace {

// Two rows of sums of at most 4 bytes for the row and 2 pixels on either side, a row of constants
// of at most 4 bytes a pixel, and the alignment of the three.
constexpr int64_t maskBufferSize(int64_t width) {
    return 2 * 4 * (width + 4) + 4 * width + 64 + 3 * 63;
}

ZmoStatus bufferSize(ZmoiSize roi, ZmoiMaskSize mask, bool knownType, int channels, int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!isKnown(mask)) return zmoStsMaskSizeErr;
    if (!knownType) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    return storeSize(maskBufferSize(roi.width), pSize);
}

template <class T, class D>
ZmoStatus filterByMask(MaskKernelPair MaskKernels::*kernels, const T* pSrc, int srcStep, D* pDst,
                       int dstStep, ZmoiSize roi, ZmoiMaskSize mask, ZmoiBorderType border,
                       const T* pBorderValue, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width) || badStep<D>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isKnown(mask)) return zmoStsMaskSizeErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    const MaskKernelPair& pair = kernelsInUse(maskKernelsByLevel).*kernels;
    pair.at[mask == zmoiMask3x3 ? 0 : 1]({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi),
                                         {border, pBorderValue}, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_FILTER_BY_MASK(Base, types, T, D, kernels)                                          \
    ZmoStatus zmoiFilter##Base##Border_##types##_C1R(                                           \
        const T* pSrc, int srcStep, D* pDst, int dstStep, ZmoiSize roi, ZmoiMaskSize mask,      \
        ZmoiBorderType border, const T* pBorderValue, Zmo8u* pBuffer) {                         \
        return zmo::filterByMask(&zmo::MaskKernels::kernels, pSrc, srcStep, pDst, dstStep, roi, \
                                 mask, border, pBorderValue, pBuffer);                          \
    }
#define ZMO_MASK_BUFFER(Base, knownType)                                                          \
    ZmoStatus zmoiFilter##Base##BorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask,              \
                                                    ZmoDataType type, int channels, int* pSize) { \
        return zmo::bufferSize(roi, mask, knownType, channels, pSize);                            \
    }

ZMO_FILTER_BY_MASK(SobelVert, 8u16s, Zmo8u, Zmo16s, sobelVert8u)
ZMO_FILTER_BY_MASK(SobelHoriz, 8u16s, Zmo8u, Zmo16s, sobelHoriz8u)
ZMO_FILTER_BY_MASK(SobelVert, 32f, Zmo32f, Zmo32f, sobelVert32f)
ZMO_FILTER_BY_MASK(SobelHoriz, 32f, Zmo32f, Zmo32f, sobelHoriz32f)
ZMO_FILTER_BY_MASK(SobelCross, 32f, Zmo32f, Zmo32f, sobelCross32f)
ZMO_FILTER_BY_MASK(Laplacian, 8u16s, Zmo8u, Zmo16s, laplacian8u)
ZMO_FILTER_BY_MASK(Laplacian, 32f, Zmo32f, Zmo32f, laplacian32f)
ZMO_FILTER_BY_MASK(Lowpass, 8u, Zmo8u, Zmo8u, lowpass8u)
ZMO_FILTER_BY_MASK(Lowpass, 32f, Zmo32f, Zmo32f, lowpass32f)
ZMO_MASK_BUFFER(SobelVert, type == zmo8u || type == zmo32f)
ZMO_MASK_BUFFER(SobelHoriz, type == zmo8u || type == zmo32f)
ZMO_MASK_BUFFER(SobelCross, type == zmo32f)
ZMO_MASK_BUFFER(Laplacian, type == zmo8u || type == zmo32f)
ZMO_MASK_BUFFER(Lowpass, type == zmo8u || type == zmo32f)
