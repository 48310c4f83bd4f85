// Each processor level has kernels of its own, and the library takes them from the level in use.
#include "common/level.h"
#include "kit.h"
#include "zmocore.h"
#include "zmocv/bound.h"
#include "zmocv/canny.h"
#include "zmocv/chamfer.h"
#include "zmocv/copysubpix.h"
#include "zmocv/flood.h"
#include "zmocv/label.h"
#include "zmocv/marching.h"
#include "zmocv/norm.h"
#include "zmocv/sampleline.h"
#include "zmocv/speckles.h"
#include "zmocv/stat.h"
#include "zmocv/truedist.h"
#include "zmoi/convert.h"
#include "zmoi/rotate.h"
#include "zmoi/sobel.h"

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
void expectOwnKernels(const char* family, const zmo::LevelTables<Kernels>& tables) {
    SCOPED_TRACE(family);
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
    expectOwnKernels("canny", zmo::cannyKernelsByLevel);
    expectOwnKernels("convert", zmo::convertKernelsByLevel);
    expectOwnKernels("copysubpix", zmo::copySubpixKernelsByLevel);
    expectOwnKernels("flood", zmo::floodKernelsByLevel);
    expectOwnKernels("label", zmo::labelKernelsByLevel);
    expectOwnKernels("speckles", zmo::specklesKernelsByLevel);
    expectOwnKernels("bound", zmo::boundKernelsByLevel);
    expectOwnKernels("chamfer", zmo::chamferKernelsByLevel);
    expectOwnKernels("truedist", zmo::trueDistanceKernelsByLevel);
    expectOwnKernels("marching", zmo::marchingKernelsByLevel);
    expectOwnKernels("norm", zmo::normKernelsByLevel);
    expectOwnKernels("rotate", zmo::rotateKernelsByLevel);
    expectOwnKernels("sampleline", zmo::sampleLineKernelsByLevel);
    expectOwnKernels("sobel", zmo::sobelKernelsByLevel);
    expectOwnKernels("stat", zmo::statKernelsByLevel);
}

TEST(LevelTables, FollowTheLevelInUse) {
    int level = 0;
    kit::forEachLevel([&] {
        EXPECT_EQ(&zmo::kernelsInUse(zmo::sobelKernelsByLevel), zmo::sobelKernelsByLevel.at[level]);
        ++level;
    });
    EXPECT_GE(level, 1);
}

}  // namespace
