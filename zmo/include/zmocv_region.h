/* Computer vision: regions of equal or nearly equal pixels. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_REGION_H
#define ZMOCV_REGION_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Flood fill --------------------------------------------------------------------------------
 *
 * Fills the region around a seed with a value, by scan lines. The region is the smallest set that
 * holds the seed and with each of its pixels p all neighbours q that satisfy
 *
 *   FloodFill          q = s
 *   FloodFill_Range    s - minDelta <= q <= s + maxDelta
 *   FloodFill_Grad     p - minDelta <= q <= p + maxDelta
 *
 * where s is the value of the seed and all values are those before the call. The four neighbours of
 * 4Con share a side with the pixel, the eight of 8Con a side or a corner. 8u sums and differences
 * are exact, 32f ones are rounded once to single precision.
 *
 *   pSrcDst, srcDstStep   image, one channel
 *   roi                   its pixels; nothing outside belongs to a region
 *   seed                  a pixel of the region of interest
 *   value                 what the region is filled with
 *   minDelta, maxDelta    how much darker and how much brighter a pixel may be; not negative
 *   pRegion               number of pixels filled, their bounding rectangle, and value
 *   pBuffer               as many bytes as zmoiFloodFillGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      a pointer is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         the step is shorter than a row or no multiple of the element size
 *   zmoStsPointErr        seed lies outside roi
 *   zmoStsRangeErr        minDelta or maxDelta is negative or not a number
 *   zmoStsTooLargeErr     roi is larger than zmoiFloodFillGetBufferSize accepts */
ZMO_API ZmoStatus zmoiFloodFill_4Con_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                             ZmoiPoint seed, Zmo8u value, ZmoiFloodRegion* pRegion,
                                             Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_4Con_32s_C1IR(Zmo32s* pSrcDst, int srcDstStep, ZmoiSize roi,
                                              ZmoiPoint seed, Zmo32s value,
                                              ZmoiFloodRegion* pRegion, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_4Con_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                              ZmoiPoint seed, Zmo32f value,
                                              ZmoiFloodRegion* pRegion, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_8Con_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                             ZmoiPoint seed, Zmo8u value, ZmoiFloodRegion* pRegion,
                                             Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_8Con_32s_C1IR(Zmo32s* pSrcDst, int srcDstStep, ZmoiSize roi,
                                              ZmoiPoint seed, Zmo32s value,
                                              ZmoiFloodRegion* pRegion, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_8Con_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                              ZmoiPoint seed, Zmo32f value,
                                              ZmoiFloodRegion* pRegion, Zmo8u* pBuffer);

ZMO_API ZmoStatus zmoiFloodFill_Range4Con_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                  ZmoiPoint seed, Zmo8u value, Zmo8u minDelta,
                                                  Zmo8u maxDelta, ZmoiFloodRegion* pRegion,
                                                  Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Range4Con_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                   ZmoiPoint seed, Zmo32f value, Zmo32f minDelta,
                                                   Zmo32f maxDelta, ZmoiFloodRegion* pRegion,
                                                   Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Range8Con_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                  ZmoiPoint seed, Zmo8u value, Zmo8u minDelta,
                                                  Zmo8u maxDelta, ZmoiFloodRegion* pRegion,
                                                  Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Range8Con_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                   ZmoiPoint seed, Zmo32f value, Zmo32f minDelta,
                                                   Zmo32f maxDelta, ZmoiFloodRegion* pRegion,
                                                   Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Grad4Con_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                 ZmoiPoint seed, Zmo8u value, Zmo8u minDelta,
                                                 Zmo8u maxDelta, ZmoiFloodRegion* pRegion,
                                                 Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Grad4Con_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                  ZmoiPoint seed, Zmo32f value, Zmo32f minDelta,
                                                  Zmo32f maxDelta, ZmoiFloodRegion* pRegion,
                                                  Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Grad8Con_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                 ZmoiPoint seed, Zmo8u value, Zmo8u minDelta,
                                                 Zmo8u maxDelta, ZmoiFloodRegion* pRegion,
                                                 Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiFloodFill_Grad8Con_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                                  ZmoiPoint seed, Zmo32f value, Zmo32f minDelta,
                                                  Zmo32f maxDelta, ZmoiFloodRegion* pRegion,
                                                  Zmo8u* pBuffer);

/* Work buffer of the flood fills for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr      pSize is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsDataTypeErr     type is not 8u, 32s or 32f
 *   zmoStsChannelsErr     channels is not 1
 *   zmoStsTooLargeErr     the size does not fit an int */
ZMO_API ZmoStatus zmoiFloodFillGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                             int* pSize);

/* ---- Labels ------------------------------------------------------------------------------------
 *
 * Numbers the connected components of the pixels that are not zero, whatever their values: the
 * first one in reading order gets minLabel, the next one minLabel + 1, and so on to maxLabel. The
 * order is that of the components' first pixels. Pixels of later components, and all zero pixels,
 * become 0. Runs of a row are joined by union-find.
 *
 *   pSrc, srcStep         markers; pDst, dstStep: labels; pSrcDst: both
 *   roi                   pixels of all of them
 *   minLabel, maxLabel    1 <= minLabel <= maxLabel <= largest value of the destination's type
 *   connectivity          4 (neighbours share a side) or 8 (or a corner)
 *   pCount                number of components, also of those that got no label
 *   pBuffer               as many bytes as zmoiLabelMarkersGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      a pointer is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         a step is shorter than a row or no multiple of the element size
 *   zmoStsRangeErr        minLabel or maxLabel is out of range
 *   zmoStsConnectivityErr connectivity is neither 4 nor 8
 *   zmoStsTooLargeErr     roi is larger than zmoiLabelMarkersGetBufferSize accepts
 *   zmoStsTruncated       note: there are more components than labels */
ZMO_API ZmoStatus zmoiLabelMarkers_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                           int minLabel, int maxLabel, int connectivity,
                                           int* pCount, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiLabelMarkers_16u_C1IR(Zmo16u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                            int minLabel, int maxLabel, int connectivity,
                                            int* pCount, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiLabelMarkers_8u32s_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst,
                                             int dstStep, ZmoiSize roi, int minLabel, int maxLabel,
                                             int connectivity, int* pCount, Zmo8u* pBuffer);

/* Work buffer for the region roi; type is the source's, 8u or 16u. Status: as of
 * zmoiFloodFillGetBufferSize. */
ZMO_API ZmoStatus zmoiLabelMarkersGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                int* pSize);

/* ---- Speckles ----------------------------------------------------------------------------------
 *
 * Gives the value `value` to all pixels of small blobs. Pixels that have it already belong to no
 * blob. Two neighbours p and q belong to the same blob when |p - q| <= maxDiff (32f: the difference
 * is rounded to single precision), and so does every chain of such pixels. A blob is small when it
 * has at most maxSize pixels.
 *
 *   pSrcDst, srcDstStep   image, one channel
 *   roi                   its pixels
 *   value                 mark of speckles
 *   maxSize               1 or more, in pixels
 *   maxDiff               0 or more
 *   connectivity          4 (neighbours share a side) or 8 (or a corner)
 *   pBuffer               as many bytes as zmoiMarkSpecklesGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      a pointer is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         the step is shorter than a row or no multiple of the element size
 *   zmoStsRangeErr        maxSize is below 1, or maxDiff is negative or not a number
 *   zmoStsConnectivityErr connectivity is neither 4 nor 8
 *   zmoStsTooLargeErr     roi is larger than zmoiMarkSpecklesGetBufferSize accepts */
ZMO_API ZmoStatus zmoiMarkSpeckles_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                           Zmo8u value, int maxSize, Zmo8u maxDiff,
                                           int connectivity, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMarkSpeckles_16u_C1IR(Zmo16u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                            Zmo16u value, int maxSize, Zmo16u maxDiff,
                                            int connectivity, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMarkSpeckles_16s_C1IR(Zmo16s* pSrcDst, int srcDstStep, ZmoiSize roi,
                                            Zmo16s value, int maxSize, Zmo16s maxDiff,
                                            int connectivity, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiMarkSpeckles_32f_C1IR(Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi,
                                            Zmo32f value, int maxSize, Zmo32f maxDiff,
                                            int connectivity, Zmo8u* pBuffer);

/* Work buffer for the region roi; type is 8u, 16u, 16s or 32f. Status: as of
 * zmoiFloodFillGetBufferSize. */
ZMO_API ZmoStatus zmoiMarkSpecklesGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                int* pSize);

/* ---- Bounds of segments ------------------------------------------------------------------------
 *
 * In an image of labels, gives the value `value` to each pixel whose label differs from that of a
 * later neighbour inside the region: the one to the right and the one below, with connectivity 8
 * also the two diagonal ones below. All labels are those before the call, and 0 is a label like any
 * other. Bounds are one pixel wide, on the side of the earlier pixel in reading order.
 *
 *   pSrcDst, srcDstStep   labels, one channel
 *   roi                   its pixels
 *   value                 mark of bounds
 *   connectivity          4 or 8
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr      pSrcDst is null
 *   zmoStsSizeErr         a side of roi is below 1
 *   zmoStsStepErr         the step is shorter than a row or no multiple of the element size
 *   zmoStsConnectivityErr connectivity is neither 4 nor 8 */
ZMO_API ZmoStatus zmoiBoundSegments_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                            Zmo8u value, int connectivity);
ZMO_API ZmoStatus zmoiBoundSegments_16u_C1IR(Zmo16u* pSrcDst, int srcDstStep, ZmoiSize roi,
                                             Zmo16u value, int connectivity);

#ifdef __cplusplus
}
#endif

#endif
