#include "pscond.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "pstest.h"

namespace {

struct NamedTest : psTest {
    NamedTest(const char* function, const char* source, const char* testClass)
        : psTest(static_cast<FuncOld>(nullptr), function, source,
                 psString(testClass) + "//PP_REG") {}
};

// The argument of one key: 'f', 't' or 'm'.
struct Key {
    char key;
    const char* arg;
};

RunCondition::Target targetOf(char key) {
    if (key == 't') return RunCondition::testClass;
    return key == 'm' ? RunCondition::source : RunCondition::function;
}

struct SelectionCase {
    const char* name;
    std::vector<Key> keys;
    int logic;
    const char* selected;  // the letters of the tests that run
};

void PrintTo(const SelectionCase& c, std::ostream* stream) {
    *stream << c.name;
}

class Selection : public testing::TestWithParam<SelectionCase> {};

TEST_P(Selection, RunsTheTestsThatThePatternsAccept) {
    const NamedTest a("zmoiCanny_16s8u_C1R", "perf/p_ccanny", "TimcCanny");
    const NamedTest b("zmoiCanny_32f8u_C1R", "perf/p_ccanny", "TimcCanny");
    const NamedTest c("zmoiFilterLowpass_8u_C1R", "perf/p_cfilter", "TimcFilter");
    const NamedTest d("zmoiFilterLowpass_8u_C3R", "perf/p_cfilter", "TimcFilterBorder");
    const NamedTest e("zmoiFloodFill_8u_C1IR", "perf/p_cflood", "TimcFlood");

    psConditions conditions;
    conditions.logic = GetParam().logic;
    for (const Key& key : GetParam().keys) {
        auto condition = psMakeCondition(targetOf(key.key), key.arg);
        if (condition) conditions.add(std::move(condition));
    }
    std::string selected;
    const NamedTest* const tests[] = {&a, &b, &c, &d, &e};
    for (int i = 0; i < 5; ++i) {
        if (conditions.tobeRun(tests[i])) selected += static_cast<char>('a' + i);
    }
    EXPECT_EQ(selected, GetParam().selected);
}

constexpr int both = psConditions::logicAnd;
constexpr int either = psConditions::logicOr;

const SelectionCase selectionCases[] = {
    {"nothingGiven", {}, both, "abcde"},
    {"nothingGivenOr", {}, either, "abcde"},
    {"contains", {{'f', "Canny"}}, both, "ab"},
    {"caseCounts", {{'f', "canny"}}, both, ""},
    {"alternatives", {{'f', "Canny"}, {'f', "Flood"}}, both, "abe"},
    {"allOfThePlusForms", {{'f', "+C1R"}, {'f', "+8u"}}, both, "abc"},
    {"noneOfTheMinusForms", {{'f', "-32f"}}, both, "acde"},
    {"plainAndMinus", {{'f', "Canny"}, {'f', "-32f"}}, both, "a"},
    {"plusAloneNeedsNoPlain", {{'f', "+Filter"}, {'f', "-C3R"}}, both, "c"},
    {"exactName", {{'f', "=zmoiCanny_16s8u_C1R"}}, both, "a"},
    {"exactNeedsTheWholeName", {{'f', "=zmoiCanny"}}, both, ""},
    {"exactOrPlain", {{'f', "=zmoiCanny_16s8u_C1R"}, {'f', "Filter"}}, both, "acd"},
    {"exactBeatsMinus", {{'f', "=zmoiCanny_32f8u_C1R"}, {'f', "-32f"}}, both, "abcde"},
    {"equalSignInThePattern", {{'f', "==x"}}, both, ""},
    {"emptyPatternsAddNothing", {{'f', ""}, {'f', "+"}, {'f', "-"}, {'f', "="}}, both, "abcde"},
    {"testClass", {{'t', "TimcFilter"}}, both, "cd"},
    {"testClassExact", {{'t', "=TimcFilter"}}, both, "c"},
    {"testClassNot", {{'t', "-Filter"}}, both, "abe"},
    {"sourceWithoutItsDirectory", {{'m', "=p_cflood"}}, both, "e"},
    {"sourceIsNoPath", {{'m', "perf/"}}, both, ""},
    {"sourceForms", {{'m', "p_c"}, {'m', "+fil"}, {'m', "-flood"}}, both, "cd"},
    {"twoNamesAnd", {{'f', "Canny"}, {'t', "TimcFlood"}}, both, ""},
    {"twoNamesOr", {{'f', "Canny"}, {'t', "TimcFlood"}}, either, "abe"},
    {"threeNamesAnd", {{'f', "C1R"}, {'t', "Canny"}, {'m', "p_ccanny"}}, both, "ab"},
    {"orLooksOnlyAtGivenNames", {{'m', "none"}}, either, ""},
    {"exactPerName", {{'f', "=zmoiCanny_16s8u_C1R"}, {'t', "Filter"}}, either, "acd"},
};

INSTANTIATE_TEST_SUITE_P(All, Selection, testing::ValuesIn(selectionCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(ConditionArgument, LosesItsSignAndTellsItsForm) {
    const struct {
        const char* arg;
        psConditionForm form;
        const char* pattern;
    } cases[] = {
        {"", psConditionForm::empty, ""},        {"x", psConditionForm::plain, "x"},
        {"x-y", psConditionForm::plain, "x-y"},  {"+x", psConditionForm::with, "x"},
        {"-x", psConditionForm::without, "x"},   {"=x", psConditionForm::equal, "x"},
        {"==x", psConditionForm::equal, "=x"},   {"-", psConditionForm::empty, ""},
        {"+", psConditionForm::empty, ""},       {"=", psConditionForm::empty, ""},
        {"--x", psConditionForm::without, "-x"},
    };
    for (const auto& c : cases) {
        psString arg = c.arg;
        EXPECT_EQ(getCondition(arg), c.form) << c.arg;
        EXPECT_EQ(arg, psString(c.pattern)) << c.arg;
    }
}

}  // namespace
