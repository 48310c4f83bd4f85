#include "pstest.h"

#include <new>

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
        regCacheParm(length, nullptr, [](int) { return true; });
        return true;
    }
    psStepIterator<int> length{"Len", "", {100}};
};

TEST(PsTest, LengthIsVariedForTheCacheWhenAsked) {
    for (const bool asked : {false, true}) {
        publish(&psSettings::cache, asked);
        LengthTest test;
        test.startAndStop();
        ASSERT_EQ(test.cacheIter() != nullptr, asked);
        const psParameter* first = test.cacheIter();
        if (!asked) first = &test.length;
        EXPECT_EQ(test.parms().front(), first) << "in the length's place";
    }
    psPublish({});
}

}  // namespace
