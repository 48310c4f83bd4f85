/* Computer vision: lens distortion. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_LENS_H
#define ZMOCV_LENS_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Lens distortion ---------------------------------------------------------------------------
 *
 * D. Brown, "Close-range camera calibration", Photogrammetric Engineering 37 (1971): where the lens
 * has put what belongs at pixel (x, y) of the undistorted image. With the focal lengths fx and fy
 * and the principal point (cx, cy) of the camera, all in pixels,
 *
 *   u = (x - cx) / fx       v = (y - cy) / fy      r2 = u u + v v
 *   g = 1 + r2 (k1 + r2 k2)
 *   mapX = cx + fx (u g + 2 p1 (u v) + p2 (r2 + 2 (u u)))
 *   mapY = cy + fy (v g + p1 (r2 + 2 (v v)) + 2 p2 (u v))
 *
 * in single precision, sums from left to right, each operation rounded once.
 *
 * CreateMapCameraUndistort stores mapX and mapY.
 *
 * UndistortRadial, with p1 = p2 = 0, interpolates between the four pixels around (mapX, mapY). With
 * s00 the pixel at (floor(mapX), floor(mapY)), s01 the one to its right, s10 and s11 those below,
 * and the fractions a of mapX and b of mapY,
 *
 *   upper = (1 - a) s00 + a s01     lower = (1 - a) s10 + a s11
 *   value = (1 - b) upper + b lower
 *
 * in single precision, each operation rounded once; results to integers follow convention 13. A
 * neighbour beyond the last column or row is the pixel itself. Where (mapX, mapY) lies outside of
 * 0 ... width - 1, 0 ... height - 1, the pixel becomes 0.
 *
 *   pSrc, srcStep     distorted image, one channel or three
 *   pDst, dstStep     undistorted image; in the map mapX, one channel; pDst2, dst2Step: mapY
 *   roi               pixels of all of them
 *   camera            fx, fy, cx, cy: finite, fx and fy above 0
 *   k1, k2            radial distortion, finite
 *   lens              k1, k2 and the tangential distortion p1, p2; finite
 *   pBuffer           as many bytes as zmoiUndistortRadialGetBufferSize reports
 * Status, in the order of the checks:
 *   zmoStsNullPtrErr  a pointer is null
 *   zmoStsSizeErr     a side of roi is below 1
 *   zmoStsStepErr     a step is shorter than a row or no multiple of the element size
 *   zmoStsRangeErr    a value of camera or of the lens is not finite, or a focal length not above 0
 *   zmoStsTooLargeErr roi is larger than zmoiUndistortRadialGetBufferSize accepts */
ZMO_API ZmoStatus zmoiUndistortRadial_8u_C1R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                             int dstStep, ZmoiSize roi, const Zmo32f camera[4],
                                             Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiUndistortRadial_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst,
                                             int dstStep, ZmoiSize roi, const Zmo32f camera[4],
                                             Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiUndistortRadial_16u_C1R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                              int dstStep, ZmoiSize roi, const Zmo32f camera[4],
                                              Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiUndistortRadial_16u_C3R(const Zmo16u* pSrc, int srcStep, Zmo16u* pDst,
                                              int dstStep, ZmoiSize roi, const Zmo32f camera[4],
                                              Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiUndistortRadial_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, const Zmo32f camera[4],
                                              Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiUndistortRadial_32f_C3R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst,
                                              int dstStep, ZmoiSize roi, const Zmo32f camera[4],
                                              Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer);
ZMO_API ZmoStatus zmoiCreateMapCameraUndistort_32f_C1R(Zmo32f* pDst, int dstStep, Zmo32f* pDst2,
                                                       int dst2Step, ZmoiSize roi,
                                                       const Zmo32f camera[4],
                                                       const Zmo32f lens[4]);

/* Work buffer of UndistortRadial for the region roi. Status, in the order of the checks:
 *   zmoStsNullPtrErr   pSize is null
 *   zmoStsSizeErr      a side of roi is below 1
 *   zmoStsDataTypeErr  type is not 8u, 16u or 32f
 *   zmoStsChannelsErr  channels is neither 1 nor 3
 *   zmoStsTooLargeErr  the size does not fit an int */
ZMO_API ZmoStatus zmoiUndistortRadialGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                                   int* pSize);

#ifdef __cplusplus
}
#endif

#endif
