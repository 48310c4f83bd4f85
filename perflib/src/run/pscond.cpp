#include "pscond.h"

#include <algorithm>

#include "pstest.h"

namespace {

using Form = psConditionForm;
using Target = RunCondition::Target;

const psString& nameOf(const psTest& test, Target target) {
    switch (target) {
        case RunCondition::testClass:
            return test.info().className;
        case RunCondition::source:
            return test.fileName();
        default:
            return test.funcName();
    }
}

// The names of one kind, each once.
psStringList namesOf(const psList<psTest*>& tests, Target target) {
    psStringList names;
    for (const psTest* test : tests) {
        const psString& name = nameOf(*test, target);
        if (!names.contains(name)) names.push_back(name);
    }
    return names;
}

long countWith(const psStringList& names, const psString& pattern) {
    return std::ranges::count_if(names, [&](const auto& name) { return name.contains(pattern); });
}

// The text in the capital and small letters in which a name has it.
psString spellingIn(const psStringList& names, const psString& text) {
    const psString lower = text.toLower();
    for (const psString& name : names) {
        const int at = name.toLower().find(lower);
        if (at >= 0) return name.substr(at, text.length());
    }
    return {};
}

psString hint(const psStringList& names, const RunCondition& condition) {
    const psString nearest = psNearest(condition.pattern, names);
    const psString spelling = spellingIn(names, condition.pattern);
    const bool whole = condition.kind == RunCondition::exact || spelling.empty();
    if (whole && !nearest.empty()) return "; " + nearest + "?";
    if (spelling.empty()) return {};
    return "; " + psText(countWith(names, spelling)) + " have '" + spelling + "'" +
           (whole ? " in theirs" : "");
}

// Empty when the pattern fits a name.
psString unmatchedLine(const psStringList& names, const RunCondition& condition) {
    constexpr const char* things[] = {"function", "test", "file"};
    const psString& pattern = condition.pattern;
    const bool exact = condition.kind == RunCondition::exact;
    if (exact ? names.contains(pattern) : countWith(names, pattern) > 0) return {};
    const psString quoted = "'" + pattern + "'";
    return psString("no ") + things[condition.target] +
           (exact ? " has the name " + quoted : " has " + quoted + " in its name") +
           hint(names, condition);
}

constexpr RunCondition::Kind kindOf(Form form) {
    if (form == Form::plain) return RunCondition::alternative;
    return form == Form::equal ? RunCondition::exact : RunCondition::must;
}

template <Target Name>
std::unique_ptr<RunCondition> makeCondition(Form form, const psString& pattern) {
    switch (form) {
        case Form::plain:
            return std::make_unique<psNameCondition<Name, Form::plain>>(pattern);
        case Form::with:
            return std::make_unique<psNameCondition<Name, Form::with>>(pattern);
        case Form::without:
            return std::make_unique<psNameCondition<Name, Form::without>>(pattern);
        case Form::equal:
            return std::make_unique<psNameCondition<Name, Form::equal>>(pattern);
        case Form::empty:
            break;
    }
    return nullptr;
}

}  // namespace

psConditionForm getCondition(psString& arg) {
    if (arg.empty()) return Form::empty;
    const char sign = arg[0];
    if (sign != '=' && sign != '-' && sign != '+') return Form::plain;
    arg = arg.substr(1);
    if (arg.empty()) return Form::empty;
    if (sign == '=') return Form::equal;
    return sign == '-' ? Form::without : Form::with;
}

std::unique_ptr<RunCondition> psMakeCondition(RunCondition::Target target, psString arg) {
    const Form form = getCondition(arg);
    switch (target) {
        case RunCondition::testClass:
            return makeCondition<RunCondition::testClass>(form, arg);
        case RunCondition::source:
            return makeCondition<RunCondition::source>(form, arg);
        default:
            return makeCondition<RunCondition::function>(form, arg);
    }
}

template <RunCondition::Target Name, psConditionForm Form>
psNameCondition<Name, Form>::psNameCondition(const psString& text)
    : RunCondition(kindOf(Form), Name, text) {}

template <RunCondition::Target Name, psConditionForm Form>
bool psNameCondition<Name, Form>::tobeRun(const psTest* test) const {
    const psString& name = nameOf(*test, Name);
    if constexpr (Form == Form::equal) return name == pattern;
    return name.contains(pattern) != (Form == Form::without);
}

template class psNameCondition<RunCondition::function, Form::plain>;
template class psNameCondition<RunCondition::function, Form::with>;
template class psNameCondition<RunCondition::function, Form::without>;
template class psNameCondition<RunCondition::function, Form::equal>;
template class psNameCondition<RunCondition::testClass, Form::plain>;
template class psNameCondition<RunCondition::testClass, Form::with>;
template class psNameCondition<RunCondition::testClass, Form::without>;
template class psNameCondition<RunCondition::testClass, Form::equal>;
template class psNameCondition<RunCondition::source, Form::plain>;
template class psNameCondition<RunCondition::source, Form::with>;
template class psNameCondition<RunCondition::source, Form::without>;
template class psNameCondition<RunCondition::source, Form::equal>;

psConditions::~psConditions() {
    for (RunCondition* condition : *this) delete condition;
}

void psConditions::add(std::unique_ptr<RunCondition> condition) {
    push_back(nullptr);
    back() = condition.release();
}

int psConditions::count(Target target) const {
    return static_cast<int>(
        std::ranges::count_if(*this, [=](auto* c) { return c->target == target; }));
}

int psConditions::count(Target target, RunCondition::Kind kind) const {
    return static_cast<int>(std::ranges::count_if(
        *this, [=](auto* c) { return c->target == target && c->kind == kind; }));
}

psStringList psConditions::unmatched(const psList<psTest*>& tests) const {
    psStringList lines;
    for (const RunCondition* condition : *this) {
        const psString line = unmatchedLine(namesOf(tests, condition->target), *condition);
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

bool psConditions::tobeRun_or(const psTest* test, Target target, RunCondition::Kind kind) const {
    return std::ranges::any_of(
        *this, [=](auto* c) { return c->target == target && c->kind == kind && c->tobeRun(test); });
}

bool psConditions::tobeRun_and(const psTest* test, Target target) const {
    return std::ranges::all_of(*this, [=](auto* c) {
        return c->target != target || c->kind != RunCondition::must || c->tobeRun(test);
    });
}

// An exact name beats everything else. Where nothing but exact names is given,
// no other name runs.
bool psConditions::tobeRun(const psTest* test, Target target) const {
    if (tobeRun_or(test, target, RunCondition::exact)) return true;
    if (count(target) == count(target, RunCondition::exact)) return false;
    if (count(target, RunCondition::alternative) > 0 &&
        !tobeRun_or(test, target, RunCondition::alternative))
        return false;
    return tobeRun_and(test, target);
}

bool psConditions::tobeRun(const psTest* test) const {
    if (empty()) return true;
    const bool deciding = logic == logicOr;
    for (Target target : {RunCondition::function, RunCondition::testClass, RunCondition::source}) {
        if (count(target) > 0 && tobeRun(test, target) == deciding) return deciding;
    }
    return !deciding;
}
