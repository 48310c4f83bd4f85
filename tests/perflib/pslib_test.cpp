#include "pslib.h"

#include "unit.h"

namespace {

TEST(CpuFeatures, MasksOfListsAndNamesOfMasks) {
    const std::pair<const char*, Zmo64u> cases[] = {
        {"SSE42", 0xdf}, {" AVX2 | AES ", 0x85df}, {"AVX10_512,MMX", 0x20000000001},
        {"avx2", 0},     {"AVX2 AES", 0},          {"nothing,,SHA", 0x80000},
        {"", 0},         {"AVX512", 0x73081df},    {"P_AVX512|P_SSE2", 0x73081df},
        {"P_AES", 0}};
    for (const auto& [list, mask] : cases)
        EXPECT_EQ(psCpuFeatures::cpuFeatures(list), mask) << list;
    for (const auto& [mask, label] :
         {std::pair{0x81dfULL, "AVX2"}, {0xdf, "SSE42"}, {0x2, "Undefined"}})
        EXPECT_EQ(psCpuFeatures::cpuLabel(mask), label);
    EXPECT_EQ(psCpuFeatures::cpuName(0x2), "Unknown processor");
    EXPECT_FALSE(psCpuFeatures::cpuName(0x81df) == "Unknown processor");
    const std::pair<Zmo64u, const char*> paths[] = {
        {0xdf, "SSE42, 128-bit vector Technology with SSE4.2 (0xdf)"},
        {0x1df, "AVX, 256-bit vectors of floats (0x1df)"},
        {0x2, "0x2"}};
    for (const auto& [mask, text] : paths) EXPECT_EQ(psCpuFeatures::codePathText(mask), text);
}

TEST(CpuFeatures, WhatIsUnknownOrLackingIsNamed) {
    const std::pair<const char*, const char*> cases[] = {
        {"AVX2|P_AVX512", ""},
        {" ,", "-- -T names no processor feature\n"},
        {"avx2,AES,p_sse2,P_AES",
         "-- -T knows no processor feature avx2 (AVX2?), p_sse2 (P_SSE2?), P_AES\n"}};
    for (const auto& [list, text] : cases) EXPECT_EQ(psCpuFeatures::unknownText(list), text);

    EXPECT_EQ(psCpuFeatures::processorText(0x7),
              "-- The library does not tell what the processor has\n");
    const auto before = zmo_GetCpuFeatures;
    zmo_GetCpuFeatures = [](Zmo64u* features, Zmo32u, Zmo32u*) -> ZmoStatus {
        return *features = 0xdf, 0;
    };
    const psString has =
        "-- The processor has MMX, SSE, SSE2, SSE3, SSSE3, SSE41, SSE42\n"
        "-- Code paths that it runs: SSE2, SSE42\n";
    EXPECT_EQ(psCpuFeatures::processorText(0xdf), has);
    EXPECT_EQ(psCpuFeatures::processorText(0x85df),
              "-- The processor lacks AVX, AES, AVX2\n" + has);
    zmo_GetCpuFeatures = before;
}

}  // namespace
