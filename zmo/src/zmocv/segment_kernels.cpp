#include "zmocv/segment.h"

#include "common/kernel.h"

// Labels live in a plane of ints with a frame around it, so that no neighbour needs a check of
// coordinates and an index stands for a pixel.
namespace zmo::ZMO_LEVEL {
namespace {

// What a pixel is that has no label; labels are positive.
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
template <class M>
void loadMarkers(int* labels, Frame frame, Target markers, bool drawLines) {
    constexpr int line = static_cast<M>(-1);
    for (ptrdiff_t i = 0; i < frame.count; ++i) labels[i] = framePixel;
    for (int y = 0; y < frame.height; ++y) {
        const Elem<M>* __restrict const from = rowOf<M>(markers, y);
        int* __restrict const to = labels + frame.row(y);
        for (int x = 0; x < frame.width; ++x) {
            to[x] = drawLines && from[x] == line ? linePixel : from[x];
        }
    }
}

template <class M>
void storeSegments(Target markers, const int* labels, Frame frame) {
    for (int y = 0; y < frame.height; ++y) {
        const int* __restrict const from = labels + frame.row(y);
        Elem<M>* __restrict const to = rowOf<M>(markers, y);
        for (int x = 0; x < frame.width; ++x) {
            to[x] = static_cast<M>(from[x] == linePixel ? -1 : from[x]);
        }
    }
}

// Calls body(index) for every labelled pixel in reading order.
template <class Body>
void forEachMarker(const int* labels, Frame frame, Body body) {
    for (int y = 0; y < frame.height; ++y) {
        const int row = frame.row(y);
        for (int i = row; i < row + frame.width; ++i) {
            if (labels[i] > 0) body(i);
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

class Flood {
  public:
    Flood(int* labels, const int* levels, Neighbours neighbours, RisingQueue queue)
        : m_labels(labels), m_levels(levels), m_neighbours(neighbours), m_queue(queue) {}

    void run(Frame frame, bool drawLines) {
        forEachMarker(m_labels, frame, [this](int pixel) { queueNeighbours(pixel); });
        for (int pixel = m_queue.pop(); pixel != RisingQueue::none; pixel = m_queue.pop()) {
            const int label = waitingPixel - m_labels[pixel];
            if (drawLines && touchesOther(pixel, label)) {
                m_labels[pixel] = linePixel;
            } else {
                m_labels[pixel] = label;
                queueNeighbours(pixel);
            }
        }
    }

  private:
    void queueNeighbours(int pixel) {
        for (int k = 0; k < m_neighbours.count; ++k) {
            const int other = pixel + m_neighbours.by[k];
            if (m_labels[other] != freePixel) continue;
            m_labels[other] = waitingPixel - m_labels[pixel];
            m_queue.push(other, m_levels[other]);
        }
    }

    bool touchesOther(int pixel, int label) const {
        for (int k = 0; k < m_neighbours.count; ++k) {
            const int other = m_labels[pixel + m_neighbours.by[k]];
            if (other > 0 && other != label) return true;
        }
        return false;
    }

    int* m_labels;
    const int* m_levels;
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
    int rank(Source relief, Frame frame, int* levels) {
        load(relief, frame);
        for (int shift = 32; shift < 64; shift += digitBits) sortBy(shift);
        int level = 0;
        for (ptrdiff_t i = 0; i < m_count; ++i) {
            if (i > 0 && m_items[i] >> 32 != m_items[i - 1] >> 32) ++level;
            levels[static_cast<uint32_t>(m_items[i])] = level;
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
    int* const labels = carver.take<int>(frame.count);
    int* const levels = carver.take<int>(frame.count);
    int* const next = carver.take<int>(frame.count);
    loadMarkers<M>(labels, frame, markers, drawLines);
    const auto flood = [&](int count, int* heads, int* tails) {
        Flood(labels, levels, Neighbours(connectivity, frame.step),
              RisingQueue(count, heads, tails, next))
            .run(frame, drawLines);
    };
    if constexpr (sizeof(S) == 1) {
        for (int y = 0; y < frame.height; ++y) {
            const Elem<S>* __restrict const from = rowOf<S>(relief, y);
            int* __restrict const to = levels + frame.row(y);
            for (int x = 0; x < frame.width; ++x) to[x] = from[x];
        }
        int heads[256];
        int tails[256];
        flood(256, heads, tails);
    } else {
        const int count = Ranking(carver, roi).rank(relief, frame, levels);
        int* const heads = carver.take<int>(count);
        flood(count, heads, carver.take<int>(count));
    }
    storeSegments<M>(markers, labels, frame);
}

// Waiting pixels by their step, linked both ways so that one can move to a smaller step.
class StepQueue {
  public:
    StepQueue(int* next, int* previous, uint8_t* steps)
        : m_next(next), m_previous(previous), m_steps(steps) {
        for (int i = 0; i < stepCount; ++i) m_heads[i] = none;
    }

    static constexpr int none = -1;

    int stepOf(int pixel) const { return m_steps[pixel]; }
    void push(int pixel, int step) {
        m_steps[pixel] = static_cast<uint8_t>(step);
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
    void remove(int pixel) {
        const int step = m_steps[pixel];
        const int before = m_previous[pixel];
        const int behind = m_next[pixel];
        (before == none ? m_heads[step] : m_next[before]) = behind;
        (behind == none ? m_tails[step] : m_previous[behind]) = before;
        if (m_heads[step] == none) m_filled[step / 64] &= ~(uint64_t{1} << step % 64);
    }
    int pop() {
        for (int i = 0; i < stepCount / 64; ++i) {
            if (m_filled[i] == 0) continue;
            const int pixel = m_heads[64 * i + __builtin_ctzll(m_filled[i])];
            remove(pixel);
            return pixel;
        }
        return none;
    }

  private:
    static constexpr int stepCount = 256;

    int* m_next;
    int* m_previous;
    uint8_t* m_steps;
    uint64_t m_filled[stepCount / 64] = {};
    int m_heads[stepCount];
    int m_tails[stepCount];
};

// Channels, one byte each, of the pixels of a plane with a frame.
template <int channels>
void loadColours(uint32_t* colours, Source image, Frame frame) {
    for (int y = 0; y < frame.height; ++y) {
        const Elem<uint8_t>* __restrict const from = rowOf<uint8_t>(image, y);
        uint32_t* __restrict const to = colours + frame.row(y);
        for (int x = 0; x < frame.width; ++x) {
            uint32_t colour = 0;
            for (int c = 0; c < channels; ++c) {
                colour |= uint32_t{from[x * channels + c]} << 8 * c;
            }
            to[x] = colour;
        }
    }
}

template <int channels>
int stepBetween(uint32_t a, uint32_t b) {
    int most = 0;
    for (int c = 0; c < channels; ++c) {
        const int difference =
            static_cast<int>(a >> 8 * c & 0xff) - static_cast<int>(b >> 8 * c & 0xff);
        const int size = difference < 0 ? -difference : difference;
        most = size > most ? size : most;
    }
    return most;
}

template <int channels>
void grow(Source image, Target markers, Region roi, int connectivity, void* buffer) {
    const Frame frame(roi);
    Carver carver(buffer);
    int* const labels = carver.take<int>(frame.count);
    int* const next = carver.take<int>(frame.count);
    int* const previous = carver.take<int>(frame.count);
    uint32_t* const colours = carver.take<uint32_t>(frame.count);
    StepQueue queue(next, previous, carver.take<uint8_t>(frame.count));
    loadMarkers<uint8_t>(labels, frame, markers, false);
    loadColours<channels>(colours, image, frame);
    const Neighbours neighbours(connectivity, frame.step);
    const auto offer = [&](int pixel) {
        for (int k = 0; k < neighbours.count; ++k) {
            const int other = pixel + neighbours.by[k];
            const bool waits = labels[other] <= waitingPixel;
            if (labels[other] != freePixel && !waits) continue;
            const int step = stepBetween<channels>(colours[pixel], colours[other]);
            if (waits) {
                if (step >= queue.stepOf(other)) continue;
                queue.remove(other);
            }
            labels[other] = waitingPixel - labels[pixel];
            queue.push(other, step);
        }
    };
    forEachMarker(labels, frame, offer);
    for (int pixel = queue.pop(); pixel != StepQueue::none; pixel = queue.pop()) {
        labels[pixel] = waitingPixel - labels[pixel];
        offer(pixel);
    }
    storeSegments<uint8_t>(markers, labels, frame);
}

}  // namespace

const SegmentKernels segmentKernels = {
    {watershed<uint8_t, uint8_t>, watershed<uint8_t, uint16_t>, watershed<float, uint16_t>},
    {grow<1>, grow<3>}};

}  // namespace zmo::ZMO_LEVEL
