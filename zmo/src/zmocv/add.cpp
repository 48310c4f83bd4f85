#include "zmocv/add.h"

#include <initializer_list>

#include "common/check.h"
#include "common/types.h"
#include "zmocv_arith.h"

namespace zmo {
namespace {

// src2 counts for addProduct, alpha for addWeighted.
template <AddUse use, class T, bool masked>
ZmoStatus add(Source src, Source src2, Source mask, Zmo32f* acc, int accStep, ZmoiSize roi,
              Zmo32f alpha = 0) {
    constexpr bool two = use == addProduct;
    if (anyNull(src.data, acc)) return zmoStsNullPtrErr;
    if ((two && src2.data == nullptr) || (masked && mask.data == nullptr)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(src.step, roi.width)) return zmoStsStepErr;
    if (two && badStep<T>(src2.step, roi.width)) return zmoStsStepErr;
    if (masked && badStep<Zmo8u>(mask.step, roi.width)) return zmoStsStepErr;
    if (badStep<Zmo32f>(accStep, roi.width)) return zmoStsStepErr;
    if (use == addWeighted && !isWithin(alpha, 0, 1)) return zmoStsRangeErr;
    const bool selected =
        kernelsInUse(addKernelsByLevel)
            .at[use][typeIndex<T>][masked](src, src2, mask, {acc, accStep}, regionOf(roi), alpha);
    return selected ? zmoStsNoErr : zmoStsEmptyMask;
}

}  // namespace
}  // namespace zmo

// `types` are those of the source and the accumulator; what follows is a function's own argument.
#define ZMO_ADD_PLAIN(Base, use, T, types, ...)                                            \
    ZmoStatus zmoi##Base##_##types##_C1IR(const T* pSrc, int srcStep, Zmo32f* pSrcDst,     \
                                          int srcDstStep,                                  \
                                          ZmoiSize roi __VA_OPT__(, Zmo32f) __VA_ARGS__) { \
        return zmo::add<zmo::use, T, false>({pSrc, srcStep}, {}, {}, pSrcDst, srcDstStep,  \
                                            roi __VA_OPT__(, ) __VA_ARGS__);               \
    }
#define ZMO_ADD_MASKED(Base, use, T, types, ...)                                            \
    ZmoStatus zmoi##Base##_##types##_C1IMR(const T* pSrc, int srcStep, const Zmo8u* pMask,  \
                                           int maskStep, Zmo32f* pSrcDst, int srcDstStep,   \
                                           ZmoiSize roi __VA_OPT__(, Zmo32f) __VA_ARGS__) { \
        return zmo::add<zmo::use, T, true>({pSrc, srcStep}, {}, {pMask, maskStep}, pSrcDst, \
                                           srcDstStep, roi __VA_OPT__(, ) __VA_ARGS__);     \
    }
#define ZMO_ADD_PRODUCT(T, types)                                                               \
    ZmoStatus zmoiAddProduct_##types##_C1IR(const T* pSrc, int srcStep, const T* pSrc2,         \
                                            int src2Step, Zmo32f* pSrcDst, int srcDstStep,      \
                                            ZmoiSize roi) {                                     \
        return zmo::add<zmo::addProduct, T, false>({pSrc, srcStep}, {pSrc2, src2Step}, {},      \
                                                   pSrcDst, srcDstStep, roi);                   \
    }                                                                                           \
    ZmoStatus zmoiAddProduct_##types##_C1IMR(const T* pSrc, int srcStep, const T* pSrc2,        \
                                             int src2Step, const Zmo8u* pMask, int maskStep,    \
                                             Zmo32f* pSrcDst, int srcDstStep, ZmoiSize roi) {   \
        return zmo::add<zmo::addProduct, T, true>({pSrc, srcStep}, {pSrc2, src2Step},           \
                                                  {pMask, maskStep}, pSrcDst, srcDstStep, roi); \
    }
#define ZMO_ADD_ALL(T, types)                                \
    ZMO_ADD_MASKED(Add, addValue, T, types)                  \
    ZMO_ADD_PLAIN(AddSquare, addSquare, T, types)            \
    ZMO_ADD_MASKED(AddSquare, addSquare, T, types)           \
    ZMO_ADD_PRODUCT(T, types)                                \
    ZMO_ADD_PLAIN(AddWeighted, addWeighted, T, types, alpha) \
    ZMO_ADD_MASKED(AddWeighted, addWeighted, T, types, alpha)

ZMO_ADD_PLAIN(Add, addValue, Zmo8u, 8u32f)
ZMO_ADD_PLAIN(Add, addValue, Zmo16u, 16u32f)
ZMO_ADD_ALL(Zmo8u, 8u32f)
ZMO_ADD_ALL(Zmo16u, 16u32f)
ZMO_ADD_ALL(Zmo32f, 32f)

ZmoStatus zmoiAddWeighted_32f_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                  int src2Step, Zmo32f* pDst, int dstStep, ZmoiSize roi,
                                  Zmo32f alpha) {
    if (zmo::anyNull(pSrc, pSrc2, pDst)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    for (const int step : {srcStep, src2Step, dstStep}) {
        if (zmo::badStep<Zmo32f>(step, roi.width)) return zmoStsStepErr;
    }
    if (!zmo::isWithin(alpha, 0, 1)) return zmoStsRangeErr;
    zmo::kernelsInUse(zmo::addKernelsByLevel)
        .blend({pSrc, srcStep}, {pSrc2, src2Step}, {pDst, dstStep}, zmo::regionOf(roi), alpha);
    return zmoStsNoErr;
}
