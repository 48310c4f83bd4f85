// The keys of the command line: what each echoes and does.
#pragma once

#include "pslist.h"
#include "psstring.h"

class psSession;
class psTestList;
struct psSettings;

// One key. `help` is the line (or lines) of the short help, `description` the
// text of the extended help; -@ alone has neither echo nor effect of its own.
// What a key does is no more than what it writes into the settings.
struct psOption {
    using Info = psString (*)(const psString& arg);
    using Apply = void (*)(const psString& arg, psSettings& settings);
    // Why the value of a long key cannot be used, with a valid form; empty when it can.
    using Refuse = psString (*)(const psString& value);
    enum class Value { none, needed, optional };

    char key = ' ';
    bool hidden = false;
    psString help;
    Info info = nullptr;
    Apply apply = nullptr;
    psString description;

    // Of a long key, --name=value, whose key is '-' and whose `info` and `apply` are
    // given the value alone.
    psString name{};
    Value value = Value::none;
    Refuse refuse = nullptr;
};

using psOptionList = psList<psOption*>;

// Registers every key through psSession::initOption and initName, in the order of
// the help. -q and -Q are left out unless psRegQKeys was called.
void psRegisterKeys(psSession& session);

// A line that names what of the argument the key does not look at; empty when it
// takes all.
psString psSuperfluous(char key, const psString& arg);

// Adds to the lines for the end of the run what -f, -t, -m, -H and -F asked of the
// tests that none of them has, and, when the tests have run to their end, the names of
// -d that nothing asked for.
void psRemarkUnmet(const psSession& session, psTestList& tests, bool haveRun);

// The first option with the key, or null.
psOption* psFindOption(const psOptionList& options, char key);
psOption* psFindOption(const psOptionList& options, const psString& name);

// Puts `list` in place of the tab character of a description; a description
// without one stays as it is.
void psInsertIntoDescription(psOption& option, const psString& list);
