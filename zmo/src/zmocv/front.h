// A front that marches over the pixels of a region, as kernels of several families use it.
#pragma once

#include "common/image.h"

namespace zmo {

// A pixel that waits for the front, at its index in the region. Read as one number, the time is the
// upper half: times, which are not negative, order pixels, and the index decides between equal
// ones.
struct FrontPixel {
    int index;
    float time;
};

}  // namespace zmo

#ifdef ZMO_LEVEL

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

inline bool isEarlier(FrontPixel a, FrontPixel b) {
    return __builtin_bit_cast(int64_t, a) < __builtin_bit_cast(int64_t, b);
}

// Waiting pixels, the earliest on top. places[pixel] is a pixel's place in the heap.
class FrontHeap {
  public:
    FrontHeap(FrontPixel* pixels, int* places) : m_pixels(pixels), m_places(places) {}

    bool empty() const { return m_count == 0; }
    const FrontPixel& operator[](int place) const { return m_pixels[place]; }
    void push(FrontPixel pixel) { rise(m_count++, pixel); }
    void hasten(FrontPixel pixel) { rise(m_places[pixel.index], pixel); }
    FrontPixel pop() {
        const FrontPixel top = m_pixels[0];
        --m_count;
        if (m_count > 0) sink(m_pixels[m_count]);
        return top;
    }

  private:
    void put(int place, FrontPixel pixel) {
        m_pixels[place] = pixel;
        m_places[pixel.index] = place;
    }
    void rise(int place, FrontPixel pixel) {
        while (place > 0 && isEarlier(pixel, m_pixels[(place - 1) / 2])) {
            put(place, m_pixels[(place - 1) / 2]);
            place = (place - 1) / 2;
        }
        put(place, pixel);
    }
    void sink(FrontPixel pixel) {
        int place = 0;
        for (int child = 1; child < m_count; child = 2 * place + 1) {
            if (child + 1 < m_count && isEarlier(m_pixels[child + 1], m_pixels[child])) ++child;
            if (!isEarlier(m_pixels[child], pixel)) break;
            put(place, m_pixels[child]);
            place = child;
        }
        put(place, pixel);
    }

    FrontPixel* m_pixels;
    int* m_places;
    int m_count = 0;
};

// The front moves one pixel in a unit of time. What it has reached has a time; pixels that are
// closed do not exist for it.
class Front {
  public:
    // pixels and places have an element for each pixel of the region.
    Front(Target times, Region roi, FrontPixel* pixels, int* places)
        : m_times(times),
          m_width(static_cast<int>(roi.width)),
          m_height(static_cast<int>(roi.height)),
          m_places(places),
          m_heap(pixels, places) {}

    void setReached(int x, int y, float time) {
        place(x, y) = reachedPlace;
        timeOf(x, y) = time;
    }
    void setUnseen(int x, int y) { place(x, y) = unseenPlace; }
    void setClosed(int x, int y) { place(x, y) = closedPlace; }

    bool isReached(int x, int y) const { return m_places[y * m_width + x] == reachedPlace; }
    bool isReachedInside(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_width && y < m_height && isReached(x, y);
    }
    Elem<float>& timeOf(int x, int y) const { return rowOf<float>(m_times, y)[x]; }

    // The front may enter the four neighbours of a reached pixel.
    void leave(int x, int y, float limit) {
        if (x > 0) meet(x - 1, y, limit);
        if (x + 1 < m_width) meet(x + 1, y, limit);
        if (y > 0) meet(x, y - 1, limit);
        if (y + 1 < m_height) meet(x, y + 1, limit);
    }

    // Goes on until no pixel waits; times stay below limit. Calls arrive(x, y) for each pixel that
    // is reached, with its time stored, right before it counts as reached.
    template <class Arrive>
    void advance(float limit, Arrive arrive) {
        while (!m_heap.empty()) {
            const FrontPixel pixel = m_heap.pop();
            const int x = pixel.index % m_width;
            const int y = pixel.index / m_width;
            timeOf(x, y) = pixel.time;
            arrive(x, y);
            m_places[pixel.index] = reachedPlace;
            leave(x, y, limit);
        }
    }

  private:
    // What a place is when the pixel is not in the heap. Pixels below `unseen` are no goal.
    static constexpr int unseenPlace = -1;
    static constexpr int reachedPlace = -2;
    static constexpr int closedPlace = -3;

    int& place(int x, int y) { return m_places[y * m_width + x]; }

    float reachedTime(int x, int y) const {
        return isReachedInside(x, y) ? timeOf(x, y) : largestFloat;
    }

    // The time at which the front arrives, from what is reached by now.
    float arrival(int x, int y) const {
        const float left = reachedTime(x - 1, y);
        const float right = reachedTime(x + 1, y);
        const float up = reachedTime(x, y - 1);
        const float down = reachedTime(x, y + 1);
        const float a = left < right ? left : right;
        const float b = up < down ? up : down;
        const float difference = a - b;
        if (difference >= 1 || difference <= -1) return (a < b ? a : b) + 1;
        return 0.5F * (a + b + __builtin_sqrtf(2 - difference * difference));
    }

    void meet(int x, int y, float limit) {
        const int index = y * m_width + x;
        if (m_places[index] < unseenPlace) return;
        const float time = arrival(x, y);
        if (!(time < limit)) return;
        if (m_places[index] == unseenPlace) {
            m_heap.push({index, time});
        } else if (time < m_heap[m_places[index]].time) {
            m_heap.hasten({index, time});
        }
    }

    Target m_times;
    int m_width;
    int m_height;
    int* m_places;
    FrontHeap m_heap;
};

}  // namespace
}  // namespace zmo::ZMO_LEVEL

#endif
