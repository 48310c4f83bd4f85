#include "pstest.h"

#include <new>

#include "psdata.h"
#include "psiterator.h"
#include "unit.h"

namespace {

struct OpenTest : psTest {
    OpenTest() : psTest(static_cast<FuncOld>(nullptr), "f", "p_f", "Timf//PP_REG") {}
    using psTest::formatClocks;
    bool canStart() override { throw std::bad_alloc(); }
};

TEST(PsTest, ClocksHaveThreeDigitsOrMore) {
    const std::pair<double, const char*> cases[] = {
        {0.001234, "0.00123"}, {1.234, "1.23"},   {0.1234, "0.123"}, {1e10, "1.000e+10"},
        {9e-5, "9.000e-05"},   {99.96, "100.0"},  {-1, ""},          {0, ""},
        {1e7, "10000000"},     {1e-4, "0.000100"}};
    OpenTest test;
    for (const auto& [clocks, text] : cases) EXPECT_STREQ(test.formatClocks(clocks).c_str(), text);
}

TEST(PsTest, DryStartThatFailsLeavesTheOtherTestsTheirTurn) {
    EXPECT_NO_THROW(OpenTest().startAndStop());
}

struct LengthTest : OpenTest {
    bool canStart() override {
        regParm(length);
        regCacheParm(length, nullptr, [this](int n) { return made = n, false; });
        return true;
    }
    int made = 0;
    psStepIterator<int> length{"Len", "", {100}};
};

TEST(PsTest, LengthIsVariedForTheCacheWhenAsked) {
    LengthTest plain, test;
    plain.startAndStop();
    EXPECT_TRUE(!plain.cacheIter() && plain.parms().front() == &plain.length);

    publish(&psSettings::cache, true);
    test.startAndStop();
    ASSERT_NE(test.cacheIter(), nullptr);
    EXPECT_EQ(test.parms().front(), test.cacheIter()) << "in the length's place";
    psCacheIterator::maxCacheSize = [](int* bytes) { return *bytes = 6000, 0; };
    void* data = psMalloc(100, 0, 0, nullptr);
    EXPECT_TRUE(test.cacheIter()->firstValue() && !test.cacheIter()->validateSize());
    EXPECT_EQ(test.made, 800) << "the first above a tenth of the cache";
    psFree(data);
    psCacheIterator::maxCacheSize = nullptr;
    psPublish({});
}

}  // namespace
