// Points followed through the layers of two pictures, clocks a point; mixtures of Gaussians.
#include "levels.h"
#include "motion.h"
#include "plain_motion.h"

namespace {

using levels::Function;

// Every point is followed, but in pictures so small that many lie near an edge.
void requireShift(const motion::Flow& d) {
    const ZmoiSize size = d.first.levels.roi[0];
    if (size.width < 320 || size.height < 240) return;
    for (size_t i = 0; i < d.from.size(); ++i) {
        const double off = std::hypot(d.to[i].x - d.from[i].x - motion::shiftX,
                                      d.to[i].y - d.from[i].y - motion::shiftY);
        if (!(off < 0.5)) throw std::runtime_error("optical flow misses a point");
    }
}

Function flow(const std::shared_ptr<motion::Flow>& d, int window) {
    const auto call = motion::callFlow(d, window);
    const auto plain = [d, window] {
        d->to = d->from;
        for (size_t i = 0; i < d->from.size(); ++i)
            plainFlow(d->first.levels, d->second.levels, d->from[i], d->to[i], window,
                      motion::layers - 1, motion::maxIterations, motion::epsilon);
    };
    plain();
    requireShift(*d);
    bench::require(call(), "zmoiOpticalFlowPyrLK_8u_C1R");
    requireShift(*d);
    return {.name = "zmoiOpticalFlowPyrLK_8u_C1R window " + std::to_string(window),
            .call = call,
            .plainLoop = plain,
            .divisor = static_cast<double>(d->from.size())};
}

Function foreground(ZmoiSize size) {
    const auto d = std::make_shared<motion::Mixture>(size, 2);
    return {.name = "zmoiFGMMForeground_8u_C3R",
            .call = [d] { return d->learn(); },
            .divisor = static_cast<double>(bench::pixelsOf(size))};
}

std::vector<Function> functions(ZmoiSize size) {
    const auto data = std::make_shared<motion::Flow>(size, 100);
    return {flow(data, 11), flow(data, 21), foreground(size)};
}

const levels::Registered registered("motion", functions);

}  // namespace
