#include "pslib.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(CpuFeatures, MasksOfListsAndNamesOfMasks) {
    const std::pair<const char*, Zmo64u> cases[] = {
        {"SSE42", 0xdf}, {" AVX2 | AES ", 0x85df}, {"AVX10_512,MMX", 0x20000000001},
        {"avx2", 0},     {"AVX2 AES", 0},          {"nothing,,SHA", 0x80000},
        {"", 0}};
    for (const auto& [list, mask] : cases)
        EXPECT_EQ(psCpuFeatures::cpuFeatures(list), mask) << list;
    for (const auto& [mask, label] :
         {std::pair{0x81dfULL, "AVX2"}, {0xdf, "SSE42"}, {0x2, "Undefined"}})
        EXPECT_STREQ(psCpuFeatures::cpuLabel(mask).c_str(), label);
    EXPECT_STREQ(psCpuFeatures::cpuName(0x2).c_str(), "Unknown processor");
    EXPECT_STRNE(psCpuFeatures::cpuName(0x81df).c_str(), "Unknown processor");
}

}  // namespace
