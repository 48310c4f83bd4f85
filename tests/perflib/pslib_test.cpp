#include "pslib.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "message_capture.h"

namespace {

// Puts all pointers and registrations back.
class PsLib : public testing::Test {
  protected:
    void TearDown() override {
        zmoEnvironment = nullptr;
        zmo_GetCpuFeatures = nullptr;
        zmo_GetEnabledCpuFeatures = nullptr;
        zmo_GetMaxCacheSizeB = nullptr;
        zmo_GetStatusString = nullptr;
        zmo_Init = nullptr;
        zmo_SetCpuFeatures = nullptr;
        zmo_SetNumThreads = nullptr;
        zmo_GetNumThreads = nullptr;
        setZmoEnvironment();
        calls.clear();
    }
    static std::string calls;
};
std::string PsLib::calls;

TEST_F(PsLib, FallbacksAnswerForWhatIsMissing) {
    TearDown();  // from null, and as they are preset
    Zmo64u mask = 0;
    int number = 5;
    EXPECT_EQ(zmo_GetCpuFeatures(&mask, 0, nullptr), -2);
    EXPECT_EQ(zmo_GetEnabledCpuFeatures(), 0u);
    EXPECT_EQ(zmo_GetMaxCacheSizeB(&number), -2);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(zmo_Init(), -2);
    EXPECT_EQ(zmo_SetCpuFeatures(1), -2);
    EXPECT_EQ(zmo_SetNumThreads(1), -2);
    EXPECT_EQ(zmo_GetNumThreads(&number), -2);
    EXPECT_STREQ(zmo_GetStatusString(0), "OK");
    EXPECT_STREQ(zmo_GetStatusString(3), "Note");
    EXPECT_STREQ(zmo_GetStatusString(-3), "Fail");
    EXPECT_EQ(psMaxCacheSize(), 0);
}

TEST_F(PsLib, TheRegisteredFunctionGoesFirst) {
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
}

ZmoStatus selectStatus = 0;
ZmoStatus initStatus = 0;

TEST_F(PsLib, SelectsTheCodePath) {
    struct {
        bool haveMask;
        Zmo64u mask;
        ZmoStatus select, init;
        std::string calls, text;
    } const cases[] = {
        {false, 0, 0, 0, "init", ""},
        {true, 0xdf, 0, 0, "select", "    0xdf )\n--status = zmoStsNoErr\n"},
        {true, 0x73081df, 3, 0, "select", "0x73081df )\n--ZMO NOTE. status = 3: text\n"},
        {true, 0x1, -21, -2, "selectinit",
         "     0x1 )\n--ZMO FAIL. status = -21: text\n--calling zmoInit()\n"
         "--ZMO FAIL. status = -2: text\n"}};
    psRegZmoEnvironment([] {
        zmo_GetStatusString = [](ZmoStatus) { return "text"; };
        zmo_Init = [] { return calls += "init", initStatus; };
        zmo_SetCpuFeatures = [](Zmo64u) { return calls += "select", selectStatus; };
    });
    setZmoEnvironment();
    for (const auto& c : cases) {
        calls.clear();
        selectStatus = c.select;
        initStatus = c.init;
        MessageCapture out(1);
        psZmoCpuSetup(c.haveMask, c.mask);
        EXPECT_EQ(out.take(), c.text.empty()
                                  ? ""
                                  : "\n--calling zmoSetCpuFeatures( zmoCpuFeatures = " + c.text);
        EXPECT_EQ(calls, c.calls);
    }
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
    EXPECT_STREQ(psCpuFeatures::cpuLabel(0x81df).c_str(), "AVX2");
    EXPECT_STREQ(psCpuFeatures::cpuLabel(0xdf).c_str(), "SSE42");
    EXPECT_STREQ(psCpuFeatures::cpuLabel(0x73081df).c_str(), "P_AVX512");
    EXPECT_STREQ(psCpuFeatures::cpuLabel(0x20000000000).c_str(), "AVX10_512");
    EXPECT_STREQ(psCpuFeatures::cpuLabel(0x2).c_str(), "Undefined");
    EXPECT_STREQ(psCpuFeatures::cpuName(0x2).c_str(), "Unknown processor");
    EXPECT_STRNE(psCpuFeatures::cpuName(0x81df).c_str(), "Unknown processor");
}

}  // namespace
