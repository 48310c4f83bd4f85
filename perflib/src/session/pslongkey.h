// The argument of a long key: --name or --name=value.
#pragma once

#include "psoption.h"

// The argument of the key '-', "name" or "name=value"; "name word" where a word of its
// own stood behind the name.
struct psLongKey {
    explicit psLongKey(const psString& arg);

    // Why the key cannot be used, with a valid form; empty when it can. `option` is the
    // one of its name among `all`, or null.
    psString refusal(const psOption* option, const psOptionList& all) const;

    psString name;
    psString value;
    psString stray;
    bool hasValue = false;
};

// "; --cpu?" for a name that one of the list was probably meant by; else empty.
psString psSuggestedName(const psString& name, const psStringList& names);

// What the table calls the key that the user calls L or -L, cpu or --cpu: "L", "-cpu".
psString psNameInTable(const psString& key);
