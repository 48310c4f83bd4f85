#include "zmocv/bound.h"

#include "common/check.h"
#include "zmocv_region.h"

namespace zmo {
namespace {

template <class T>
ZmoStatus boundSegments(BoundKernel run, T* pSrcDst, int srcDstStep, ZmoiSize roi, T value,
                        int connectivity) {
    if (pSrcDst == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcDstStep, roi.width)) return zmoStsStepErr;
    if (!isConnectivity(connectivity)) return zmoStsConnectivityErr;
    run({pSrcDst, srcDstStep}, regionOf(roi), value, connectivity);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiBoundSegments_8u_C1IR(Zmo8u* pSrcDst, int srcDstStep, ZmoiSize roi, Zmo8u value,
                                    int connectivity) {
    return zmo::boundSegments(zmo::kernelsInUse(zmo::boundKernelsByLevel).mark8u, pSrcDst,
                              srcDstStep, roi, value, connectivity);
}

ZmoStatus zmoiBoundSegments_16u_C1IR(Zmo16u* pSrcDst, int srcDstStep, ZmoiSize roi, Zmo16u value,
                                     int connectivity) {
    return zmo::boundSegments(zmo::kernelsInUse(zmo::boundKernelsByLevel).mark16u, pSrcDst,
                              srcDstStep, roi, value, connectivity);
}
