#include "zmoi/convert.h"

#include "common/check.h"
#include "zmoi.h"

ZmoStatus zmoiConvert_8u32f_C1R(const Zmo8u* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                                ZmoiSize roi) {
    if (zmo::anyNull(pSrc, pDst)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u>(srcStep, roi.width)) return zmoStsStepErr;
    if (zmo::badStep<Zmo32f>(dstStep, roi.width)) return zmoStsStepErr;
    zmo::kernelsInUse(zmo::convertKernelsByLevel)
        .from8uTo32f({pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi));
    return zmoStsNoErr;
}
