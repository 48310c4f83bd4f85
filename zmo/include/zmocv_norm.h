/* Computer vision: norms of images under a mask. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_NORM_H
#define ZMOCV_NORM_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Norms -------------------------------------------------------------------------------------
 *
 * With a = pSrc and b = pSrc2 at the pixels whose mask is not zero (convention 11):
 *
 *               Norm              NormDiff             NormRel
 *   Inf         max |a|           max |a - b|          NormDiff / Norm of b
 *   L1          sum |a|           sum |a - b|          NormDiff / Norm of b
 *   L2          sqrt(sum a a)     sqrt(sum (a-b)(a-b)) NormDiff / Norm of b
 *
 * C1MR takes images of one channel, C3CMR the channel coi of three interleaved ones; the other
 * two channels have no influence. 8u and 16u: maxima and sums are exact integers of any size, each
 * rounded once to double precision before a root or the quotient is taken. 32f: differences, their
 * squares and the sums are in double precision, in the order of convention 14.
 *
 * A relative norm whose divisor is 0 is 0 when both images are 0 under the mask, else infinity; the
 * status is then zmoStsDivByZero. An empty mask makes every norm 0 with zmoStsEmptyMask.
 *
 *   pSrc, srcStep      first image, pSrc2, src2Step: the second one
 *   pMask, maskStep    mask, one byte a pixel
 *   roi                pixels of all of them
 *   coi                channel of interest, 1 to 3
 *   pNorm              the result
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr   a pointer is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsStepErr      a step is shorter than a row or no multiple of the element size
 *   zmoStsCoiErr       coi is not 1, 2 or 3
 *   zmoStsEmptyMask    note: the mask selects nothing
 *   zmoStsDivByZero    note: the divisor of a relative norm is 0 */
ZMO_API ZmoStatus zmoiNorm_Inf_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_Inf_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_Inf_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_Inf_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                         int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_Inf_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_Inf_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                         int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L1_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                      int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L1_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L1_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L1_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L1_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L1_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L2_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                      int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L2_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L2_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L2_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L2_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                       int maskStep, ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNorm_L2_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo8u* pMask,
                                        int maskStep, ZmoiSize roi, int coi, Zmo64f* pNorm);

ZMO_API ZmoStatus zmoiNormDiff_Inf_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_Inf_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_Inf_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_Inf_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                             int src2Step, const Zmo8u* pMask, int maskStep,
                                             ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_Inf_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_Inf_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                             int src2Step, const Zmo8u* pMask, int maskStep,
                                             ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L1_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L1_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L1_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L1_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L1_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L1_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L2_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L2_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L2_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L2_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L2_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormDiff_L2_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);

ZMO_API ZmoStatus zmoiNormRel_Inf_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_Inf_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_Inf_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_Inf_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_Inf_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_Inf_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                            int src2Step, const Zmo8u* pMask, int maskStep,
                                            ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L1_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                         int src2Step, const Zmo8u* pMask, int maskStep,
                                         ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L1_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L1_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L1_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L1_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L1_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L2_8u_C1MR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                         int src2Step, const Zmo8u* pMask, int maskStep,
                                         ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L2_8u_C3CMR(const Zmo8u* pSrc, int srcStep, const Zmo8u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L2_16u_C1MR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L2_16u_C3CMR(const Zmo16u* pSrc, int srcStep, const Zmo16u* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L2_32f_C1MR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                          int src2Step, const Zmo8u* pMask, int maskStep,
                                          ZmoiSize roi, Zmo64f* pNorm);
ZMO_API ZmoStatus zmoiNormRel_L2_32f_C3CMR(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                           int src2Step, const Zmo8u* pMask, int maskStep,
                                           ZmoiSize roi, int coi, Zmo64f* pNorm);

#ifdef __cplusplus
}
#endif

#endif
