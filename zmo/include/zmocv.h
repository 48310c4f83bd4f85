/* Computer vision: edges. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_H
#define ZMOCV_H

#include "zmocv_arith.h"
#include "zmocv_distance.h"
#include "zmocv_inpaint.h"
#include "zmocv_integral.h"
#include "zmocv_lens.h"
#include "zmocv_morph.h"
#include "zmocv_norm.h"
#include "zmocv_region.h"
#include "zmocv_sample.h"
#include "zmocv_segment.h"
#include "zmocv_shape.h"
#include "zmocv_stat.h"
#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of libzmocv. The record lives as long as the library; its text follows the processor
 * level with each call. */
ZMO_API const ZmoLibraryVersion* zmocvGetVersion(void);

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
 *   diagonal     all others; the falling diagonal when dx and dy have the same sign, else the
 * rising t is 0.41421356f, the tangent of 22.5 degrees; the product is rounded to single precision.
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
 *   pBuffer           as many bytes as zmoiCannyGetSize tells
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

/* Work buffer of the Canny functions for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr      pSize is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsTooLargeErr     the size does not fit an int */
ZMO_API ZmoStatus zmoiCannyGetSize(ZmoiSize roi, int* pSize);

#ifdef __cplusplus
}
#endif

#endif
