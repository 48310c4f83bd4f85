// Data for the programs that measure the library, and a timed loop. Planes are packed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "zmocore.h"

namespace bench {

inline size_t pixelsOf(ZmoiSize size) {
    return static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
}

// Bytes from row to row.
template <class T>
int stepOf(ZmoiSize size) {
    return size.width * static_cast<int>(sizeof(T));
}

// Over the range of an integer type, from 0 to 256 for floats; always the same.
template <class T>
std::vector<T> noise(ZmoiSize size) {
    std::vector<T> plane(pixelsOf(size));
    unsigned seed = 7;
    for (T& value : plane) {
        seed = seed * 1664525U + 1013904223U;
        if constexpr (std::is_floating_point_v<T>) {
            value = static_cast<T>(seed >> 8) / 65536;
        } else {
            value = static_cast<T>(seed >> (32 - 8 * sizeof(T)));
        }
    }
    return plane;
}

// For the calls that prepare data.
inline void require(ZmoStatus status, const char* what) {
    if (status != zmoStsNoErr)
        throw std::runtime_error(std::string(what) + ": " + zmoGetStatusString(status));
}

// Makes the work buffer at least as large as a query says through its last argument.
template <class Query, class... Args>
void growBy(std::vector<Zmo8u>& buffer, const char* name, Query query, Args... args) {
    int bytes = 0;
    require(query(args..., &bytes), name);
    buffer.resize(std::max(buffer.size(), static_cast<size_t>(bytes)));
}

// A state and a work buffer.
struct Work {
    // The same for both, with sizes of int or of int64_t.
    template <class Query, class... Args>
    void growBy(const char* name, Query query, Args... args) {
        using Int =
            std::conditional_t<std::is_invocable_v<Query, Args..., int*, int*>, int, int64_t>;
        Int stateSize = 0;
        Int bufferSize = 0;
        require(query(args..., &stateSize, &bufferSize), name);
        state.resize(std::max(state.size(), static_cast<size_t>(stateSize)));
        buffer.resize(std::max(buffer.size(), static_cast<size_t>(bufferSize)));
    }
    template <class State>
    State* stateOf() {
        return reinterpret_cast<State*>(state.data());
    }

    std::vector<Zmo8u> state;
    std::vector<Zmo8u> buffer;
};

// A grid of bright rectangles.
inline std::vector<Zmo8u> rectangles(ZmoiSize size, ZmoiSize figures) {
    const int cellWidth = std::max(size.width / figures.width, 1);
    const int cellHeight = std::max(size.height / figures.height, 1);
    std::vector<Zmo8u> picture;
    picture.reserve(pixelsOf(size));
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
