// Regions grown pixel by pixel.
#pragma once

#include "kit.h"

namespace oracle {

// body(x, y) for the 4 or 8 neighbours of a pixel that lie in the image, in reading order.
template <class Body>
void forEachNeighbour(ZmoiSize size, int x, int y, int connectivity, Body body) {
    for (int k = 0; k < 9; ++k) {
        const int i = x + k % 3 - 1;
        const int j = y + k / 3 - 1;
        const bool joins = k != 4 && (connectivity == 8 || i == x || j == y);
        if (joins && kit::contains(size, i, j)) body(i, j);
    }
}

// The pixels reached from the seed, itself first, over neighbours for which admits(from, to) holds.
template <class Admits>
std::vector<ZmoiPoint> reached(ZmoiSize size, ZmoiPoint seed, int connectivity, Admits admits) {
    std::vector<bool> seen(kit::indexIn(size, 0, size.height));
    seen[kit::indexIn(size, seed.x, seed.y)] = true;
    std::vector<ZmoiPoint> found{seed};
    for (size_t i = 0; i < found.size(); ++i) {
        const ZmoiPoint p = found[i];
        forEachNeighbour(size, p.x, p.y, connectivity, [&](int x, int y) {
            const size_t place = kit::indexIn(size, x, y);
            if (seen[place] || !admits(p, ZmoiPoint{x, y})) return;
            seen[place] = true;
            found.push_back({x, y});
        });
    }
    return found;
}

}  // namespace oracle
