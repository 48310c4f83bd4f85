/* Computer vision: distances to the nearest zero pixel. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_DISTANCE_H
#define ZMOCV_DISTANCE_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* All functions of this header compute for each pixel how far the nearest zero pixel of the source
 * inside the region is, in pixels or in the unit of the metrics. The distance of a zero pixel is 0.
 * What lies outside the region has no influence. */

/* ---- Chamfer distances -------------------------------------------------------------------------
 *
 * G. Borgefors, "Distance transformations in digital images", CVGIP 34 (1986): the length of the
 * shortest path of steps to the eight neighbours, pMetrics[0] long to those that share a side and
 * pMetrics[1] long to those at a corner; 5x5 adds the eight knight's moves, pMetrics[2] long.
 * Found in two passes, from the top row by row, each row from the left, then from the bottom, each
 * row from the right. The passes find the shortest path when no step is longer than a way around:
 * with a, b, c for the metrics, a <= b <= 2a, and in 5x5 also b <= 1.5 c, 2a <= c and c <= a + b.
 *
 * Lengths larger than the destination's largest value become that value, and so does everything
 * when no pixel is zero. 32f sums are rounded to single precision step by step in the order of the
 * passes.
 *
 *   pSrc, srcStep      image, one channel; pDst, dstStep: distances; pSrcDst: both
 *   roi                pixels of both
 *   pMetrics           two step lengths for 3x3, three for 5x5, all above 0
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr   a pointer is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsStepErr      a step is shorter than a row or no multiple of the element size
 *   zmoStsRangeErr     a metric is 0, negative or not a number */
ZMO_API ZmoStatus zmoiDistanceTransform_3x3_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                   int dstStep, ZmoiSize roi,
                                                   const Zmo32s* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_3x3_8u16u_C1R(const Zmo8u* pSrc, int srcStep, Zmo16u* pDst,
                                                      int dstStep, ZmoiSize roi,
                                                      const Zmo32s* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_3x3_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                                      int dstStep, ZmoiSize roi,
                                                      const Zmo32f* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_3x3_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                    const Zmo32s* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_5x5_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                   int dstStep, ZmoiSize roi,
                                                   const Zmo32s* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_5x5_8u16u_C1R(const Zmo8u* pSrc, int srcStep, Zmo16u* pDst,
                                                      int dstStep, ZmoiSize roi,
                                                      const Zmo32s* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_5x5_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                                      int dstStep, ZmoiSize roi,
                                                      const Zmo32f* pMetrics);
ZMO_API ZmoStatus zmoiDistanceTransform_5x5_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                    const Zmo32s* pMetrics);

/* ---- Euclidean distance ------------------------------------------------------------------------
 *
 * P. Felzenszwalb and D. Huttenlocher, "Distance Transforms of Sampled Functions", Theory of
 * Computing 8 (2012): in a time that grows with the number of pixels only. The distance is the root
 * of the exact squared distance, taken in double precision and rounded to single precision; the
 * largest 32f value when no pixel is zero.
 *
 *   pSrc, srcStep      image, one channel; pDst, dstStep: distances
 *   roi                pixels of both
 *   pBuffer            as many bytes as zmoiTrueDistanceTransformGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr   a pointer is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsStepErr      a step is shorter than a row or no multiple of the element size
 *   zmoStsTooLargeErr  a side of roi is above 2^20 */
ZMO_API ZmoStatus zmoiTrueDistanceTransform_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                                      int dstStep, ZmoiSize roi, Zmo8u* pBuffer);

/* Work buffer for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr   pSize is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsDataTypeErr  type is not 8u
 *   zmoStsChannelsErr  channels is not 1
 *   zmoStsTooLargeErr  roi is too large */
ZMO_API ZmoStatus zmoiTrueDistanceTransformGetBufferSize(ZmoiSize roi, ZmoDataType type,
                                                         int channels, int* pSize);

/* ---- Fast marching -----------------------------------------------------------------------------
 *
 * J. Sethian, "A fast marching level set method for monotonically advancing fronts", PNAS 93
 * (1996): the time T at which a front that starts at the zero pixels arrives with a speed of one
 * pixel. With a the smaller T of the neighbours left and right and b that of those above and below,
 * of those with an earlier time than the pixel's,
 *
 *   T = (a + b + sqrt(2 - (a - b)^2)) / 2   where |a - b| < 1
 *   T = min(a, b) + 1                       else
 *
 * in single precision. The front stops at radius: pixels that it would reach later, or never, get
 * the value radius, and the time of the call grows with what lies within radius.
 *
 *   pSrc, srcStep      image, one channel; pDst, dstStep: times
 *   roi                pixels of both
 *   radius             above 0
 *   pBuffer            as many bytes as zmoiFastMarchingGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr   a pointer is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsStepErr      a step is shorter than a row or no multiple of the element size
 *   zmoStsRangeErr     radius is 0, negative or not a number
 *   zmoStsTooLargeErr  roi is larger than zmoiFastMarchingGetBufferSize accepts */
ZMO_API ZmoStatus zmoiFastMarching_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                             int dstStep, ZmoiSize roi, Zmo32f radius,
                                             Zmo8u* pBuffer);

/* Work buffer for the region roi. Status: as of zmoiTrueDistanceTransformGetBufferSize. */
ZMO_API ZmoStatus zmoiFastMarchingGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                int* pSize);

#ifdef __cplusplus
}
#endif

#endif
