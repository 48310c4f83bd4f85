#include "zmocv/copysubpix.h"

#include <algorithm>
#include <cmath>

#include "common/check.h"
#include "zmocv_sample.h"

namespace zmo {
namespace {

// The operators would raise the invalid flag for a NaN.
bool badFraction(float fraction) {
    return !std::isgreaterequal(fraction, 0.0F) || !std::isless(fraction, 1.0F);
}

// One coordinate of a corner, split: the whole part of a place and the fraction.
struct Split {
    ptrdiff_t whole;
    float fraction;
};

Split split(float coordinate) {
    // Beyond this every window lies outside of every image.
    constexpr double far = 0x1p40;
    const double position = std::clamp(static_cast<double>(coordinate), -far, far);
    const double whole = std::floor(position);
    const auto fraction = static_cast<float>(position - whole);
    if (fraction == 1) return {static_cast<ptrdiff_t>(whole) + 1, 0};
    return {static_cast<ptrdiff_t>(whole), fraction};
}

// The window's pixels first ... last along one axis that need no pixel outside 0 ... length - 1.
struct Span {
    ptrdiff_t first;
    ptrdiff_t last;
};

Span validSpan(Split at, int length, int window) {
    const ptrdiff_t reach = at.fraction > 0 ? 1 : 0;
    return {std::max<ptrdiff_t>(0, -at.whole),
            std::min<ptrdiff_t>(window - 1, length - 1 - reach - at.whole)};
}

void storeValidPart(Span x, Span y, ZmoiPoint* pFirst, ZmoiPoint* pLast) {
    const bool any = x.first <= x.last && y.first <= y.last;
    *pFirst = any ? ZmoiPoint{static_cast<int>(x.first), static_cast<int>(y.first)} : ZmoiPoint{};
    *pLast =
        any ? ZmoiPoint{static_cast<int>(x.last), static_cast<int>(y.last)} : ZmoiPoint{-1, -1};
}

CopySubpixKernel kernel(SubpixTypes types) {
    return kernelsInUse(copySubpixKernelsByLevel).at[types];
}

float scaleOf(int scaleFactor) {
    return std::ldexp(1.0F, -scaleFactor);
}

template <class S, class D>
ZmoStatus copySubpix(SubpixTypes types, const S* pSrc, int srcStep, D* pDst, int dstStep,
                     ZmoiSize roi, float dx, float dy, int scaleFactor = 0) {
    if (anyNull(pSrc, pDst)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    const Region image{ptrdiff_t{roi.width} + (dx != 0), ptrdiff_t{roi.height} + (dy != 0)};
    if (badStep<S>(srcStep, image.width) || badStep<D>(dstStep, roi.width)) return zmoStsStepErr;
    if (badFraction(dx) || badFraction(dy)) return zmoStsRangeErr;
    if (!isScale(scaleFactor)) return zmoStsScaleErr;
    kernel(types)({pSrc, srcStep}, image, {pDst, dstStep}, regionOf(roi), {0, 0, dx, dy},
                  scaleOf(scaleFactor));
    return zmoStsNoErr;
}

template <class S, class D>
ZmoStatus copySubpixIntersect(SubpixTypes types, const S* pSrc, int srcStep, ZmoiSize srcRoi,
                              D* pDst, int dstStep, ZmoiSize roi, ZmoiPoint32f corner,
                              ZmoiPoint* pFirst, ZmoiPoint* pLast, int scaleFactor = 0) {
    if (anyNull(pSrc, pDst, pFirst, pLast)) return zmoStsNullPtrErr;
    if (isEmpty(srcRoi) || isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<S>(srcStep, srcRoi.width) || badStep<D>(dstStep, roi.width)) return zmoStsStepErr;
    if (!std::isfinite(corner.x) || !std::isfinite(corner.y)) return zmoStsRangeErr;
    if (!isScale(scaleFactor)) return zmoStsScaleErr;
    const Split x = split(corner.x);
    const Split y = split(corner.y);
    kernel(types)({pSrc, srcStep}, regionOf(srcRoi), {pDst, dstStep}, regionOf(roi),
                  {x.whole, y.whole, x.fraction, y.fraction}, scaleOf(scaleFactor));
    storeValidPart(validSpan(x, srcRoi.width, roi.width), validSpan(y, srcRoi.height, roi.height),
                   pFirst, pLast);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

// `scale` and `use` hold the parameter of the scaled functions, or nothing.
#define ZMO_COPY_SUBPIX_SHAPE(types, S, D, name, scale, use)                                       \
    ZmoStatus zmoiCopySubpix_##name(const S* pSrc, int srcStep, D* pDst, int dstStep,              \
                                    ZmoiSize roi, Zmo32f dx, Zmo32f dy scale) {                    \
        return zmo::copySubpix(zmo::subpix##types, pSrc, srcStep, pDst, dstStep, roi, dx, dy use); \
    }                                                                                              \
    ZmoStatus zmoiCopySubpixIntersect_##name(const S* pSrc, int srcStep, ZmoiSize srcRoi, D* pDst, \
                                             int dstStep, ZmoiSize roi, ZmoiPoint32f corner,       \
                                             ZmoiPoint* pFirst, ZmoiPoint* pLast scale) {          \
        return zmo::copySubpixIntersect(zmo::subpix##types, pSrc, srcStep, srcRoi, pDst, dstStep,  \
                                        roi, corner, pFirst, pLast use);                           \
    }
#define ZMO_COMMA ,
#define ZMO_COPY_SUBPIX(types, S, D) ZMO_COPY_SUBPIX_SHAPE(types, S, D, types##_C1R, , )
#define ZMO_COPY_SUBPIX_SFS(types, S, D)                                           \
    ZMO_COPY_SUBPIX_SHAPE(types, S, D, types##_C1R_Sfs, ZMO_COMMA int scaleFactor, \
                          ZMO_COMMA scaleFactor)

ZMO_COPY_SUBPIX(8u, Zmo8u, Zmo8u)
ZMO_COPY_SUBPIX(16u, Zmo16u, Zmo16u)
ZMO_COPY_SUBPIX_SFS(8u16u, Zmo8u, Zmo16u)
ZMO_COPY_SUBPIX(8u32f, Zmo8u, Zmo32f)
ZMO_COPY_SUBPIX(16u32f, Zmo16u, Zmo32f)
ZMO_COPY_SUBPIX(32f, Zmo32f, Zmo32f)
