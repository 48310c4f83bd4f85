/* Computer vision: filling of damaged pixels. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_INPAINT_H
#define ZMOCV_INPAINT_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Inpainting --------------------------------------------------------------------------------
 *
 * Fills the pixels that the mask selects from the others, which are copied. A front marches inward
 * from the edge of the selected areas; where it arrives at a pixel p, p becomes a weighted mean of
 * the pixels near it that are known: those not selected, and those filled before.
 *
 * Order. The edge pixels, those not selected with a selected one among their four neighbours, have
 * the time T = 0. T of a selected pixel is the arrival time of fast marching (zmocv_distance.h)
 * from there: each time a pixel becomes known, its four neighbours that still wait are solved for T
 * from their known neighbours, and keep the smallest solution so far; then the pixel with the
 * smallest T, of equal ones the first in reading order, is filled and becomes known. The values
 * below pSrc's selected pixels have no influence.
 *
 * Neighbourhood. q runs over the known pixels of the region with 0 < |p - q| <= radius, in reading
 * order; (rx, ry) = p - q, r2 = rx rx + ry ry. The gradient (gx, gy) of channel c at q is half the
 * difference of the two neighbours along the axis when both are known, the full difference between
 * q and the one that is known, else 0.
 *
 * zmoiInpaintMarching: A. Telea, "An image inpainting technique based on the fast marching method",
 * Journal of Graphics Tools 9 (2004). The pixels that are not selected have the time T = -t, where
 * t is the arrival time of a front that marches outward from the edge pixels and stops at radius
 * (it is radius for what lies beyond). With the gradient (tx, ty) of T at p, formed as above,
 *   d = |rx tx + ry ty| a(r2)            1e-6 where that is 0.01 or less
 *   w = (d b(r2)) (1 / (1 + |T(p) - T(q)|))
 *   p = sum of w (q + (gx rx + gy ry))  /  sum of w
 * for each channel.
 *
 * zmoiInpaintDiffusion: after M. Bertalmio, A. Bertozzi, G. Sapiro, "Navier-Stokes, fluid dynamics,
 * and image and video inpainting", CVPR 2001: grey values diffuse, and where there is a gradient
 * they flow along the level lines. Each channel has weights of its own,
 *   e = gy rx - gx ry      s = gx gx + gy gy
 *   d = (e e + r2) / ((s + 1) r2)
 *   w = (d b(r2)) b(r2)
 *   p = sum of w q  /  sum of w
 *
 * a(r2) = 1 / sqrt(r2) and b(r2) = 1 / r2. Everything is computed in single precision, each
 * operation rounded once; q + (gx rx + gy ry), e and s + 1 are exact. The sums run in the order of
 * q in 8 lanes, by floor(radius) - rx modulo 8; lane k is then added to lane k + 4, those to lane k
 * + 2 and k + 1 in turn. Results are clamped to 0 ... 255 and rounded half to even. When all pixels
 * are selected, nothing is known and pDst becomes a copy of pSrc.
 *
 *   pSrc, srcStep     image, one channel or three
 *   pMask, maskStep   mask, one byte a pixel: not 0 selects
 *   pDst, dstStep     filled image
 *   roi               pixels of all three
 *   radius            1 ... 64, in pixels
 *   flag              zmoiInpaintMarching or zmoiInpaintDiffusion
 *   pBuffer           as many bytes as zmoiInpaintGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr  a pointer is null
 *   zmoStsSizeErr     a side of roi is below 1
 *   zmoStsStepErr     a step is shorter than a row
 *   zmoStsRangeErr    radius is out of range or not a number
 *   zmoStsFlagErr     flag is unknown
 *   zmoStsTooLargeErr roi is larger than zmoiInpaintGetBufferSize accepts
 *   zmoStsEmptyMask   note: nothing is selected, pDst is a copy of pSrc */
ZMO_API ZmoStatus zmoiInpaint_8u_C1R(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                     int maskStep, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                     Zmo32f radius, ZmoiInpaintFlag flag, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiInpaint_8u_C3R(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                     int maskStep, Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                     Zmo32f radius, ZmoiInpaintFlag flag, Zmo8u* pBuffer);

/* Work buffer for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr   pSize is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsDataTypeErr  type is not 8u
 *   zmoStsChannelsErr  channels is neither 1 nor 3
 *   zmoStsTooLargeErr  the size does not fit an int */
ZMO_API ZmoStatus zmoiInpaintGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                           int* pSize);

#ifdef __cplusplus
}
#endif

#endif
