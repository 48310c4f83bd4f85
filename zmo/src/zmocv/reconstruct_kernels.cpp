#include "zmocv/reconstruct.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The order in which a reconstruction raises its pixels: upward under the limit (dilation), or
// downward (erosion), where "lower" means greater.
template <class T, bool dilates>
struct Order {
    static bool isLower(T a, T b) { return dilates ? a < b : b < a; }
    static T lower(T a, T b) { return isLower(a, b) ? a : b; }
    static T higher(T a, T b) { return isLower(a, b) ? b : a; }
};

// A ring of pixels, each of which is in it once at most.
class Queue {
  public:
    Queue(ReconstructPixel* ring, uint8_t* present, Region roi)
        : m_ring(ring), m_present(present), m_width(roi.width), m_capacity(roi.width * roi.height) {
        for (ptrdiff_t i = 0; i < m_capacity; ++i) present[i] = 0;
    }

    bool isEmpty() const { return m_count == 0; }
    void push(ptrdiff_t x, ptrdiff_t y) {
        uint8_t& present = m_present[y * m_width + x];
        if (present != 0) return;
        present = 1;
        ptrdiff_t end = m_first + m_count++;
        if (end >= m_capacity) end -= m_capacity;
        m_ring[end] = {static_cast<int32_t>(x), static_cast<int32_t>(y)};
    }
    ReconstructPixel pop() {
        const ReconstructPixel pixel = m_ring[m_first];
        if (++m_first == m_capacity) m_first = 0;
        --m_count;
        m_present[pixel.y * m_width + pixel.x] = 0;
        return pixel;
    }

  private:
    ReconstructPixel* m_ring;
    uint8_t* m_present;
    ptrdiff_t m_width;
    ptrdiff_t m_capacity;
    ptrdiff_t m_first = 0;
    ptrdiff_t m_count = 0;
};

template <class T, bool dilates>
class Reconstruction {
  public:
    Reconstruction(Source limit, Target result, Region roi, int connectivity, void* buffer)
        : m_limit(limit),
          m_result(result),
          m_roi(roi),
          m_diagonals(connectivity == 8),
          m_carver(buffer),
          m_queue(m_carver.take<ReconstructPixel>(roi.width * roi.height),
                  m_carver.take<uint8_t>(roi.width * roi.height), roi) {}

    void run(Source marker) {
        for (ptrdiff_t y = 0; y < m_roi.height; ++y) {
            start(rowOf<T>(marker, y), y);
            if (y > 0) takeRow(y, y - 1);
            scanForward(y);
        }
        for (ptrdiff_t y = m_roi.height - 1; y >= 0; --y) {
            if (y < m_roi.height - 1) takeRow(y, y + 1);
            scanBackward(y);
            queueRow(y);
        }
        while (!m_queue.isEmpty()) propagate(m_queue.pop());
    }

  private:
    using O = Order<T, dilates>;

    void start(const Elem<T>* __restrict marker, ptrdiff_t y) {
        const Elem<T>* __restrict const limit = rowOf<T>(m_limit, y);
        Elem<T>* __restrict const row = rowOf<T>(m_result, y);
        for (ptrdiff_t x = 0; x < m_roi.width; ++x) row[x] = O::lower(T(marker[x]), T(limit[x]));
    }

    // Raises row y by its neighbours in another row.
    void takeRow(ptrdiff_t y, ptrdiff_t from) {
        const Elem<T>* __restrict const other = rowOf<T>(m_result, from);
        const Elem<T>* __restrict const limit = rowOf<T>(m_limit, y);
        Elem<T>* __restrict const row = rowOf<T>(m_result, y);
        const ptrdiff_t last = m_roi.width - 1;
        const auto take = [&](ptrdiff_t x, T value) {
            row[x] = O::lower(O::higher(T(row[x]), value), T(limit[x]));
        };
        if (!m_diagonals) {
            for (ptrdiff_t x = 0; x <= last; ++x) take(x, other[x]);
            return;
        }
        take(0, last > 0 ? O::higher(T(other[0]), T(other[1])) : T(other[0]));
        for (ptrdiff_t x = 1; x < last; ++x) {
            take(x, O::higher(O::higher(T(other[x - 1]), T(other[x + 1])), T(other[x])));
        }
        if (last > 0) take(last, O::higher(T(other[last - 1]), T(other[last])));
    }

    void scanForward(ptrdiff_t y) {
        const Elem<T>* __restrict const limit = rowOf<T>(m_limit, y);
        Elem<T>* __restrict const row = rowOf<T>(m_result, y);
        T before = row[0];
        for (ptrdiff_t x = 1; x < m_roi.width; ++x) {
            before = O::lower(O::higher(T(row[x]), before), T(limit[x]));
            row[x] = before;
        }
    }

    void scanBackward(ptrdiff_t y) {
        const Elem<T>* __restrict const limit = rowOf<T>(m_limit, y);
        Elem<T>* __restrict const row = rowOf<T>(m_result, y);
        T before = row[m_roi.width - 1];
        for (ptrdiff_t x = m_roi.width - 2; x >= 0; --x) {
            before = O::lower(O::higher(T(row[x]), before), T(limit[x]));
            row[x] = before;
        }
    }

    bool canRise(T value, ptrdiff_t x, ptrdiff_t y) const {
        const T present = rowOf<T>(m_result, y)[x];
        return O::isLower(present, value) && O::isLower(present, rowOf<T>(m_limit, y)[x]);
    }

    // Pixels that could still raise one which the backward scan has left behind.
    void queueRow(ptrdiff_t y) {
        const Elem<T>* const row = rowOf<T>(m_result, y);
        for (ptrdiff_t x = 0; x < m_roi.width; ++x) {
            const T value = row[x];
            bool raises = x + 1 < m_roi.width && canRise(value, x + 1, y);
            if (!raises && y + 1 < m_roi.height) {
                const ptrdiff_t first = m_diagonals && x > 0 ? x - 1 : x;
                const ptrdiff_t last = m_diagonals && x + 1 < m_roi.width ? x + 1 : x;
                for (ptrdiff_t i = first; i <= last && !raises; ++i)
                    raises = canRise(value, i, y + 1);
            }
            if (raises) m_queue.push(x, y);
        }
    }

    void propagate(ReconstructPixel pixel) {
        const T value = rowOf<T>(m_result, pixel.y)[pixel.x];
        for (ptrdiff_t j = -1; j <= 1; ++j) {
            const ptrdiff_t y = pixel.y + j;
            if (y < 0 || y >= m_roi.height) continue;
            for (ptrdiff_t i = -1; i <= 1; ++i) {
                const ptrdiff_t x = pixel.x + i;
                if (x < 0 || x >= m_roi.width || (!m_diagonals && i != 0 && j != 0)) continue;
                if (!canRise(value, x, y)) continue;
                rowOf<T>(m_result, y)[x] = O::lower(value, T(rowOf<T>(m_limit, y)[x]));
                m_queue.push(x, y);
            }
        }
    }

    Source m_limit;
    Target m_result;
    Region m_roi;
    bool m_diagonals;
    Carver m_carver;
    Queue m_queue;
};

template <class T, bool dilates>
void reconstruct(Source limit, Source marker, Target result, Region roi, int connectivity,
                 void* buffer) {
    Reconstruction<T, dilates>(limit, result, roi, connectivity, buffer).run(marker);
}

}  // namespace

const ReconstructKernels reconstructKernels = {
    {reconstruct<uint8_t, true>, reconstruct<uint16_t, true>, reconstruct<float, true>,
     reconstruct<double, true>},
    {reconstruct<uint8_t, false>, reconstruct<uint16_t, false>, reconstruct<float, false>,
     reconstruct<double, false>},
};

}  // namespace zmo::ZMO_LEVEL
