// What the tests of parameters share.
#pragma once
#include "psdefault.h"
#include "psexcept.h"
#include "unit.h"

// What a parameter says of a text; empty when it takes the text.
inline std::string failure(psParameter& parm, const char* text) {
    try {
        parm.translate(text);
    } catch (const psException& exception) {
        return str(exception.info());
    }
    return "";
}
