/* Images: derivative filters, conversion and geometry. The conventions stand in zmotypes.h. */
#ifndef ZMOI_H
#define ZMOI_H

#include "zmoi_filter.h"
#include "zmoi_pyramid.h"
#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of libzmoi. The record lives as long as the library; its text follows the processor
 * level with each call. */
ZMO_API const ZmoLibraryVersion* zmoiGetVersion(void);

/* ---- Sobel derivatives -------------------------------------------------------------------------
 *
 * Vert is the derivative along x (it answers to vertical edges), Horiz the derivative along y. With
 * a(i,j) the source pixel i columns to the right and j rows below, extended by the border:
 *
 *   Vert,  3x3   sum of S3[j] D3[i] a(i,j),  i and j from -1 to 1
 *   Horiz, 3x3   sum of D3[j] S3[i] a(i,j)
 *   Vert,  5x5   sum of S5[j] D5[i] a(i,j),  i and j from -2 to 2
 *   Horiz, 5x5   sum of D5[j] S5[i] a(i,j)
 *   S3 = 1 2 1,  D3 = -1 0 1,  S5 = 1 4 6 4 1,  D5 = -1 -2 0 2 1
 *
 * A picture that grows brighter to the right (downward) has a positive Vert (Horiz). 8u16s is
 * exact. 32f computes in single precision, first along the column, then along the row:
 *
 *   S3: (a(-1) + a(1)) + 2 a(0)       S5: ((a(-2) + a(2)) + 4 (a(-1) + a(1))) + 6 a(0)
 *   D3: a(1) - a(-1)                  D5: (a(2) - a(-2)) + 2 (a(1) - a(-1))
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
 *   zmoStsStepErr        srcStep or dstStep is shorter than a row or no multiple of an element
 *   zmoStsMaskSizeErr    mask is unknown
 *   zmoStsBorderErr      border is unknown */
ZMO_API ZmoStatus zmoiFilterSobelVertBorder_8u16s_C1R(const Zmo8u* pSrc, int srcStep, Zmo16s* pDst,
                                                      int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                      ZmoiBorderType border,
                                                      const Zmo8u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSobelHorizBorder_8u16s_C1R(const Zmo8u* pSrc, int srcStep, Zmo16s* pDst,
                                                       int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                       ZmoiBorderType border,
                                                       const Zmo8u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSobelVertBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                    int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                    ZmoiBorderType border,
                                                    const Zmo32f* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFilterSobelHorizBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                     int dstStep, ZmoiSize roi, ZmoiMaskSize mask,
                                                     ZmoiBorderType border,
                                                     const Zmo32f* pBorderValue, Zmo8u* pBuffer);

/* Work buffers of the Sobel filters for regions up to roi. type is that of the source, zmo8u or
 * zmo32f; channels is 1. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    mask is unknown
 *   zmoStsDataTypeErr    type is neither zmo8u nor zmo32f
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiFilterSobelVertBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask,
                                                         ZmoDataType type, int channels,
                                                         int* pSize);
ZMO_API ZmoStatus zmoiFilterSobelHorizBorderGetBufferSize(ZmoiSize roi, ZmoiMaskSize mask,
                                                          ZmoDataType type, int channels,
                                                          int* pSize);

/* ---- Conversion --------------------------------------------------------------------------------
 *
 * dst(x,y) = src(x,y), exactly. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSrc or pDst is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        srcStep or dstStep is shorter than a row or no multiple of an element
 */
ZMO_API ZmoStatus zmoiConvert_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                        ZmoiSize roi);

/* ---- Rotation ----------------------------------------------------------------------------------
 *
 * The source point (x, y) moves to
 *
 *   x' =  c x + s y + xShift,   y' = -s x + c y + yShift,   c = cos(angle), s = sin(angle)
 *
 * A positive angle turns the picture against the clock, as y points down. Angles are in degrees;
 * cos and sin are taken of fmod(angle, 360) times 0.017453292519943295, and are exact at the
 * multiples of 90 degrees. The shift that leaves (xCenter, yCenter) where it is:
 *
 *   xShift = xCenter - c xCenter - s yCenter,   yShift = yCenter + s xCenter - c yCenter
 *
 *   zmoStsNullPtrErr     pXShift or pYShift is null
 *   zmoStsRangeErr       xCenter, yCenter or angle is not finite */
ZMO_API ZmoStatus zmoiRotateGetShift(Zmo64f xCenter, Zmo64f yCenter, Zmo64f angle, Zmo64f* pXShift,
                                     Zmo64f* pYShift);

/* Rotates with bilinear interpolation. For each destination pixel (X, Y), in double precision,
 *
 *   u = X - xShift,  v = Y - yShift,  x = c u - s v,  y = s u + c v
 *
 * Where 0 <= x <= srcRoi.width - 1 and 0 <= y <= srcRoi.height - 1, the pixel becomes, rounded by
 * convention 13,
 *
 *   top + g (bottom - top),  top = p00 + f (p10 - p00),  bottom = p01 + f (p11 - p01)
 *
 * with f and g the fractions of x and y, p00 the source pixel at the whole parts, p10 its right and
 * p01 its lower neighbour (a neighbour beyond the last column or row has no weight and is not
 * read). All other destination pixels stay as they are. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSrc or pDst is null
 *   zmoStsSizeErr        a side of srcRoi or roi is below 1
 *   zmoStsStepErr        srcStep or dstStep is shorter than a row
 *   zmoStsRangeErr       angle, xShift or yShift is not finite or above 1e9 in size */
ZMO_API ZmoStatus zmoiRotate_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize srcRoi, Zmo8u* pDst,
                                    int dstStep, ZmoiSize roi, Zmo64f angle, Zmo64f xShift,
                                    Zmo64f yShift);

#ifdef __cplusplus
}
#endif

#endif
