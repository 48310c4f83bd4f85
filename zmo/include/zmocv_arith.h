/* Computer vision: accumulation of frames, differences, grey gradients, motion history. The
 * conventions stand in zmotypes.h. */
#ifndef ZMOCV_ARITH_H
#define ZMOCV_ARITH_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Arguments of all functions of this header:
 *   pSrc, srcStep            image, pSrc2, src2Step: the second one
 *   pMask, maskStep          mask, one byte a pixel (convention 11)
 *   pSrcDst, srcDstStep      accumulator or history, one channel, read and written
 *   pDst, dstStep            result
 *   roi                      pixels of all of them
 * Status, in the order of the checks, the function's own values after these:
 *   zmoStsNullPtrErr         a pointer is null
 *   zmoStsSizeErr            a side of roi is below 1
 *   zmoStsStepErr            a step is shorter than a row or no multiple of the element size */

/* ---- Accumulation ------------------------------------------------------------------------------
 *
 *   Add          acc = acc + a
 *   AddSquare    acc = acc + a a
 *   AddProduct   acc = acc + a b
 *
 * with acc = pSrcDst, a = pSrc and b = pSrc2, in single precision: each product and each sum is
 * rounded once. C1IMR changes only the pixels whose mask is not zero; the others have no influence
 * and keep their bits. zmoStsEmptyMask: note, the mask selects nothing and the accumulator stays as
 * it was. */
ZMO_API ZmoStatus zmoiAdd_8u32f_C1IR(const Zmo8u* pSrc, int srcStep, Zmo32f* pSrcDst,
                                     int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAdd_16u32f_C1IR(const Zmo16u* pSrc, int srcStep, Zmo32f* pSrcDst,
                                      int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAdd_8u32f_C1IMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                      int maskStep, Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAdd_16u32f_C1IMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAdd_32f_C1IMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                    int maskStep, Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddSquare_8u32f_C1IR(const Zmo8u* pSrc, int srcStep, Zmo32f* pSrcDst,
                                           int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddSquare_16u32f_C1IR(const Zmo16u* pSrc, int srcStep, Zmo32f* pSrcDst,
                                            int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddSquare_32f_C1IR(const Zmo32f* pSrc, int srcStep, Zmo32f* pSrcDst,
                                         int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddSquare_8u32f_C1IMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                            int maskStep, Zmo32f* pSrcDst, int srcDstStep,
                                            ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddSquare_16u32f_C1IMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                             int maskStep, Zmo32f* pSrcDst, int srcDstStep,
                                             ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddSquare_32f_C1IMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                          int maskStep, Zmo32f* pSrcDst, int srcDstStep,
                                          ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddProduct_8u32f_C1IR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                            int src2Step, Zmo32f* pSrcDst, int srcDstStep,
                                            ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddProduct_16u32f_C1IR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                             int src2Step, Zmo32f* pSrcDst, int srcDstStep,
                                             ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddProduct_32f_C1IR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                          int src2Step, Zmo32f* pSrcDst, int srcDstStep,
                                          ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddProduct_8u32f_C1IMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                             int src2Step, const Zmo8u* pMask, int maskStep,
                                             Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddProduct_16u32f_C1IMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                              int src2Step, const Zmo8u* pMask, int maskStep,
                                              Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAddProduct_32f_C1IMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi);

/* ---- Running average ---------------------------------------------------------------------------
 *
 *   C1IR, C1IMR   acc = a alpha + acc (1 - alpha)
 *   C1R           dst = a alpha + b (1 - alpha)
 *
 * in single precision: 1 - alpha, both products and the sum are rounded once. Mask as above.
 *   alpha             weight of the new frame, 0 to 1
 *   zmoStsRangeErr    alpha is outside 0..1 or not a number */
ZMO_API ZmoStatus zmoiAddWeighted_8u32f_C1IR(const Zmo8u* pSrc, int srcStep, Zmo32f* pSrcDst,
                                             int srcDstStep, ZmoiSize roi, Zmo32f alpha);
ZMO_API ZmoStatus zmoiAddWeighted_16u32f_C1IR(const Zmo16u* pSrc, int srcStep, Zmo32f* pSrcDst,
                                              int srcDstStep, ZmoiSize roi, Zmo32f alpha);
ZMO_API ZmoStatus zmoiAddWeighted_32f_C1IR(const Zmo32f* pSrc, int srcStep, Zmo32f* pSrcDst,
                                           int srcDstStep, ZmoiSize roi, Zmo32f alpha);
ZMO_API ZmoStatus zmoiAddWeighted_32f_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                          int src2Step, Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                          Zmo32f alpha);
ZMO_API ZmoStatus zmoiAddWeighted_8u32f_C1IMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                              int maskStep, Zmo32f* pSrcDst, int srcDstStep,
                                              ZmoiSize roi, Zmo32f alpha);
ZMO_API ZmoStatus zmoiAddWeighted_16u32f_C1IMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                               int maskStep, Zmo32f* pSrcDst, int srcDstStep,
                                               ZmoiSize roi, Zmo32f alpha);
ZMO_API ZmoStatus zmoiAddWeighted_32f_C1IMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                            int maskStep, Zmo32f* pSrcDst, int srcDstStep,
                                            ZmoiSize roi, Zmo32f alpha);

/* ---- Absolute differences ----------------------------------------------------------------------
 *
 *   AbsDiff    dst = |a - b|
 *   AbsDiffC   dst = |a - value|
 *
 * Exact for 8u and 16u; 32f rounds the difference once to single precision. */
ZMO_API ZmoStatus zmoiAbsDiff_8u_C1R(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                     int src2Step, Zmo8u* pDst, int dstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAbsDiff_16u_C1R(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                      int src2Step, Zmo16u* pDst, int dstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAbsDiff_32f_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                      int src2Step, Zmo32f* pDst, int dstStep, ZmoiSize roi);
ZMO_API ZmoStatus zmoiAbsDiffC_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                      ZmoiSize roi, Zmo8u value);
ZMO_API ZmoStatus zmoiAbsDiffC_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst, int dstStep,
                                       ZmoiSize roi, Zmo16u value);
ZMO_API ZmoStatus zmoiAbsDiffC_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                       ZmoiSize roi, Zmo32f value);

/* ---- Gradients of colour pictures --------------------------------------------------------------
 *
 * One channel out of three interleaved ones u, v, w by the norm of the pixel:
 *
 *   zmoNormInf   max(|u|, |v|, |w|)
 *   zmoNormL1    (|u| + |v| + |w|) / 3
 *   zmoNormL2    sqrt((u u + v v + w w) / 3)
 *
 * 8u and 16u: the exact value, rounded by convention 13 (halves do not occur). 32f: L1 in single
 * precision, (|u| + |v|) first; L2 in double precision, u u + v v first, rounded once at the end.
 *   norm              zmoNormInf, zmoNormL1 or zmoNormL2
 *   zmoStsNormErr     norm is unknown */
ZMO_API ZmoStatus zmoiGradientColorToGray_8u_C3C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                   int dstStep, ZmoiSize roi, ZmoNormType norm);
ZMO_API ZmoStatus zmoiGradientColorToGray_16u_C3C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                                    int dstStep, ZmoiSize roi, ZmoNormType norm);
ZMO_API ZmoStatus zmoiGradientColorToGray_32f_C3C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                    int dstStep, ZmoiSize roi, ZmoNormType norm);

/* ---- Motion history ----------------------------------------------------------------------------
 *
 * J. W. Davis, A. F. Bobick, "The Representation and Recognition of Human Movement Using Temporal
 * Templates", 1997. A pixel of the history is the time when its place moved last:
 *
 *   where the silhouette pSrc is not 0          history = timestamp
 *   else, where history < timestamp - duration  history = 0
 *   else                                        history stays
 *
 * timestamp - duration is rounded to single precision.
 *   pSrc, srcStep           silhouette
 *   timestamp               present time, in any unit
 *   duration                for how long a movement is remembered, in the same unit, not negative
 *   zmoStsRangeErr          timestamp is not finite, or duration is negative or not finite */
ZMO_API ZmoStatus zmoiUpdateMotionHistory_8u32f_C1IR(const Zmo8u* pSrc, int srcStep,
                                                     Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                     Zmo32f timestamp, Zmo32f duration);
ZMO_API ZmoStatus zmoiUpdateMotionHistory_16u32f_C1IR(const Zmo16u* pSrc, int srcStep,
                                                      Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                      Zmo32f timestamp, Zmo32f duration);
ZMO_API ZmoStatus zmoiUpdateMotionHistory_32f_C1IR(const Zmo32f* pSrc, int srcStep, Zmo32f* pSrcDst,
                                                   int srcDstStep, ZmoiSize roi, Zmo32f timestamp,
                                                   Zmo32f duration);

#ifdef __cplusplus
}
#endif

#endif
