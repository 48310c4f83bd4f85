/* Computer vision: windows that a stage of a cascade accepts, straight lines, corners. The
 * conventions stand in zmotypes.h. */
#ifndef ZMOCV_SHAPE_H
#define ZMOCV_SHAPE_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Stage of a cascade ------------------------------------------------------------------------
 *
 * P. Viola, M. Jones, "Rapid Object Detection using a Boosted Cascade of Simple Features", CVPR
 * 2001; tilted rectangles after R. Lienhart, J. Maydt, "An Extended Set of Haar-like Features for
 * Rapid Object Detection", ICIP 2002. One stage of the cascade decides on the windows whose upper
 * left corners (x, y) the mask selects. The stage is a sequence of classifiers; classifier k has
 * one or more rectangles with weights, a threshold t and two values:
 *
 *   S_r = sum over the rectangle r, moved by (x, y), from the table T of sums (zmoiIntegral)
 *         upright   (T(X+w, Y+h) - T(X, Y+h)) - (T(X+w, Y) - T(X, Y))
 *         tilted    (T(X+w-h, Y+w+h) - T(X+w, Y+w)) - (T(X-h, Y+h) - T(X, Y))
 *         with X = x + rect.x, Y = y + rect.y, w = rect.width, h = rect.height
 *   F   = sum of weight_r S_r
 *   V   = sum over the classifiers of (F < t deviation(x, y) ? low : high)
 *
 * The window stays when V >= threshold; otherwise its mask becomes 0. The table is that of
 * zmoiIntegral, or of zmoiTiltedIntegral when the state was initialised for tilted rectangles.
 *
 *   32f   All operations in single precision, in the order of rectangles and classifiers. A feature
 *         that is not a number lies below no threshold.
 *   32s   t is multiplied with 2^-scaleFactor too. S is the difference modulo 2^32 as a signed
 *         number, all else is exact.
 *
 *   pSrc, srcStep        T, from the cell that belongs to the first window
 *   pSrc2, src2Step      deviations, one for each window (zmoiRectStdDev)
 *   pMask, maskStep      non-zero selects a window; windows that are rejected become 0, the others
 *                        keep their value
 *   roi                  windows
 *   threshold            of the stage
 *   pPositive            number of windows that stay
 *   pState               from zmoiHaarInit of the same type
 *   scaleFactor          exponent of the scale, -31 to 31
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row of roi.width or no multiple of the element
 *                        size
 *   zmoStsThresholdErr   32f: threshold is not finite
 *   zmoStsScaleErr       scaleFactor is outside -31..31
 *   zmoStsStateErr       the state is not one of zmoiHaarInit, or of another type
 *   zmoStsRectErr        the columns that the last window needs do not fit into srcStep
 *   zmoStsEmptyMask      (note) the mask selected no window */
typedef struct ZmoiHaarState ZmoiHaarState;

ZMO_API ZmoStatus zmoiApplyHaarClassifier_32f_C1R(const Zmo32f* pSrc, int srcStep,
                                                  const Zmo32f* pSrc2, int src2Step, Zmo8u* pMask,
                                                  int maskStep, ZmoiSize roi, Zmo32f threshold,
                                                  int* pPositive, const ZmoiHaarState* pState);
ZMO_API ZmoStatus zmoiApplyHaarClassifier_32s_C1RSfs(const Zmo32s* pSrc, int srcStep,
                                                     const Zmo32s* pSrc2, int src2Step,
                                                     Zmo8u* pMask, int maskStep, ZmoiSize roi,
                                                     Zmo32s threshold, int* pPositive,
                                                     const ZmoiHaarState* pState, int scaleFactor);

/* State of a stage. rectangles counts those of all classifiers.
 *
 *   pRects, pWeights          rectangles and their weights, classifier after classifier
 *   pRectCounts               number of rectangles of each classifier
 *   pThresholds, pLow, pHigh  t, low and high of each classifier
 *   tilted                    0 for upright rectangles, else all are tilted
 * Status, in the order of the checks; in each list the first wrong entry decides:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsRangeErr       classifiers or one of pRectCounts is below 1, classifiers or the sum of
 *                        pRectCounts is above 65536
 *   zmoStsRectErr        a rectangle has a negative coordinate (tilted: x - height is negative), a
 *                        side below 1, or a coordinate or side above 65536
 *   zmoStsRangeErr       32f: a number is not finite. 32s: the weights of a classifier add up to
 *                        more than 2^21 in size, or a threshold is larger than 2^21 in size */
ZMO_API ZmoStatus zmoiHaarInit_32f(const ZmoiRect* pRects, const Zmo32f* pWeights,
                                   const int* pRectCounts, const Zmo32f* pThresholds,
                                   const Zmo32f* pLow, const Zmo32f* pHigh, int classifiers,
                                   int tilted, ZmoiHaarState* pState);
ZMO_API ZmoStatus zmoiHaarInit_32s(const ZmoiRect* pRects, const Zmo32s* pWeights,
                                   const int* pRectCounts, const Zmo32s* pThresholds,
                                   const Zmo32s* pLow, const Zmo32s* pHigh, int classifiers,
                                   int tilted, ZmoiHaarState* pState);

/* Size of that state. type is zmo32f or zmo32s. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pStateSize is null
 *   zmoStsRangeErr       classifiers is below 1, rectangles below classifiers or above 65536
 *   zmoStsDataTypeErr    type is neither of the two */
ZMO_API ZmoStatus zmoiHaarGetSize(int classifiers, int rectangles, ZmoDataType type,
                                  int* pStateSize);

/* ---- Straight lines ----------------------------------------------------------------------------
 *
 * R. O. Duda, P. E. Hart, "Use of the Hough Transformation to Detect Lines and Curves in Pictures",
 * 1972. The line (rho, theta) holds the points with x cos(theta) + y sin(theta) = rho, x and y
 * counted from the first pixel of the region. The angles and distances looked at are
 *
 *   theta_n = limits[0].theta + n delta.theta,  n = 0 .. N,  N = (limits[1].theta -
 *             limits[0].theta) / delta.theta, rounded to the nearest integer (halves up)
 *   rho_r   = limits[0].rho + r delta.rho, likewise
 *
 * Every non-zero pixel adds 1 to a cell (n, r) for each n, when 0 <= r <= the last one:
 *
 *   r = floor(x c + (y s + o)),  c = cos(theta_n) / delta.rho,  s = sin(theta_n) / delta.rho,
 *   o = 0.5 - limits[0].rho / delta.rho,  all in double precision
 *
 * A line is a cell with A(n, r) > threshold, A(n, r) > A(n-1, r), A(n, r) >= A(n+1, r), A(n, r) >
 * A(n, r-1) and A(n, r) >= A(n, r+1), where cells beyond the limits count 0. The lines come in the
 * order of falling A, those of equal A by n, then by r. The strongest maxLines are stored.
 *
 *   pSrc, srcStep        edges, one channel
 *   pLines               the lines found, rho_r and theta_n rounded to single precision
 *   roi                  pixels of the source
 *   limits               least and largest rho (pixels) and theta (radians)
 *   delta                distance of neighbours in both
 *   threshold            pixels that a line must exceed
 *   maxLines             room in pLines
 *   pCount               number of lines in pLines
 *   pBuffer              as many bytes as zmoiHoughLine_RegionGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        srcStep is shorter than a row
 *   zmoStsRangeErr       a limit is not finite, limits[0] is above limits[1], delta is not above 0
 *   zmoStsThresholdErr   threshold is negative
 *   zmoStsRangeErr       maxLines is below 1
 *   zmoStsTooLargeErr    more pixels, cells or lines than zmoiHoughLine_RegionGetBufferSize accepts
 *   zmoStsTruncated      (note) there are more than maxLines lines */
ZMO_API ZmoStatus zmoiHoughLine_Region_8u32f_C1R(const Zmo8u* pSrc, int srcStep, ZmoiPolar* pLines,
                                                 ZmoiSize roi, const ZmoiPolar limits[2],
                                                 ZmoiPolar delta, int threshold, int maxLines,
                                                 int* pCount, Zmo8u* pBuffer);

/* Work buffer of the function above. Status, in the order of the checks:
 *   zmoStsNullPtrErr     limits or pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsRangeErr       as above
 *   zmoStsDataTypeErr    type is not zmo8u
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size, or the number of pixels, does not fit an int */
ZMO_API ZmoStatus zmoiHoughLine_RegionGetBufferSize(ZmoiSize roi, const ZmoiPolar limits[2],
                                                    ZmoiPolar delta, int maxLines, ZmoDataType type,
                                                    int channels, int* pSize);

/* ---- Corners -----------------------------------------------------------------------------------
 *
 * E. Rosten, T. Drummond, "Machine Learning for High-Speed Corner Detection", ECCV 2006. The circle
 * of a pixel p are the 16 pixels at (0,-3) (1,-3) (2,-2) (3,-1) (3,0) (3,1) (2,2) (1,3) (0,3)
 * (-1,3) (-2,2) (-3,1) (-3,0) (-3,-1) (-2,-2) (-1,-3) from it. The score of p is the largest s such
 * that n neighbours on the circle all are at least s brighter than p, or all at least s darker; 0
 * when there is none, and for pixels less than 3 from the edge of the region. p is a corner when
 * its score exceeds threshold.
 *
 * With suppress not 0 a corner must also have a larger score than its neighbours (x-1, y-1) (x,
 * y-1) (x+1, y-1) (x-1, y), and none below those of the other four; pixels that are no corners
 * count 0.
 *
 *   pSrc, srcStep        source, one channel
 *   pDst, dstStep        the scores of corners, 0 elsewhere
 *   roi                  pixels of both
 *   n                    neighbours needed, 9 to 16
 *   threshold            0 to 255
 *   suppress             not 0: keep only the maxima
 *   pCount               number of corners in pDst
 *   pBuffer              as many bytes as zmoiFastNGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row
 *   zmoStsRangeErr       n is outside 9..16
 *   zmoStsThresholdErr   threshold is outside 0..255
 *   zmoStsTooLargeErr    roi is larger than zmoiFastNGetBufferSize accepts */
ZMO_API ZmoStatus zmoiFastN_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                   ZmoiSize roi, int n, int threshold, int suppress, int* pCount,
                                   Zmo8u* pBuffer);

/* Work buffer of zmoiFastN. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsDataTypeErr    type is not zmo8u
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiFastNGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize);

/* The places of the non-zero pixels of a map, in reading order.
 *
 *   pSrc, srcStep        map, one channel
 *   pList                the places found
 *   roi                  pixels of the map
 *   maxCorners           room in pList
 *   pCount               number of places in pList
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        srcStep is shorter than a row
 *   zmoStsRangeErr       maxCorners is below 1
 *   zmoStsTruncated      (note) there are more than maxCorners places */
ZMO_API ZmoStatus zmoiFastN2DToVec_8u(const Zmo8u* pSrc, int srcStep, ZmoiPoint* pList,
                                      ZmoiSize roi, int maxCorners, int* pCount);

/* ---- Responses on straight lines ---------------------------------------------------------------
 *
 * Removes the responses of a map of corners or edges that lie on a straight edge or bar of the
 * picture, by the roundness of W. Foerstner, E. Guelch, "A Fast Operator for Detection and
 * Precise Location of Distinct Points, Corners and Centres of Circular Features", ISPRS 1987. With
 * I the picture, the sums over the (2 radius + 1)^2 pixels around p:
 *
 *   gx = I(x+1, y) - I(x-1, y),  gy = I(x, y+1) - I(x, y-1)
 *   a  = sum of gx gx,  b = sum of gy gy,  c = sum of gx gy
 *   q  = 4 (a b - c c) / ((a + b) (a + b))
 *
 * q is 0 when all changes around p have one direction, as along a line, and 1 when they have no
 * preference. Outside the region I is that of the nearest pixel inside. A response becomes 0 when
 * q <= threshold / 255, decided exactly as 1020 (a b - c c) <= threshold (a + b) (a + b), so always
 * where the picture is even; else it keeps its value.
 *
 *   pSrc, srcStep        picture, one channel
 *   pSrc2, src2Step      responses, 0 where there is none
 *   pDst, dstStep        the responses that stay
 *   roi                  pixels of all three
 *   radius               1 to 15
 *   threshold            0 to 255
 *   pBuffer              as many bytes as zmoiLineSuppressionGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row
 *   zmoStsRangeErr       radius is outside 1..15
 *   zmoStsThresholdErr   threshold is outside 0..255
 *   zmoStsTooLargeErr    roi is larger than zmoiLineSuppressionGetBufferSize accepts */
ZMO_API ZmoStatus zmoiLineSuppression_8u_C1R(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                             int src2Step, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                             int radius, int threshold, Zmo8u* pBuffer);

/* Work buffer of the function above. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsRangeErr       radius is outside 1..15
 *   zmoStsDataTypeErr    type is not zmo8u
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiLineSuppressionGetBufferSize(ZmoiSize roi, int radius, ZmoDataType type,
                                                   int channels, int* pSize);

#ifdef __cplusplus
}
#endif

#endif
