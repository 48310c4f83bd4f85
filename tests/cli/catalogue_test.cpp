// The functions that pscv measures, held against the list in the tree: a module
// that the build drops, or one that forgets a function, shows here; and values that no module can
// measure.
#include <gtest/gtest.h>

#include <algorithm>

#include "pscv.h"

namespace {

using Names = std::vector<std::string>;

// The functions of the list box.
Names listedFunctions(const char* key) {
    Names names;
    for (const std::string& line : Pscv::listed(Pscv().run({key}).out))
        names.push_back(line.substr(6, line.find(' ', 6) - 6));
    return names;
}

std::string inFirstOnly(Names first, Names second) {
    std::ranges::sort(first);
    std::ranges::sort(second);
    Names rest;
    std::ranges::set_difference(first, second, std::back_inserter(rest));
    std::string text;
    for (const std::string& name : rest) text += "\n  " + name;
    return text;
}

// functions.txt holds one function a line, in the order of a run.
TEST(Catalogue, ListsTheFunctionsOfTheTree) {
    const Names expected = support::lines(support::readFile(PSCV_FUNCTIONS_FILE));
    const Names listed = listedFunctions("-e");
    EXPECT_EQ(inFirstOnly(expected, listed), "") << "not registered";
    EXPECT_EQ(inFirstOnly(listed, expected), "") << "not in functions.txt";
    EXPECT_TRUE(listed == expected) << "the order differs";
    EXPECT_EQ(inFirstOnly(expected, listedFunctions("-e+")), "\n  __psMorvaCpu")
        << "measured, but not among the functions of the library";
}

TEST(Catalogue, TheProcessorTestPrintsItsLinesAndNoRow) {
    const Pscv pscv;
    const std::string out = pscv.run({"-B", "-f__ps", "-rtable"}).out;
    EXPECT_TRUE(inOrder(out, "\nCPU: ", "CPU features: MMX SSE SSE2 SSE3 SSSE3 ")) << out;
    EXPECT_TRUE(pscv.rows().empty());
}

TEST(Catalogue, SaysWhyASetCannotBePrepared) {
    const struct {
        const char* function;
        const char* value;
        const char* why;
    } cases[] = {
        {"zmoiCanny_16s8u_C1R", "numFigures=100x2", "-- No 100x2 figures fit into the image\n"},
        {"zmoiCanny_16s8u_C1R", "numFigures=0x2", "-- No 0x2 figures fit into the image\n"},
        {"zmoiAdd_8u32f_C1IMR", "Density=101", "-- Density is 0 to 100, not 101\n"},
        {"zmoiMean_8u_C1MR", "Density=-1", "-- Density is 0 to 100, not -1\n"},
        {"zmoiFloodFill_Grad4Con_8u_C1IR", "Threshold=256", "-- Threshold is 0 to 255, not 256\n"},
        {"zmoiApplyHaarClassifier_32f_C1R", "Stage=5", "-- Stage is 1 to 4, not 5\n"},
        {"zmoiOpticalFlowPyrLK_8u_C1R", "Levels=9", "-- Levels is 1 to 8, not 9\n"},
        {"zmoiFilterColumnPipeline_16s_C1R", "MaskSize=-1x-1", "zmoStsMaskSizeErr"},
        {"zmoiFilterRowBorderPipeline_16s_C1R", "MaskSize=-1x-1", "zmoStsMaskSizeErr"},
    };
    for (const auto& c : cases) {
        const Pscv pscv;
        const support::Outcome outcome =
            pscv.run({"-B", "-LP", "-rtable", "-utests", "-dImageSize=32x24",
                      "-f=" + std::string(c.function), "-d" + std::string(c.value)});
        EXPECT_TRUE(has(outcome.out, c.why)) << outcome.out;
        EXPECT_TRUE(pscv.rows().empty()) << c.value;
        EXPECT_TRUE(pscv.result(c.function).ends_with("FAIL")) << c.value;
        EXPECT_NE(pscv.result(c.function), "EXCPTFAIL") << c.value;
    }
}

}  // namespace
