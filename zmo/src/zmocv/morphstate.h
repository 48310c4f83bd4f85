// States of flat and grey-level morphology: a record and behind it the points of the structuring
// element. They lie in the caller's memory, on any byte.
#pragma once

#include <climits>
#include <cstdint>
#include <cstring>

#include "zmocv/morphrows.h"
#include "zmotypes.h"

namespace zmo {

// A pixel of the structuring element, counted from its upper left corner.
struct MorphPoint {
    int32_t x;
    int32_t y;
    float value;
};

struct MorphState {
    uint32_t kind;
    int32_t type;
    int32_t channels;
    int32_t width;
    int32_t height;
    int32_t anchorX;
    int32_t anchorY;
    int32_t pointCount;

    Window window() const { return {width, height, anchorX, anchorY}; }
    bool isRectangle() const { return int64_t{width} * height == pointCount; }
};

constexpr uint32_t flatState = 0x6d6f7246;
constexpr uint32_t grayState = 0x6d6f7247;

// The number of a mask's pixels, and of the bytes made of them, stays in range.
constexpr int64_t largestMaskSide = 8191;

template <class State>
MorphState stateOf(const State* pState) {
    MorphState state;
    std::memcpy(&state, pState, sizeof state);
    return state;
}

template <class State>
void storeState(const MorphState& state, State* pState) {
    std::memcpy(pState, &state, sizeof state);
}

template <class State>
MorphPoint pointOf(const State* pState, int64_t index) {
    MorphPoint point;
    std::memcpy(&point,
                reinterpret_cast<const char*>(pState) + sizeof(MorphState) +
                    index * static_cast<int64_t>(sizeof point),
                sizeof point);
    return point;
}

template <class State>
void storePoint(const MorphPoint& point, int64_t index, State* pState) {
    std::memcpy(reinterpret_cast<char*>(pState) + sizeof(MorphState) +
                    index * static_cast<int64_t>(sizeof point),
                &point, sizeof point);
}

inline int64_t stateSize(ZmoiSizeL mask) {
    return static_cast<int64_t>(sizeof(MorphState)) +
           mask.width * mask.height * static_cast<int64_t>(sizeof(MorphPoint));
}

inline bool badMask(ZmoiSizeL mask) {
    return mask.width < 1 || mask.height < 1 || mask.width > largestMaskSide ||
           mask.height > largestMaskSide;
}

inline bool badAnchor(ZmoiPoint anchor, ZmoiSizeL mask) {
    return anchor.x < 0 || anchor.y < 0 || anchor.x >= mask.width || anchor.y >= mask.height;
}

}  // namespace zmo
