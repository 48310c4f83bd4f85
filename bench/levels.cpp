// levels [width height [group...]]
//
// Clocks per pixel of each function at each processor level, and how many times faster that is than
// the baseline, or than the function's plain loop of one pixel after the other where it has one.
// The level is switched within the run, call by call of zmoSetCpuFeatures.
#include "levels.h"

namespace levels {
namespace {

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
        std::printf("%11.3f", first);
    } else {
        std::printf("%11s", "-");
    }
    for (const auto& level : processorLevels) {
        if (zmoSetCpuFeatures(level.mask) != zmoStsNoErr) {
            std::printf("%20s", "-");
            continue;
        }
        bench::require(function.call(), function.name.c_str());
        const double here = clocks(function, function.call);
        if (first == 0) first = here;
        std::printf("%11.3f x%7.2f", here, first / here);
        std::fflush(stdout);
    }
    std::printf("\n");
}

void printTitle(ZmoiSize size) {
    std::printf("clocks per pixel and ratio to the first of a line, %dx%d\n%-46s%11s", size.width,
                size.height, "", "plain");
    for (const auto& level : processorLevels) std::printf("%20s", level.name);
    std::printf("\n");
}

}  // namespace
}  // namespace levels

int main(int argc, char** argv) {
    return bench::runGroups<levels::Function>("levels", argc, argv, levels::printTitle,
                                              levels::printFunction);
}
