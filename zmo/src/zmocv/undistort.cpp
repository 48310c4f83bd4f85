#include "zmocv/undistort.h"

#include <cmath>

#include "common/check.h"
#include "common/types.h"
#include "zmocv_lens.h"

namespace zmo {
namespace {

int64_t undistortBufferSize(ZmoiSize roi) {
    return rowBytes(roi.width, 0, 1, sizeof(float)) + 64 + 63;
}

// camera: fx, fy, cx, cy; lens: k1, k2, p1, p2.
ZmoStatus makeCamera(const Zmo32f* camera, const Zmo32f* lens, Camera& result) {
    for (int i = 0; i < 4; ++i) {
        if (!std::isfinite(camera[i]) || !std::isfinite(lens[i])) return zmoStsRangeErr;
    }
    if (camera[0] <= 0 || camera[1] <= 0) return zmoStsRangeErr;
    result = {camera[0], camera[1], camera[2], camera[3], lens[0], lens[1], lens[2], lens[3]};
    return zmoStsNoErr;
}

template <class T, int channels>
ZmoStatus undistortRadial(const T* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi,
                          const Zmo32f* camera, Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, camera, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<T, channels>(dstStep, roi.width)) return zmoStsStepErr;
    const Zmo32f lens[] = {k1, k2, 0, 0};
    Camera all{};
    const ZmoStatus status = makeCamera(camera, lens, all);
    if (status != zmoStsNoErr) return status;
    if (undistortBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    kernelsInUse(undistortKernelsByLevel)
        .radial[typeIndex<T>][channels / 2]({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), &all,
                                            pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_UNDISTORT(T, channels)                                                               \
    ZmoStatus zmoiUndistortRadial_##T##_C##channels##R(                                          \
        const Zmo##T* pSrc, int srcStep, Zmo##T* pDst, int dstStep, ZmoiSize roi,                \
        const Zmo32f camera[4], Zmo32f k1, Zmo32f k2, Zmo8u* pBuffer) {                          \
        return zmo::undistortRadial<Zmo##T, channels>(pSrc, srcStep, pDst, dstStep, roi, camera, \
                                                      k1, k2, pBuffer);                          \
    }

ZMO_UNDISTORT(8u, 1)
ZMO_UNDISTORT(8u, 3)
ZMO_UNDISTORT(16u, 1)
ZMO_UNDISTORT(16u, 3)
ZMO_UNDISTORT(32f, 1)
ZMO_UNDISTORT(32f, 3)

ZmoStatus zmoiCreateMapCameraUndistort_32f_C1R(Zmo32f* pDst, int dstStep, Zmo32f* pDst2,
                                               int dst2Step, ZmoiSize roi, const Zmo32f camera[4],
                                               const Zmo32f lens[4]) {
    if (zmo::anyNull(pDst, pDst2, camera, lens)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo32f>(dstStep, roi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo32f>(dst2Step, roi.width)) return zmoStsStepErr;
    zmo::Camera all{};
    const ZmoStatus status = zmo::makeCamera(camera, lens, all);
    if (status != zmoStsNoErr) return status;
    zmo::kernelsInUse(zmo::undistortKernelsByLevel)
        .map({pDst, dstStep}, {pDst2, dst2Step}, zmo::regionOf(roi), &all);
    return zmoStsNoErr;
}

ZmoStatus zmoiUndistortRadialGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                           int* pSize) {
    const bool knownType = type == zmo8u || type == zmo16u || type == zmo32f;
    const bool knownChannels = channels == 1 || channels == 3;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, knownType, knownChannels)) return bad;
    return zmo::storeSize(zmo::undistortBufferSize(roi), pSize);
}
