// scaling [width height [group...]]
//
// Clocks of a call as something of it grows, in thousands, and their ratio to the first of the
// line.
#include "scaling.h"

namespace {

void printFunction(const scaling::Function& function) {
    std::printf("%s\n ", function.name.c_str());
    double first = 0;
    for (const scaling::Step& step : function.steps) {
        bench::require(step.call(), function.name.c_str());
        const auto clocks = static_cast<double>(bench::fewestClocks(step.call));
        if (first == 0) first = clocks;
        std::printf("  %s: %.1f x%.2f", step.what.c_str(), clocks / 1000, clocks / first);
        std::fflush(stdout);
    }
    std::printf("\n");
}

void printTitle(ZmoiSize size) {
    std::printf("thousands of clocks and ratio to the first of a line, %dx%d\n", size.width,
                size.height);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runGroups<scaling::Function>("scaling", argc, argv, printTitle, printFunction);
}
