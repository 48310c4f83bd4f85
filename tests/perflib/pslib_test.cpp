#include "pslib.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "capture.h"

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
    Capture out(7);
    setZmoEnvironment();
    EXPECT_EQ(psMaxCacheSize(), 4096);
    EXPECT_EQ(zmo_Init(), -2);
    EXPECT_EQ(out.take(), "Morva ZMO core functions have been integrated into PS\n");
}

ZmoStatus selectStatus = 0;
ZmoStatus initStatus = 0;

TEST_F(PsLib, SelectsTheCodePath) {
    const struct {
        bool haveMask;
        Zmo64u mask;
        ZmoStatus select;
        ZmoStatus init;
        const char* calls;
        const char* text;
    } cases[] = {
        {false, 0, 0, 0, "init", ""},
        {true, 0xdf, 0, 0, "select",
         "\n--calling zmoSetCpuFeatures( zmoCpuFeatures =     0xdf )\n--status = zmoStsNoErr\n"},
        {true, 0x73081df, 3, 0, "select",
         "\n--calling zmoSetCpuFeatures( zmoCpuFeatures = 0x73081df )\n"
         "--ZMO NOTE. status = 3: text\n"},
        {true, 0x1, -21, 0, "selectinit",
         "\n--calling zmoSetCpuFeatures( zmoCpuFeatures =      0x1 )\n"
         "--ZMO FAIL. status = -21: text\n--calling zmoInit()\n"},
        {true, 0x1, -21, -2, "selectinit",
         "\n--calling zmoSetCpuFeatures( zmoCpuFeatures =      0x1 )\n"
         "--ZMO FAIL. status = -21: text\n--calling zmoInit()\n--ZMO FAIL. status = -2: text\n"},
    };
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
        Capture out(1);
        psZmoCpuSetup(c.haveMask, c.mask);
        EXPECT_EQ(out.take(), c.text);
        EXPECT_EQ(calls, c.calls);
    }
}

TEST(CpuFeatures, MasksOfLists) {
    const struct {
        const char* list;
        Zmo64u mask;
    } cases[] = {
        {"SSE42", 0xdf},
        {"AVX2,AES", 0x85df},
        {" AVX2 | AES ", 0x85df},
        {"AVX10_512,MMX", 0x20000000001},
        {"P_AVX512", 0x73081df},
        {"avx2", 0},
        {"AVX2 AES", 0},
        {"nothing,,SHA", 0x80000},
        {"", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(psCpuFeatures::cpuFeatures(c.list), c.mask) << c.list;
}

TEST(CpuFeatures, TableKeepsItsForm) {
    std::set<std::string> labels;
    int codePaths = 0;
    for (const auto& row : psCpuFeatures::rows()) {
        EXPECT_TRUE(labels.insert(row.label).second) << row.label;
        EXPECT_LE(std::strlen(row.description), 60u) << row.label;
        EXPECT_EQ(std::strstr(row.description, "Techno") != nullptr, row.isCodePath) << row.label;
        if (row.isCodePath) {
            ++codePaths;
            EXPECT_LE(std::strlen(row.label), 9u);
        }
    }
    EXPECT_EQ(psCpuFeatures::rows().size(), 38u + static_cast<unsigned>(codePaths) + 2u);
    const std::string list = psCpuFeatures::optimizedList().c_str();
    EXPECT_NE(list.find("P_AVX2   : optimized for 256-bit"), std::string::npos) << list;
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), codePaths);
}

}  // namespace
