#include "zmocv/gmm.h"

#include <cstring>

#include "common/check.h"
#include "zmocv_motion.h"

namespace zmo {
namespace {

constexpr uint32_t gmmMagic = 0x47c35f19;

// The model follows, at the same distance wherever the state is moved.
struct GmmState {
    uint32_t magic;
    ZmoiSize roi;
    GmmRules rules;
};
constexpr int64_t modelOffset = 64;
static_assert(sizeof(GmmState) <= modelOffset);

int64_t stateSize(ZmoiSize roi, int maxComponents) {
    const int64_t blocks = gmmBlocks(roi.width) * int64_t{roi.height};
    const int64_t bytesOfBlock = maxComponents * gmmFloatsOfComponent * int64_t{sizeof(Zmo32f)};
    return itemBytes(blocks, bytesOfBlock, modelOffset);
}

bool badCount(int maxComponents) {
    return maxComponents < 1 || maxComponents > mostGmmComponents;
}

// What the two measured functions check alike, after null pointers.
template <int channels>
ZmoStatus checkImageAndState(int step, ZmoiSize roi, const GmmState& state) {
    if (badStep<Zmo8u, channels>(step, roi.width)) return zmoStsStepErr;
    if (state.magic != gmmMagic || state.roi.width != roi.width || state.roi.height != roi.height) {
        return zmoStsStateErr;
    }
    return zmoStsNoErr;
}

GmmState headOf(const ZmoiFGMMState* pState) {
    GmmState state;
    std::memcpy(&state, static_cast<const void*>(pState), sizeof state);
    return state;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiFGMMForeground_8u_C3R(const Zmo8u* pSrc, int srcStep, Zmo8u* pDst, int dstStep,
                                    ZmoiSize roi, ZmoiFGMMState* pState) {
    if (zmo::anyNull(pSrc, pDst, pState)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badStep<Zmo8u, 3>(srcStep, roi.width)) return zmoStsStepErr;
    const zmo::GmmState state = zmo::headOf(pState);
    const ZmoStatus status = zmo::checkImageAndState<1>(dstStep, roi, state);
    if (status != zmoStsNoErr) return status;
    zmo::kernelsInUse(zmo::gmmKernelsByLevel)
        .foreground({pSrc, srcStep}, {pDst, dstStep}, zmo::regionOf(roi), &state.rules,
                    reinterpret_cast<Zmo8u*>(pState) + zmo::modelOffset);
    return zmoStsNoErr;
}

ZmoStatus zmoiFGMMBackground_8u_C3R(Zmo8u* pDst, int dstStep, ZmoiSize roi,
                                    const ZmoiFGMMState* pState) {
    if (zmo::anyNull(pDst, pState)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    const zmo::GmmState state = zmo::headOf(pState);
    const ZmoStatus status = zmo::checkImageAndState<3>(dstStep, roi, state);
    if (status != zmoStsNoErr) return status;
    zmo::kernelsInUse(zmo::gmmKernelsByLevel)
        .background({pDst, dstStep}, zmo::regionOf(roi), &state.rules,
                    reinterpret_cast<const Zmo8u*>(pState) + zmo::modelOffset);
    return zmoStsNoErr;
}

ZmoStatus zmoiFGMMGetSize(ZmoiSize roi, int maxComponents, ZmoDataType type, int channels,
                          int* pStateSize) {
    if (pStateSize == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badCount(maxComponents)) return zmoStsRangeErr;
    if (type != zmo8u) return zmoStsDataTypeErr;
    if (channels != 3) return zmoStsChannelsErr;
    return zmo::storeSize(zmo::stateSize(roi, maxComponents), pStateSize);
}

ZmoStatus zmoiFGMMInit(ZmoiSize roi, int maxComponents, Zmo32f learningRate, Zmo32f matchThreshold,
                       Zmo32f backgroundShare, Zmo32f complexity, Zmo32f initialVariance,
                       ZmoDataType type, int channels, ZmoiFGMMState* pState) {
    if (pState == nullptr) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (zmo::badCount(maxComponents)) return zmoStsRangeErr;
    if (!zmo::isWithin(learningRate, 0x1p-20F, 0.5F)) return zmoStsRangeErr;
    if (!zmo::isWithin(matchThreshold, 0x1p-20F, 1000.0F)) return zmoStsThresholdErr;
    if (!zmo::isWithin(backgroundShare, 0x1p-20F, 1.0F)) return zmoStsRangeErr;
    if (!zmo::isWithin(complexity, 0.0F, 0.5F)) return zmoStsRangeErr;
    if (!zmo::isWithin(initialVariance, 4.0F, 10000.0F)) return zmoStsRangeErr;
    int bytes = 0;
    const ZmoStatus status = zmoiFGMMGetSize(roi, maxComponents, type, channels, &bytes);
    if (status != zmoStsNoErr) return status;
    const zmo::GmmState state = {zmo::gmmMagic,
                                 roi,
                                 {maxComponents, learningRate, matchThreshold, backgroundShare,
                                  complexity, initialVariance}};
    std::memset(static_cast<void*>(pState), 0, static_cast<size_t>(bytes));
    std::memcpy(static_cast<void*>(pState), &state, sizeof state);
    return zmoStsNoErr;
}
