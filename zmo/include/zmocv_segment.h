/* Computer vision: segmentation from markers. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_SEGMENT_H
#define ZMOCV_SEGMENT_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Both functions let the segments of a marker image grow until they meet: markers that are not 0
 * are the labels of segments, 0 is free ground. Neighbours of a pixel are visited in reading order.
 * Free pixels that no label can reach stay 0.
 *
 * ---- Watershed ---------------------------------------------------------------------------------
 *
 * F. Meyer, "Color image segmentation", International Conference on Image Processing and its
 * Applications (1992): the relief is flooded from the markers with a queue in the order of levels.
 * First all labelled pixels, in reading order, then each pixel that gets a label puts its free
 * neighbours into the queue, once each, at the level of their relief, but not below that of the
 * pixel taken last. The pixel at the lowest level, of equal ones the one that waits longest, is
 * taken next. It gets the label of the neighbour that put it there.
 *
 * With drawLines, the largest value of the markers' type stands for lines between segments. Pixels
 * that have it at the start are walls, which are never flooded. A pixel whose turn has come and
 * whose neighbours have two labels or more becomes part of a line, and lets nobody pass.
 *
 *   pSrc, srcStep         relief, one channel
 *   pSrcDst, srcDstStep   markers, then segments; one channel
 *   roi                   pixels of both
 *   connectivity          4 (neighbours share a side) or 8 (or a corner)
 *   drawLines             0: segments meet; else lines are drawn between them
 *   pBuffer               as many bytes as zmoiSegmentWatershedGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      a pointer is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         a step is shorter than a row or no multiple of the element size
 *   zmoStsConnectivityErr connectivity is neither 4 nor 8
 *   zmoStsTooLargeErr     roi is larger than zmoiSegmentWatershedGetBufferSize accepts */
ZMO_API ZmoStatus zmoiSegmentWatershed_8u_C1IR(const Zmo8u* pSrc, int srcStep, Zmo8u* pSrcDst,
                                               int srcDstStep, ZmoiSize roi, int connectivity,
                                               int drawLines, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiSegmentWatershed_8u16u_C1IR(const Zmo8u* pSrc, int srcStep, Zmo16u* pSrcDst,
                                                  int srcDstStep, ZmoiSize roi, int connectivity,
                                                  int drawLines, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiSegmentWatershed_32f16u_C1IR(const Zmo32f* pSrc, int srcStep, Zmo16u* pSrcDst,
                                                   int srcDstStep, ZmoiSize roi, int connectivity,
                                                   int drawLines, Zmo8u* pBuffer);

/* Work buffer for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr   pSize is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsDataTypeErr  type is neither 8u nor 32f
 *   zmoStsChannelsErr  channels is not 1
 *   zmoStsTooLargeErr  the size does not fit an int */
ZMO_API ZmoStatus zmoiSegmentWatershedGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                    int* pSize);

/* ---- Growing by gradient -----------------------------------------------------------------------
 *
 * Segments grow over the smallest step of the image first: what comes out is a spanning forest of
 * least steps, rooted in the markers (R. Adams, L. Bischof, "Seeded region growing", IEEE PAMI 16
 * (1994), with steps between neighbours). The step between two neighbours is the largest difference
 * of their channels.
 * First all labelled pixels, in reading order, then each pixel that gets a label offers it to its
 * free neighbours. A free pixel waits with the offer of the smallest step so far, of equal ones the
 * first. The pixel whose offer has the smallest step of all, of equal ones the offer made first,
 * takes it.
 *
 *   pSrc, srcStep         image, one channel or three
 *   pSrcDst, srcDstStep   markers, then segments; one channel
 *   roi, connectivity     as above
 *   pBuffer               as many bytes as zmoiSegmentGradientGetBufferSize reports
 * Status: as above. */
ZMO_API ZmoStatus zmoiSegmentGradient_8u_C1IR(const Zmo8u* pSrc, int srcStep, Zmo8u* pSrcDst,
                                              int srcDstStep, ZmoiSize roi, int connectivity,
                                              Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiSegmentGradient_8u_C3IR(const Zmo8u* pSrc, int srcStep, Zmo8u* pSrcDst,
                                              int srcDstStep, ZmoiSize roi, int connectivity,
                                              Zmo8u* pBuffer);

/* Work buffer for the region roi. Status: as above, but type must be 8u and channels 1 or 3. */
ZMO_API ZmoStatus zmoiSegmentGradientGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                   int* pSize);

#ifdef __cplusplus
}
#endif

#endif
