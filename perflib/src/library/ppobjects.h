// The shared objects of the measured library, found and opened by the loader's
// rules: LD_LIBRARY_PATH first, then the RUNPATH of pscv, which names the shipped
// folder, then the loader's cache and its default folders. What lies there and
// cannot be loaded is named, and nothing takes its place.
#pragma once

#include "psstring.h"

// Opens them, once in a process, reports why one is not open and lists all for the
// header.
void ppOpenObjects();

// The function of the first open object that has it, or null.
void* ppFindSymbol(const char* name);

// The exported functions of the open objects whose names begin with `prefix`.
psStringList ppObjectFunctions(const psString& prefix);
