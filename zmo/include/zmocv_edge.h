/* Computer vision: edges. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_EDGE_H
#define ZMOCV_EDGE_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Canny edges -------------------------------------------------------------------------------
 *
 * J. Canny, "A Computational Approach to Edge Detection", IEEE PAMI 8 (1986), from given
 * derivatives dx and dy: size of the gradient, suppression of non-maxima in four sectors,
 * thresholds with hysteresis. Edge pixels become 255, all others 0.
 *
 * Size m of the gradient:
 *   zmoiNormL1   m = |dx| + |dy|
 *   zmoiNormL2   m = sqrt(dx dx + dy dy), taken by its square: sizes and thresholds are compared
 *                through m m = dx dx + dy dy, low low and high high
 *   16s computes m, or its square, exactly. 32f computes it in single precision (each product and
 *   sum rounded once) and compares with the exact threshold or its exact square, where what lies
 *   below 2^-126 counts as 0.
 *
 * Sector, from |dx| and |dy|, the first that holds:
 *   along x      16s: 32768 |dy| <= 13573 |dx|        32f: |dy| <= t |dx|
 *   along y      16s: 32768 |dx| <= 13573 |dy|        32f: |dx| <= t |dy|
 *   diagonal     all others; the falling diagonal when dx and dy have the same sign, else
 *                the rising one
 * t is 0.41421356f, the tangent of 22.5 degrees; the product is rounded to single precision.
 *
 * Neighbours of a pixel at (x, y) in its sector, the earlier and the later one in reading order:
 *   along x            (x-1, y) and (x+1, y)
 *   along y            (x, y-1) and (x, y+1)
 *   falling diagonal   (x-1, y-1) and (x+1, y+1)
 *   rising diagonal    (x+1, y-1) and (x-1, y+1)
 *   Outside the region m is 0.
 *
 * A pixel is a maximum when m > m(earlier) and m >= m(later): of equal neighbours the first in
 * reading order stays. A maximum with m > low is a candidate, with m > high a seed. The edge pixels
 * are the seeds and all candidates joined with a seed by a chain of candidates, each one of the
 * eight neighbours of the next.
 *
 *   pSrc, srcStep     dx, one channel; pSrc2, src2Step: dy
 *   pDst, dstStep     edges, one channel
 *   roi               pixels of all three
 *   low, high         thresholds for m, 0 <= low <= high
 *   norm              zmoiNormL1 or zmoiNormL2
 *   pBuffer           as many bytes as zmoiCannyGetSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      a pointer is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         a step is shorter than a row or no multiple of the element size
 *   zmoStsThresholdErr    low is negative, above high, or either is not a number
 *   zmoStsNormErr         norm is unknown
 *   zmoStsTooLargeErr     roi is larger than zmoiCannyGetSize accepts */
ZMO_API ZmoStatus zmoiCanny_16s8u_C1R(const Zmo16s* pSrc, int srcStep, const Zmo16s* pSrc2,
                                      int src2Step, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                      Zmo32f low, Zmo32f high, ZmoiNorm norm, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiCanny_32f8u_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                      int src2Step, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                      Zmo32f low, Zmo32f high, ZmoiNorm norm, Zmo8u* pBuffer);

/* The same for large images. */
ZMO_API ZmoStatus zmoiCanny_16s8u_C1R_L(const Zmo16s* pSrc, int64_t srcStep, const Zmo16s* pSrc2,
                                        int64_t src2Step, Zmo8u* pDst, int64_t dstStep,
                                        ZmoiSizeL roi, Zmo32f low, Zmo32f high, ZmoiNorm norm,
                                        Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiCanny_32f8u_C1R_L(const Zmo32f* pSrc, int64_t srcStep, const Zmo32f* pSrc2,
                                        int64_t src2Step, Zmo8u* pDst, int64_t dstStep,
                                        ZmoiSizeL roi, Zmo32f low, Zmo32f high, ZmoiNorm norm,
                                        Zmo8u* pBuffer);

/* Work buffer of the Canny functions for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr      pSize is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsTooLargeErr     the size does not fit its type */
ZMO_API ZmoStatus zmoiCannyGetSize(ZmoiSize roi, int* pSize);
ZMO_API ZmoStatus zmoiCannyGetSize_L(ZmoiSizeL roi, int64_t* pSize);

/* Canny edges of a picture: dx and dy are its derivatives, exactly, and edges are found from them
 * as zmoiCanny_16s8u_C1R finds them. With a(i,j) the pixel i columns to the right and j rows below,
 *
 *   dx = sum of S[j] D[i] a(i,j),   dy = sum of D[j] S[i] a(i,j)
 *   Sobel,  3x3   S = 1 2 1,      D = -1 0 1
 *   Sobel,  5x5   S = 1 4 6 4 1,  D = -1 -2 0 2 1
 *   Scharr, 3x3   S = 3 10 3,     D = -1 0 1
 *
 * Border: convention 10, for the derivatives; in memory, 1 (3x3) or 2 (5x5) pixels around the
 * region are read. The size of the gradient outside the region is 0 with every border.
 *
 *   pSrc, srcStep     picture, one channel
 *   pDst, dstStep     edges, one channel
 *   roi               pixels of both
 *   kernel            zmoiDiffSobel or zmoiDiffScharr
 *   mask              zmoiMask3x3 or, for Sobel, zmoiMask5x5
 *   low, high         thresholds for the size of the gradient, 0 <= low <= high
 *   norm              zmoiNormL1 or zmoiNormL2
 *   border            border type; pBorderValue: its value, for zmoiBorderConst only
 *   pBuffer           as many bytes as zmoiCannyBorderGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      pSrc, pDst or pBuffer is null, or pBorderValue with zmoiBorderConst
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         a step is shorter than a row
 *   zmoStsFlagErr         kernel is unknown
 *   zmoStsMaskSizeErr     there is no such mask of this kernel
 *   zmoStsThresholdErr    low is negative, above high, or either is not a number
 *   zmoStsNormErr         norm is unknown
 *   zmoStsBorderErr       border is unknown
 *   zmoStsTooLargeErr     roi is larger than zmoiCannyBorderGetBufferSize accepts */
ZMO_API ZmoStatus zmoiCannyBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                         ZmoiSize roi, ZmoiDifferentialKernel kernel,
                                         ZmoiMaskSize mask, Zmo32f low, Zmo32f high, ZmoiNorm norm,
                                         ZmoiBorderType border, const Zmo8u* pBorderValue,
                                         Zmo8u* pBuffer);

/* Work buffer of zmoiCannyBorder for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    mask is unknown
 *   zmoStsDataTypeErr    type is not zmo8u
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiCannyBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask, ZmoDataType type,
                                               int channels, int* pSize);

#ifdef __cplusplus
}
#endif

#endif
