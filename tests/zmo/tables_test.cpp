// Each processor level has kernels of its own, and the library takes them from the level in use.
#include "common/level.h"
#include "kit.h"
#include "zmocore.h"
#include "zmocv/bound.h"
#include "zmocv/canny.h"
#include "zmocv/chamfer.h"
#include "zmocv/copysubpix.h"
#include "zmocv/corner.h"
#include "zmocv/fastn.h"
#include "zmocv/flood.h"
#include "zmocv/gmm.h"
#include "zmocv/haar.h"
#include "zmocv/hough.h"
#include "zmocv/inpaint.h"
#include "zmocv/label.h"
#include "zmocv/linesuppression.h"
#include "zmocv/marching.h"
#include "zmocv/morph.h"
#include "zmocv/norm.h"
#include "zmocv/optflow.h"
#include "zmocv/reconstruct.h"
#include "zmocv/sampleline.h"
#include "zmocv/segment.h"
#include "zmocv/speckles.h"
#include "zmocv/stat.h"
#include "zmocv/truedist.h"
#include "zmocv/undistort.h"
#include "zmoi/convert.h"
#include "zmoi/mask.h"
#include "zmoi/pipeline.h"
#include "zmoi/pyramid.h"
#include "zmoi/rotate.h"
#include "zmoi/separable.h"

namespace {

using AnyKernel = void (*)();

// A table is a record of nothing but pointers to functions.
template <class Kernels>
std::vector<AnyKernel> entries(const Kernels& table) {
    static_assert(sizeof(Kernels) % sizeof(AnyKernel) == 0);
    std::vector<AnyKernel> list(sizeof(Kernels) / sizeof(AnyKernel));
    std::memcpy(list.data(), &table, sizeof(Kernels));
    return list;
}

template <class Kernels>
void expectOwnKernels(const zmo::LevelTables<Kernels>& tables) {
    SCOPED_TRACE(__PRETTY_FUNCTION__);
    std::vector<AnyKernel> all;
    for (const Kernels* table : tables.at) {
        const std::vector<AnyKernel> list = entries(*table);
        all.insert(all.end(), list.begin(), list.end());
    }
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_NE(all[i], nullptr) << "entry " << i;
        for (size_t j = 0; j < i; ++j) EXPECT_NE(all[i], all[j]) << "entries " << j << ", " << i;
    }
}

TEST(LevelTables, HoldDifferentKernelsAtEachLevel) {
    using namespace zmo;
    const auto expectAll = [](const auto&... tables) { (expectOwnKernels(tables), ...); };
    expectAll(boundKernelsByLevel, cannyKernelsByLevel, chamferKernelsByLevel,
              convertKernelsByLevel, copySubpixKernelsByLevel, cornerKernelsByLevel,
              fastNKernelsByLevel, floodKernelsByLevel, gmmKernelsByLevel, haarKernelsByLevel,
              houghKernelsByLevel, inpaintKernelsByLevel, labelKernelsByLevel,
              lineSuppressionKernelsByLevel, marchingKernelsByLevel, maskKernelsByLevel,
              normKernelsByLevel, flowKernelsByLevel, pipelineKernelsByLevel, pyramidKernelsByLevel,
              morphKernelsByLevel, reconstructKernelsByLevel, rotateKernelsByLevel,
              sampleLineKernelsByLevel, segmentKernelsByLevel, separableKernelsByLevel,
              specklesKernelsByLevel, statKernelsByLevel, trueDistanceKernelsByLevel,
              undistortKernelsByLevel);
}

TEST(LevelTables, FollowTheLevelInUse) {
    int level = 0;
    kit::forEachLevel([&] {
        EXPECT_EQ(&zmo::kernelsInUse(zmo::maskKernelsByLevel), zmo::maskKernelsByLevel.at[level]);
        ++level;
    });
    EXPECT_GE(level, 1);
}

}  // namespace
