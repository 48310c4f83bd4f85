#include "zmocv/reconstruct.h"

#include <climits>
#include <initializer_list>

#include "common/check.h"
#include "zmocv_morph.h"

namespace zmo {
namespace {

// The queue and its alignment.
int64_t reconstructBufferSize(ZmoiSize roi) {
    return itemBytes(int64_t{roi.width} * roi.height, reconstructBytesOfPixel, 64 + 2 * 63);
}

template <class T>
ZmoStatus reconstruct(bool dilates, int type, const T* pSrc, int srcStep, const T* pSrc2,
                      int src2Step, T* pSrcDst, int srcDstStep, ZmoiSize roi, int connectivity,
                      Zmo8u* pBuffer) {
    if (anyNull(pSrc, pSrc2, pSrcDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    for (const int step : {srcStep, src2Step, srcDstStep}) {
        if (badStep<T>(step, roi.width)) return zmoStsStepErr;
    }
    if (!isConnectivity(connectivity)) return zmoStsConnectivityErr;
    if (reconstructBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    const ReconstructKernels& kernels = kernelsInUse(reconstructKernelsByLevel);
    (dilates ? kernels.dilate : kernels.erode)[type]({pSrc, srcStep}, {pSrc2, src2Step},
                                                     {pSrcDst, srcDstStep}, regionOf(roi),
                                                     connectivity, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiMorphReconstructGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                            int* pSize) {
    const bool knownType = type == zmo8u || type == zmo16u || type == zmo32f || type == zmo64f;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, knownType, channels == 1)) return bad;
    return zmo::storeSize(zmo::reconstructBufferSize(roi), pSize);
}

#define ZMO_RECONSTRUCT(T, type, index)                                                            \
    ZmoStatus zmoiMorphReconstructDilate_##type##_C1IR_Copy(                                       \
        const T* pSrc, int srcStep, const T* pSrc2, int src2Step, T* pSrcDst, int srcDstStep,      \
        ZmoiSize roi, int connectivity, Zmo8u* pBuffer) {                                          \
        return zmo::reconstruct(true, index, pSrc, srcStep, pSrc2, src2Step, pSrcDst, srcDstStep,  \
                                roi, connectivity, pBuffer);                                       \
    }                                                                                              \
    ZmoStatus zmoiMorphReconstructErode_##type##_C1IR_Copy(                                        \
        const T* pSrc, int srcStep, const T* pSrc2, int src2Step, T* pSrcDst, int srcDstStep,      \
        ZmoiSize roi, int connectivity, Zmo8u* pBuffer) {                                          \
        return zmo::reconstruct(false, index, pSrc, srcStep, pSrc2, src2Step, pSrcDst, srcDstStep, \
                                roi, connectivity, pBuffer);                                       \
    }
ZMO_RECONSTRUCT(Zmo8u, 8u, 0)
ZMO_RECONSTRUCT(Zmo16u, 16u, 1)
ZMO_RECONSTRUCT(Zmo32f, 32f, 2)
ZMO_RECONSTRUCT(Zmo64f, 64f, 3)
