// Regions grown pixel by pixel.
#pragma once

#include <cstdlib>
#include <vector>

#include "kit.h"

namespace oracle {

// The pixels reached from the seed, itself first, over neighbours for which admits(from, to) holds.
template <class Admits>
std::vector<ZmoiPoint> reached(ZmoiSize size, ZmoiPoint seed, int connectivity, Admits admits) {
    std::vector<bool> seen(static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    const auto mark = [&](ZmoiPoint p) {
        const size_t i = kit::indexIn(size, p.x, p.y);
        const bool fresh = !seen[i];
        seen[i] = true;
        return fresh;
    };
    std::vector<ZmoiPoint> found{seed};
    mark(seed);
    for (size_t i = 0; i < found.size(); ++i) {
        const ZmoiPoint p = found[i];
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const ZmoiPoint q{p.x + dx, p.y + dy};
                if (connectivity == 4 && std::abs(dx) + std::abs(dy) != 1) continue;
                if (!kit::contains(size, q.x, q.y)) continue;
                if (admits(p, q) && mark(q)) found.push_back(q);
            }
        }
    }
    return found;
}

}  // namespace oracle
