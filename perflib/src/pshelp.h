// The texts of the help: of each key, and of what -h and -? type.
#pragma once

#include "psoption.h"

struct psKeyText {
    char key = ' ';
    bool hidden = false;  // typed by -? only
    const char* help = "";
    const char* description = "";
};

// A key without texts gets empty ones; the help calls it deprecated then.
const psKeyText& psTextOfKey(char key);

// The texts of the help. `arg` is psShortHelp, or the key to explain; 'h' with
// the hidden keys left out (-hh) and '?' with them (-??) explain all keys.
constexpr char psShortHelp = 1;
psString psHelpText(const psOptionList& options, char arg, bool hideHidden);
psString psQuickHelp(const psOptionList& options, bool hideHidden);
psString psFullHelp(const psOptionList& options, bool hideHidden);
psString psKeyHelp(const psOptionList& options, char key);
