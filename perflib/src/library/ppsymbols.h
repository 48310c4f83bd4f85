// The names that an opened shared object exports.
#pragma once

#include "psstring.h"

// Appends the defined functions of the object's dynamic symbol table whose
// names begin with `prefix`. `handle` comes from dlopen.
void ppExportedFunctions(void* handle, const psString& prefix, psStringList& names);
