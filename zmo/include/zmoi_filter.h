/* Images: filters with fixed masks, Gaussian and separable filters. The conventions stand in
 * zmotypes.h. */
#ifndef ZMOI_FILTER_H
#define ZMOI_FILTER_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Second derivatives and a mean -------------------------------------------------------------
 *
 * With a(i,j) the source pixel i columns to the right and j rows below, extended by the border; i
 * and j run from -1 to 1 (3x3) or -2 to 2 (5x5):
 *
 *   SobelCross   sum of D[j] D[i] a(i,j), the derivative along x and y
 *   Laplacian    sum of (S[j] B[i] + B[j] S[i]) a(i,j)
 *   Lowpass      sum of S[j] S[i] a(i,j), divided by 16 (3x3) or 256 (5x5)
 *   S = 1 2 1 or 1 4 6 4 1,  D = -1 0 1 or -1 -2 0 2 1,  B = 1 -2 1 or 1 0 -2 0 1
 *
 * 8u16s is exact, 8u the exact quotient by convention 13. 32f computes in single precision, first
 * along the column, then along the row, then (Laplacian) the sum of the two parts in the order
 * above, or the quotient:
 *
 *   S: (a(-1) + a(1)) + 2 a(0)        ((a(-2) + a(2)) + 4 (a(-1) + a(1))) + 6 a(0)
 *   D: a(1) - a(-1)                   (a(2) - a(-2)) + 2 (a(1) - a(-1))
 *   B: (a(-1) + a(1)) - 2 a(0)        (a(-2) + a(2)) - 2 a(0)
 *
 * Border: convention 10; in memory, 1 (3x3) or 2 (5x5) pixels around the region are read.
 *   pSrc, srcStep    source, one channel
 *   pDst, dstStep    destination, one channel
 *   roi              pixels of source and destination
 *   mask             zmoiMask3x3 or zmoiMask5x5
 *   border           border type; pBorderValue: its value, for zmoiBorderConst only
 *   pBuffer          as many bytes as the GetBufferSize query of the same name reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSrc, pDst or pBuffer is null, or pBorderValue with zmoiBorderConst
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row or no multiple of the element size
 *   zmoStsMaskSizeErr    mask is unknown
 *   zmoStsBorderErr      border is unknown */
ZMO_API ZmoStatus zmoiFilterSobelCrossBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                     int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                     ZmoiBorderType border,
                                                     const Zmo32f* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterLaplacianBorder_8u16s_C1R(const Zmo8u* pSrc, int srcStep, Zmo16s* pDst,
                                                      int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                      ZmoiBorderType border,
                                                      const Zmo8u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterLaplacianBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                    int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                    ZmoiBorderType border,
                                                    const Zmo32f* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterLowpassBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                 ZmoiBorderType border, const Zmo8u* pBorderValue,
                                                 Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterLowpassBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                  ZmoiBorderType border, const Zmo32f* pBorderValue,
                                                  Zmo8u* pBuffer);

/* Work buffers of these filters for regions up to roi. type is that of the source, zmo8u (not for
 * SobelCross) or zmo32f; channels is 1. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    mask is unknown
 *   zmoStsDataTypeErr    there is no such filter of this type
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiFilterSobelCrossBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask,
                                                          ZmoDataType type, int channels,
                                                          int* pSize);
ZMO_API ZmoStatus zmoiFilterLaplacianBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask,
                                                         ZmoDataType type, int channels,
                                                         int* pSize);
ZMO_API ZmoStatus zmoiFilterLowpassBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask,
                                                       ZmoDataType type, int channels, int* pSize);

/* ---- Separable filters -------------------------------------------------------------------------
 *
 * With the kernels r[0..width-1] along the row and c[0..height-1] along the column, whose taps
 * anchor.x and anchor.y lie on the pixel,
 *
 *   dst(x,y) = sum of c[j] r[i] src(x + i - anchor.x, y + j - anchor.y)
 *
 * and the channels are filtered apart from each other. 8u, 8u16s, 16s and 16u have kernels of
 * 16-bit integers and a divisor: the sum is exact, its quotient is rounded and saturated by
 * convention 13. 32f has kernels of floats and computes in single precision: first down each
 * column, then along the row of these sums, each ((w0 a0 + w1 a1) + w2 a2) + ... in the order of
 * the taps.
 *
 * Border: convention 10; in memory, the region that the taps reach is read.
 *   pSrc, srcStep    source
 *   pDst, dstStep    destination
 *   roi              pixels of source and destination
 *   border           border type; pBorderValue: one element a channel, for zmoiBorderConst only
 *   pState           kernels, from the Init function for the same types and channels
 *   pBuffer          as many bytes as zmoiFilterSeparableGetSize_L reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSrc, pDst, pState or pBuffer is null, or pBorderValue with
 *                        zmoiBorderConst
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row or no multiple of the element size
 *   zmoStsBorderErr      border is unknown
 *   zmoStsStateErr       the state is not one for these types and channels */
typedef struct ZmoiSeparableState ZmoiSeparableState;

ZMO_API ZmoStatus zmoiFilterSeparable_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo8u* pBorderValue,
                                               const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo8u* pBorderValue,
                                               const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo8u* pBorderValue,
                                               const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_8u16s_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo16s* pDst,
                                                  int64_t dstStep, ZmoiSizeL roi,
                                                  ZmoiBorderType border, const Zmo8u* pBorderValue,
                                                  const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_8u16s_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo16s* pDst,
                                                  int64_t dstStep, ZmoiSizeL roi,
                                                  ZmoiBorderType border, const Zmo8u* pBorderValue,
                                                  const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_8u16s_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo16s* pDst,
                                                  int64_t dstStep, ZmoiSizeL roi,
                                                  ZmoiBorderType border, const Zmo8u* pBorderValue,
                                                  const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo16s* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_16s_C3R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo16s* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_16s_C4R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo16s* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo16u* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_16u_C3R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo16u* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_16u_C4R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo16u* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo32f* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo32f* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSeparable_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                                int64_t dstStep, ZmoiSizeL roi,
                                                ZmoiBorderType border, const Zmo32f* pBorderValue,
                                                const ZmoiSeparableState* pState, Zmo8u* pBuffer);

/* Sizes in bytes of the state for kernels of kernelSize (width along the row, height along the
 * column) and of the work buffer for regions up to roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pStateSize or pBufferSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    a side of kernelSize is not 1 to 255
 *   zmoStsDataTypeErr    there is no filter from srcType to dstType
 *   zmoStsChannelsErr    channels is not 1, 3 or 4
 *   zmoStsTooLargeErr    a size does not fit its type */
ZMO_API ZmoStatus zmoiFilterSeparableGetSize_L(ZmoiSizeL roi, ZmoiSize kernelSize,
                                               ZmoDataType srcType, ZmoDataType dstType,
                                               int channels, int64_t* pStateSize,
                                               int64_t* pBufferSize);

/* The state of an integer filter (16s: its kernels' type) or of a 32f one. Status, in the order of
 * the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsMaskSizeErr    a side of kernelSize is not 1 to 255
 *   zmoStsAnchorErr      the anchor is not a tap
 *   zmoStsRangeErr       the divisor is below 1, or the sizes of the weights of a kernel add to
 *                        more than 32767; 32f: a weight is not finite
 *   zmoStsDataTypeErr    there is no filter with such kernels from srcType to dstType
 *   zmoStsChannelsErr    channels is not 1, 3 or 4 */
ZMO_API ZmoStatus zmoiFilterSeparableInit_16s_L(const Zmo16s* pRowKernel,
                                                const Zmo16s* pColumnKernel, ZmoiSize kernelSize,
                                                ZmoiPoint anchor, int divisor, ZmoDataType srcType,
                                                ZmoDataType dstType, int channels,
                                                ZmoiSeparableState* pState);
ZMO_API ZmoStatus zmoiFilterSeparableInit_32f_L(const Zmo32f* pRowKernel,
                                                const Zmo32f* pColumnKernel, ZmoiSize kernelSize,
                                                ZmoiPoint anchor, int channels,
                                                ZmoiSeparableState* pState);

/* ---- Gaussian filter ---------------------------------------------------------------------------
 *
 * A separable filter with the same kernel along rows and columns, of an odd number of taps n:
 *
 *   w[i] = g[i] / (g[0] + g[1] + ... + g[n-1]),  g[i] = exp(-(i - n/2)^2 / (2 sigma^2))
 *
 * in double precision, where g below 2^-40 counts as 0, then rounded to single precision. All
 * types compute in single precision in the order of the separable filter of 32f; the results of 8u,
 * 16u and 16s are rounded and saturated by convention 13. For this filter the functions with and
 * without _L differ only in the types of sizes and steps, and share their states.
 *
 * Border: convention 10; in memory, n/2 pixels around the region are read.
 * Arguments and status are those of the separable filter; the state is one for the element type and
 * channels, and pBuffer has as many bytes as zmoiFilterGaussianGetSize reports. */
typedef struct ZmoiGaussianState ZmoiGaussianState;

ZMO_API ZmoStatus zmoiFilterGaussianBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo8u* pBorderValue,
                                                  const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo8u* pBorderValue,
                                                  const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                   const Zmo16u* pBorderValue,
                                                   const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_16u_C3R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                   const Zmo16u* pBorderValue,
                                                   const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                   const Zmo16s* pBorderValue,
                                                   const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_16s_C3R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                   const Zmo16s* pBorderValue,
                                                   const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                   const Zmo32f* pBorderValue,
                                                   const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussianBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                   const Zmo32f* pBorderValue,
                                                   const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo16u* pBorderValue,
                                               const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_16u_C3R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo16u* pBorderValue,
                                               const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo16s* pBorderValue,
                                               const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_16s_C3R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo16s* pBorderValue,
                                               const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo32f* pBorderValue,
                                               const ZmoiGaussianState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterGaussian_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                               int64_t dstStep, ZmoiSizeL roi,
                                               ZmoiBorderType border, const Zmo32f* pBorderValue,
                                               const ZmoiGaussianState* pState, Zmo8u* pBuffer);

/* Sizes in bytes of the state and of the work buffer for regions up to roi. Status, in the order of
 * the checks:
 *   zmoStsNullPtrErr     pStateSize or pBufferSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    kernelSize is even or not 1 to 255
 *   zmoStsDataTypeErr    type is not 8u, 16u, 16s or 32f
 *   zmoStsChannelsErr    channels is not 1 or 3
 *   zmoStsTooLargeErr    a size does not fit its type */
ZMO_API ZmoStatus zmoiFilterGaussianGetSize(ZmoiSize roi, int kernelSize, ZmoDataType type,
                                            int channels, int* pStateSize, int* pBufferSize);
ZMO_API ZmoStatus zmoiFilterGaussianGetSize_L(ZmoiSizeL roi, int kernelSize, ZmoDataType type,
                                              int channels, int64_t* pStateSize,
                                              int64_t* pBufferSize);

/* Fills a state. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pState is null
 *   zmoStsMaskSizeErr    kernelSize is even or not 1 to 255
 *   zmoStsRangeErr       sigma is not finite, or below 1e-6
 *   zmoStsDataTypeErr    type is not 8u, 16u, 16s or 32f
 *   zmoStsChannelsErr    channels is not 1 or 3 */
ZMO_API ZmoStatus zmoiFilterGaussianInit(int kernelSize, Zmo32f sigma, ZmoDataType type,
                                         int channels, ZmoiGaussianState* pState);
ZMO_API ZmoStatus zmoiFilterGaussianInit_L(int kernelSize, Zmo32f sigma, ZmoDataType type,
                                           int channels, ZmoiGaussianState* pState);

/* ---- Row and column pipelines ------------------------------------------------------------------
 *
 * One half of a separable filter each, between an image and rows anywhere in memory: a user streams
 * the lines of a picture through both, with as many rows in flight as the column kernel has taps.
 * With n = kernelSize, for each channel
 *
 *   Row      ppDst[y][x] = sum of k[i] src(x + i - anchor, y),  i from 0 to n-1
 *   Column   dst(x,y) = sum of k[j] ppSrc[y + j][x],  j from 0 to n-1
 *
 * Integer sums are exact, divided by the divisor, rounded and saturated by convention 13; kernels
 * of 16u images are signed, too. 32f: ((k0 a0 + k1 a1) + k2 a2) + ... in single precision, no
 * divisor. _Low: s starts at 0 and becomes s + k[i] a in the order of the taps, saturated to 16
 * bits after each; that is the result.
 *
 * Border (rows): convention 10, to the left and right; in memory, the pixels are read that the taps
 * reach. The column pipeline has its border in the rows that its pointers name.
 *   pSrc, srcStep    source of the row pipeline; ppDst: its roi.height rows of roi.width pixels
 *   ppSrc            roi.height + kernelSize - 1 rows; a row may stand in several places
 *   pDst, dstStep    destination of the column pipeline
 *   roi              pixels of the image
 *   pKernel          kernelSize weights; anchor: the tap on the pixel
 *   border           border type; pBorderValue: one element a channel, for zmoiBorderConst only
 *   pBuffer          as many bytes as the GetBufferSize query of the same name reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer, or a row's, is null; pBorderValue with zmoiBorderConst only
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        the step is shorter than a row or no multiple of the element size
 *   zmoStsMaskSizeErr    kernelSize is not 1 to 255
 *   zmoStsAnchorErr      the anchor is not a tap
 *   zmoStsRangeErr       the divisor is below 1, or the sizes of the weights add to more than
 *                        32767; _Low has neither limit
 *   zmoStsBorderErr      border is unknown */
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_8u16s_C1R(const Zmo8u* pSrc, int srcStep,
                                                        Zmo16s** ppDst, ZmoiSize roi,
                                                        const Zmo16s* pKernel, int kernelSize,
                                                        int anchor, int divisor,
                                                        ZmoiBorderType border,
                                                        const Zmo8u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_8u16s_C3R(const Zmo8u* pSrc, int srcStep,
                                                        Zmo16s** ppDst, ZmoiSize roi,
                                                        const Zmo16s* pKernel, int kernelSize,
                                                        int anchor, int divisor,
                                                        ZmoiBorderType border,
                                                        const Zmo8u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_16u_C1R(const Zmo16u* pSrc, int srcStep,
                                                      Zmo16u** ppDst, ZmoiSize roi,
                                                      const Zmo16s* pKernel, int kernelSize,
                                                      int anchor, int divisor,
                                                      ZmoiBorderType border,
                                                      const Zmo16u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_16u_C3R(const Zmo16u* pSrc, int srcStep,
                                                      Zmo16u** ppDst, ZmoiSize roi,
                                                      const Zmo16s* pKernel, int kernelSize,
                                                      int anchor, int divisor,
                                                      ZmoiBorderType border,
                                                      const Zmo16u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_16s_C1R(const Zmo16s* pSrc, int srcStep,
                                                      Zmo16s** ppDst, ZmoiSize roi,
                                                      const Zmo16s* pKernel, int kernelSize,
                                                      int anchor, int divisor,
                                                      ZmoiBorderType border,
                                                      const Zmo16s* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_16s_C3R(const Zmo16s* pSrc, int srcStep,
                                                      Zmo16s** ppDst, ZmoiSize roi,
                                                      const Zmo16s* pKernel, int kernelSize,
                                                      int anchor, int divisor,
                                                      ZmoiBorderType border,
                                                      const Zmo16s* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_32f_C1R(const Zmo32f* pSrc, int srcStep,
                                                      Zmo32f** ppDst, ZmoiSize roi,
                                                      const Zmo32f* pKernel, int kernelSize,
                                                      int anchor, ZmoiBorderType border,
                                                      const Zmo32f* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_32f_C3R(const Zmo32f* pSrc, int srcStep,
                                                      Zmo32f** ppDst, ZmoiSize roi,
                                                      const Zmo32f* pKernel, int kernelSize,
                                                      int anchor, ZmoiBorderType border,
                                                      const Zmo32f* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_Low_16s_C1R(
    const Zmo16s* pSrc, int srcStep, Zmo16s** ppDst, ZmoiSize roi, const Zmo16s* pKernel,
    int kernelSize, int anchor, ZmoiBorderType border, const Zmo16s* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterRowBorderPipeline_Low_16s_C3R(
    const Zmo16s* pSrc, int srcStep, Zmo16s** ppDst, ZmoiSize roi, const Zmo16s* pKernel,
    int kernelSize, int anchor, ZmoiBorderType border, const Zmo16s* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16u_C1R(const Zmo16u** ppSrc, Zmo16u* pDst, int dstStep,
                                                   ZmoiSize roi, const Zmo16s* pKernel,
                                                   int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16u_C3R(const Zmo16u** ppSrc, Zmo16u* pDst, int dstStep,
                                                   ZmoiSize roi, const Zmo16s* pKernel,
                                                   int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16s_C1R(const Zmo16s** ppSrc, Zmo16s* pDst, int dstStep,
                                                   ZmoiSize roi, const Zmo16s* pKernel,
                                                   int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16s_C3R(const Zmo16s** ppSrc, Zmo16s* pDst, int dstStep,
                                                   ZmoiSize roi, const Zmo16s* pKernel,
                                                   int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16s8u_C1R(const Zmo16s** ppSrc, Zmo8u* pDst, int dstStep,
                                                     ZmoiSize roi, const Zmo16s* pKernel,
                                                     int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16s8u_C3R(const Zmo16s** ppSrc, Zmo8u* pDst, int dstStep,
                                                     ZmoiSize roi, const Zmo16s* pKernel,
                                                     int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16s8s_C1R(const Zmo16s** ppSrc, Zmo8s* pDst, int dstStep,
                                                     ZmoiSize roi, const Zmo16s* pKernel,
                                                     int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_16s8s_C3R(const Zmo16s** ppSrc, Zmo8s* pDst, int dstStep,
                                                     ZmoiSize roi, const Zmo16s* pKernel,
                                                     int kernelSize, int divisor, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_32f_C1R(const Zmo32f** ppSrc, Zmo32f* pDst, int dstStep,
                                                   ZmoiSize roi, const Zmo32f* pKernel,
                                                   int kernelSize, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_32f_C3R(const Zmo32f** ppSrc, Zmo32f* pDst, int dstStep,
                                                   ZmoiSize roi, const Zmo32f* pKernel,
                                                   int kernelSize, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_Low_16s_C1R(const Zmo16s** ppSrc, Zmo16s* pDst,
                                                       int dstStep, ZmoiSize roi,
                                                       const Zmo16s* pKernel, int kernelSize,
                                                       Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterColumnPipeline_Low_16s_C3R(const Zmo16s** ppSrc, Zmo16s* pDst,
                                                       int dstStep, ZmoiSize roi,
                                                       const Zmo16s* pKernel, int kernelSize,
                                                       Zmo8u* pBuffer);

/* Work buffers of the pipelines, _Low included, for regions up to roi. type is that of the source.
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    kernelSize is not 1 to 255
 *   zmoStsDataTypeErr    type is not 8u (rows only), 16u, 16s or 32f
 *   zmoStsChannelsErr    channels is not 1 or 3
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiFilterRowBorderPipelineGetBufferSize(ZmoiSize roi, int kernelSize,
                                                           ZmoDataType type, int channels,
                                                           int* pSize);
ZMO_API ZmoStatus zmoiFilterColumnPipelineGetBufferSize(ZmoiSize roi, int kernelSize,
                                                        ZmoDataType type, int channels, int* pSize);

#ifdef __cplusplus
}
#endif

#endif
