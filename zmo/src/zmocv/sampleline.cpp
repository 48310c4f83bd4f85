#include "zmocv/sampleline.h"

#include <cstdlib>

#include "common/check.h"
#include "zmocv_sample.h"

namespace zmo {
namespace {

bool isInside(ZmoiPoint point, ZmoiSize roi) {
    return point.x >= 0 && point.x < roi.width && point.y >= 0 && point.y < roi.height;
}

template <class T, int channels>
ZmoStatus sampleLine(const T* pSrc, int srcStep, T* pLine, ZmoiSize roi, ZmoiPoint first,
                     ZmoiPoint last) {
    if (anyNull(pSrc, pLine)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(srcStep, roi.width)) return zmoStsStepErr;
    if (!isInside(first, roi) || !isInside(last, roi)) return zmoStsPointErr;
    constexpr ptrdiff_t pixel = sizeof(T) * channels;
    const ptrdiff_t alongX = last.x < first.x ? -pixel : pixel;
    const ptrdiff_t alongY = last.y < first.y ? -ptrdiff_t{srcStep} : ptrdiff_t{srcStep};
    const ptrdiff_t dx = std::abs(last.x - first.x);
    const ptrdiff_t dy = std::abs(last.y - first.y);
    const LineSteps steps =
        dx >= dy ? LineSteps{alongX, alongY, dx, dy} : LineSteps{alongY, alongX, dy, dx};
    const char* const start =
        reinterpret_cast<const char*>(pSrc) + first.y * ptrdiff_t{srcStep} + first.x * pixel;
    kernelsInUse(sampleLineKernelsByLevel).at[sizeof(T) / 2][channels / 3](start, steps, pLine);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_SAMPLE_LINE(type, channels)                                                      \
    ZmoStatus zmoiSampleLine_##type##_C##channels##R(const Zmo##type* pSrc, int srcStep,     \
                                                     Zmo##type* pLine, ZmoiSize roi,         \
                                                     ZmoiPoint first, ZmoiPoint last) {      \
        return zmo::sampleLine<Zmo##type, channels>(pSrc, srcStep, pLine, roi, first, last); \
    }

ZMO_SAMPLE_LINE(8u, 1)
ZMO_SAMPLE_LINE(8u, 3)
ZMO_SAMPLE_LINE(16u, 1)
ZMO_SAMPLE_LINE(16u, 3)
ZMO_SAMPLE_LINE(32f, 1)
ZMO_SAMPLE_LINE(32f, 3)
