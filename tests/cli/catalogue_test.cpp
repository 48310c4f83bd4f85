// The functions that pscv measures, held against the list in the tree: a module
// that the build drops, or one that forgets a function, shows here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "pscv.h"

namespace {

using Names = std::vector<std::string>;

// The function column of the numbered lines of the list box.
Names listedFunctions() {
    Names names;
    for (const std::string& line : support::lines(Pscv().run({"-e"}).out)) {
        if (line.size() != 79 || line[0] != '|' || std::atoi(line.c_str() + 1) == 0) continue;
        const std::string cell = line.substr(6, 40);
        names.push_back(cell.substr(0, cell.find_last_not_of(' ') + 1));
    }
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
    const Names listed = listedFunctions();
    EXPECT_EQ(inFirstOnly(expected, listed), "") << "not registered";
    EXPECT_EQ(inFirstOnly(listed, expected), "") << "not in functions.txt";
    EXPECT_TRUE(listed == expected) << "the order differs";
}

}  // namespace
