#include "pstest.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "psdata.h"
#include "psiterator.h"

namespace {

struct OpenTest : psTest {
    OpenTest() : psTest(static_cast<FuncOld>(nullptr), "f", "p_f", "Timf//PP_REG") {}
    using psTest::formatClocks;
    bool canStart() override { throw std::bad_alloc(); }
};

TEST(PsTest, ClocksHaveThreeDigitsOrMore) {
    const std::pair<double, const char*> cases[] = {{0, ""},
                                                    {-1, ""},
                                                    {1e10, "1.000e+10"},
                                                    {1e7, "10000000"},
                                                    {99.96, "100.0"},
                                                    {1.234, "1.23"},
                                                    {0.1234, "0.123"},
                                                    {0.001234, "0.00123"},
                                                    {1e-4, "0.000100"},
                                                    {9e-5, "9.000e-05"}};
    OpenTest test;
    for (const auto& [clocks, text] : cases) EXPECT_STREQ(test.formatClocks(clocks).c_str(), text);
}

TEST(PsTest, DryStartThatFailsLeavesTheOtherTestsTheirTurn) {
    EXPECT_NO_THROW(OpenTest().startAndStop());
}

// A test of vectors: their length is what -C varies.
struct LengthTest : psTest {
    LengthTest() : psTest(static_cast<FuncOld>(nullptr), "f", "p_f", "Timf//PP_REG") {}
    ~LengthTest() override { psFree(data); }
    bool canStart() override {
        regParm(length);
        regCacheParm(length, nullptr, [this](int n) { return make(n); });
        return true;
    }
    bool make(int n) {
        psFree(data);
        data = psMalloc(n, 0, 0, nullptr);
        return data != nullptr;
    }
    psStepIterator<int> length{"Len", "", {100}};
    void* data = nullptr;
};

TEST(PsTest, LengthIsVariedForTheCacheWhenAsked) {
    for (const bool asked : {false, true}) {
        psSettings settings;
        settings.cache = asked;
        psPublish(settings);
        LengthTest test;
        test.startAndStop();
        ASSERT_EQ(test.cacheIter() != nullptr, asked);
        if (!asked) continue;
        EXPECT_EQ(test.parms().front(), test.cacheIter()) << "in the length's place";
        psCacheIterator::maxCacheSize = [](int* bytes) { return *bytes = 6000, 0; };
        ASSERT_TRUE(test.cacheIter()->firstValue() && test.make(test.length.value()));
        EXPECT_TRUE(test.cacheIter()->validateSize());
        EXPECT_EQ(psMallocTotal(), 800) << "the first above a tenth of the cache";
        psCacheIterator::maxCacheSize = nullptr;
    }
    psPublish({});
}

}  // namespace
