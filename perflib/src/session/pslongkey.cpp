#include "pslongkey.h"

psString psSuggestedName(const psString& name, const psStringList& names) {
    const psString nearest = psNearest(name, names);
    return nearest.empty() ? psString() : "; --" + nearest + "?";
}

psString psNameInTable(const psString& key) {
    const int dashes = key.startsWith("--") ? 2 : key.startsWith("-") ? 1 : 0;
    const psString name = key.substr(dashes);
    return name.length() == 1 ? name : "-" + name;
}

psLongKey::psLongKey(const psString& arg) {
    const int sign = arg.find("=");
    const int blank = arg.find(" ");
    hasValue = sign >= 0 && (blank < 0 || sign < blank);
    const int end = hasValue ? sign : blank;
    name = end < 0 ? arg : arg.substr(0, end);
    if (end >= 0) (hasValue ? value : stray) = arg.substr(end + 1);
}

psString psLongKey::refusal(const psOption* option, const psOptionList& all) const {
    using enum psOption::Value;
    if (!option) {
        psStringList names;
        for (const psOption* known : all) names.push_back(known->name);
        return "incorrect option key" + psSuggestedName(name, names);
    }
    if (option->value == none)
        return hasValue || !stray.empty() ? "--" + name + " takes no value" : psString();
    if (!stray.empty()) return "a value stands behind '='; --" + name + "=" + stray + "?";
    const bool missing = value.empty() && (hasValue || option->value == needed);
    if (missing) return "the value is missing; " + option->help.substr(0, option->help.find(" "));
    return hasValue && option->refuse ? option->refuse(value) : psString();
}
