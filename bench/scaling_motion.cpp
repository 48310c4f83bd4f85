// Optical flow with the window and the points, mixtures with the colours that a pixel shows.
#include "motion.h"
#include "scaling.h"

namespace {

using scaling::Function;

std::vector<Function> functions(ZmoiSize size) {
    Function windows{"zmoiOpticalFlowPyrLK_8u_C1R, window", {}};
    const auto data = std::make_shared<motion::Flow>(size, 100);
    for (const int window : {7, 15, 31, 63})
        windows.steps.push_back({std::to_string(window), motion::callFlow(data, window)});
    Function points{"zmoiOpticalFlowPyrLK_8u_C1R, points", {}};
    for (const int count : {25, 100, 400}) {
        const auto some = std::make_shared<motion::Flow>(size, count);
        points.steps.push_back({std::to_string(count), motion::callFlow(some, 15)});
    }
    Function colours{"zmoiFGMMForeground_8u_C3R, colours", {}};
    for (const int count : {1, 2, 3, 5}) {
        const auto d = std::make_shared<motion::Mixture>(size, count);
        colours.steps.push_back({std::to_string(count), [d] { return d->learn(); }});
    }
    return {windows, points, colours};
}

const scaling::Registered registered("motion", functions);

}  // namespace
