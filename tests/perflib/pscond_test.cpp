#include "pscond.h"

#include <gtest/gtest.h>

#include <memory>
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

constexpr int both = psConditions::logicAnd;
constexpr int either = psConditions::logicOr;

TEST(Selection, RunsTheTestsThatThePatternsAccept) {
    const NamedTest a("zmoiCanny_16s8u_C1R", "perf/p_ccanny", "TimcCanny");
    const NamedTest b("zmoiCanny_32f8u_C1R", "perf/p_ccanny", "TimcCanny");
    const NamedTest c("zmoiFilterLowpass_8u_C1R", "perf/p_cfilter", "TimcFilter");
    const NamedTest d("zmoiFilterLowpass_8u_C3R", "perf/p_cfilter", "TimcFilterBorder");
    const NamedTest e("zmoiFloodFill_8u_C1IR", "perf/p_cflood", "TimcFlood");

    const NamedTest* const tests[] = {&a, &b, &c, &d, &e};
    struct {
        std::vector<Key> keys;
        int logic;
        const char* selected;  // the letters of the tests that run
    } const cases[] = {
        {{}, both, "abcde"},
        {{}, either, "abcde"},
        {{{'f', "Canny"}}, both, "ab"},
        {{{'f', "canny"}}, both, ""},
        {{{'f', "Canny"}, {'f', "Flood"}}, both, "abe"},
        {{{'f', "+C1R"}, {'f', "+8u"}}, both, "abc"},
        {{{'f', "-32f"}}, both, "acde"},
        {{{'f', "Canny"}, {'f', "-32f"}}, both, "a"},
        {{{'f', "+Filter"}, {'f', "-C3R"}}, both, "c"},
        {{{'f', "=zmoiCanny_16s8u_C1R"}}, both, "a"},
        {{{'f', "=zmoiCanny"}}, both, ""},
        {{{'f', "=zmoiCanny_16s8u_C1R"}, {'f', "Filter"}}, both, "acd"},
        {{{'f', "=zmoiCanny_32f8u_C1R"}, {'f', "-32f"}}, both, "abcde"},
        {{{'f', "==x"}}, both, ""},
        {{{'f', ""}, {'f', "+"}, {'f', "-"}, {'f', "="}}, both, "abcde"},
        {{{'t', "TimcFilter"}}, both, "cd"},
        {{{'t', "=TimcFilter"}}, both, "c"},
        {{{'t', "-Filter"}}, both, "abe"},
        {{{'m', "=p_cflood"}}, both, "e"},
        {{{'m', "perf/"}}, both, ""},
        {{{'m', "p_c"}, {'m', "+fil"}, {'m', "-flood"}}, both, "cd"},
        {{{'f', "Canny"}, {'t', "TimcFlood"}}, both, ""},
        {{{'f', "Canny"}, {'t', "TimcFlood"}}, either, "abe"},
        {{{'f', "C1R"}, {'t', "Canny"}, {'m', "p_ccanny"}}, both, "ab"},
        {{{'m', "none"}}, either, ""},
        {{{'f', "=zmoiCanny_16s8u_C1R"}, {'t', "Filter"}}, either, "acd"},
    };
    for (const auto& row : cases) {
        psConditions conditions;
        conditions.logic = row.logic;
        std::string selected, words;
        for (const Key& key : row.keys) {
            words += std::string(" -") + key.key + key.arg;
            auto condition = psMakeCondition(targetOf(key.key), key.arg);
            if (condition) conditions.add(std::move(condition));
        }
        for (int i = 0; i < 5; ++i) {
            if (conditions.tobeRun(tests[i])) selected += static_cast<char>('a' + i);
        }
        EXPECT_EQ(selected, row.selected) << words;
    }
}

}  // namespace
