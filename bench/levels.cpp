// levels [width height [group...]]
//
// Clocks per pixel of each function at each processor level, and how many times faster that is than
// the baseline, or than the function's plain loop of one pixel after the other where it has one. The
// level is switched within the run, call by call of zmoSetCpuFeatures.
#include "levels.h"

#include <cstdio>
#include <cstdlib>
#include <map>

namespace levels {
namespace {

std::map<std::string, Group>& groups() {
    static std::map<std::string, Group> registered;
    return registered;
}

constexpr struct {
    const char* name;
    Zmo64u mask;
} processorLevels[] = {{"sse2", ZMO_LEVEL_SSE2},
                       {"sse42", ZMO_LEVEL_SSE42},
                       {"avx2", ZMO_LEVEL_AVX2},
                       {"avx512", ZMO_LEVEL_AVX512}};

template <class Call>
double clocks(const Function& function, const Call& call) {
    return static_cast<double>(bench::fewestClocks(call)) / function.divisor;
}

// One line: clocks of the plain loop and at each level, with the ratio to the first.
void printFunction(const Function& function) {
    std::printf("%-46s", function.name.c_str());
    double first = 0;
    if (function.plainLoop) {
        first = clocks(function, function.plainLoop);
        std::printf("%9.3f", first);
    } else {
        std::printf("%9s", "-");
    }
    for (const auto& level : processorLevels) {
        if (zmoSetCpuFeatures(level.mask) != zmoStsNoErr) {
            std::printf("%17s", "-");
            continue;
        }
        bench::require(function.call(), function.name.c_str());
        const double here = clocks(function, function.call);
        if (first == 0) first = here;
        std::printf("%9.3f x%6.2f", here, first / here);
        std::fflush(stdout);
    }
    std::printf("\n");
}

void print(ZmoiSize size, const std::vector<std::string>& names) {
    std::printf("clocks per pixel and ratio to the first of a line, %dx%d\n%-46s%9s", size.width,
                size.height, "", "plain");
    for (const auto& level : processorLevels) std::printf("%17s", level.name);
    std::printf("\n");
    for (const std::string& name : names) {
        zmoInit();
        for (const Function& function : groups().at(name)(size)) printFunction(function);
    }
}

int usage() {
    std::fprintf(stderr, "usage: levels [width height [group...]], sides from 1 to 30000, groups:");
    for (const auto& group : groups()) std::fprintf(stderr, " %s", group.first.c_str());
    std::fprintf(stderr, "\n");
    return 1;
}

int run(int argc, char** argv) {
    const ZmoiSize size{argc > 2 ? std::atoi(argv[1]) : 640, argc > 2 ? std::atoi(argv[2]) : 480};
    if (argc == 2 || size.width < 1 || size.height < 1 || size.width > 30000 || size.height > 30000)
        return usage();
    std::vector<std::string> names;
    for (int i = 3; i < argc; ++i) {
        if (!groups().contains(argv[i])) return usage();
        names.emplace_back(argv[i]);
    }
    if (names.empty()) {
        for (const auto& group : groups()) names.push_back(group.first);
    }
    try {
        print(size, names);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "levels: %s\n", error.what());
        return 1;
    }
    return 0;
}

}  // namespace

Registered::Registered(const char* name, Group group) {
    groups()[name] = group;
}

}  // namespace levels

int main(int argc, char** argv) {
    return levels::run(argc, argv);
}
