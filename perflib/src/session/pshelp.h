// What -h, -? and -v type.
#pragma once

#include "psoption.h"

// Product, version and build date in one line.
psString psBanner();

// What the session's help is asked for when no key is named.
constexpr char psShortHelp = 1;

// -h, -hh and -h<key>; without hideHidden also the keys that only developers use.
psString psQuickHelp(const psOptionList& options, bool hideHidden);
psString psFullHelp(const psOptionList& options, bool hideHidden);
psString psKeyHelp(const psOptionList& options, char key);

// --help: a line a key, letters and then names, without those of developers.
psString psKeyLines(const psOptionList& letters, const psOptionList& names);
// --help=: the line and the text of one key, which is there.
psString psExplained(const psOptionList& letters, const psOptionList& names, const psString& key);
