// What lies around an image, one pixel at a time.
#pragma once

#include <algorithm>

#include "kit.h"

namespace oracle {

// The coordinate inside 0..n-1 for a border that repeats pixels of the image.
inline int folded(int i, int n, ZmoiBorderType border) {
    if (border == zmoiBorderReplicate) return std::min(std::max(i, 0), n - 1);
    if (n == 1) return 0;
    while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
    return i;
}

template <class T>
struct Extended {
    const kit::Image<T>& image;
    ZmoiBorderType border;
    T value;
    int channel = 0;

    T operator()(int x, int y) const {
        const ZmoiSize size = image.size();
        if (kit::contains(size, x, y) || border == zmoiBorderInMem) return image.get(x, y, channel);
        if (border == zmoiBorderConst) return value;
        return image.get(folded(x, size.width, border), folded(y, size.height, border), channel);
    }
};

}  // namespace oracle
