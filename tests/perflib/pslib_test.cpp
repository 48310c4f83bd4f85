#include "pslib.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "message_capture.h"

namespace {

TEST(PsLib, TheRegisteredFunctionGoesFirst) {
    psRegZmoEnvironment([] { FAIL() << "an earlier registration is replaced"; });
    psRegZmoEnvironment([] {
        zmo_GetMaxCacheSizeB = [](int* size) -> ZmoStatus { return *size = 4096, 0; };
        zmo_Init = nullptr;
    });
    MessageCapture out(7);
    setZmoEnvironment();
    EXPECT_EQ(psMaxCacheSize(), 4096);
    EXPECT_EQ(zmo_Init(), -2);
    EXPECT_EQ(out.take(), "Morva ZMO core functions have been integrated into PS\n");
    zmoEnvironment = nullptr;
    zmo_GetMaxCacheSizeB = nullptr;
    setZmoEnvironment();
    EXPECT_EQ(psMaxCacheSize(), 0);
}

TEST(CpuFeatures, MasksOfLists) {
    const std::pair<const char*, Zmo64u> cases[] = {{"SSE42", 0xdf},
                                                    {"AVX2,AES", 0x85df},
                                                    {" AVX2 | AES ", 0x85df},
                                                    {"P_AVX512", 0x73081df},
                                                    {"AVX10_512,MMX", 0x20000000001},
                                                    {"avx2", 0},
                                                    {"AVX2 AES", 0},
                                                    {"nothing,,SHA", 0x80000},
                                                    {"", 0}};
    for (const auto& [list, mask] : cases)
        EXPECT_EQ(psCpuFeatures::cpuFeatures(list), mask) << list;
}

TEST(CpuFeatures, NamesOfMasks) {
    const std::pair<Zmo64u, const char*> labels[] = {{0x81df, "AVX2"},
                                                     {0xdf, "SSE42"},
                                                     {0x73081df, "P_AVX512"},
                                                     {0x20000000000, "AVX10_512"},
                                                     {0x2, "Undefined"}};
    for (const auto& [mask, label] : labels)
        EXPECT_STREQ(psCpuFeatures::cpuLabel(mask).c_str(), label);
    EXPECT_STREQ(psCpuFeatures::cpuName(0x2).c_str(), "Unknown processor");
    EXPECT_STRNE(psCpuFeatures::cpuName(0x81df).c_str(), "Unknown processor");
}

}  // namespace
