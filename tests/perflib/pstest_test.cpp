#include "pstest.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>

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

}  // namespace
