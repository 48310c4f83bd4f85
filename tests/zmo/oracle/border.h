// What lies around an image, one pixel at a time.
#pragma once

#include "case.h"

namespace oracle {

// The coordinate inside 0..n-1 for a border that repeats pixels of the image.
inline int folded(int i, int n, ZmoiBorderType border) {
    if (border == zmoiBorderReplicate) return std::clamp(i, 0, n - 1);
    if (n == 1) return 0;
    while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
    return i;
}

struct Extended {
    const kit::Image& image;
    ZmoiBorderType border;
    double value = 0;
    int channel = 0;

    double operator()(int x, int y) const {
        const ZmoiSize size = image.size();
        if (kit::contains(size, x, y) || border == zmoiBorderInMem) return image(x, y, channel);
        if (border == zmoiBorderConst) return value;
        return image(folded(x, size.width, border), folded(y, size.height, border), channel);
    }
};

// Each pixel is pixel(source extended by the border, x, y), as the destination stores it.
using OfSurroundings = std::function<double(const Extended& source, int x, int y)>;
inline kit::Case& wantBordered(kit::Case& c, ZmoiBorderType border, const OfSurroundings& pixel) {
    const kit::Image src = c.src().numbers();
    return c.want([&](int x, int y, int k) {
        return c.dst().stored(pixel({src, border, c.outside(k), k}, x, y));
    });
}

}  // namespace oracle
