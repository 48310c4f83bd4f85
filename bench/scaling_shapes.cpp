// Corners, lines and their suppression: with the image, the window, the number of angles.
#include "scaling.h"
#include "shapes.h"

namespace {

using scaling::Function;
using shapes::Shared;

template <class Make>
Function withImage(const char* name, ZmoiSize size, Make make) {
    Function function{std::string(name) + ", image", {}};
    for (const ZmoiSize roi : {ZmoiSize{(size.width + 1) / 2, (size.height + 1) / 2}, size,
                               ZmoiSize{size.width * 2, size.height * 2}}) {
        function.steps.push_back({scaling::named(roi), make(std::make_shared<shapes::Data>(roi))});
    }
    return function;
}

template <class Make>
Function with(const char* what, std::initializer_list<int> values, const Shared& data, Make make) {
    Function function{what, {}};
    for (const int value : values) {
        function.steps.push_back({std::to_string(value), make(data, value)});
    }
    return function;
}

std::vector<Function> functions(ZmoiSize size) {
    const auto data = std::make_shared<shapes::Data>(size);
    return {
        withImage("zmoiFastN_8u_C1R", size,
                  [](const Shared& d) { return shapes::callFastN(d, 9); }),
        withImage("zmoiLineSuppression_8u_C1R", size,
                  [](const Shared& d) { return shapes::callLineSuppression(d, 3); }),
        withImage("zmoiHoughLine_Region_8u32f_C1R", size,
                  [](const Shared& d) { return shapes::callHough(d, 90); }),
        with("zmoiLineSuppression_8u_C1R, radius", {1, 3, 7, 15}, data,
             [](const Shared& d, int radius) { return shapes::callLineSuppression(d, radius); }),
        with("zmoiHoughLine_Region_8u32f_C1R, angles", {45, 90, 180, 360}, data,
             shapes::callHough)};
}

const scaling::Registered registered("shapes", functions);

}  // namespace
