#include "common/level.h"

#include "zmocore.h"
#include "zmocore/features.h"

int zmoCpuLevel = zmo::levelSse2;

namespace zmo {
namespace {

constexpr Zmo64u needed[levelCount] = {ZMO_LEVEL_SSE2, ZMO_LEVEL_SSE42, ZMO_LEVEL_AVX2,
                                       ZMO_LEVEL_AVX512};

void select(int level) {
    __atomic_store_n(&zmoCpuLevel, level, __ATOMIC_RELAXED);
}

// The highest level inside the mask, -1 when there is none.
int highestLevel(Zmo64u mask) {
    int level = levelCount - 1;
    while (level >= 0 && (mask & needed[level]) != needed[level]) --level;
    return level;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoInit(void) {
    const int level = zmo::highestLevel(zmo::processorFeatures());
    zmo::select(level < 0 ? zmo::levelSse2 : level);
    return zmoStsNoErr;
}

ZmoStatus zmoSetCpuFeatures(Zmo64u mask) {
    if ((mask & ~zmo::processorFeatures()) != 0) return zmoStsCpuFeaturesErr;
    const int level = zmo::highestLevel(mask);
    zmo::select(level < 0 ? zmo::levelSse2 : level);
    return level < 0 ? zmoStsNoLevel : zmoStsNoErr;
}

Zmo64u zmoGetEnabledCpuFeatures(void) {
    return zmo::needed[zmo::currentLevel()];
}
