// Each processor level has kernels of its own, and the library takes them from the level in use.
#include "common/level.h"
#include "kernel_tables.h"
#include "kit.h"

namespace {

#ifndef ZMO_EVERY_SECOND_LEVEL
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
    const auto expectAll = [](const auto&... tables) { (expectOwnKernels(tables), ...); };
    expectAll(ZMO_KERNEL_TABLES);
}
#endif

TEST(LevelTables, FollowTheLevelInUse) {
    int level = 0;
    kit::forEachLevel([&] {
        EXPECT_EQ(&zmo::kernelsInUse(zmo::maskKernelsByLevel), zmo::maskKernelsByLevel.at[level]);
        ++level;
    });
    EXPECT_GE(level, 1);
}

}  // namespace
