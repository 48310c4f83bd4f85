/* Computer vision: extremes, means and standard deviations. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_STAT_H
#define ZMOCV_STAT_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The descriptor of each function says which pixels count: C1R those of a region, C1MR those whose
 * mask is not zero (convention 11), C3CR and C3CMR the same in channel coi of three interleaved
 * ones; the other two channels have no influence. Arguments of all of them:
 *   pSrc, srcStep      image
 *   pMask, maskStep    mask, one byte a pixel
 *   roi                pixels of image and mask
 *   coi                channel of interest, 1 to 3
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr   a pointer is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsStepErr      a step is shorter than a row or no multiple of the element size
 *   zmoStsCoiErr       coi is not 1, 2 or 3
 *   zmoStsEmptyMask    note: the mask selects nothing, all results are 0, positions (0, 0) */

/* ---- Extremes ----------------------------------------------------------------------------------
 *
 * The smallest and the largest value, exact, and where each stands first: the lowest y, then the
 * lowest x. The value is that of the pixel at the position (zeros of either sign are equal). */
ZMO_API ZmoStatus zmoiMinMaxIndx_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize roi, Zmo32f* pMin,
                                        Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_8u_C3CR(const Zmo8u* pSrc, int srcStep, ZmoiSize roi, int coi,
                                         Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos,
                                         ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                         int maskStep, ZmoiSize roi, Zmo32f* pMin, Zmo32f* pMax,
                                         ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                          int maskStep, ZmoiSize roi, int coi, Zmo32f* pMin,
                                          Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_16u_C1R(const Zmo16u* pSrc, int srcStep, ZmoiSize roi,
                                         Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos,
                                         ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_16u_C3CR(const Zmo16u* pSrc, int srcStep, ZmoiSize roi, int coi,
                                          Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos,
                                          ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                          int maskStep, ZmoiSize roi, Zmo32f* pMin, Zmo32f* pMax,
                                          ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                           int maskStep, ZmoiSize roi, int coi, Zmo32f* pMin,
                                           Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_32f_C1R(const Zmo32f* pSrc, int srcStep, ZmoiSize roi,
                                         Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos,
                                         ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_32f_C3CR(const Zmo32f* pSrc, int srcStep, ZmoiSize roi, int coi,
                                          Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos,
                                          ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                          int maskStep, ZmoiSize roi, Zmo32f* pMin, Zmo32f* pMax,
                                          ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);
ZMO_API ZmoStatus zmoiMinMaxIndx_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                           int maskStep, ZmoiSize roi, int coi, Zmo32f* pMin,
                                           Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos);

/* ---- Mean --------------------------------------------------------------------------------------
 *
 * The sum of the values divided by their number n. 8u and 16u: the sum is an exact integer. 32f: it
 * is in double precision, in the order of convention 14. */
ZMO_API ZmoStatus zmoiMean_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask, int maskStep,
                                   ZmoiSize roi, Zmo64f* pMean);
ZMO_API ZmoStatus zmoiMean_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                    int maskStep, ZmoiSize roi, int coi, Zmo64f* pMean);
ZMO_API ZmoStatus zmoiMean_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                    int maskStep, ZmoiSize roi, Zmo64f* pMean);
ZMO_API ZmoStatus zmoiMean_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                     int maskStep, ZmoiSize roi, int coi, Zmo64f* pMean);
ZMO_API ZmoStatus zmoiMean_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                    int maskStep, ZmoiSize roi, Zmo64f* pMean);
ZMO_API ZmoStatus zmoiMean_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                     int maskStep, ZmoiSize roi, int coi, Zmo64f* pMean);

/* ---- Mean and standard deviation ---------------------------------------------------------------
 *
 * The mean as above, and the deviation of the whole population (the divisor is n):
 *
 *   8u, 16u   sqrt(n sum(v v) - sum(v) sum(v)) / n, the argument of the root exact
 *   32f       sqrt(m / n): m is gathered row by row from the squared distances to the row's own
 *             mean (T. F. Chan, G. H. Golub, R. J. LeVeque, "Updating Formulae and a Pairwise
 *             Algorithm for Computing Sample Variances", 1979), so that a large mean costs no
 *             digits of a small deviation */
ZMO_API ZmoStatus zmoiMean_StdDev_8u_C1R(const Zmo8u* pSrc, int srcStep, ZmoiSize roi,
                                         Zmo64f* pMean, Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_8u_C3CR(const Zmo8u* pSrc, int srcStep, ZmoiSize roi, int coi,
                                          Zmo64f* pMean, Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                          int maskStep, ZmoiSize roi, Zmo64f* pMean,
                                          Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                           int maskStep, ZmoiSize roi, int coi, Zmo64f* pMean,
                                           Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_16u_C1R(const Zmo16u* pSrc, int srcStep, ZmoiSize roi,
                                          Zmo64f* pMean, Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_16u_C3CR(const Zmo16u* pSrc, int srcStep, ZmoiSize roi, int coi,
                                           Zmo64f* pMean, Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                           int maskStep, ZmoiSize roi, Zmo64f* pMean,
                                           Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                            int maskStep, ZmoiSize roi, int coi, Zmo64f* pMean,
                                            Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_32f_C1R(const Zmo32f* pSrc, int srcStep, ZmoiSize roi,
                                          Zmo64f* pMean, Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_32f_C3CR(const Zmo32f* pSrc, int srcStep, ZmoiSize roi, int coi,
                                           Zmo64f* pMean, Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                           int maskStep, ZmoiSize roi, Zmo64f* pMean,
                                           Zmo64f* pStdDev);
ZMO_API ZmoStatus zmoiMean_StdDev_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                            int maskStep, ZmoiSize roi, int coi, Zmo64f* pMean,
                                            Zmo64f* pStdDev);

#ifdef __cplusplus
}
#endif

#endif
