// Each module's data make its functions do what real use does: the figure that a module shows of
// each data set lies in a range that is sensible for it.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "pp.h"
#include "session.h"
#include "temp_dir.h"

namespace {

struct Limits {
    double low = 0;
    double high = std::numeric_limits<double>::infinity();
};

// The limits of the first number in a module's figures, over all its functions and default values,
// and of the second one where it adds something.
struct Range {
    const char* module;
    Limits first;
    Limits second = {};
};

// Sorted; a new module adds its line.
constexpr Range ranges[] = {
    {"p_cadd", {90, 100}},
    {"p_cbound", {5, 20}},
    {"p_ccanny", {0.5, 15}, {10, 40}},
    {"p_ccanny_l", {0.5, 15}, {10, 40}},
    {"p_ccannyedgedet", {0.5, 20}, {10, 40}},
    {"p_cdist", {3, 12}},
    {"p_ceigen", {0.5, 35}},
    {"p_ceigen_brdr", {0.5, 35}},
    {"p_cflood", {40, 80}},
    {"p_cgrad", {95, 160}},
    {"p_chaar", {30, 99.5}},
    {"p_chough", {5, 60}},
    {"p_cinpaint", {0.5, 25}},
    {"p_cintegr", {100, 160}},
    {"p_clabel", {4, 2000}},
    {"p_cmarkspeckles", {1, 15}},
    {"p_cmeanstddev", {9, 100}},
    {"p_cmh", {9, 91}},
    {"p_cmorph", {2, 100}},
    {"p_cmorph_l", {2, 100}},
    {"p_cmorphgray", {90, 100}},
    {"p_cnewconv", {10, 5000}},
    {"p_cnorm", {9, 91}},
    {"p_crectstddev", {60, 80}},
    {"p_csampleline", {60, 320}},
    {"p_cstat", {9, 100}},
    {"p_cundist", {70, 100}},
    {"p_cvcopysub", {50, 100}},
    {"p_cvfastn", {8, 5000}},
    {"p_cvfiltergauss", {10, 50}},
    {"p_cvfiltergaussl", {10, 50}},
    {"p_cvharriscorner", {0.2, 35}},
    {"p_cvpyramid", {20, 70}},
    {"p_cvpyramid_l", {20, 70}},
    {"p_cvreconstruct", {90, 100}},
    {"p_cvsegmentation", {75, 100}},
    {"p_cvseparable", {10, 60}},
    {"p_cvseparable_pipe", {40, 500}, {0, 5}},
    {"p_gmm", {1, 30}},
    {"p_linesuppression", {10, 90}},
    {"p_optflow", {0.001, 0.4}},
};

// One call of each of the module's functions with each of its default values.
std::string listingOf(const std::string& module) {
    const TempDir dir;
    inOwnProcess([&] {
        runSession({"-B", "-LINFO", "-l" + dir.path(), "-oall.txt", "-m=" + module, "-dNumLoops=1",
                    "-dMethod=Manual",
                    SANITIZED ? "-dImageSize=64x64" : "-dImageSize=64x64;320x240"});
    });
    return dir.read("all.txt");
}

void expectWithin(const Limits& limits, double figure, const std::string& where) {
    EXPECT_GE(figure, limits.low) << where;
    EXPECT_LE(figure, limits.high) << where;
}

std::vector<double> numbersIn(const std::string& line) {
    static const std::regex number("[0-9]+([.][0-9]+)?(e[-+]?[0-9]+)?");
    std::vector<double> numbers;
    for (std::sregex_iterator at(line.begin(), line.end(), number), end; at != end; ++at)
        numbers.push_back(std::stod(at->str()));
    return numbers;
}

class DataFigure : public testing::TestWithParam<std::string> {};

TEST_P(DataFigure, IsSensible) {
    const auto* const range = std::ranges::find(ranges, GetParam(), &Range::module);
    ASSERT_NE(range, std::end(ranges)) << "no range of " << GetParam() << " in " << __FILE__;
    std::istringstream listing(listingOf(GetParam()));
    std::string function;
    int results = 0;
    int figures = 0;
    for (std::string line; std::getline(listing, line);) {
        if (line.starts_with("| Function")) function = line;
        if (line.find(" clocks per ") != std::string::npos) ++results;
        if (!line.starts_with("    Data: ")) continue;
        ++figures;
        const std::vector<double> numbers = numbersIn(line);
        ASSERT_FALSE(numbers.empty()) << line;
        SCOPED_TRACE(function);
        expectWithin(range->first, numbers[0], line);
        if (numbers.size() > 1) expectWithin(range->second, numbers[1], line);
    }
    EXPECT_GT(results, 0);
    EXPECT_EQ(figures, results);
}

INSTANTIATE_TEST_SUITE_P(Modules, DataFigure, testing::ValuesIn(modules()),
                         [](const auto& module) { return module.param; });

TEST(DataFigures, AreOfTheModulesInOrder) {
    EXPECT_TRUE(
        std::ranges::is_sorted(ranges, {}, [](const Range& r) { return std::string(r.module); }));
    for (const Range& range : ranges) EXPECT_TRUE(modules().contains(range.module)) << range.module;
}

}  // namespace
