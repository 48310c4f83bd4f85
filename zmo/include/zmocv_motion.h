/* Computer vision: points followed from picture to picture, and a learnt background. The
 * conventions stand in zmotypes.h. */
#ifndef ZMOCV_MOTION_H
#define ZMOCV_MOTION_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Optical flow ------------------------------------------------------------------------------
 *
 * J.-Y. Bouguet, "Pyramidal Implementation of the Lucas Kanade Feature Tracker" (Intel, 2000):
 * where the neighbourhoods of points of the first picture lie in the second one. It is found in the
 * smallest layers first and refined from layer to layer. Layer k halves the coordinates of layer 0
 * k times, as zmoiPyramidLayerDown makes it. All numbers are 32f, each operation rounded once,
 * but where double precision is stated.
 *
 * Window. S(x, y) is a layer's pixel, coordinates outside replaced by the nearest inside. The
 * window of a layer at the point (px, py) has w = windowSize columns and rows; with r = (w - 1) /
 * 2, left = floor(px) - r, top = floor(py) - r, fx = px - floor(px) and fy = py - floor(py),
 *   line(i, j)   = (1 - fx) S(left + i, top + j) + fx S(left + i + 1, top + j)
 *   window(i, j) = (1 - fy) line(i, j) + fy line(i, j + 1)
 *
 * In a layer the window A of the first picture at p gives the slopes, for i and j from 0 to w - 1,
 *   dx(i, j) = (A(i + 1, j) - A(i - 1, j)) / 2,  dy(i, j) = (A(i, j + 1) - A(i, j - 1)) / 2
 * and the sums gxx of dx dx, gxy of dx dy and gyy of dy dy over the window. Then, at most
 * maxIterations times, with the window B of the second picture at the position q found so far and
 * the difference d = A - B,
 *   bx = sum of d dx,  by = sum of d dy,  det = gxx gyy - gxy gxy
 *   step = ((gyy bx - gxy by) / det, (gxx by - gxy bx) / det),  q = q + step
 * where det and step are computed in double precision and step is then rounded to 32f; the last
 * time is the one with |step| < epsilon. A sum over a window starts with 0, adds down each
 * column, then the columns by convention 14 as a single row.
 *
 * q starts in layer maxLevel as the given position of the point, halved maxLevel times; from layer
 * to layer it is doubled. A layer fails when
 *   the point or a q, the first included, is not inside the layer: -0.5 <= x <= width - 0.5, y
 *   alike det > 2^-10 (gxx + gyy)^2, in double precision, does not hold: too little texture, or an
 *   edge
 * A layer above 0 that fails leaves q as it began there. When layer 0 fails the point is lost.
 *
 *   pFirst, pSecond     layers of the two pictures, one channel, at least maxLevel + 1 of them
 *   pFrom               points of the first picture
 *   pTo                 on call, where to start in the second one (pFrom if nothing is known); on
 *                       return, where the points are found; stays as it is for a lost point
 *   pFound              1, or 0 for a lost point
 *   pError              mean of |A - B| over the window in layer 0 at the position found; 0 for a
 *                       lost point
 *   count               points, at least 1
 *   windowSize          odd, 3 to 127
 *   maxLevel            layer to start in, 0 to 15
 *   maxIterations       at least 1
 *   epsilon             pixels of the layer, at least 0
 *   pBuffer             as many bytes as zmoiOpticalFlowPyrLKGetBufferSize reports
 * Status, in the order of the checks; layers above maxLevel are not looked at:
 *   zmoStsNullPtrErr    a pointer, or one in the layers, is null
 *   zmoStsSizeErr       a side of a layer is below 1 or differs between the pictures, or count < 1
 *   zmoStsStepErr       a step is shorter than a row or no multiple of the element size
 *   zmoStsMaskSizeErr   windowSize is even or outside 3 to 127
 *   zmoStsRangeErr      maxLevel is negative or no layer of both pictures, or maxIterations < 1
 *   zmoStsThresholdErr  epsilon is negative or not a number */
ZMO_API ZmoStatus zmoiOpticalFlowPyrLK_8u_C1R(const ZmoiPyramidLevels* pFirst,
                                              const ZmoiPyramidLevels* pSecond,
                                              const ZmoiPoint32f* pFrom, ZmoiPoint32f* pTo,
                                              Zmo8u* pFound, Zmo32f* pError, int count,
                                              int windowSize, int maxLevel, int maxIterations,
                                              Zmo32f epsilon, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiOpticalFlowPyrLK_16u_C1R(const ZmoiPyramidLevels* pFirst,
                                               const ZmoiPyramidLevels* pSecond,
                                               const ZmoiPoint32f* pFrom, ZmoiPoint32f* pTo,
                                               Zmo8u* pFound, Zmo32f* pError, int count,
                                               int windowSize, int maxLevel, int maxIterations,
                                               Zmo32f epsilon, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiOpticalFlowPyrLK_32f_C1R(const ZmoiPyramidLevels* pFirst,
                                               const ZmoiPyramidLevels* pSecond,
                                               const ZmoiPoint32f* pFrom, ZmoiPoint32f* pTo,
                                               Zmo8u* pFound, Zmo32f* pError, int count,
                                               int windowSize, int maxLevel, int maxIterations,
                                               Zmo32f epsilon, Zmo8u* pBuffer);

/* Work buffer for windows up to windowSize. Status, in the order of the checks:
 *   zmoStsNullPtrErr    pSize is null
 *   zmoStsMaskSizeErr   windowSize is even or outside 3 to 127
 *   zmoStsDataTypeErr   type is not 8u, 16u or 32f
 *   zmoStsChannelsErr   channels is not 1 */
ZMO_API ZmoStatus zmoiOpticalFlowPyrLKGetBufferSize(int windowSize, ZmoDataType type, int channels,
                                                    int* pSize);

/* ---- Mixture of Gaussians ----------------------------------------------------------------------
 *
 * Z. Zivkovic, "Improved Adaptive Gaussian Mixture Model for Background Subtraction", ICPR (2004):
 * the values that a pixel takes in the course of time are described by a few components, each with
 * a weight w, a mean m (three channels) and a variance v; how many of them adapts by itself. They
 * stand in the order of falling weights, components that come in later behind those of the same
 * weight. Everything is computed in 32f, each operation rounded once.
 *
 * FGMMForeground takes a picture in and marks what does not belong to the background. For a pixel
 * with the value x, and for each component d = (x + 1) - m and D = (d0 d0 + d1 d1) + d2 d2 (means
 * are of values from 1 to 256, which are never denormal):
 *   1. The pixel's own component is the first with D < matchThreshold v.
 *   2. The background are the components for which the sum of the weights before them, added in
 *      their order, is below backgroundShare. The destination is 0 when the own component is one of
 *      them, else 255.
 *   3. Weights:
 *        own      w = ((1 - learningRate) w - learningRate complexity) + learningRate
 *        others   w = (1 - learningRate) w - learningRate complexity; dropped unless w > 2^-24
 *   4. Own component: with the new w and the smaller of learningRate / w and 1 for a,
 *        m = m + a d
 *        v = v + a (D - v), not below 4 and not above 4 initialVariance
 *      Without one, a new component with w = learningRate, m = x + 1 and v = initialVariance takes
 *      the last place, that of the last component when there are maxComponents of them already.
 *   5. The own or new component moves forward to its place. All weights are multiplied with the
 *      inverse of their sum, which is added in their order.
 *
 * FGMMBackground gives the picture of the background: for each channel the sum of w m over the sum
 * of w, both over the background components in their order, less 1, rounded by convention 13. It is
 * 0 before the first picture.
 *
 *   pSrc, srcStep       picture, three channels
 *   pDst, dstStep       Foreground: one channel, 0 or 255; Background: picture, three channels
 *   roi                 pixels of both, those that the state was initialised for
 *   pState              what has been learnt; Foreground learns
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr    a pointer is null
 *   zmoStsSizeErr       a side of roi is below 1
 *   zmoStsStepErr       a step is shorter than a row
 *   zmoStsStateErr      the state was not initialised, or not for this region */
typedef struct ZmoiFGMMState ZmoiFGMMState;

ZMO_API ZmoStatus zmoiFGMMForeground_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                            int dstStep, ZmoiSize roi, ZmoiFGMMState* pState);
ZMO_API ZmoStatus zmoiFGMMBackground_8u_C3R(Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                            const ZmoiFGMMState* pState);

/* Size in bytes of the state: the components of all pixels. Status, in the order of the checks:
 *   zmoStsNullPtrErr    pStateSize is null
 *   zmoStsSizeErr       a side of roi is below 1
 *   zmoStsRangeErr      maxComponents is not 1 to 8
 *   zmoStsDataTypeErr   type is not 8u
 *   zmoStsChannelsErr   channels is not 3
 *   zmoStsTooLargeErr   the size does not fit an int */
ZMO_API ZmoStatus zmoiFGMMGetSize(ZmoiSize roi, int maxComponents, ZmoDataType type, int channels,
                                  int* pStateSize);

/* Initialises a state that has seen no picture. Usual values stand in brackets.
 *   maxComponents       1 to 8 (4)
 *   learningRate        2^-20 to 1/2 (0.005): pictures older than its inverse count little
 *   matchThreshold      above 0, up to 1000 (9): square of the deviations that a component covers
 *   backgroundShare     above 0, up to 1 (0.9): share of the time that the background is seen
 *   complexity          0 to 1/2 (0.05): keeps the number of components low
 *   initialVariance     4 to 10000 (225): of the sum of the three channels
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr    pState is null
 *   zmoStsSizeErr       a side of roi is below 1
 *   zmoStsRangeErr      maxComponents, learningRate or backgroundShare is outside its range
 *   zmoStsThresholdErr  matchThreshold is outside its range
 *   zmoStsRangeErr      complexity or initialVariance is outside its range
 *   zmoStsDataTypeErr   type is not 8u
 *   zmoStsChannelsErr   channels is not 3
 *   zmoStsTooLargeErr   as of zmoiFGMMGetSize */
ZMO_API ZmoStatus zmoiFGMMInit(ZmoiSize roi, int maxComponents, Zmo32f learningRate,
                               Zmo32f matchThreshold, Zmo32f backgroundShare, Zmo32f complexity,
                               Zmo32f initialVariance, ZmoDataType type, int channels,
                               ZmoiFGMMState* pState);

#ifdef __cplusplus
}
#endif

#endif
