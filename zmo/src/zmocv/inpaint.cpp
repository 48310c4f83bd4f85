#include "zmocv/inpaint.h"

#include "common/check.h"
#include "zmocv_inpaint.h"

namespace zmo {
namespace {

int64_t inpaintBufferSize(ZmoiSize roi, int channels) {
    const int64_t pixels = int64_t{roi.width} * roi.height;
    if (pixels > INT_MAX) return INT64_MAX;
    constexpr int64_t margins = 2 * (inpaintRadius + inpaintBlock);
    const int64_t planePixels = (int64_t{roi.width} + margins) * (int64_t{roi.height} + 2);
    constexpr int64_t frontBytes = sizeof(FrontPixel) + sizeof(int);
    const int planeBytes = int{sizeof(float)} + 1 + channels;
    constexpr int64_t discBytes = 2 * 4 * (inpaintRadius + 1) * inpaintColumns;
    return pixels * frontBytes + planePixels * planeBytes + discBytes + 64 + 9 * 63;
}

template <int channels>
ZmoStatus inpaint(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask, int maskStep, Zmo8u* pDst,
                  int dstStep, ZmoiSize roi, Zmo32f radius, ZmoiInpaintFlag flag, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pMask, pDst, pBuffer)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<Zmo8u, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo8u>(maskStep, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo8u, channels>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isWithin(radius, 1, inpaintRadius)) return zmoStsRangeErr;
    if (flag != zmoiInpaintMarching && flag != zmoiInpaintDiffusion) return zmoStsFlagErr;
    if (inpaintBufferSize(roi, channels) > INT_MAX) return zmoStsTooLargeErr;
    const InpaintKernels& kernels = kernelsInUse(inpaintKernelsByLevel);
    const InpaintKernel run =
        (flag == zmoiInpaintMarching ? kernels.marching : kernels.diffusion)[channels / 2];
    const bool any =
        run({pSrc, srcStep}, {pMask, maskStep}, {pDst, dstStep}, regionOf(roi), radius, pBuffer);
    return any ? zmoStsNoErr : zmoStsEmptyMask;
}

}  // namespace
}  // namespace zmo

#define ZMO_INPAINT(channels)                                                                      \
    ZmoStatus zmoiInpaint_8u_C##channels##R(const Zmo8u* pSrc, int srcStep, const Zmo8u* pMask,    \
                                            int maskStep, Zmo8u* pDst, int dstStep, ZmoiSize roi,  \
                                            Zmo32f radius, ZmoiInpaintFlag flag, Zmo8u* pBuffer) { \
        return zmo::inpaint<channels>(pSrc, srcStep, pMask, maskStep, pDst, dstStep, roi, radius,  \
                                      flag, pBuffer);                                              \
    }

ZMO_INPAINT(1)
ZMO_INPAINT(3)

ZmoStatus zmoiInpaintGetBufferSize(ZmoiSize roi, ZmoDataType type, int channels, int* pSize) {
    const bool knownChannels = channels == 1 || channels == 3;
    if (const ZmoStatus bad = zmo::checkQuery(pSize, roi, type == zmo8u, knownChannels)) return bad;
    return zmo::storeSize(zmo::inpaintBufferSize(roi, channels), pSize);
}
