#include "zmocv/optflow.h"

#include <algorithm>

#include "common/check.h"
#include "common/types.h"
#include "zmocv_motion.h"

namespace zmo {
namespace {

constexpr int mostLayers = 16;

bool badWindow(int size) {
    return size < 3 || size > mostFlowWindow || size % 2 == 0;
}

// The layers of both pictures, as far as they are used, each checked in the order of the statuses.
template <class T>
ZmoStatus checkLayers(const ZmoiPyramidLevels& first, const ZmoiPyramidLevels& second,
                      int maxLevel) {
    const int known = std::min({first.levels, second.levels, mostLayers});
    const int used = maxLevel < known ? maxLevel + 1 : known;
    const auto any = [used](auto isBad) {
        for (int k = 0; k < used; ++k) {
            if (isBad(k)) return true;
        }
        return false;
    };
    const auto isNull = [&](int k) { return anyNull(first.pImage[k], second.pImage[k]); };
    const auto badSize = [&](int k) {
        return isEmpty(first.roi[k]) || first.roi[k].width != second.roi[k].width ||
               first.roi[k].height != second.roi[k].height;
    };
    const auto badSteps = [&](int k) {
        return badStep<T>(first.step[k], first.roi[k].width) ||
               badStep<T>(second.step[k], first.roi[k].width);
    };
    if (any(isNull)) return zmoStsNullPtrErr;
    if (any(badSize)) return zmoStsSizeErr;
    if (any(badSteps)) return zmoStsStepErr;
    return zmoStsNoErr;
}

template <class T>
ZmoStatus opticalFlow(const ZmoiPyramidLevels* pFirst, const ZmoiPyramidLevels* pSecond,
                      const FlowPoints& points, int windowSize, int maxLevel, int maxIterations,
                      Zmo32f epsilon, Zmo8u* pBuffer) {
    if (anyNull(pFirst, pSecond, points.from, points.to, points.found, points.error, pBuffer)) {
        return zmoStsNullPtrErr;
    }
    const ZmoStatus layers = checkLayers<T>(*pFirst, *pSecond, maxLevel);
    if (layers == zmoStsNullPtrErr) return layers;
    if (points.count < 1) return zmoStsSizeErr;
    if (layers != zmoStsNoErr) return layers;
    if (badWindow(windowSize)) return zmoStsMaskSizeErr;
    if (maxLevel < 0 || maxLevel >= std::min({pFirst->levels, pSecond->levels, mostLayers})) {
        return zmoStsRangeErr;
    }
    if (maxIterations < 1) return zmoStsRangeErr;
    if (!isNotNegative(epsilon)) return zmoStsThresholdErr;
    const FlowRules rules = {windowSize, maxLevel, maxIterations, epsilon};
    kernelsInUse(flowKernelsByLevel).of[typeIndex<T>](pFirst, pSecond, &points, &rules, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

#define ZMO_OPTICAL_FLOW(type)                                                                     \
    ZmoStatus zmoiOpticalFlowPyrLK_##type##_C1R(                                                   \
        const ZmoiPyramidLevels* pFirst, const ZmoiPyramidLevels* pSecond,                         \
        const ZmoiPoint32f* pFrom, ZmoiPoint32f* pTo, Zmo8u* pFound, Zmo32f* pError, int count,    \
        int windowSize, int maxLevel, int maxIterations, Zmo32f epsilon, Zmo8u* pBuffer) {         \
        return zmo::opticalFlow<Zmo##type>(pFirst, pSecond, {pFrom, pTo, pFound, pError, count},   \
                                           windowSize, maxLevel, maxIterations, epsilon, pBuffer); \
    }

ZMO_OPTICAL_FLOW(8u)
ZMO_OPTICAL_FLOW(16u)
ZMO_OPTICAL_FLOW(32f)

ZmoStatus zmoiOpticalFlowPyrLKGetBufferSize(int windowSize, ZmoDataType type, int channels,
                                            int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    if (zmo::badWindow(windowSize)) return zmoStsMaskSizeErr;
    if (type != zmo8u && type != zmo16u && type != zmo32f) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    const int64_t floats = zmo::flowPatchSize(windowSize) + 2 * zmo::flowSlopesSize(windowSize);
    return zmo::storeSize(floats * int64_t{sizeof(Zmo32f)} + 64 + 3 * 63, pSize);
}
