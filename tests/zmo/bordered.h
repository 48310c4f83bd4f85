// Cases of functions that look beyond the region.
#pragma once

#include "case.h"
#include "oracle/border.h"

namespace kit {

// All values, the ends of the type, or values so small that quotients are often halves.
template <class... Images>
void drawWide(Random& random, size_t turn, Images&... images) {
    const auto draw = [&](AnyImage& image) {
        const auto low = static_cast<int64_t>(image.least());
        const auto high = static_cast<int64_t>(image.most());
        image.fill([&]() -> double {
            if (high == 0) return random.uniform(-1000, 1000);
            if (turn % 3 == 0) return static_cast<double>(random.between(low, high));
            if (turn % 3 == 1) return static_cast<double>(random.between(0, 1) != 0 ? low : high);
            return static_cast<double>(random.between(low < 0 ? -6 : 0, 6));
        });
    };
    (draw(images), ...);
}

// Each pixel is pixel(source extended by the border, x, y), as the destination stores it;
// outside(channel) is the value of a constant border.
template <class Outside, class Pixel>
Case& wantBordered(Case& c, ZmoiBorderType border, Outside outside, Pixel pixel) {
    c.src().visit([&]<class S>(const Image<S>& src) {
        c.want(c.targetName(), [&](int x, int y, int k) {
            const oracle::Extended<S> extended{src, border, static_cast<S>(outside(k)), k};
            return c.dst().stored(static_cast<double>(pixel(extended, x, y)));
        });
    });
    return c;
}
template <class Pixel>
Case& wantBordered(Case& c, ZmoiBorderType border, Pixel pixel) {
    return wantBordered(
        c, border, [&](int k) { return c.borderValue().get(0, 0, k); }, pixel);
}

}  // namespace kit
