// What the unit tests begin with.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "message_capture.h"
#include "psdefault.h"
#include "psexcept.h"
#include "pssettings.h"
#include "temp_dir.h"
#include "text.h"

using support::has;

// What a child process that runs the body ends with, as waitpid() gives it: 0 when the body
// holds. It serves what a process does once only, and what cannot be taken back.
inline int inChild(const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0) _exit(body() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// Publishes settings of which one differs from the default.
template <class T>
void publish(T psSettings::*setting, const std::type_identity_t<T>& value) {
    psSettings settings;
    settings.*setting = value;
    psPublish(settings);
}

// What a parameter says of a text; empty when it takes the text.
inline std::string failure(psParameter& parm, const char* text) {
    try {
        parm.translate(text);
    } catch (const psException& exception) {
        return str(exception.info());
    }
    return "";
}
