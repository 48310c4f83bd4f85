#include "zmocv/integral.h"

#include "common/check.h"
#include "zmocv_integral.h"

namespace zmo {
namespace {

template <class D>
constexpr TableContent valuesIn = values32s;
template <>
constexpr TableContent valuesIn<Zmo32f> = values32f;
template <class D>
constexpr TableContent squaresIn = squares32s;
template <>
constexpr TableContent squaresIn<Zmo64f> = squares64f;

// Wrapped sums of 8u are restored from the row above: see the kernel.
constexpr Zmo32f startLimit = 0x1p50F;
constexpr int widthLimit = 1 << 22;

ZmoStatus checkLimits(ZmoiSize, Zmo32s) {
    return zmoStsNoErr;
}
ZmoStatus checkLimits(ZmoiSize roi, Zmo32f start) {
    if (!isWithin(start, -startLimit, startLimit)) return zmoStsRangeErr;
    return roi.width > widthLimit ? zmoStsTooLargeErr : zmoStsNoErr;
}

template <class T, class D>
ZmoStatus check(const T* pSrc, int srcStep, const D* pDst, int dstStep, ZmoiSize roi) {
    if (anyNull(pSrc, pDst)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<D>(dstStep, int64_t{roi.width} + 1)) return zmoStsStepErr;
    return zmoStsNoErr;
}

const IntegralKernels& kernels() {
    return kernelsInUse(integralKernelsByLevel);
}

template <class D>
ZmoStatus integral(bool tilted, const Zmo8u* pSrc, int srcStep, D* pDst, int dstStep, ZmoiSize roi,
                   D start) {
    if (const ZmoStatus bad = check(pSrc, srcStep, pDst, dstStep, roi)) return bad;
    if (const ZmoStatus bad = checkLimits(roi, start)) return bad;
    kernels().of8u[tilted][valuesIn<D>]({pSrc, srcStep}, {pDst, dstStep}, regionOf(roi), start);
    return zmoStsNoErr;
}

template <class D, class Q>
ZmoStatus sqrIntegral(bool tilted, const Zmo8u* pSrc, int srcStep, D* pDst, int dstStep, Q* pDst2,
                      int dst2Step, ZmoiSize roi, D start, Q sqrStart) {
    if (anyNull(pSrc, pDst, pDst2)) return zmoStsNullPtrErr;
    if (const ZmoStatus bad = check(pSrc, srcStep, pDst, dstStep, roi)) return bad;
    if (badStep<Q>(dst2Step, int64_t{roi.width} + 1)) return zmoStsStepErr;
    if (const ZmoStatus bad = checkLimits(roi, start)) return bad;
    const Source src{pSrc, srcStep};
    const Region region = regionOf(roi);
    kernels().of8u[tilted][valuesIn<D>](src, {pDst, dstStep}, region, start);
    kernels().of8u[tilted][squaresIn<Q>](src, {pDst2, dst2Step}, region, sqrStart);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_INTEGRAL(Base, tilted, D, types)                                                   \
    ZmoStatus zmoi##Base##_##types##_C1R(const Zmo8u* pSrc, int srcStep, D* pDst, int dstStep, \
                                         ZmoiSize roi, D start) {                              \
        return zmo::integral(tilted, pSrc, srcStep, pDst, dstStep, roi, start);                \
    }
#define ZMO_SQR_INTEGRAL(Base, tilted, D, Q, types)                                                \
    ZmoStatus zmoi##Base##_##types##_C1R(const Zmo8u* pSrc, int srcStep, D* pDst, int dstStep,     \
                                         Q* pDst2, int dst2Step, ZmoiSize roi, D start,            \
                                         Q sqrStart) {                                             \
        return zmo::sqrIntegral(tilted, pSrc, srcStep, pDst, dstStep, pDst2, dst2Step, roi, start, \
                                sqrStart);                                                         \
    }
#define ZMO_INTEGRALS(Integral, SqrIntegral, tilted)                \
    ZMO_INTEGRAL(Integral, tilted, Zmo32s, 8u32s)                   \
    ZMO_INTEGRAL(Integral, tilted, Zmo32f, 8u32f)                   \
    ZMO_SQR_INTEGRAL(SqrIntegral, tilted, Zmo32s, Zmo32s, 8u32s)    \
    ZMO_SQR_INTEGRAL(SqrIntegral, tilted, Zmo32s, Zmo64f, 8u32s64f) \
    ZMO_SQR_INTEGRAL(SqrIntegral, tilted, Zmo32f, Zmo64f, 8u32f64f)

ZMO_INTEGRALS(Integral, SqrIntegral, false)
ZMO_INTEGRALS(TiltedIntegral, TiltedSqrIntegral, true)

ZmoStatus zmoiIntegral_32f_C1R(const Zmo32f* pSrc, int srcStep, Zmo32f* pDst, int dstStep,
                               ZmoiSize roi, Zmo32f start) {
    if (const ZmoStatus bad = zmo::check(pSrc, srcStep, pDst, dstStep, roi)) return bad;
    zmo::kernels().of32f({pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi),
                         static_cast<double>(start));
    return zmoStsNoErr;
}
