#include "psfaults.h"

#include <algorithm>
#include <array>

#include "pslist.h"
#include "pssettings.h"

namespace {

struct Words {
    const char* one;
    const char* many;
};

// By psFault; those that keep a run from beginning have texts of their own.
constexpr Words words[] = {
    {},
    {},
    {"test failed", "tests failed"},
    {"set could not be prepared", "sets could not be prepared"},
    {"value, word or name was refused or not asked for",
     "values, words or names were refused or not asked for"},
    {"output is incomplete", "outputs are incomplete"},
};

std::array<int, std::size(words)> s_counts{};
psStringList s_texts;

int& countOf(psFault fault) {
    return s_counts[static_cast<std::size_t>(fault)];
}

}  // namespace

void psFaults::count(psFault fault, int times) {
    countOf(fault) += times;
}

void psFaults::countOnce(psFault fault, const psString& text) {
    if (s_texts.contains(text)) return;
    s_texts.push_back(text);
    count(fault);
}

int psFaults::counted(psFault fault) {
    return countOf(fault);
}

void psFaults::clear() {
    s_counts.fill(0);
    s_texts.clear();
}

int psFaults::exitStatus() {
    constexpr int notBegun = 2;
    if (countOf(psFault::key) > 0) return notBegun;
    if (!g_settings.strict) return 0;
    if (countOf(psFault::start) > 0) return notBegun;
    return std::ranges::any_of(s_counts, [](int count) { return count > 0; }) ? 1 : 0;
}

psString psFaults::text() {
    psString text;
    for (const psFault fault : {psFault::test, psFault::set, psFault::input, psFault::output}) {
        const int count = countOf(fault);
        if (count == 0) continue;
        const Words& word = words[static_cast<std::size_t>(fault)];
        text +=
            (text.empty() ? "" : ", ") + psText(count) + " " + (count == 1 ? word.one : word.many);
    }
    return text;
}
