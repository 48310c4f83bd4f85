#include "zmoi/sobel.h"

#include "common/check.h"
#include "zmoi.h"

namespace zmo {
namespace {

// Sums of at most 4 bytes for a row and 2 pixels on either side, a row of constants of at most 4
// bytes a pixel, and the alignment of both.
constexpr int64_t sobelBufferSize(int64_t width) {
    return 4 * (width + 4) + 4 * width + 64 + 128;
}

ZmoStatus bufferSize(ZmoiSize roi, ZmoiMaskSize mask, ZmoDataType type, int channels, int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (!isKnown(mask)) return zmoStsMaskSizeErr;
    if (type != zmo8u && type != zmo32f) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    return storeSize(sobelBufferSize(roi.width), pSize);
}

using Chosen = SobelKernel SobelKernels::*;

template <class T, class D>
ZmoStatus sobel(Chosen mask3, Chosen mask5, const T* pSrc, int srcStep, D* pDst, int dstStep,
                ZmoiSize roi, ZmoiMaskSize mask, ZmoiBorderType border, const T* pBorderValue,
                Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width) || badStep<D>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isKnown(mask)) return zmoStsMaskSizeErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    const SobelKernel run =
        kernelsInUse(sobelKernelsByLevel).*(mask == zmoiMask3x3 ? mask3 : mask5);
    run({pSrc, srcStep}, {pDst, dstStep}, {roi.width, roi.height}, {border, pBorderValue}, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiFilterSobelVertBorder_8u16s_C1R(const Zmo8u* pSrc, int srcStep, Zmo16s* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                              ZmoiBorderType border, const Zmo8u* pBorderValue,
                                              Zmo8u* pBuffer) {
    return zmo::sobel(&zmo::SobelKernels::vert8u3x3, &zmo::SobelKernels::vert8u5x5, pSrc, srcStep,
                      pDst, dstStep, roi, mask, border, pBorderValue, pBuffer);
}

ZmoStatus zmoiFilterSobelHorizBorder_8u16s_C1R(const Zmo8u* pSrc, int srcStep, Zmo16s* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                               ZmoiBorderType border, const Zmo8u* pBorderValue,
                                               Zmo8u* pBuffer) {
    return zmo::sobel(&zmo::SobelKernels::horiz8u3x3, &zmo::SobelKernels::horiz8u5x5, pSrc, srcStep,
                      pDst, dstStep, roi, mask, border, pBorderValue, pBuffer);
}

ZmoStatus zmoiFilterSobelVertBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                            int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                            ZmoiBorderType border, const Zmo32f* pBorderValue,
                                            Zmo8u* pBuffer) {
    return zmo::sobel(&zmo::SobelKernels::vert32f3x3, &zmo::SobelKernels::vert32f5x5, pSrc, srcStep,
                      pDst, dstStep, roi, mask, border, pBorderValue, pBuffer);
}

ZmoStatus zmoiFilterSobelHorizBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                             int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                             ZmoiBorderType border, const Zmo32f* pBorderValue,
                                             Zmo8u* pBuffer) {
    return zmo::sobel(&zmo::SobelKernels::horiz32f3x3, &zmo::SobelKernels::horiz32f5x5, pSrc,
                      srcStep, pDst, dstStep, roi, mask, border, pBorderValue, pBuffer);
}

ZmoStatus zmoiFilterSobelVertBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask, ZmoDataType type,
                                                 int channels, int* pSize) {
    return zmo::bufferSize(roi, mask, type, channels, pSize);
}

ZmoStatus zmoiFilterSobelHorizBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask, ZmoDataType type,
                                                  int channels, int* pSize) {
    return zmo::bufferSize(roi, mask, type, channels, pSize);
}
