// Processor levels: which one is in use, and the tables of kernels that belong to it.
#pragma once

#include "zmotypes.h"

namespace zmo {

enum Level { levelSse2, levelSse42, levelAvx2, levelAvx512, levelCount };

// The kernels of one family at each level.
template <class Kernels>
struct LevelTables {
    const Kernels* at[levelCount];
};

}  // namespace zmo

// The level in use by all five libraries: a zmo::Level. Only libzmocore writes it.
extern "C" ZMO_API int zmoCpuLevel;

namespace zmo {

// A plain load, but one that a switch in another thread cannot tear.
inline int currentLevel() {
    return __atomic_load_n(&zmoCpuLevel, __ATOMIC_RELAXED);
}

template <class Kernels>
const Kernels& kernelsInUse(const LevelTables<Kernels>& tables) {
    return *tables.at[currentLevel()];
}

}  // namespace zmo

// The levels whose kernels serve SSE4.2 and AVX-512: their own, but in the sanitizer build those of
// the level below, since it has kernels of every second level only.
#ifdef ZMO_EVERY_SECOND_LEVEL
#define ZMO_KERNELS_SSE42 sse2
#define ZMO_KERNELS_AVX512 avx2
#else
#define ZMO_KERNELS_SSE42 sse42
#define ZMO_KERNELS_AVX512 avx512
#endif

// Declares the kernel table `name` of every level and gathers them in `name##ByLevel`. Stands in
// namespace zmo in the header that a family's entry points and kernels share.
#define ZMO_LEVEL_TABLES(Kernels, name)                                                   \
    namespace sse2 {                                                                      \
    extern const Kernels name;                                                            \
    }                                                                                     \
    namespace sse42 {                                                                     \
    extern const Kernels name;                                                            \
    }                                                                                     \
    namespace avx2 {                                                                      \
    extern const Kernels name;                                                            \
    }                                                                                     \
    namespace avx512 {                                                                    \
    extern const Kernels name;                                                            \
    }                                                                                     \
    constexpr LevelTables<Kernels> name##ByLevel {                                        \
        { &sse2::name, &ZMO_KERNELS_SSE42::name, &avx2::name, &ZMO_KERNELS_AVX512::name } \
    }
