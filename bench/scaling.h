// What scaling measures: one function with more and more of something. Each scaling_<group>.cpp
// registers one group of functions with data of its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "registry.h"

namespace scaling {

struct Step {
    std::string what;  // "3x3", "640x480"
    // Owns its data, or a share of its group's. Every call does the same work.
    std::function<ZmoStatus()> call;
};

struct Function {
    std::string name;
    std::vector<Step> steps;
};

using Registered = bench::Registered<Function>;

inline std::string named(ZmoiSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

}  // namespace scaling
