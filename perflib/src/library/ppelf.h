// A shared object as a file, before the loader sees it. The loader maps what
// the program headers promise: a file that has been cut short ends the process
// by a bus error. And it passes over files of other machines without a word.
#pragma once

#include "psstring.h"

struct ppElfFile {
    // Why the loader goes on to its next folder; empty for a file that it takes.
    // What is no ELF file at all it takes, and complains of.
    psString passedOver;
    // Which part is missing; empty for a whole file.
    psString cutShort;
    // The objects that it names as needed.
    psStringList needed;

    static ppElfFile read(const psString& path);
};
