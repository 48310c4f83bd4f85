/* Computer vision: pixels along a line, and windows at fractional positions. The conventions stand
 * in zmotypes.h. */
#ifndef ZMOCV_SAMPLE_H
#define ZMOCV_SAMPLE_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Pixels along a line -----------------------------------------------------------------------
 *
 * J. E. Bresenham, "Algorithm for computer control of a digital plotter", IBM Systems Journal 4
 * (1965): the 8-connected digital line from first to last, both ends included. With a the larger
 * and b the smaller of |last.x - first.x| and |last.y - first.y| (x counts as the larger of equal
 * ones), there are a + 1 pixels, and pixel k (k = 0 ... a) lies
 *   k                              towards last along the axis of a, and
 *   floor((2 k b + a) / (2 a))     towards last along the other axis: k b / a, rounded half up
 * off first. The line back from last to first may hold other pixels where k b / a lies halfway.
 *
 *   pSrc, srcStep     image, one channel or three
 *   pLine             the pixels one after the other, channels interleaved: a + 1 of them
 *   roi               pixels of the image
 *   first, last       ends of the line, inside roi
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr  a pointer is null
 *   zmoStsSizeErr     a side of roi is below 1
 *   zmoStsStepErr     the step is shorter than a row or no multiple of the element size
 *   zmoStsPointErr    first or last lies outside roi */
ZMO_API ZmoStatus zmoiSampleLine_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pLine, ZmoiSize roi,
                                        ZmoiPoint first, ZmoiPoint last);
ZMO_API ZmoStatus zmoiSampleLine_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pLine, ZmoiSize roi,
                                        ZmoiPoint first, ZmoiPoint last);
ZMO_API ZmoStatus zmoiSampleLine_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pLine,
                                         ZmoiSize roi, ZmoiPoint first, ZmoiPoint last);
ZMO_API ZmoStatus zmoiSampleLine_16u_C3R(const Zmo16u* pSrc, int srcStep, Zmo16u* pLine,
                                         ZmoiSize roi, ZmoiPoint first, ZmoiPoint last);
ZMO_API ZmoStatus zmoiSampleLine_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pLine,
                                         ZmoiSize roi, ZmoiPoint first, ZmoiPoint last);
ZMO_API ZmoStatus zmoiSampleLine_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pLine,
                                         ZmoiSize roi, ZmoiPoint first, ZmoiPoint last);

/* ---- Windows at fractional positions ------------------------------------------------------------
 *
 * Bilinear interpolation: with fractions fx and fy, 0 <= fx, fy < 1, and pixels s00 and s01 of one
 * row, s10 and s11 of the next,
 *   upper = (1 - fx) s00 + fx s01
 *   lower = (1 - fx) s10 + fx s11
 *   value = (1 - fy) upper + fy lower
 * in single precision, each difference, product and sum rounded once. A fraction of 0 leaves its
 * step out: upper = s00, lower = s10, value = upper, and the pixels beyond are not read. Results
 * to integers follow convention 13; Sfs multiplies value by 2^-scaleFactor, rounded once, before.
 *
 * CopySubpix: s00 of pixel (x, y) of the window is pSrc's pixel (x, y), s01 the one to its right,
 * s10 and s11 those below; fx = dx, fy = dy. It reads a column to the right of the region when dx
 * is not 0, and a row below it when dy is not 0.
 *
 * CopySubpixIntersect: pixel (x, y) of the window stands at (corner.x + x, corner.y + y) of the
 * image. Its s00 is the image's pixel (floor(corner.x) + x, floor(corner.y) + y); the fractions are
 * those of corner, rounded to single precision, and one that becomes 1 moves on to the next pixel
 * with fraction 0. Where the window leaves the image, the nearest pixel of the image stands for the
 * missing one, for each of the four separately.
 * The valid part of the window are the pixels for whose value no pixel had to be replaced: *pFirst
 * is its first one, *pLast its last one, both counted in the window and included. Without any,
 * *pFirst is (0, 0) and *pLast (-1, -1).
 *
 *   pSrc, srcStep     image, one channel
 *   srcRoi            pixels of the image (Intersect)
 *   pDst, dstStep     window, one channel
 *   roi               pixels of the window
 *   dx, dy            fractional position, each at least 0 and below 1
 *   corner            position of the window's first pixel in the image, any finite numbers
 *   pFirst, pLast     the valid part
 *   scaleFactor       -31 ... 31
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr  a pointer is null
 *   zmoStsSizeErr     a side of srcRoi or roi is below 1
 *   zmoStsStepErr     a step is shorter than a row, with the column that dx adds, or no multiple of
 *                     the element size
 *   zmoStsRangeErr    dx or dy is outside its range; corner is infinite or not a number
 *   zmoStsScaleErr    scaleFactor is outside its range */
ZMO_API ZmoStatus zmoiCopySubpix_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                        ZmoiSize roi, Zmo32f dx, Zmo32f dy);
ZMO_API ZmoStatus zmoiCopySubpix_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst, int dstStep,
                                         ZmoiSize roi, Zmo32f dx, Zmo32f dy);
ZMO_API ZmoStatus zmoiCopySubpix_8u16u_C1R_Sfs(const Zmo8u* pSrc, int srcStep, Zmo16u* pDst,
                                               int dstStep, ZmoiSize roi, Zmo32f dx, Zmo32f dy,
                                               int scaleFactor);
ZMO_API ZmoStatus zmoiCopySubpix_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                           int dstStep, ZmoiSize roi, Zmo32f dx, Zmo32f dy);
ZMO_API ZmoStatus zmoiCopySubpix_16u32f_C1R(const Zmo16u* pSrc, int srcStep, Zmo32f* pDst,
                                            int dstStep, ZmoiSize roi, Zmo32f dx, Zmo32f dy);
ZMO_API ZmoStatus zmoiCopySubpix_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                         ZmoiSize roi, Zmo32f dx, Zmo32f dy);

ZMO_API ZmoStatus zmoiCopySubpixIntersect_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi,
                                                 Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                                 ZmoiPoint32f corner, ZmoiPoint* pFirst,
                                                 ZmoiPoint* pLast);
ZMO_API ZmoStatus zmoiCopySubpixIntersect_16u_C1R(const Zmo16u* pSrc, int srcStep, ZmoiSize srcRoi,
                                                  Zmo16u* pDst, int dstStep, ZmoiSize roi,
                                                  ZmoiPoint32f corner, ZmoiPoint* pFirst,
                                                  ZmoiPoint* pLast);
ZMO_API ZmoStatus zmoiCopySubpixIntersect_8u16u_C1R_Sfs(const Zmo8u* pSrc, int srcStep,
                                                        ZmoiSize srcRoi, Zmo16u* pDst, int dstStep,
                                                        ZmoiSize roi, ZmoiPoint32f corner,
                                                        ZmoiPoint* pFirst, ZmoiPoint* pLast,
                                                        int scaleFactor);
ZMO_API ZmoStatus zmoiCopySubpixIntersect_8u32f_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi,
                                                    Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                                    ZmoiPoint32f corner, ZmoiPoint* pFirst,
                                                    ZmoiPoint* pLast);
ZMO_API ZmoStatus zmoiCopySubpixIntersect_16u32f_C1R(const Zmo16u* pSrc, int srcStep,
                                                     ZmoiSize srcRoi, Zmo32f* pDst, int dstStep,
                                                     ZmoiSize roi, ZmoiPoint32f corner,
                                                     ZmoiPoint* pFirst, ZmoiPoint* pLast);
ZMO_API ZmoStatus zmoiCopySubpixIntersect_32f_C1R(const Zmo32f* pSrc, int srcStep, ZmoiSize srcRoi,
                                                  Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                                  ZmoiPoint32f corner, ZmoiPoint* pFirst,
                                                  ZmoiPoint* pLast);

#ifdef __cplusplus
}
#endif

#endif
