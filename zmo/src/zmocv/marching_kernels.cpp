#include "zmocv/marching.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// Waiting pixels, the earliest on top. places[pixel] is a pixel's place in the heap.
class Heap {
  public:
    Heap(MarchingPixel* pixels, int* places) : m_pixels(pixels), m_places(places) {}

    bool empty() const { return m_count == 0; }
    void push(MarchingPixel pixel) { rise(m_count++, pixel); }
    void hasten(MarchingPixel pixel) { rise(m_places[pixel.index], pixel); }
    MarchingPixel pop() {
        const MarchingPixel top = m_pixels[0];
        --m_count;
        if (m_count > 0) sink(m_pixels[m_count]);
        return top;
    }

  private:
    void put(int place, MarchingPixel pixel) {
        m_pixels[place] = pixel;
        m_places[pixel.index] = place;
    }
    void rise(int place, MarchingPixel pixel) {
        while (place > 0 && pixel.time < m_pixels[(place - 1) / 2].time) {
            put(place, m_pixels[(place - 1) / 2]);
            place = (place - 1) / 2;
        }
        put(place, pixel);
    }
    void sink(MarchingPixel pixel) {
        int place = 0;
        for (int child = 1; child < m_count; child = 2 * place + 1) {
            if (child + 1 < m_count && m_pixels[child + 1].time < m_pixels[child].time) ++child;
            if (!(m_pixels[child].time < pixel.time)) break;
            put(place, m_pixels[child]);
            place = child;
        }
        put(place, pixel);
    }

    MarchingPixel* m_pixels;
    int* m_places;
    int m_count = 0;
};

constexpr int reachedPlace = -1;
constexpr int unseenPlace = -2;
constexpr float unknown = 3.40282347e38F;

class March {
  public:
    March(Target times, Region roi, float radius, void* buffer)
        : m_times(times),
          m_width(static_cast<int>(roi.width)),
          m_height(static_cast<int>(roi.height)),
          m_radius(radius),
          m_carver(buffer),
          m_pixels(m_carver.take<MarchingPixel>(roi.width * roi.height)),
          m_places(m_carver.take<int>(roi.width * roi.height)),
          m_heap(m_pixels, m_places) {}

    void run(Source src) {
        for (int y = 0; y < m_height; ++y) {
            const Elem<uint8_t>* const row = rowOf<uint8_t>(src, y);
            for (int x = 0; x < m_width; ++x) {
                m_places[y * m_width + x] = row[x] == 0 ? reachedPlace : unseenPlace;
                rowOf<float>(m_times, y)[x] = row[x] == 0 ? 0 : m_radius;
            }
        }
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                if (m_places[y * m_width + x] == reachedPlace) meetNeighbours(x, y);
            }
        }
        while (!m_heap.empty()) {
            const MarchingPixel pixel = m_heap.pop();
            m_places[pixel.index] = reachedPlace;
            const int x = pixel.index % m_width;
            const int y = pixel.index / m_width;
            rowOf<float>(m_times, y)[x] = pixel.time;
            meetNeighbours(x, y);
        }
    }

  private:
    void meetNeighbours(int x, int y) {
        if (x > 0) meet(x - 1, y);
        if (x + 1 < m_width) meet(x + 1, y);
        if (y > 0) meet(x, y - 1);
        if (y + 1 < m_height) meet(x, y + 1);
    }

    float reachedTime(int x, int y) const {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height) return unknown;
        return m_places[y * m_width + x] == reachedPlace ? rowOf<float>(m_times, y)[x] : unknown;
    }

    // The time at which the front arrives, from what is reached by now.
    float timeAt(int x, int y) const {
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

    void meet(int x, int y) {
        const int index = y * m_width + x;
        if (m_places[index] == reachedPlace) return;
        const float time = timeAt(x, y);
        if (!(time < m_radius)) return;
        if (m_places[index] == unseenPlace) {
            m_heap.push({time, index});
        } else if (time < m_pixels[m_places[index]].time) {
            m_heap.hasten({time, index});
        }
    }

    Target m_times;
    int m_width;
    int m_height;
    float m_radius;
    Carver m_carver;
    MarchingPixel* m_pixels;
    int* m_places;
    Heap m_heap;
};

void fastMarching(Source src, Target dst, Region roi, float radius, void* buffer) {
    March(dst, roi, radius, buffer).run(src);
}

}  // namespace

const MarchingKernels marchingKernels = {fastMarching};

}  // namespace zmo::ZMO_LEVEL
