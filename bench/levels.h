// What levels measures. Each levels_<group>.cpp registers one group of functions with data of its
// own; plain_<group>.cpp has the definitions as plain loops, compiled without vectors.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "registry.h"

namespace levels {

struct Function {
    std::string name;
    // Owns its data, or a share of its group's. Every call does the same work.
    std::function<ZmoStatus()> call;
    std::function<void()> plainLoop = {};
    // Of the clocks of a call, to make them clocks per pixel or whatever is counted instead.
    double divisor;
};

using Registered = bench::Registered<Function>;

}  // namespace levels
