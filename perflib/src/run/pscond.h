// Run conditions: the patterns of -f, -t and -m on three names of a test, and
// how -k combines them.
#pragma once

#include <memory>

#include "pslist.h"
#include "pssettings.h"
#include "psstring.h"

class psTest;

// One pattern on one name of a test.
class RunCondition {
  public:
    // must: the + and - forms; alternative: no prefix; exact: the = form.
    enum Kind { must = 0, alternative = 1, exact = 2 };
    using Target = psGivenPattern::Target;
    using enum psGivenPattern::Target;

    RunCondition(Kind conditionKind, Target conditionTarget, const psString& text)
        : kind(conditionKind), target(conditionTarget), pattern(text) {}
    RunCondition(const RunCondition&) = delete;
    RunCondition& operator=(const RunCondition&) = delete;
    virtual ~RunCondition() = default;

    virtual bool tobeRun(const psTest* test) const = 0;

    const Kind kind;
    const Target target;
    const psString pattern;
};

// The form of a key's argument, as getCondition() gives it.
enum class psConditionForm { plain = 0, with = 1, without = 2, equal = 3, empty = 4 };

// Strips the sign '+', '-' or '=' from the argument and returns the form it
// stands for; `empty` when no pattern remains.
psConditionForm getCondition(psString& arg);

template <RunCondition::Target Name, psConditionForm Form>
class psNameCondition : public RunCondition {
  public:
    explicit psNameCondition(const psString& text);
    bool tobeRun(const psTest* test) const override;
};

using RunCondition_f = psNameCondition<RunCondition::function, psConditionForm::plain>;
using RunCondition_fAnd = psNameCondition<RunCondition::function, psConditionForm::with>;
using RunCondition_fNot = psNameCondition<RunCondition::function, psConditionForm::without>;
using RunCondition_fEqual = psNameCondition<RunCondition::function, psConditionForm::equal>;
using RunCondition_t = psNameCondition<RunCondition::testClass, psConditionForm::plain>;
using RunCondition_tAnd = psNameCondition<RunCondition::testClass, psConditionForm::with>;
using RunCondition_tNot = psNameCondition<RunCondition::testClass, psConditionForm::without>;
using RunCondition_tEqual = psNameCondition<RunCondition::testClass, psConditionForm::equal>;
using RunCondition_s = psNameCondition<RunCondition::source, psConditionForm::plain>;
using RunCondition_sAnd = psNameCondition<RunCondition::source, psConditionForm::with>;
using RunCondition_sNot = psNameCondition<RunCondition::source, psConditionForm::without>;
using RunCondition_sEqual = psNameCondition<RunCondition::source, psConditionForm::equal>;

// The condition of an argument with its sign; null when it holds no pattern.
std::unique_ptr<RunCondition> psMakeCondition(RunCondition::Target target, psString arg);

// The conditions of a run in key order; owns them.
class psConditions : public psList<RunCondition*> {
  public:
    using Logic = psSettings::Logic;
    using enum psSettings::Logic;

    psConditions() = default;
    psConditions(const psConditions&) = delete;
    psConditions& operator=(const psConditions&) = delete;
    ~psConditions() override;

    // Takes the condition over.
    void add(std::unique_ptr<RunCondition> condition);

    // How the verdicts of the three names are combined; names without a
    // condition have no say.
    Logic logic = logicAnd;

    bool tobeRun(const psTest* test) const;
    bool tobeRun(const psTest* test, RunCondition::Target target) const;
    bool tobeRun_or(const psTest* test, RunCondition::Target target,
                    RunCondition::Kind kind) const;  // one holds
    bool tobeRun_and(const psTest* test,
                     RunCondition::Target target) const;  // all of kind `must` hold
    int count(RunCondition::Target target) const;
    int count(RunCondition::Target target, RunCondition::Kind kind) const;

    // A line for each pattern that fits no name of the tests, with what was
    // probably meant.
    psStringList unmatched(const psList<psTest*>& tests) const;
};
