#include "pshelp.h"

#include "pslongkey.h"

namespace {

const char* hiddenNote(bool hideHidden) {
    return hideHidden ? "\n" : " with hidden keys\n";
}

}  // namespace

psString psBanner() {
    return psString("Morva ZMO Performance System 2.0, ") + __DATE__;
}

psString psQuickHelp(const psOptionList& options, bool hideHidden) {
    psString text = psString("QUICK HELP") + hiddenNote(hideHidden);
    for (const psOption* option : options) {
        if (!(option->hidden && hideHidden)) text += option->help;
    }
    return text;
}

psString psFullHelp(const psOptionList& options, bool hideHidden) {
    psString text = psString("EXTENDED HELP") + hiddenNote(hideHidden);
    for (const psOption* option : options) {
        if (option->help.empty() || (option->hidden && hideHidden)) continue;
        text += "\n" + option->help;
        if (option->hidden) text += "This is hidden key used by developers only\n";
        text += option->description;
    }
    return text;
}

psString psKeyHelp(const psOptionList& options, char key) {
    const psString title("EXTENDED KEY HELP\n");
    const psOption* option = psFindOption(options, key);
    if (!option) return title + "Key -" + psString(key) + " is not valid\n";
    if (option->help.empty()) return title + "Key -" + psString(key) + " is deprecated\n";
    const psString description = option->description.empty()
                                     ? psString("No extended description for this key\n")
                                     : option->description;
    return title + option->help + description;
}

psString psKeyLines(const psOptionList& letters, const psOptionList& names) {
    psString text("usage: pscv [key...]\n");
    for (const psOptionList* options : {&letters, &names}) {
        for (const psOption* option : *options) {
            if (option->hidden) continue;
            text += option->help.substr(0, option->help.find("\n") + 1);
        }
    }
    return text + "pscv --help=<key> explains one of them.\n";
}

psString psExplained(const psOptionList& letters, const psOptionList& names, const psString& key) {
    const psString name = psNameInTable(key);
    const psOption* option =
        name.length() == 1 ? psFindOption(letters, name[0]) : psFindOption(names, name.substr(1));
    return option ? option->help + option->description : psString();
}
