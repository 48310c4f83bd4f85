/* Images: layers of a pyramid. The conventions stand in zmotypes.h. */
#ifndef ZMOI_PYRAMID_H
#define ZMOI_PYRAMID_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Layers of a Gaussian pyramid --------------------------------------------------------------
 *
 * P. J. Burt and E. H. Adelson, "The Laplacian Pyramid as a Compact Image Code", IEEE Transactions
 * on Communications 31 (1983): a layer is the one below it, smoothed and reduced by the rate, and
 * is expanded to the size of the one below it by the same kernel. With the kernel k[-n..n], the
 * rate r and the source a, extended by the border, each channel apart from the others:
 *
 *   Down   dst(x,y) = sum of k[j] k[i] a(r x + i, r y + j) / (K K),  i and j from -n to n
 *          K is the sum of the kernel
 *   Up     dst(x,y) = sum of k[j] k[i] a((x - i) / r, (y - j) / r) / (Kx Ky), for i and j that make
 *          both quotients whole; Kx and Ky are the sums of the k[i] and of the k[j] that take part
 *
 * so that an image of one value keeps it in both directions. 8u and 16u: the sum is exact, its
 * quotient is rounded and saturated by convention 13. 32f computes in single precision with the
 * weights k[i] / K, k[i] / Kx and k[j] / Ky: first down each column, then along the row of these
 * sums, each ((w0 a0 + w1 a1) + w2 a2) + ... with the taps in the order of i and j.
 *
 * Border: convention 10. In memory, Down reads n pixels on each side of the source, Up n / r of
 * them, rounded up.
 *
 * Of width and height, the smaller layer has those of the larger one divided by r, rounded up.
 *   pSrc, srcStep, srcRoi    source and its pixels
 *   pDst, dstStep, roi       destination and its pixels
 *   pState                   kernel, rate and border, for the same type and channels
 *   pBuffer                  as many bytes as zmoiPyramidGetSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of srcRoi or roi is below 1
 *   zmoStsStepErr        a step is shorter than a row or no multiple of the element size
 *   zmoStsStateErr       the state is not one for this type and channels
 *   zmoStsSizeErr        the two regions do not fit each other at the rate of the state */
typedef struct ZmoiPyramidState ZmoiPyramidState;

ZMO_API ZmoStatus zmoiPyramidLayerDown_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi,
                                              Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                              const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerDown_8u_C3R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi,
                                              Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                              const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerDown_16u_C1R(const Zmo16u* pSrc, int srcStep, ZmoiSize srcRoi,
                                               Zmo16u* pDst, int dstStep, ZmoiSize roi,
                                               const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerDown_16u_C3R(const Zmo16u* pSrc, int srcStep, ZmoiSize srcRoi,
                                               Zmo16u* pDst, int dstStep, ZmoiSize roi,
                                               const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerDown_32f_C1R(const Zmo32f* pSrc, int srcStep, ZmoiSize srcRoi,
                                               Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                               const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerDown_32f_C3R(const Zmo32f* pSrc, int srcStep, ZmoiSize srcRoi,
                                               Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                               const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi,
                                            Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                            const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_8u_C3R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi,
                                            Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                            const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_16u_C1R(const Zmo16u* pSrc, int srcStep, ZmoiSize srcRoi,
                                             Zmo16u* pDst, int dstStep, ZmoiSize roi,
                                             const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_16u_C3R(const Zmo16u* pSrc, int srcStep, ZmoiSize srcRoi,
                                             Zmo16u* pDst, int dstStep, ZmoiSize roi,
                                             const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_32f_C1R(const Zmo32f* pSrc, int srcStep, ZmoiSize srcRoi,
                                             Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                             const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_32f_C3R(const Zmo32f* pSrc, int srcStep, ZmoiSize srcRoi,
                                             Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                             const ZmoiPyramidState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerDown_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep,
                                                 ZmoiSizeL srcRoi, Zmo32f* pDst, int64_t dstStep,
                                                 ZmoiSizeL roi, const ZmoiPyramidState* pState,
                                                 Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiPyramidLayerUp_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep,
                                               ZmoiSizeL srcRoi, Zmo32f* pDst, int64_t dstStep,
                                               ZmoiSizeL roi, const ZmoiPyramidState* pState,
                                               Zmo8u* pBuffer);

/* Sizes in bytes of the state and of the work buffer, for larger layers up to roi, in both
 * directions. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pStateSize or pBufferSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsDataTypeErr    type is not 8u, 16u or 32f
 *   zmoStsChannelsErr    channels is not 1 or 3
 *   zmoStsTooLargeErr    a size does not fit its type */
ZMO_API ZmoStatus zmoiPyramidGetSize(ZmoiSize roi, ZmoDataType type, int channels, int* pStateSize,
                                     int* pBufferSize);
ZMO_API ZmoStatus zmoiPyramidGetSize_L(ZmoiSizeL roi, ZmoDataType type, int channels,
                                       int64_t* pStateSize, int64_t* pBufferSize);

/* Fills a state. A null pKernel stands for the five taps 1 4 6 4 1, and kernelSize is ignored; the
 * usual rate is 2. pBorderValue is one value a channel for zmoiBorderConst, converted to the
 * element type by convention 13. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pState is null, or pBorderValue with zmoiBorderConst
 *   zmoStsMaskSizeErr    kernelSize is even or not 1 to 31
 *   zmoStsRangeErr       rate is not 2 to 8; the sizes of the weights add to more than 181; or the
 *                        weights k[i], k[i + rate], ... for some i do not add to more than 0
 *   zmoStsBorderErr      border is unknown
 *   zmoStsDataTypeErr    type is not 8u, 16u or 32f
 *   zmoStsChannelsErr    channels is not 1 or 3 */
ZMO_API ZmoStatus zmoiPyramidInit(const Zmo16s* pKernel, int kernelSize, int rate,
                                  ZmoiBorderType border, const Zmo32f* pBorderValue,
                                  ZmoDataType type, int channels, ZmoiPyramidState* pState);
ZMO_API ZmoStatus zmoiPyramidInit_L(const Zmo16s* pKernel, int kernelSize, int rate,
                                    ZmoiBorderType border, const Zmo32f* pBorderValue,
                                    ZmoDataType type, int channels, ZmoiPyramidState* pState);

#ifdef __cplusplus
}
#endif

#endif
