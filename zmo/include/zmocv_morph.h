/* Computer vision: morphology. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_MORPH_H
#define ZMOCV_MORPH_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Flat morphology ---------------------------------------------------------------------------
 *
 * The structuring element B is the set of pixels (i,j) of a mask that are not zero, seen from the
 * anchor (ax,ay). With a the source extended by the border, the same for each channel:
 *
 *   Erode          min over (i,j) in B of a(x + i - ax, y + j - ay)
 *   Dilate         max over (i,j) in B of a(x - i + ax, y - j + ay)
 *   MorphOpen      Dilate of Erode
 *   MorphClose     Erode of Dilate
 *   MorphGradient  Dilate - Erode
 *   MorphTophat    source - MorphOpen
 *   MorphBlackhat  MorphClose - source
 *
 * Dilate takes the element turned by 180 degrees, so that opening and closing do not move the
 * picture wherever the anchor lies. Differences saturate to the element type; that of 1u is 1
 * where the first is 1 and the second 0. Minimum and maximum of 1u are "and" and "or". 32f: of
 * zeros that differ in their sign either may be the result.
 *
 * A mask with pixels that are zero costs one comparison a pixel and point of the element. A full
 * rectangle costs a bounded number whatever its size, by van Herk's running extrema (Pattern
 * Recognition Letters 13, 1992; Gil and Werman, IEEE PAMI 15, 1993): less than three down the
 * columns. Along the rows, windows of up to 1024 pixels are made of two of half the length, and so
 * on, which whole vectors compute at once: ten comparisons at most, five for 31 pixels. Wider ones
 * are parts of 64 to 127 pixels, seven comparisons, joined by running extrema, three more.
 *
 * Border: convention 10, anew for the input of each pass. In memory, Erode reads ax pixels to the
 * left of the region and w - 1 - ax to the right of it (w x h pixels in the mask), Dilate the
 * other way round, upward and downward alike. The input of a compound operation's second pass is
 * then made beyond the region too, from memory w - 1 pixels to the left and right and h - 1 up
 * and down.
 *
 *   pSrc, srcStep     source; 1u: srcBitOffset, the first pixel's bit in its byte (convention 12)
 *   pDst, dstStep     destination, with dstBitOffset for 1u
 *   roi               pixels of source and destination
 *   border            border type; pBorderValue: one element a channel, for zmoiBorderConst only;
 *                     for 1u a byte, of which 0 is the pixel 0 and all else the pixel 1
 *   pState            from zmoiMorphInit with this type and these channels
 *   pBuffer           as many bytes as zmoiMorphGetSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr     a pointer is null, or pBorderValue with zmoiBorderConst
 *   zmoStsSizeErr        a side of roi is below 1
 *   zmoStsStepErr        a step is shorter than a row or no multiple of the element size
 *   zmoStsRangeErr       a bit offset is outside 0..7
 *   zmoStsBorderErr      border is unknown
 *   zmoStsStateErr       the state is not one of flat morphology, or of another type or channels
 *   zmoStsTooLargeErr    roi is larger than zmoiMorphGetSize accepts
 *   zmoStsEmptyMask      note: the mask has no point; the results are 0 */
typedef struct ZmoiMorphState ZmoiMorphState;

ZMO_API ZmoStatus zmoiErodeBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                         Zmo8u* pDst, int dstStep, int dstBitOffset, ZmoiSize roi,
                                         ZmoiBorderType border, const Zmo8u* pBorderValue,
                                         const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                         ZmoiSize roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                         ZmoiSize roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                         ZmoiSize roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                          int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo16u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                          int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo16s* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                          int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                          int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErodeBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                          int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiErode_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                     Zmo8u* pDst, int64_t dstStep, int dstBitOffset, ZmoiSizeL roi,
                                     ZmoiBorderType border, const Zmo8u* pBorderValue,
                                     const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                     int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                     const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                     Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                     int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                     const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                     Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                     int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                     const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                     Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo16u* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo16s* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiErode_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiDilateBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                          Zmo8u* pDst, int dstStep, int dstBitOffset, ZmoiSize roi,
                                          ZmoiBorderType border, const Zmo8u* pBorderValue,
                                          const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                          ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                          ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                          ZmoiSize roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                           int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                           const Zmo16u* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                           int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                           const Zmo16s* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                           int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                           const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                           int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                           const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilateBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                           int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                           const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiDilate_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                      Zmo8u* pDst, int64_t dstStep, int dstBitOffset, ZmoiSizeL roi,
                                      ZmoiBorderType border, const Zmo8u* pBorderValue,
                                      const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                      int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                      const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                      Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                       int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                       const Zmo16u* pBorderValue, const ZmoiMorphState* pState,
                                       Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                       int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                       const Zmo16s* pBorderValue, const ZmoiMorphState* pState,
                                       Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                       int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                       const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                       Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                       int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                       const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                       Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiDilate_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                       int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                       const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                       Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphOpenBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                             Zmo8u* pDst, int dstStep, int dstBitOffset,
                                             ZmoiSize roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                             int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                             int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                             int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo16u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo16s* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpenBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphOpen_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                         Zmo8u* pDst, int64_t dstStep, int dstBitOffset,
                                         ZmoiSizeL roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                         int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                         int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                         int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                         const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo16u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo16s* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphOpen_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphCloseBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                              Zmo8u* pDst, int dstStep, int dstBitOffset,
                                              ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo16u* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo16s* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo32f* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo32f* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphCloseBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo32f* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphClose_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                          Zmo8u* pDst, int64_t dstStep, int dstBitOffset,
                                          ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                          int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                          const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo16u* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo16s* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphClose_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo32f* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphGradientBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                                 Zmo8u* pDst, int dstStep, int dstBitOffset,
                                                 ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo16u* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo16s* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo32f* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo32f* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradientBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo32f* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphGradient_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                             Zmo8u* pDst, int64_t dstStep, int dstBitOffset,
                                             ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                             int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                             int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                             int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo16u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo16s* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphGradient_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphTophatBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                               Zmo8u* pDst, int dstStep, int dstBitOffset,
                                               ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo8u* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo8u* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo8u* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo8u* pBorderValue,
                                               const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                                int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                const Zmo16u* pBorderValue,
                                                const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                                int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                const Zmo16s* pBorderValue,
                                                const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                const Zmo32f* pBorderValue,
                                                const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                const Zmo32f* pBorderValue,
                                                const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophatBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                const Zmo32f* pBorderValue,
                                                const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphTophat_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                           Zmo8u* pDst, int64_t dstStep, int dstBitOffset,
                                           ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                           int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                           const Zmo8u* pBorderValue, const ZmoiMorphState* pState,
                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                            int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                            const Zmo16u* pBorderValue,
                                            const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                            int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                            const Zmo16s* pBorderValue,
                                            const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                            int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                            const Zmo32f* pBorderValue,
                                            const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                            int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                            const Zmo32f* pBorderValue,
                                            const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphTophat_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                            int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                            const Zmo32f* pBorderValue,
                                            const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphBlackhatBorder_1u_C1R(const Zmo8u* pSrc, int srcStep, int srcBitOffset,
                                                 Zmo8u* pDst, int dstStep, int dstBitOffset,
                                                 ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_8u_C4R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                                 int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                 const Zmo8u* pBorderValue,
                                                 const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo16u* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_16s_C1R(const Zmo16s* pSrc, int srcStep, Zmo16s* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo16s* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo32f* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo32f* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhatBorder_32f_C4R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                                  int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                                  const Zmo32f* pBorderValue,
                                                  const ZmoiMorphState* pState, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiMorphBlackhat_1u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, int srcBitOffset,
                                             Zmo8u* pDst, int64_t dstStep, int dstBitOffset,
                                             ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_8u_C1R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                             int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_8u_C3R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                             int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_8u_C4R_L(const Zmo8u* pSrc, int64_t srcStep, Zmo8u* pDst,
                                             int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_16u_C1R_L(const Zmo16u* pSrc, int64_t srcStep, Zmo16u* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo16u* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_16s_C1R_L(const Zmo16s* pSrc, int64_t srcStep, Zmo16s* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo16s* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_32f_C1R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_32f_C3R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphBlackhat_32f_C4R_L(const Zmo32f* pSrc, int64_t srcStep, Zmo32f* pDst,
                                              int64_t dstStep, ZmoiSizeL roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiMorphState* pState, Zmo8u* pBuffer);

/* Sizes of state and work buffer for all operations on regions up to roi with masks of maskSize
 * pixels.
 *   roi                           largest region
 *   type, channels                zmo1u, zmo16u, zmo16s with 1 channel; zmo8u, zmo32f with 1, 3, 4
 *   maskSize                      sides of the mask, 1 to 8191
 *   pStateSize, pBufferSize       the results, in bytes
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      a pointer is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsDataTypeErr     type is none of the five
 *   zmoStsChannelsErr     the type has no functions of so many channels
 *   zmoStsMaskSizeErr     a side of the mask is outside 1..8191
 *   zmoStsTooLargeErr     a result does not fit its type */
ZMO_API ZmoStatus zmoiMorphGetSize(ZmoiSize roi, ZmoDataType type, int channels, ZmoiSize maskSize,
                                   int* pStateSize, int* pBufferSize);
ZMO_API ZmoStatus zmoiMorphGetSize_L(ZmoiSizeL roi, ZmoDataType type, int channels,
                                     ZmoiSizeL maskSize, int64_t* pStateSize, int64_t* pBufferSize);

/* Makes a state, for both forms of the functions.
 *   type, channels, maskSize      as above
 *   pMask                         maskSize.height rows of maskSize.width bytes, without gaps
 *   anchor                        the mask's pixel that lies on the result's
 *   pState                        the state
 * Status, in the order of the checks: zmoStsNullPtrErr, zmoStsDataTypeErr, zmoStsChannelsErr and
 * zmoStsMaskSizeErr as above, zmoStsAnchorErr for an anchor outside the mask; zmoStsEmptyMask, a
 * note, when the mask has no point. */
ZMO_API ZmoStatus zmoiMorphInit(ZmoDataType type, int channels, const Zmo8u* pMask,
                                ZmoiSize maskSize, ZmoiPoint anchor, ZmoiMorphState* pState);
ZMO_API ZmoStatus zmoiMorphInit_L(ZmoDataType type, int channels, const Zmo8u* pMask,
                                  ZmoiSizeL maskSize, ZmoiPoint anchor, ZmoiMorphState* pState);

/* ---- Grey-level morphology ---------------------------------------------------------------------
 *
 * The structuring element has a value g(i,j) at each of its pixels (Haralick, Sternberg and Zhuang,
 * IEEE PAMI 9, 1987). With a the source extended by the border:
 *
 *   GrayErode      min over all (i,j) of a(x + i - ax, y + j - ay) - g(i,j)
 *   GrayDilate     max over all (i,j) of a(x - i + ax, y - j + ay) + g(i,j)
 *
 * 8u: the result is saturated; values are integers, and one of -256 or less leaves its pixel out
 * of the element (if all are, GrayErode gives 255 and GrayDilate 0). 32f: each sum is rounded
 * once.
 *
 * Arguments and statuses are those of Erode; the state comes from zmoiGrayMorphInit, and there is
 * no empty element. */
typedef struct ZmoiGrayMorphState ZmoiGrayMorphState;

ZMO_API ZmoStatus zmoiGrayErodeBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                             int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                             const Zmo8u* pBorderValue,
                                             const ZmoiGrayMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiGrayErodeBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo32f* pBorderValue,
                                              const ZmoiGrayMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiGrayDilateBorder_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                              int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                              const Zmo8u* pBorderValue,
                                              const ZmoiGrayMorphState* pState, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiGrayDilateBorder_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                               int dstStep, ZmoiSize roi, ZmoiBorderType border,
                                               const Zmo32f* pBorderValue,
                                               const ZmoiGrayMorphState* pState, Zmo8u* pBuffer);

/* Sizes of state and work buffer, as zmoiMorphGetSize; type is zmo8u or zmo32f, channels 1. */
ZMO_API ZmoStatus zmoiGrayMorphGetSize(ZmoiSize roi, ZmoDataType type, int channels,
                                       ZmoiSize maskSize, int* pStateSize, int* pBufferSize);

/* Makes a state. pValues: maskSize.height rows of maskSize.width values of g, without gaps. Type 8u
 * and 32f each have a form of their own; the rest, and the statuses, are those of zmoiMorphInit
 * without type and channels. */
ZMO_API ZmoStatus zmoiGrayMorphInit_8u_C1R(const Zmo32s* pValues, ZmoiSize maskSize,
                                           ZmoiPoint anchor, ZmoiGrayMorphState* pState);
ZMO_API ZmoStatus zmoiGrayMorphInit_32f_C1R(const Zmo32f* pValues, ZmoiSize maskSize,
                                            ZmoiPoint anchor, ZmoiGrayMorphState* pState);

/* ---- Reconstruction ----------------------------------------------------------------------------
 *
 * L. Vincent, "Morphological Grayscale Reconstruction in Image Analysis", IEEE Transactions on
 * Image Processing 2 (1993): the hybrid of two raster scans and a queue. With I the limit and
 * N(p) the pixel p and its 4 or 8 neighbours inside the region:
 *
 *   MorphReconstructDilate   J0 = min(marker, I), then J'(p) = min(max of J over N(p), I(p))
 *   MorphReconstructErode    J0 = max(marker, I), then J'(p) = max(min of J over N(p), I(p))
 *
 * until nothing changes. The marker is copied into pSrcDst first and the work done there, so that
 * every call does the same. 32f and 64f: of zeros that differ in their sign either may be the
 * result.
 *
 *   pSrc, srcStep         limit, one channel
 *   pSrc2, src2Step       marker
 *   pSrcDst, srcDstStep   result; what it held has no influence
 *   roi                   pixels of all three
 *   connectivity          4 or 8
 *   pBuffer               as many bytes as zmoiMorphReconstructGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr         a pointer is null
 *   zmoStsSizeErr            a side of roi is below 1
 *   zmoStsStepErr            a step is shorter than a row or no multiple of the element size
 *   zmoStsConnectivityErr    connectivity is neither 4 nor 8
 *   zmoStsTooLargeErr        roi is larger than zmoiMorphReconstructGetBufferSize accepts */
ZMO_API ZmoStatus zmoiMorphReconstructDilate_8u_C1IR_Copy(const Zmo8u* pSrc, int srcStep,
                                                          const Zmo8u* pSrc2, int src2Step,
                                                          Zmo8u* pSrcDst, int srcDstStep,
                                                          ZmoiSize roi, int connectivity,
                                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructDilate_16u_C1IR_Copy(const Zmo16u* pSrc, int srcStep,
                                                           const Zmo16u* pSrc2, int src2Step,
                                                           Zmo16u* pSrcDst, int srcDstStep,
                                                           ZmoiSize roi, int connectivity,
                                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructDilate_32f_C1IR_Copy(const Zmo32f* pSrc, int srcStep,
                                                           const Zmo32f* pSrc2, int src2Step,
                                                           Zmo32f* pSrcDst, int srcDstStep,
                                                           ZmoiSize roi, int connectivity,
                                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructDilate_64f_C1IR_Copy(const Zmo64f* pSrc, int srcStep,
                                                           const Zmo64f* pSrc2, int src2Step,
                                                           Zmo64f* pSrcDst, int srcDstStep,
                                                           ZmoiSize roi, int connectivity,
                                                           Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructErode_8u_C1IR_Copy(const Zmo8u* pSrc, int srcStep,
                                                         const Zmo8u* pSrc2, int src2Step,
                                                         Zmo8u* pSrcDst, int srcDstStep,
                                                         ZmoiSize roi, int connectivity,
                                                         Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructErode_16u_C1IR_Copy(const Zmo16u* pSrc, int srcStep,
                                                          const Zmo16u* pSrc2, int src2Step,
                                                          Zmo16u* pSrcDst, int srcDstStep,
                                                          ZmoiSize roi, int connectivity,
                                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructErode_32f_C1IR_Copy(const Zmo32f* pSrc, int srcStep,
                                                          const Zmo32f* pSrc2, int src2Step,
                                                          Zmo32f* pSrcDst, int srcDstStep,
                                                          ZmoiSize roi, int connectivity,
                                                          Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMorphReconstructErode_64f_C1IR_Copy(const Zmo64f* pSrc, int srcStep,
                                                          const Zmo64f* pSrc2, int src2Step,
                                                          Zmo64f* pSrcDst, int srcDstStep,
                                                          ZmoiSize roi, int connectivity,
                                                          Zmo8u* pBuffer);

/* Work buffer of the reconstruction for the region roi. type is zmo8u, zmo16u, zmo32f or zmo64f,
 * channels 1. Status, in the order of the checks:
 *   zmoStsNullPtrErr      pSize is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsDataTypeErr     type is none of the four
 *   zmoStsChannelsErr     channels is not 1
 *   zmoStsTooLargeErr     the size does not fit an int */
ZMO_API ZmoStatus zmoiMorphReconstructGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                    int* pSize);

#ifdef __cplusplus
}
#endif

#endif
