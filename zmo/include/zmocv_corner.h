/* Computer vision: corners. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_CORNER_H
#define ZMOCV_CORNER_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Structure tensor --------------------------------------------------------------------------
 *
 * All functions of this header judge a pixel by the tensor of the derivatives dx and dy around it:
 *
 *   a = sum of dx dx,  b = sum of dx dy,  c = sum of dy dy
 *
 * over the windowSize x windowSize pixels of which it is the middle. With p(i,j) the source pixel i
 * columns to the right and j rows below,
 *
 *   dx = sum of S[j] D[i] p(i,j),   dy = sum of D[j] S[i] p(i,j)
 *   Sobel,  kernelSize 3   S = 1 2 1,      D = -1 0 1
 *   Sobel,  kernelSize 5   S = 1 4 6 4 1,  D = -1 -2 0 2 1
 *   Scharr, kernelSize 3   S = 3 10 3,     D = -1 0 1
 *
 * The sums are not divided by anything. Of 8u pictures a, b and c are exact. Of 32f pictures dx and
 * dy are computed in single precision, as the Sobel filters of zmoi.h do (for Scharr S is
 * 3 (p(-1) + p(1)) + 10 p(0)), the sums in double precision and as running sums: what the window
 * takes in is added and what it leaves behind is subtracted. Each step of the window down or along
 * the picture may leave an error of 2^-52 of the largest a or c so far, and a pixel that is not
 * finite may spoil all results to the right of it and below it.
 *
 * Border: the derivatives meet the border of the picture by convention 10, and the window meets
 * that of the derivatives: they are replicated or mirrored like pixels, are 0 outside the region
 * for zmoiBorderConst, and are computed outside the region for zmoiBorderInMem, which reads
 * (kernelSize + windowSize) / 2 - 1 pixels around the region. Functions without a border argument
 * replicate.
 *
 * Results are computed in double precision in the order of their formula and rounded to
 * single precision once; what then lies below 2^-126 in size becomes 0.
 *
 *   pSrc, srcStep     picture, one channel
 *   pDst, dstStep     results
 *   roi               pixels of both
 *   kernel            Sobel or Scharr
 *   kernelSize        3 or, for Sobel, 5
 *   windowSize        odd, 1 to 255
 *   border            border type; pBorderValue: its value, for zmoiBorderConst only
 *   pBuffer           as many bytes as the GetBufferSize query of the same name reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSrc, pDst or pBuffer is null, or pBorderValue with zmoiBorderConst
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row or no multiple of the element size
 *   zmoStsFlagErr        kernel is unknown
 *   zmoStsMaskSizeErr    there is no such size of this kernel, or windowSize is even or outside
 *                        1..255
 *   zmoStsRangeErr       (HarrisCorner) k is not 0 to 0.25, or scale not finite and above 0
 *   zmoStsBorderErr      border is unknown */

/* The smaller eigenvalue of the tensor, by which J. Shi and C. Tomasi, "Good Features to Track"
 * (CVPR 1994), mark corners:
 *
 *   m = (a + c) / 2,  d = (a - c) / 2,  r = sqrt(d d + b b)
 *   dst = m - r, or 0 when that is less than 2^-48 m: then only rounding is left of it */
ZMO_API ZmoStatus zmoiMinEigenVal_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                            int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                            int kernelSize, int windowSize, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMinEigenVal_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                          int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                          int kernelSize, int windowSize, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMinEigenValBorder_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                                  int kernelSize, int windowSize,
                                                  ZmoiBorderType border, const Zmo8u* pBorderValue,
                                                  Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMinEigenValBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                                int kernelSize, int windowSize,
                                                ZmoiBorderType border, const Zmo32f* pBorderValue,
                                                Zmo8u* pBuffer);

/* Both eigenvalues and their vectors, six floats a pixel (a row of pDst has 6 roi.width floats):
 * L1, L2, x1, y1, x2, y2 with L1 >= L2. With m, d and r as above,
 *
 *   L1 = m + r,  L2 as MinEigenVal
 *   (u, v) = (d + r, b) when d >= 0, else (b, r - d);   q = 1 / sqrt(u u + v v)
 *   (x1, y1) = (q u, q v), or (1, 0) when r = 0;   (x2, y2) = (-y1, x1) */
ZMO_API ZmoStatus zmoiEigenValsVecs_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                              int kernelSize, int windowSize, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiEigenValsVecs_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                            int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                            int kernelSize, int windowSize, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiEigenValsVecsBorder_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                                    int dstStep, ZmoiSize roi,
                                                    ZmoiKernelType kernel, int kernelSize,
                                                    int windowSize, ZmoiBorderType border,
                                                    const Zmo8u* pBorderValue, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiEigenValsVecsBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiKernelType kernel,
                                                  int kernelSize, int windowSize,
                                                  ZmoiBorderType border, const Zmo32f* pBorderValue,
                                                  Zmo8u* pBuffer);

/* The corner response of C. Harris and M. Stephens, "A Combined Corner and Edge Detector" (Alvey
 * Vision Conference 1988), the determinant less k times the square of the trace:
 *
 *   t = a + c,  dst = scale ((a c - b b) - k (t t))
 *
 * It is positive at corners, negative on edges and small elsewhere. */
ZMO_API ZmoStatus zmoiHarrisCorner_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst,
                                             int dstStep, ZmoiSize roi,
                                             ZmoiDifferentialKernel kernel, int kernelSize,
                                             int windowSize, Zmo32f k, Zmo32f scale,
                                             ZmoiBorderType border, const Zmo8u* pBorderValue,
                                             Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiHarrisCorner_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                           int dstStep, ZmoiSize roi, ZmoiDifferentialKernel kernel,
                                           int kernelSize, int windowSize, Zmo32f k, Zmo32f scale,
                                           ZmoiBorderType border, const Zmo32f* pBorderValue,
                                           Zmo8u* pBuffer);

/* Work buffers for the region roi. type is that of the source. Status, in the order of the checks:
 *   zmoStsNullPtrErr     pSize is null
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsMaskSizeErr    kernelSize is neither 3 nor 5, or windowSize is even or outside 1..255
 *   zmoStsDataTypeErr    type is neither zmo8u nor zmo32f
 *   zmoStsChannelsErr    channels is not 1
 *   zmoStsTooLargeErr    the size does not fit an int */
ZMO_API ZmoStatus zmoiMinEigenValGetBufferSize(ZmoiSize roi, int kernelSize, int windowSize,
                                               ZmoDataType type, int channels, int* pSize);
ZMO_API ZmoStatus zmoiMinEigenValBorderGetBufferSize(ZmoiSize roi, int kernelSize, int windowSize,
                                                     ZmoDataType type, int channels, int* pSize);
ZMO_API ZmoStatus zmoiEigenValsVecsGetBufferSize(ZmoiSize roi, int kernelSize, int windowSize,
                                                 ZmoDataType type, int channels, int* pSize);
ZMO_API ZmoStatus zmoiEigenValsVecsBorderGetBufferSize(ZmoiSize roi, int kernelSize, int windowSize,
                                                       ZmoDataType type, int channels, int* pSize);
ZMO_API ZmoStatus zmoiHarrisCornerGetBufferSize(ZmoiSize roi, int kernelSize, int windowSize,
                                                ZmoDataType type, int channels, int* pSize);

#ifdef __cplusplus
}
#endif

#endif
