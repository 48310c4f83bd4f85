/* Computer vision: tables of sums over rectangles, upright or turned by 45 degrees, and local
 * deviations taken from them. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_INTEGRAL_H
#define ZMOCV_INTEGRAL_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Tables of sums ----------------------------------------------------------------------------
 *
 * A table has roi.width + 1 columns and roi.height + 1 rows. With a(i,j) the source pixel:
 *
 *   Integral         T(x,y) = start + sum of a(i,j),         i < x and j < y
 *   TiltedIntegral   T(x,y) = start + sum of a(i,j),         j < y and |i - (x-1)| <= y-1-j
 *   SqrIntegral, TiltedSqrIntegral: the same table, and in pDst2 that of a(i,j) a(i,j), which
 *   starts at sqrStart
 *
 * F. C. Crow, "Summed-Area Tables for Texture Mapping", 1984; R. Lienhart, J. Maydt, "An Extended
 * Set of Haar-like Features for Rapid Object Detection", 2002. The pixels of a tilted sum fill a
 * triangle that stands on the pixel (x-1, y-1) and grows upward; column 0 and the last column hold
 * what of it lies inside the picture.
 *
 * Sums of 8u are exact, whatever the size. A 32s table keeps their lowest 32 bits, so that
 * differences within a table are right as long as they fit 32 bits. 32f and 64f tables: start is
 * added in double precision, and the result is rounded once to the type of the table. Sums of 32f:
 * the sum of a row up to a column is taken in double precision from left to right, added to the
 * table's value one row above, and rounded to single precision.
 *
 *   pSrc, srcStep        source, one channel
 *   pDst, dstStep        table of sums, pDst2, dst2Step: table of squares
 *   roi                  pixels of the source
 *   start, sqrStart      value that all sums start with
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row (a table's has roi.width + 1 elements) or no
 *                        multiple of the element size
 *   zmoStsRangeErr       8u32f: start is above 2^50 in size or not a number
 *   zmoStsTooLargeErr    8u32f: roi.width is above 2^22 */
ZMO_API ZmoStatus zmoiIntegral_8u32s_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst, int dstStep,
                                         ZmoiSize roi, Zmo32s start);
ZMO_API ZmoStatus zmoiIntegral_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                         ZmoiSize roi, Zmo32f start);
ZMO_API ZmoStatus zmoiIntegral_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                       ZmoiSize roi, Zmo32f start);
ZMO_API ZmoStatus zmoiTiltedIntegral_8u32s_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst,
                                               int dstStep, ZmoiSize roi, Zmo32s start);
ZMO_API ZmoStatus zmoiTiltedIntegral_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                               int dstStep, ZmoiSize roi, Zmo32f start);
ZMO_API ZmoStatus zmoiSqrIntegral_8u32s_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst,
                                            int dstStep, Zmo32s* pDst2, int dst2Step, ZmoiSize roi,
                                            Zmo32s start, Zmo32s sqrStart);
ZMO_API ZmoStatus zmoiSqrIntegral_8u32s64f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst,
                                               int dstStep, Zmo64f* pDst2, int dst2Step,
                                               ZmoiSize roi, Zmo32s start, Zmo64f sqrStart);
ZMO_API ZmoStatus zmoiSqrIntegral_8u32f64f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                               int dstStep, Zmo64f* pDst2, int dst2Step,
                                               ZmoiSize roi, Zmo32f start, Zmo64f sqrStart);
ZMO_API ZmoStatus zmoiTiltedSqrIntegral_8u32s_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst,
                                                  int dstStep, Zmo32s* pDst2, int dst2Step,
                                                  ZmoiSize roi, Zmo32s start, Zmo32s sqrStart);
ZMO_API ZmoStatus zmoiTiltedSqrIntegral_8u32s64f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst,
                                                     int dstStep, Zmo64f* pDst2, int dst2Step,
                                                     ZmoiSize roi, Zmo32s start, Zmo64f sqrStart);
ZMO_API ZmoStatus zmoiTiltedSqrIntegral_8u32f64f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                                     int dstStep, Zmo64f* pDst2, int dst2Step,
                                                     ZmoiSize roi, Zmo32f start, Zmo64f sqrStart);

/* ---- Deviations in a moving rectangle ----------------------------------------------------------
 *
 * The standard deviation of the n pixels inside a rectangle that moves with the pixel (x, y) of the
 * destination, from a table T of sums and a table Q of squares. S and R are the sums of T and Q
 * over the rectangle; with X = x + rect.x, Y = y + rect.y, w = rect.width and h = rect.height:
 *
 *   RectStdDev         n = w h
 *     S = (T(X+w, Y+h) - T(X, Y+h)) - (T(X+w, Y) - T(X, Y))
 *   TiltedRectStdDev   n = 2 w h, the corners of the rectangle lie below, right, left and above
 *     S = (T(X+w-h, Y+w+h) - T(X+w, Y+w)) - (T(X-h, Y+h) - T(X, Y))
 *   D = max(n R - S S, 0)
 *
 *   32f results    sqrt(D / (n n))
 *   32s results    sqrt(D) / n * 2^-scaleFactor, rounded and saturated by convention 13
 *
 * Differences of 32s tables are taken modulo 2^32, those of a table of squares not negative; all
 * else is in double precision. For 32f results 1 / (n n) is rounded once, its product with D is
 * rounded to single precision, and so is the root.
 *
 *   pSrc, srcStep        T, from the cell that belongs to the destination's first pixel
 *   pSqr, sqrStep        Q, likewise
 *   pDst, dstStep        deviations, one channel
 *   roi                  pixels of the destination
 *   rect                 rectangle, relative to each pixel
 *   scaleFactor          exponent of the scale, -31 to 31
 * Columns from X (tilted: X-h) to X+w and rows from Y to Y+h (tilted: Y+w+h) of both tables are
 * read. Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row of roi.width or no multiple of the element
 *                        size
 *   zmoStsRectErr        rect.x (tilted: rect.x - rect.height) or rect.y is negative, a side of
 *                        rect is below 1, or the columns that the last pixel needs do not
 *                        fit into the step of a table
 *   zmoStsScaleErr       scaleFactor is outside -31..31 */
ZMO_API ZmoStatus zmoiRectStdDev_32s_C1RSfs(const Zmo32s* pSrc, int srcStep, const Zmo32s* pSqr,
                                            int sqrStep, Zmo32s* pDst, int dstStep, ZmoiSize roi,
                                            ZmoiRect rect, int scaleFactor);
ZMO_API ZmoStatus zmoiRectStdDev_32s32f_C1R(const Zmo32s* pSrc, int srcStep, const Zmo64f* pSqr,
                                            int sqrStep, Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                            ZmoiRect rect);
ZMO_API ZmoStatus zmoiRectStdDev_32f_C1R(const Zmo32f* pSrc, int srcStep, const Zmo64f* pSqr,
                                         int sqrStep, Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                         ZmoiRect rect);
ZMO_API ZmoStatus zmoiTiltedRectStdDev_32s_C1RSfs(const Zmo32s* pSrc, int srcStep,
                                                  const Zmo32s* pSqr, int sqrStep, Zmo32s* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiRect rect,
                                                  int scaleFactor);
ZMO_API ZmoStatus zmoiTiltedRectStdDev_32s32f_C1R(const Zmo32s* pSrc, int srcStep,
                                                  const Zmo64f* pSqr, int sqrStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiRect rect);
ZMO_API ZmoStatus zmoiTiltedRectStdDev_32f_C1R(const Zmo32f* pSrc, int srcStep, const Zmo64f* pSqr,
                                               int sqrStep, Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                               ZmoiRect rect);

#ifdef __cplusplus
}
#endif

#endif
