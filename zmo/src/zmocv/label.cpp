#include "zmocv/label.h"

#include <climits>
#include <limits>

#include "common/check.h"
#include "zmocv_region.h"

namespace zmo {
namespace {

constexpr int64_t bytesOfRun = 12;

int64_t labelBufferSize(ZmoiSize roi) {
    const int64_t runs = (int64_t{roi.width} + 1) / 2 * roi.height;
    return itemBytes(runs, bytesOfRun, roi.width + 4 * (int64_t{roi.height} + 1) + 64 + 3 * 63);
}

template <class From, class To>
ZmoStatus label(LabelKernel run, const From* pSrc, int srcStep, To* pDst, int dstStep, ZmoiSize roi,
                int minLabel, int maxLabel, int connectivity, int* pCount, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pCount, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<From>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<To>(dstStep, roi.width)) return zmoStsStepErr;
    if (minLabel < 1 || maxLabel < minLabel) return zmoStsRangeErr;
    if (maxLabel > std::numeric_limits<To>::max()) return zmoStsRangeErr;
    if (!isConnectivity(connectivity)) return zmoStsConnectivityErr;
    if (labelBufferSize(roi) > INT_MAX) return zmoStsTooLargeErr;
    *pCount = run({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), minLabel, maxLabel, connectivity,
                  pBuffer);
    return *pCount - 1 > maxLabel - minLabel ? zmoStsTruncated : zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiLabelMarkers_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi, int minLabel,
                                   int maxLabel, int connectivity, int* pCount, Zmo8u* pBuffer) {
    return zmo::label(zmo::kernelsInUse(zmo::labelKernelsByLevel).from8uTo8u, pSrcDst, srcDstStep,
                      pSrcDst, srcDstStep, roi, minLabel, maxLabel, connectivity, pCount, pBuffer);
}

ZmoStatus zmoiLabelMarkers_16u_C1IR(Zmo16u* pSrcDst, int srcDstStep, ZmoiSize roi, int minLabel,
                                    int maxLabel, int connectivity, int* pCount, Zmo8u* pBuffer) {
    return zmo::label(zmo::kernelsInUse(zmo::labelKernelsByLevel).from16uTo16u, pSrcDst, srcDstStep,
                      pSrcDst, srcDstStep, roi, minLabel, maxLabel, connectivity, pCount, pBuffer);
}

ZmoStatus zmoiLabelMarkers_8u32s_C1R(const Zmo8u* pSrc, int srcStep, Zmo32s* pDst, int dstStep,
                                     ZmoiSize roi, int minLabel, int maxLabel, int connectivity,
                                     int* pCount, Zmo8u* pBuffer) {
    return zmo::label(zmo::kernelsInUse(zmo::labelKernelsByLevel).from8uTo32s, pSrc, srcStep, pDst,
                      dstStep, roi, minLabel, maxLabel, connectivity, pCount, pBuffer);
}

ZmoStatus zmoiLabelMarkersGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize) {
    const bool knownType = type == zmo8u || type == zmo16u;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, knownType, channels == 1)) return bad;
    return zmo::storeSize(zmo::labelBufferSize(roi), pSize);
}
