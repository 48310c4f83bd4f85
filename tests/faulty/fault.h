#ifndef FAULT_H
#define FAULT_H

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

/* Whether PSCV_FAULT names this fault. */
static inline int faultIs(const char* name) {
    const char* fault = getenv("PSCV_FAULT");
    return fault != NULL && strcmp(fault, name) == 0;
}

#endif
