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
 *   pBuffer               as many bytes as zmoiFloodFillGetBufferSize tells
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

#ifdef __cplusplus
}
#endif

#endif
