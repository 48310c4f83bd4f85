#include "zmocv/segment.h"

#include <climits>

#include "common/check.h"
#include "zmocv_segment.h"

namespace zmo {
namespace {

// Bytes for each pixel of a work plane, which all pixels of the region are among.
constexpr int64_t watershedBytes = 8 + sizeof(int);
constexpr int64_t rankedWatershedBytes = watershedBytes + 2 * sizeof(int) + 2 * sizeof(uint64_t);
constexpr int64_t growBytes = 8 + 2 * sizeof(int);

int64_t bufferSize(ZmoiSize roi, int64_t pixelBytes) {
    const int64_t pixels = (int64_t{roi.width} + 2) * (int64_t{roi.height} + 2);
    return itemBytes(pixels, pixelBytes, 64 + 7 * 63);
}

template <class S, class M, int channels = 1>
ZmoStatus check(const S* pSrc, int srcStep, const M* pSrcDst, int srcDstStep, ZmoiSize roi,
                int connectivity, const Zmo8u* pBuffer, int64_t pixelBytes) {
    if (anyNull(pSrc, pSrcDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<S, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<M>(srcDstStep, roi.width)) return zmoStsStepErr;
    if (!isConnectivity(connectivity)) return zmoStsConnectivityErr;
    return bufferSize(roi, pixelBytes) > INT_MAX ? zmoStsTooLargeErr : zmoStsNoErr;
}

template <class S, class M>
ZmoStatus watershed(int types, const S* pSrc, int srcStep, M* pSrcDst, int srcDstStep, ZmoiSize roi,
                    int connectivity, int drawLines, Zmo8u* pBuffer) {
    const ZmoStatus status = check(pSrc, srcStep, pSrcDst, srcDstStep, roi, connectivity, pBuffer,
                                   sizeof(S) == 1 ? watershedBytes : rankedWatershedBytes);
    if (status != zmoStsNoErr) return status;
    kernelsInUse(segmentKernelsByLevel)
        .watershed[types]({pSrc, srcStep}, {pSrcDst, srcDstStep}, regionOf(roi), connectivity,
                          drawLines != 0, pBuffer);
    return zmoStsNoErr;
}

template <int channels>
ZmoStatus grow(const Zmo8u* pSrc, int srcStep, Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi,
               int connectivity, Zmo8u* pBuffer) {
    const ZmoStatus status = check<Zmo8u, Zmo8u, channels>(pSrc, srcStep, pSrcDst, srcDstStep, roi,
                                                           connectivity, pBuffer, growBytes);
    if (status != zmoStsNoErr) return status;
    kernelsInUse(segmentKernelsByLevel)
        .grow[channels / 2]({pSrc, srcStep}, {pSrcDst, srcDstStep}, regionOf(roi), connectivity,
                            pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_WATERSHED(types, S, M, index)                                                   \
    ZmoStatus zmoiSegmentWatershed_##types##_C1IR(                                          \
        const Zmo##S* pSrc, int srcStep, Zmo##M* pSrcDst, int srcDstStep, ZmoiSize roi,     \
        int connectivity, int drawLines, Zmo8u* pBuffer) {                                  \
        return zmo::watershed(index, pSrc, srcStep, pSrcDst, srcDstStep, roi, connectivity, \
                              drawLines, pBuffer);                                          \
    }
#define ZMO_GROW(channels)                                                                         \
    ZmoStatus zmoiSegmentGradient_8u_C##channels##IR(const Zmo8u* pSrc, int srcStep,               \
                                                     Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi, \
                                                     int connectivity, Zmo8u* pBuffer) {           \
        return zmo::grow<channels>(pSrc, srcStep, pSrcDst, srcDstStep, roi, connectivity,          \
                                   pBuffer);                                                       \
    }

ZMO_WATERSHED(8u, 8u, 8u, 0)
ZMO_WATERSHED(8u16u, 8u, 16u, 1)
ZMO_WATERSHED(32f16u, 32f, 16u, 2)
ZMO_GROW(1)
ZMO_GROW(3)

ZmoStatus zmoiSegmentWatershedGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                            int* pSize) {
    const bool knownType = type == zmo8u || type == zmo32f;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, knownType, channels == 1)) return bad;
    const int64_t bytes = type == zmo8u ? zmo::watershedBytes : zmo::rankedWatershedBytes;
    return zmo::storeSize(zmo::bufferSize(roi, bytes), pSize);
}

ZmoStatus zmoiSegmentGradientGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels,
                                           int* pSize) {
    const bool knownChannels = channels == 1 || channels == 3;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, type == zmo8u, knownChannels)) return bad;
    return zmo::storeSize(zmo::bufferSize(roi, zmo::growBytes), pSize);
}
