// The picture that edges are measured on, and a timed loop.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "zmotypes.h"

namespace bench {

// A grid of bright rectangles, one row after the other without padding.
inline std::vector<Zmo8u> rectangles(ZmoiSize size, ZmoiSize figures) {
    const int cellWidth = std::max(size.width / figures.width, 1);
    const int cellHeight = std::max(size.height / figures.height, 1);
    std::vector<Zmo8u> picture;
    picture.reserve(static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const bool inColumn = (x + cellWidth / 4) % cellWidth >= cellWidth / 2;
            const bool inRow = (y + cellHeight / 4) % cellHeight < cellHeight / 2;
            picture.push_back(inColumn && inRow ? 255 : 0);
        }
    }
    return picture;
}

inline int64_t startClock() {
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("lfence\n\trdtsc\n\tlfence" : "=a"(low), "=d"(high) : : "memory");
    return static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | low);
}

inline int64_t stopClock() {
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("rdtscp\n\tlfence" : "=a"(low), "=d"(high) : : "rcx", "memory");
    return static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | low);
}

// The fewest clocks of one call: of at least 50 calls, and of at least 0.2 s at a few GHz.
template <class Call>
int64_t fewestClocks(Call call) {
    constexpr int64_t enoughClocks = 600'000'000;
    constexpr int fewCalls = 50;
    int64_t fewest = std::numeric_limits<int64_t>::max();
    int64_t total = 0;
    for (int calls = 0; calls < fewCalls || total < enoughClocks; ++calls) {
        const int64_t start = startClock();
        call();
        const int64_t clocks = stopClock() - start;
        fewest = std::min(fewest, clocks);
        total += clocks;
    }
    return fewest;
}

}  // namespace bench
