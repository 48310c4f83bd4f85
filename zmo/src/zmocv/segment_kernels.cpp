#include "zmocv/segment.h"

#include "common/kernel.h"

// Pixels are cells of a plane with a frame around it, so that no neighbour needs a check of
// coordinates and an index stands for a pixel. What is asked of a neighbour lies in its cell
// together: the queues go to and fro in the image, and most of their time is spent on waiting for
// memory.
namespace zmo::ZMO_LEVEL {
namespace {

// What the label of a pixel is that has none; labels are positive.
constexpr int freePixel = 0;
constexpr int framePixel = -1;
constexpr int linePixel = -2;
// A pixel that waits to take a label is this minus the label.
constexpr int waitingPixel = -3;

struct Frame {
    explicit Frame(Region roi)
        : width(static_cast<int>(roi.width)),
          height(static_cast<int>(roi.height)),
          step(width + 2),
          count(ptrdiff_t{step} * (height + 2)) {}

    int row(int y) const { return (y + 1) * step + 1; }

    int width;
    int height;
    int step;
    ptrdiff_t count;
};

// The neighbours of a pixel in reading order, as differences of indexes.
struct Neighbours {
    Neighbours(int connectivity, int step) : count(connectivity) {
        const int all[] = {-step - 1, -step, -step + 1, -1, 1, step - 1, step, step + 1};
        const int sides[] = {-step, -1, 1, step};
        for (int i = 0; i < count; ++i) by[i] = count == 4 ? sides[i] : all[i];
    }

    int count;
    int by[8];
};

// The markers that have the value of lines become walls where lines are drawn.
template <class M, class Cell>
void loadMarkers(Cell* cells, Frame frame, Target markers, bool drawLines) {
    constexpr int line = static_cast<M>(-1);
    for (ptrdiff_t i = 0; i < frame.count; ++i) cells[i].label = framePixel;
    for (int y = 0; y < frame.height; ++y) {
        const Elem<M>* __restrict const from = rowOf<M>(markers, y);
        Cell* __restrict const to = cells + frame.row(y);
        for (int x = 0; x < frame.width; ++x) {
            to[x].label = drawLines && from[x] == line ? linePixel : from[x];
        }
    }
}

template <class M, class Cell>
void storeSegments(Target markers, const Cell* cells, Frame frame) {
    for (int y = 0; y < frame.height; ++y) {
        const Cell* __restrict const from = cells + frame.row(y);
        Elem<M>* __restrict const to = rowOf<M>(markers, y);
        for (int x = 0; x < frame.width; ++x) {
            to[x] = static_cast<M>(from[x].label == linePixel ? -1 : from[x].label);
        }
    }
}

// Calls body(index) for every labelled pixel in reading order.
template <class Cell, class Body>
void forEachMarker(const Cell* cells, Frame frame, Body body) {
    for (int y = 0; y < frame.height; ++y) {
        const int row = frame.row(y);
        for (int i = row; i < row + frame.width; ++i) {
            if (cells[i].label > 0) body(i);
        }
    }
}

// A queue of pixels for each level, linked through `next`. Levels only rise.
class RisingQueue {
  public:
    RisingQueue(int levels, int* heads, int* tails, int* next)
        : m_levels(levels), m_heads(heads), m_tails(tails), m_next(next) {
        for (int i = 0; i < levels; ++i) heads[i] = none;
    }

    static constexpr int none = -1;

    void push(int pixel, int level) {
        if (level < m_level) level = m_level;
        m_next[pixel] = none;
        if (m_heads[level] == none) {
            m_heads[level] = pixel;
        } else {
            m_next[m_tails[level]] = pixel;
        }
        m_tails[level] = pixel;
    }
    // none when no pixel waits.
    int pop() {
        while (m_heads[m_level] == none) {
            if (++m_level == m_levels) return none;
        }
        const int pixel = m_heads[m_level];
        m_heads[m_level] = m_next[pixel];
        return pixel;
    }

  private:
    int m_levels;
    int m_level = 0;
    int* m_heads;
    int* m_tails;
    int* m_next;
};

struct FloodCell {
    int label;
    int level;
};

class Flood {
  public:
    Flood(FloodCell* cells, Neighbours neighbours, RisingQueue queue)
        : m_cells(cells), m_neighbours(neighbours), m_queue(queue) {}

    void run(Frame frame, bool drawLines) {
        forEachMarker(m_cells, frame, [this](int pixel) { queueNeighbours(pixel); });
        for (int pixel = m_queue.pop(); pixel != RisingQueue::none; pixel = m_queue.pop()) {
            const int label = waitingPixel - m_cells[pixel].label;
            if (drawLines && touchesOther(pixel, label)) {
                m_cells[pixel].label = linePixel;
            } else {
                m_cells[pixel].label = label;
                queueNeighbours(pixel);
            }
        }
    }

  private:
    void queueNeighbours(int pixel) {
        for (int k = 0; k < m_neighbours.count; ++k) {
            const int other = pixel + m_neighbours.by[k];
            if (m_cells[other].label != freePixel) continue;
            m_cells[other].label = waitingPixel - m_cells[pixel].label;
            m_queue.push(other, m_cells[other].level);
        }
    }

    bool touchesOther(int pixel, int label) const {
        for (int k = 0; k < m_neighbours.count; ++k) {
            const int other = m_cells[pixel + m_neighbours.by[k]].label;
            if (other > 0 && other != label) return true;
        }
        return false;
    }

    FloodCell* m_cells;
    Neighbours m_neighbours;
    RisingQueue m_queue;
};

// A relief of floats: levels are the ranks of its values.
class Ranking {
  public:
    Ranking(Carver& carver, Region roi)
        : m_count(roi.width * roi.height),
          m_items(carver.take<uint64_t>(m_count)),
          m_sorted(carver.take<uint64_t>(m_count)) {}

    // Returns the number of levels.
    int rank(Source relief, Frame frame, FloodCell* cells) {
        load(relief, frame);
        for (int shift = 32; shift < 64; shift += digitBits) sortBy(shift);
        int level = 0;
        for (ptrdiff_t i = 0; i < m_count; ++i) {
            if (i > 0 && m_items[i] >> 32 != m_items[i - 1] >> 32) ++level;
            cells[static_cast<uint32_t>(m_items[i])].level = level;
        }
        return level + 1;
    }

  private:
    static constexpr int digitBits = 8;
    static constexpr int digits = 1 << digitBits;

    // Bits that have the order of the floats; both zeros are the same.
    static uint32_t ordered(uint32_t bits) {
        constexpr uint32_t sign = 0x80000000U;
        if (bits == sign) bits = 0;
        return bits & sign ? ~bits : bits | sign;
    }

    // The ordered value above the pixel's index.
    void load(Source relief, Frame frame) {
        uint64_t* next = m_items;
        for (int y = 0; y < frame.height; ++y) {
            const Elem<uint32_t>* __restrict const row = rowOf<uint32_t>(relief, y);
            const int first = frame.row(y);
            for (int x = 0; x < frame.width; ++x) {
                next[x] = uint64_t{ordered(row[x])} << 32 | static_cast<uint32_t>(first + x);
            }
            next += frame.width;
        }
    }

    // By one digit, keeping the order of equal ones; a digit that all share needs no pass.
    void sortBy(int shift) {
        const auto digitOf = [shift](uint64_t item) { return item >> shift & (digits - 1); };
        ptrdiff_t places[digits] = {};
        for (ptrdiff_t i = 0; i < m_count; ++i) ++places[digitOf(m_items[i])];
        if (places[digitOf(m_items[0])] == m_count) return;
        ptrdiff_t place = 0;
        for (ptrdiff_t& first : places) {
            const ptrdiff_t size = first;
            first = place;
            place += size;
        }
        for (ptrdiff_t i = 0; i < m_count; ++i)
            m_sorted[places[digitOf(m_items[i])]++] = m_items[i];
        uint64_t* const swapped = m_items;
        m_items = m_sorted;
        m_sorted = swapped;
    }

    ptrdiff_t m_count;
    uint64_t* m_items;
    uint64_t* m_sorted;
};

template <class S, class M>
void watershed(Source relief, Target markers, Region roi, int connectivity, bool drawLines,
               void* buffer) {
    const Frame frame(roi);
    Carver carver(buffer);
    FloodCell* const cells = carver.take<FloodCell>(frame.count);
    int* const next = carver.take<int>(frame.count);
    loadMarkers<M>(cells, frame, markers, drawLines);
    const auto flood = [&](int count, int* heads, int* tails) {
        Flood(cells, Neighbours(connectivity, frame.step), RisingQueue(count, heads, tails, next))
            .run(frame, drawLines);
    };
    if constexpr (sizeof(S) == 1) {
        for (int y = 0; y < frame.height; ++y) {
            const Elem<S>* __restrict const from = rowOf<S>(relief, y);
            FloodCell* __restrict const to = cells + frame.row(y);
            for (int x = 0; x < frame.width; ++x) to[x].level = from[x];
        }
        int heads[256];
        int tails[256];
        flood(256, heads, tails);
    } else {
        const int count = Ranking(carver, roi).rank(relief, frame, cells);
        int* const heads = carver.take<int>(count);
        flood(count, heads, carver.take<int>(count));
    }
    storeSegments<M>(markers, cells, frame);
}

struct GrowCell {
    int label;
    uint8_t channel[3];
    uint8_t step;  // of the offer that a waiting pixel has
};

// Waiting pixels by their step, linked both ways so that one can move to a smaller step.
class StepQueue {
  public:
    StepQueue(int* next, int* previous) : m_next(next), m_previous(previous) {
        for (int& head : m_heads) head = none;
    }

    static constexpr int none = -1;

    void push(int pixel, int step) {
        m_next[pixel] = none;
        if (m_heads[step] == none) {
            m_heads[step] = pixel;
            m_previous[pixel] = none;
            m_filled[step / 64] |= uint64_t{1} << step % 64;
        } else {
            m_next[m_tails[step]] = pixel;
            m_previous[pixel] = m_tails[step];
        }
        m_tails[step] = pixel;
    }
    void remove(int pixel, int step) {
        const int before = m_previous[pixel];
        const int behind = m_next[pixel];
        (before == none ? m_heads[step] : m_next[before]) = behind;
        (behind == none ? m_tails[step] : m_previous[behind]) = before;
        if (m_heads[step] == none) m_filled[step / 64] &= ~(uint64_t{1} << step % 64);
    }
    int pop() {
        for (int i = 0; i < stepCount / 64; ++i) {
            if (m_filled[i] == 0) continue;
            const int step = 64 * i + __builtin_ctzll(m_filled[i]);
            const int pixel = m_heads[step];
            remove(pixel, step);
            return pixel;
        }
        return none;
    }

  private:
    static constexpr int stepCount = 256;

    int* m_next;
    int* m_previous;
    uint64_t m_filled[stepCount / 64] = {};
    int m_heads[stepCount];
    int m_tails[stepCount];
};

template <int channels>
void loadColours(GrowCell* cells, Source image, Frame frame) {
    for (int y = 0; y < frame.height; ++y) {
        const Elem<uint8_t>* __restrict const from = rowOf<uint8_t>(image, y);
        GrowCell* __restrict const to = cells + frame.row(y);
        for (int x = 0; x < frame.width; ++x) {
            for (int c = 0; c < channels; ++c) to[x].channel[c] = from[ptrdiff_t{x} * channels + c];
        }
    }
}

template <int channels>
int stepBetween(const GrowCell& a, const GrowCell& b) {
    int most = 0;
    for (int c = 0; c < channels; ++c) {
        const int difference = a.channel[c] - b.channel[c];
        const int size = difference < 0 ? -difference : difference;
        most = size > most ? size : most;
    }
    return most;
}

template <int channels>
void grow(Source image, Target markers, Region roi, int connectivity, void* buffer) {
    const Frame frame(roi);
    Carver carver(buffer);
    GrowCell* const cells = carver.take<GrowCell>(frame.count);
    int* const next = carver.take<int>(frame.count);
    StepQueue queue(next, carver.take<int>(frame.count));
    loadMarkers<uint8_t>(cells, frame, markers, false);
    loadColours<channels>(cells, image, frame);
    const Neighbours neighbours(connectivity, frame.step);
    const auto offer = [&](int pixel) {
        const GrowCell from = cells[pixel];
        for (int k = 0; k < neighbours.count; ++k) {
            const int other = pixel + neighbours.by[k];
            GrowCell& to = cells[other];
            const bool waits = to.label <= waitingPixel;
            if (to.label != freePixel && !waits) continue;
            const int step = stepBetween<channels>(from, to);
            if (waits) {
                if (step >= to.step) continue;
                queue.remove(other, to.step);
            }
            to.label = waitingPixel - from.label;
            to.step = static_cast<uint8_t>(step);
            queue.push(other, step);
        }
    };
    forEachMarker(cells, frame, offer);
    for (int pixel = queue.pop(); pixel != StepQueue::none; pixel = queue.pop()) {
        cells[pixel].label = waitingPixel - cells[pixel].label;
        offer(pixel);
    }
    storeSegments<uint8_t>(markers, cells, frame);
}

}  // namespace

const SegmentKernels segmentKernels = {
    {watershed<uint8_t, uint8_t>, watershed<uint8_t, uint16_t>, watershed<float, uint16_t>},
    {grow<1>, grow<3>}};

}  // namespace zmo::ZMO_LEVEL
