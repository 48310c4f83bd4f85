#include "zmocore.h"

#include <xmmintrin.h>

#include <cfenv>
#include <climits>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <tuple>

#include "kit.h"
#include "zmocv.h"
#include "zmoi.h"
#include "zmos.h"
#include "zmovm.h"

namespace {

Zmo64u processorMask() {
    Zmo64u mask = 0;
    EXPECT_EQ(zmoGetCpuFeatures(&mask, 0, nullptr), zmoStsNoErr);
    return mask;
}

// The words of the first "flags" line of /proc/cpuinfo.
std::set<std::string> kernelFlags() {
    std::ifstream file("/proc/cpuinfo");
    std::string text;
    while (file >> text && text != "flags") continue;
    std::getline(file, text);
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(CoreFeatures, AgreeWithTheKernel) {
    const std::set<std::string> flags = kernelFlags();
    if (flags.empty()) GTEST_SKIP() << "/proc/cpuinfo has no flags";
    // The kernel's name of each bit, - where there is none; it knows none of the last four.
    std::istringstream names(
        "mmx sse sse2 pni ssse3 movbe sse4_1 sse4_2 avx - aes pclmulqdq - rdrand f16c avx2 adx "
        "rdseed 3dnowprefetch sha_ni avx512f avx512cd avx512er avx512pf avx512bw avx512dq avx512vl "
        "avx512vbmi mpx avx512_4fmaps avx512_4vnniw - avx512ifma - avx512_vpopcntdq avx512_bitalg "
        "avx512_fp16 avx_vnni");
    Zmo64u mask = processorMask();
    for (std::string name; names >> name; mask >>= 1) {
        const bool inKernel = flags.count(name) != 0;
        // The kernel hides RDSEED of some processors that announce it but fail.
        if (name == "rdseed" && !inKernel) continue;
        EXPECT_EQ((mask & 1) != 0, inKernel) << name;
    }
    EXPECT_EQ(mask >> 4, 0U);
}

TEST(CoreFeatures, GiveALeaf) {
    Zmo64u mask = 0;
    Zmo32u vendor[4] = {};
    Zmo32u extended[4] = {};
    ASSERT_EQ(zmoGetCpuFeatures(&mask, 0, vendor), zmoStsNoErr);
    ASSERT_EQ(zmoGetCpuFeatures(&mask, 0x80000001U, extended), zmoStsNoErr);
    EXPECT_GE(vendor[0], 1U);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(vendor[1] >> (8 * i) & 0x80U, 0U) << "no vendor text";
    EXPECT_NE(extended[3] & 1U << 29, 0U) << "a 64-bit processor has long mode";

    Zmo32u beyond[4] = {1, 2, 3, 4};
    ASSERT_EQ(zmoGetCpuFeatures(&mask, 0x7fffU, beyond), zmoStsNoErr);
    for (const Zmo32u reg : beyond) EXPECT_EQ(reg, 0U);
    EXPECT_EQ(zmoGetCpuFeatures(nullptr, 0, beyond), zmoStsNullPtrErr);
}

TEST(CoreLevels, TakeTheHighestInsideTheMask) {
    const Zmo64u processor = processorMask();
    const std::tuple<Zmo64u, ZmoStatus, Zmo64u> rows[] = {
        {0x7, zmoStsNoErr, ZMO_LEVEL_SSE2},
        {0x1f, zmoStsNoErr, ZMO_LEVEL_SSE2},
        {0xdf, zmoStsNoErr, ZMO_LEVEL_SSE42},
        {0x1df, zmoStsNoErr, ZMO_LEVEL_SSE42},
        {0x85df, zmoStsNoErr, ZMO_LEVEL_AVX2},
        {0x8000, zmoStsNoLevel, ZMO_LEVEL_SSE2},
        {0x73081df, zmoStsNoErr, ZMO_LEVEL_AVX512},
        {0x3, zmoStsNoLevel, ZMO_LEVEL_SSE2},
        {0x73081df & ~ZMO_CPU_AVX512VL, zmoStsNoErr, ZMO_LEVEL_AVX2},
        {0, zmoStsNoLevel, ZMO_LEVEL_SSE2},
        {0x400, zmoStsNoLevel, ZMO_LEVEL_SSE2}};
    for (const auto& [mask, status, level] : rows) {
        SCOPED_TRACE(mask);
        const bool lacking = (mask & ~processor) != 0;
        EXPECT_EQ(zmoSetCpuFeatures(mask), lacking ? ZmoStatus{zmoStsCpuFeaturesErr} : status);
        EXPECT_TRUE(lacking || zmoGetEnabledCpuFeatures() == level);
    }
    zmoInit();
}

TEST(CoreLevels, AMaskBeyondTheProcessorChangesNothing) {
    ASSERT_EQ(zmoSetCpuFeatures(ZMO_LEVEL_SSE2), zmoStsNoErr);
    // Bit 63 belongs to no feature.
    EXPECT_EQ(zmoSetCpuFeatures(ZMO_LEVEL_SSE2 | 1ULL << 63), zmoStsCpuFeaturesErr);
    EXPECT_EQ(zmoSetCpuFeatures(~0ULL), zmoStsCpuFeaturesErr);
    EXPECT_EQ(zmoGetEnabledCpuFeatures(), ZMO_LEVEL_SSE2);
    ASSERT_EQ(zmoInit(), zmoStsNoErr);
    EXPECT_EQ(zmoSetCpuFeatures(processorMask()), zmoStsNoErr);
    const Zmo64u best = zmoGetEnabledCpuFeatures();
    ASSERT_EQ(zmoInit(), zmoStsNoErr);
    EXPECT_EQ(zmoGetEnabledCpuFeatures(), best);
}

TEST(CoreVersion, EveryTextEndsWithTheLevel) {
    const std::pair<const ZmoLibraryVersion* (*)(), const char*> libraries[] = {
        {zmocoreGetVersion, "libzmocore"},
        {zmovmGetVersion, "libzmovm"},
        {zmosGetVersion, "libzmos"},
        {zmoiGetVersion, "libzmoi"},
        {zmocvGetVersion, "libzmocv"}};
    size_t level = 0;
    kit::forEachLevel([&] {
        const std::string ending = std::string(" ") + kit::allLevels()[level++].name;
        for (const auto& [get, name] : libraries) {
            const ZmoLibraryVersion& version = *get();
            EXPECT_STREQ(version.name, name);
            const std::string text = version.version;
            EXPECT_TRUE(text.ends_with(ending)) << text;
            const std::string number =
                std::to_string(version.major) + "." + std::to_string(version.minor);
            EXPECT_TRUE(text.starts_with(number)) << text;
            EXPECT_EQ(std::string(version.buildDate).size(), 11U);
        }
    });
}

TEST(CoreStatus, EveryCodeHasItsOwnText) {
    std::set<std::string> texts;
    for (int status = -22; status <= 4; ++status) {
        if (status == -1) continue;
        const std::string text = zmoGetStatusString(status);
        EXPECT_TRUE(text.starts_with("zmoSts")) << status;
        EXPECT_TRUE(texts.insert(text).second) << status;
    }
    for (const int status : {-1, -23, 5, INT_MIN, INT_MAX}) {
        EXPECT_STREQ(zmoGetStatusString(status), "Unknown status");
    }
    EXPECT_NE(std::string(zmoGetStatusString(-21)).find("zmoStsCpuFeaturesErr"), std::string::npos);
}

TEST(CoreThreads, OneIsInUse) {
    int threads = 0;
    EXPECT_EQ(zmoSetNumThreads(0), zmoStsRangeErr);
    EXPECT_EQ(zmoSetNumThreads(-3), zmoStsRangeErr);
    EXPECT_EQ(zmoSetNumThreads(4), zmoStsNoErr);
    EXPECT_EQ(zmoGetNumThreads(&threads), zmoStsNoErr);
    EXPECT_EQ(threads, 1);
    EXPECT_EQ(zmoGetNumThreads(nullptr), zmoStsNullPtrErr);
}

TEST(CoreCache, AgreesWithTheKernel) {
    int size = -1;
    ASSERT_EQ(zmoGetMaxCacheSizeB(nullptr), zmoStsNullPtrErr);
    const ZmoStatus status = zmoGetMaxCacheSizeB(&size);
    long long largest = 0;
    for (int index = 0; index < 8; ++index) {
        // "512K" and the like.
        std::ifstream file("/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) +
                           "/size");
        long long number = 0;
        char unit = 0;
        file >> number >> unit;
        largest = std::max(largest, number * (unit == 'M' ? 1024 * 1024 : 1024));
    }
    if (status == zmoStsUnavailable) {
        EXPECT_EQ(size, 0);
        GTEST_SKIP() << "the processor hides its caches";
    }
    ASSERT_EQ(status, zmoStsNoErr);
    EXPECT_GE(size, 1024);
    if (largest != 0) {
        EXPECT_EQ(size, largest);
    }
}

TEST(CoreClock, ReadersMeasureTheSameClocks) {
    const std::pair<Zmo64s (*)(), Zmo64s (*)()> pairs[] = {{zmoStartTsc, zmoStopTsc},
                                                           {zmoStartTscp, zmoStopTscp}};
    for (const auto& [readStart, readStop] : pairs) {
        Zmo64s empty = LLONG_MAX;
        Zmo64s loaded = LLONG_MAX;
        for (int repeat = 0; repeat < 200; ++repeat) {
            Zmo64s start = readStart();
            empty = std::min(empty, readStop() - start);
            start = readStart();
            // 400 dependent multiplications take at least 1200 core clocks.
            unsigned value = 3;
            for (int i = 0; i < 400; ++i) {
                value *= value;
                __asm__ volatile("" : "+r"(value));
            }
            loaded = std::min(loaded, readStop() - start);
        }
        EXPECT_TRUE(empty > 0 && empty < 5000) << empty;
        EXPECT_GT(loaded, empty + 200);
    }
    const Zmo64s first = zmoStartTsc();
    const Zmo64s second = zmoStartTscp();
    const Zmo64s third = zmoStopTsc();
    EXPECT_LT(first, second);
    EXPECT_LT(second, third);
    EXPECT_LT(third, zmoStopTscp());
}

// Puts the floating-point registers back.
class CoreRegisters : public testing::Test {
  protected:
    CoreRegisters() { std::fegetenv(&m_environment); }
    ~CoreRegisters() override { std::fesetenv(&m_environment); }

  private:
    std::fenv_t m_environment;
};

TEST_F(CoreRegisters, X87) {
    const unsigned before = zmoFpuSsx4TS(2, 0, 0);
    EXPECT_EQ(zmoFpuSsx4TS(1, 0x23f, 0xf3f) & 0xf3f, 0x23fU);
    // Only the bits under the mask change.
    zmoFpuSsx4TS(1, 0xfff, 0x300);
    EXPECT_EQ(zmoFpuSsx4TS(2, 0xfff, 0xfff) & 0xf3f, 0x33fU);
    EXPECT_EQ(zmoFpuSsx4TS(2, 0, 0) & 0xf3f, 0x33fU) << "reading writes nothing";
    zmoFpuSsx4TS(1, before, 0xffff);
    EXPECT_EQ(zmoFpuSsx4TS(2, 0, 0), before);

    EXPECT_EQ(zmoFpuSsx4TS(4, 0, 0) & 0x3f, 0U);
    __asm__ volatile("fld1\n\tfldz\n\tfdivrp\n\tfstp %%st(0)" ::: "st", "st(1)");
    EXPECT_EQ(zmoFpuSsx4TS(3, 0, 0) & 0x3f, 0x4U);
    EXPECT_EQ(zmoFpuSsx4TS(4, 0, 0) & 0x3f, 0U);
    EXPECT_EQ(zmoFpuSsx4TS(3, 0, 0) & 0x3f, 0U);
}

TEST_F(CoreRegisters, Mxcsr) {
    EXPECT_EQ(zmoFpuSsx4TS(5, 0x9f80, 0xffbf) & 0xffbf, 0x9f80U);
    EXPECT_EQ(_mm_getcsr() & 0xffbf, 0x9f80U);
    zmoFpuSsx4TS(5, 0x40, 0x40);
    EXPECT_EQ(zmoFpuSsx4TS(6, 0, 0) & 0x8040, 0x8040U);
    // Reserved bits are refused by the processor; the call leaves them alone.
    zmoFpuSsx4TS(5, 0xffff0000U, 0xffff0000U);
    EXPECT_EQ(zmoFpuSsx4TS(6, 0, 0), _mm_getcsr());

    _mm_setcsr(_mm_getcsr() | 0x3f);
    EXPECT_EQ(zmoFpuSsx4TS(7, 0xffff, 0xffff), 0x9fc0U);
    EXPECT_EQ(_mm_getcsr(), 0x9fc0U);
    for (const int op : {0, 8, -1}) {
        EXPECT_EQ(zmoFpuSsx4TS(op, 0xffff, 0xffff), 0U);
        EXPECT_EQ(_mm_getcsr(), 0x9fc0U);
    }
}

}  // namespace
