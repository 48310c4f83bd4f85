#include "zmocv/haar.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "common/check.h"
#include "zmocv_shape.h"

namespace zmo {
namespace {

constexpr uint32_t haarState = 0x48616172;
constexpr int mostRectangles = 65536;
constexpr int longestSide = 65536;
constexpr double largestInteger = 0x1p21;  // its products with 32-bit sums are exact in double

// The places of the two lists behind the head.
char* bytesOf(const ZmoiHaarState* state) {
    return reinterpret_cast<char*>(const_cast<ZmoiHaarState*>(state));
}
char* classifiersOf(const ZmoiHaarState* state) {
    return bytesOf(state) + sizeof(HaarHead);
}
char* rectanglesOf(const ZmoiHaarState* state, int classifiers) {
    return classifiersOf(state) + static_cast<size_t>(classifiers) * sizeof(HaarClassifier);
}

template <class T>
void storeAt(char* list, int index, const T& entry) {
    std::memcpy(list + static_cast<size_t>(index) * sizeof(T), &entry, sizeof(T));
}

// What zmoiHaarInit is given.
template <class T>
struct Stage {
    const ZmoiRect* rects;
    const T* weights;
    const int* rectCounts;
    const T* thresholds;
    const T* low;
    const T* high;
    int classifiers;
    bool tilted;
};

// 0 when a count is out of range.
template <class T>
int rectanglesIn(const Stage<T>& stage) {
    int sum = 0;
    for (int k = 0; k < stage.classifiers; ++k) {
        if (stage.rectCounts[k] < 1 || stage.rectCounts[k] > mostRectangles - sum) return 0;
        sum += stage.rectCounts[k];
    }
    return sum;
}

bool badRect(const ZmoiRect& r, bool tilted) {
    if (r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1) return true;
    if (std::max({r.x, r.y, r.width, r.height}) > longestSide) return true;
    return tilted && r.x < r.height;
}

template <class T>
bool badNumbers(const Stage<T>& stage, int rectangles) {
    if constexpr (std::is_same_v<T, Zmo32f>) {
        const auto bad = [](T value) { return !std::isfinite(value); };
        return std::any_of(stage.weights, stage.weights + rectangles, bad) ||
               std::any_of(stage.thresholds, stage.thresholds + stage.classifiers, bad) ||
               std::any_of(stage.low, stage.low + stage.classifiers, bad) ||
               std::any_of(stage.high, stage.high + stage.classifiers, bad);
    } else {
        const T* weight = stage.weights;
        for (int k = 0; k < stage.classifiers; ++k) {
            double sum = std::fabs(static_cast<double>(stage.thresholds[k]));
            if (sum > largestInteger) return true;
            sum = 0;
            for (int i = 0; i < stage.rectCounts[k]; ++i) {
                sum += std::fabs(static_cast<double>(*weight++));
            }
            if (sum > largestInteger) return true;
        }
        return false;
    }
}

HaarRectangle cornersOf(const ZmoiRect& r, bool tilted, double weight) {
    const int x = r.x, y = r.y, w = r.width, h = r.height;
    if (tilted) return {{x + w - h, x + w, x - h, x}, {y + w + h, y + w, y + h, y}, weight};
    return {{x + w, x, x + w, x}, {y + h, y + h, y, y}, weight};
}

template <class T>
ZmoStatus init(const Stage<T>& stage, ZmoDataType type, ZmoiHaarState* pState) {
    if (anyNull(stage.rects, stage.weights, stage.rectCounts, stage.thresholds, stage.low,
                stage.high, pState)) {
        return zmoStsNullPtrErr;
    }
    if (stage.classifiers < 1 || stage.classifiers > mostRectangles) return zmoStsRangeErr;
    const int rectangles = rectanglesIn(stage);
    if (rectangles == 0) return zmoStsRangeErr;
    const auto bad = [&](const ZmoiRect& rect) { return badRect(rect, stage.tilted); };
    if (std::any_of(stage.rects, stage.rects + rectangles, bad)) return zmoStsRectErr;
    if (badNumbers(stage, rectangles)) return zmoStsRangeErr;

    HaarHead head{haarState, type, stage.classifiers, rectangles, 0, 0};
    char* const rectangleList = rectanglesOf(pState, stage.classifiers);
    for (int i = 0; i < rectangles; ++i) {
        const HaarRectangle corners =
            cornersOf(stage.rects[i], stage.tilted, static_cast<double>(stage.weights[i]));
        for (const int x : corners.x) head.columns = std::max(head.columns, x + 1);
        storeAt(rectangleList, i, corners);
    }
    double rest = 0;
    for (int k = stage.classifiers - 1; k >= 0; --k) {
        const auto low = static_cast<double>(stage.low[k]);
        const auto high = static_cast<double>(stage.high[k]);
        storeAt(classifiersOf(pState), k,
                HaarClassifier{static_cast<double>(stage.thresholds[k]), low, high, rest,
                               stage.rectCounts[k]});
        rest += std::max(low, high);
        head.magnitude += std::max(std::fabs(low), std::fabs(high));
    }
    storeAt(bytesOf(pState), 0, head);
    return zmoStsNoErr;
}

template <class T>
ZmoStatus apply(HaarCount (*HaarKernels::*kernel)(const HaarArgs&), const T* pSrc, int srcStep,
                const T* pSrc2, int src2Step, Zmo8u* pMask, int maskStep, ZmoiSize roi, T threshold,
                int* pPositive, const ZmoiHaarState* pState, int scaleFactor) {
    if (anyNull(pSrc, pSrc2, pMask, pPositive, pState)) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width) || badStep<T>(src2Step, roi.width) ||
        badStep<Zmo8u>(maskStep, roi.width)) {
        return zmoStsStepErr;
    }
    constexpr bool isFloat = std::is_same_v<T, Zmo32f>;
    if (isFloat && !std::isfinite(static_cast<double>(threshold))) return zmoStsThresholdErr;
    if (!isScale(scaleFactor)) return zmoStsScaleErr;
    HaarHead head;
    std::memcpy(&head, pState, sizeof head);
    if (head.kind != haarState || head.type != (isFloat ? zmo32f : zmo32s)) return zmoStsStateErr;
    if (badStep<T>(srcStep, int64_t{roi.width} - 1 + head.columns)) return zmoStsRectErr;
    const auto limit = static_cast<double>(threshold);
    const double slack =
        isFloat ? (head.classifiers + 4) * 0x1p-23 * (head.magnitude + std::fabs(limit)) : 0;
    const char* const classifiers = classifiersOf(pState);
    const char* const rectangles = rectanglesOf(pState, head.classifiers);
    const HaarCount count =
        (kernelsInUse(haarKernelsByLevel).*kernel)({{pSrc, srcStep},
                                                    {pSrc2, src2Step},
                                                    {pMask, maskStep},
                                                    regionOf(roi),
                                                    limit,
                                                    std::ldexp(1.0, -scaleFactor),
                                                    slack,
                                                    head.classifiers,
                                                    classifiers,
                                                    rectangles});
    *pPositive = static_cast<int>(std::min<int64_t>(count.positive, INT_MAX));
    return count.selected == 0 ? zmoStsEmptyMask : zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiApplyHaarClassifier_32f_C1R(const Zmo32f* pSrc, int srcStep, const Zmo32f* pSrc2,
                                          int src2Step, Zmo8u* pMask, int maskStep, ZmoiSize roi,
                                          Zmo32f threshold, int* pPositive,
                                          const ZmoiHaarState* pState) {
    return zmo::apply(&zmo::HaarKernels::from32f, pSrc, srcStep, pSrc2, src2Step, pMask, maskStep,
                      roi, threshold, pPositive, pState, 0);
}

ZmoStatus zmoiApplyHaarClassifier_32s_C1RSfs(const Zmo32s* pSrc, int srcStep, const Zmo32s* pSrc2,
                                             int src2Step, Zmo8u* pMask, int maskStep, ZmoiSize roi,
                                             Zmo32s threshold, int* pPositive,
                                             const ZmoiHaarState* pState, int scaleFactor) {
    return zmo::apply(&zmo::HaarKernels::from32s, pSrc, srcStep, pSrc2, src2Step, pMask, maskStep,
                      roi, threshold, pPositive, pState, scaleFactor);
}

ZmoStatus zmoiHaarInit_32f(const ZmoiRect* pRects, const Zmo32f* pWeights, const int* pRectCounts,
                           const Zmo32f* pThresholds, const Zmo32f* pLow, const Zmo32f* pHigh,
                           int classifiers, int tilted, ZmoiHaarState* pState) {
    return zmo::init<Zmo32f>(
        {pRects, pWeights, pRectCounts, pThresholds, pLow, pHigh, classifiers, tilted != 0}, zmo32f,
        pState);
}

ZmoStatus zmoiHaarInit_32s(const ZmoiRect* pRects, const Zmo32s* pWeights, const int* pRectCounts,
                           const Zmo32s* pThresholds, const Zmo32s* pLow, const Zmo32s* pHigh,
                           int classifiers, int tilted, ZmoiHaarState* pState) {
    return zmo::init<Zmo32s>(
        {pRects, pWeights, pRectCounts, pThresholds, pLow, pHigh, classifiers, tilted != 0}, zmo32s,
        pState);
}

ZmoStatus zmoiHaarGetSize(int classifiers, int rectangles, ZmoDataType type, int* pStateSize) {
    if (pStateSize == nullptr) return zmoStsNullPtrErr;
    if (classifiers < 1 || rectangles < classifiers || rectangles > zmo::mostRectangles) {
        return zmoStsRangeErr;
    }
    if (type != zmo32f && type != zmo32s) return zmoStsDataTypeErr;
    return zmo::storeSize(static_cast<int64_t>(sizeof(zmo::HaarHead)) +
                              classifiers * static_cast<int64_t>(sizeof(zmo::HaarClassifier)) +
                              rectangles * static_cast<int64_t>(sizeof(zmo::HaarRectangle)),
                          pStateSize);
}
