#include "zmocv/rectstddev.h"

#include <algorithm>
#include <cmath>

#include "common/check.h"
#include "zmocv_integral.h"

namespace zmo {
namespace {

struct Upright {
    static Corners corners(ZmoiRect r) {
        const Cell at{r.x, r.y};
        return {
            {at.x + r.width, at.y + r.height}, {at.x, at.y + r.height}, {at.x + r.width, at.y}, at};
    }
    static double count(ZmoiRect r) { return static_cast<double>(r.width) * r.height; }
    static int64_t leftmost(ZmoiRect r) { return r.x; }
};

struct Tilted {
    static Corners corners(ZmoiRect r) {
        const Cell at{r.x, r.y};
        return {{at.x + r.width - r.height, at.y + r.width + r.height},
                {at.x + r.width, at.y + r.width},
                {at.x - r.height, at.y + r.height},
                at};
    }
    static double count(ZmoiRect r) { return 2.0 * r.width * r.height; }
    static int64_t leftmost(ZmoiRect r) { return int64_t{r.x} - r.height; }
};

// The last pixel needs `columns` cells of both tables.
template <class Shape>
bool badRect(ZmoiRect rect, int64_t width, int64_t columns) {
    if (rect.width < 1 || rect.height < 1) return true;
    if (rect.y < 0 || Shape::leftmost(rect) < 0) return true;
    return width + rect.x + rect.width > columns;
}

template <class Shape, class T, class Q, class D>
ZmoStatus stdDev(void (*RectStdDevKernels::*kernel)(const RectStdDevArgs&), const T* pSrc,
                 int srcStep, const Q* pSqr, int sqrStep, D* pDst, int dstStep, ZmoiSize roi,
                 ZmoiRect rect, int scaleFactor) {
    if (anyNull(pSrc, pSqr, pDst)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width)) return zmoStsStepErr;
    if (badStep<Q>(sqrStep, roi.width)) return zmoStsStepErr;
    if (badStep<D>(dstStep, roi.width)) return zmoStsStepErr;
    const int columns =
        std::min(srcStep / static_cast<int>(sizeof(T)), sqrStep / static_cast<int>(sizeof(Q)));
    if (badRect<Shape>(rect, roi.width, columns)) return zmoStsRectErr;
    if (!isScale(scaleFactor)) return zmoStsScaleErr;
    (kernelsInUse(rectStdDevKernelsByLevel).*kernel)({{pSrc, srcStep},
                                                      {pSqr, sqrStep},
                                                      {pDst, dstStep},
                                                      regionOf(roi),
                                                      Shape::corners(rect),
                                                      Shape::count(rect),
                                                      std::ldexp(1.0, -scaleFactor)});
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_RECT_STD_DEV_32F(Shape, Base, kernel, T, types)                                    \
    ZmoStatus zmoi##Base##_##types##_C1R(const T* pSrc, int srcStep, const Zmo64f* pSqr,       \
                                         int sqrStep, Zmo32f* pDst, int dstStep, ZmoiSize roi, \
                                         ZmoiRect rect) {                                      \
        return zmo::stdDev<zmo::Shape>(&zmo::RectStdDevKernels::kernel, pSrc, srcStep, pSqr,   \
                                       sqrStep, pDst, dstStep, roi, rect, 0);                  \
    }
#define ZMO_RECT_STD_DEV(Shape, Base)                                                           \
    ZmoStatus zmoi##Base##_32s_C1RSfs(const Zmo32s* pSrc, int srcStep, const Zmo32s* pSqr,      \
                                      int sqrStep, Zmo32s* pDst, int dstStep, ZmoiSize roi,     \
                                      ZmoiRect rect, int scaleFactor) {                         \
        return zmo::stdDev<zmo::Shape>(&zmo::RectStdDevKernels::from32s32sTo32s, pSrc, srcStep, \
                                       pSqr, sqrStep, pDst, dstStep, roi, rect, scaleFactor);   \
    }                                                                                           \
    ZMO_RECT_STD_DEV_32F(Shape, Base, from32s64fTo32f, Zmo32s, 32s32f)                          \
    ZMO_RECT_STD_DEV_32F(Shape, Base, from32f64fTo32f, Zmo32f, 32f)

ZMO_RECT_STD_DEV(Upright, RectStdDev)
ZMO_RECT_STD_DEV(Tilted, TiltedRectStdDev)
