#include "zmocv/hough.h"

#include "common/runs.h"

namespace zmo::ZMO_LEVEL {
namespace {

ptrdiff_t pitchOf(const HoughSpace& space) {
    return space.distances + houghMargin;
}

// The edge pixels of a portion, and their cells at one angle.
struct Portion {
    double* x;
    double* y;
    int32_t* cells;
    ptrdiff_t count;
};

void findCells(const Portion& p, double cosine, double sine, double offset, ptrdiff_t distances) {
    const double* __restrict x = p.x;
    const double* __restrict y = p.y;
    int32_t* __restrict cells = p.cells;
    const double end = static_cast<double>(distances);
    const double outside = end + 1;
    for (ptrdiff_t i = 0; i < p.count; ++i) {
        const double place = x[i] * cosine + (y[i] * sine + offset);
        cells[i] = static_cast<int32_t>(((place >= 0) & (place < end)) ? place : outside);
    }
}

// votes is the first cell of the first angle.
void castVotes(const HoughArgs& a, const Portion& portion, int32_t* votes) {
    for (ptrdiff_t n = 0; n < a.space.angles; ++n) {
        findCells(portion, a.cosines[n], a.sines[n], a.offset, a.space.distances);
        int32_t* const row = votes + n * pitchOf(a.space);
        for (ptrdiff_t i = 0; i < portion.count; ++i) ++row[portion.cells[i]];
    }
}

void castAllVotes(const HoughArgs& a, Portion portion, int32_t* votes) {
    portion.count = 0;
    for (ptrdiff_t y = 0; y < a.roi.height; ++y) {
        const uint8_t* const row = rowOf<uint8_t>(a.edges, y);
        for (ptrdiff_t x = findNonZero(row, 0, a.roi.width); x < a.roi.width;
             x = findNonZero(row, x + 1, a.roi.width)) {
            portion.x[portion.count] = static_cast<double>(x);
            portion.y[portion.count] = static_cast<double>(y);
            if (++portion.count < houghPortion) continue;
            castVotes(a, portion, votes);
            portion.count = 0;
        }
    }
    castVotes(a, portion, votes);
}

void flagPeaks(const int32_t* __restrict votes, const HoughSpace& space, int32_t threshold,
               uint8_t* __restrict flags) {
    const int32_t* const before = votes - pitchOf(space);
    const int32_t* const after = votes + pitchOf(space);
    for (ptrdiff_t r = 0; r < space.distances; ++r) {
        const int32_t v = votes[r];
        flags[r] = static_cast<uint8_t>((v > threshold) & (v > before[r]) & (v >= after[r]) &
                                        (v > votes[r - 1]) & (v >= votes[r + 1]));
    }
}

// A heap with the weakest of the strongest peaks at its root.
class Strongest {
  public:
    Strongest(HoughPeak* heap, int32_t room) : m_heap(heap), m_room(room) {}

    void add(HoughPeak peak) {
        if (m_count < m_room) {
            int32_t i = m_count++;
            for (; i > 0 && weaker(peak, m_heap[(i - 1) / 2]); i = (i - 1) / 2) {
                m_heap[i] = m_heap[(i - 1) / 2];
            }
            m_heap[i] = peak;
        } else if (weaker(m_heap[0], peak)) {
            sink(peak);
        }
    }
    // Turns the heap into a list with the strongest peak first.
    void sort() {
        while (m_count > 1) {
            const HoughPeak weakest = m_heap[0];
            const HoughPeak last = m_heap[--m_count];
            sink(last);
            m_heap[m_count] = weakest;
        }
    }

  private:
    static bool weaker(HoughPeak a, HoughPeak b) {
        return a.votes != b.votes ? a.votes < b.votes : a.index > b.index;
    }
    // Puts the peak in place of the root.
    void sink(HoughPeak peak) {
        int32_t i = 0;
        for (int32_t child = 1; child < m_count; child = 2 * i + 1) {
            if (child + 1 < m_count && weaker(m_heap[child + 1], m_heap[child])) ++child;
            if (!weaker(m_heap[child], peak)) break;
            m_heap[i] = m_heap[child];
            i = child;
        }
        m_heap[i] = peak;
    }

    HoughPeak* m_heap;
    int32_t m_room;
    int32_t m_count = 0;
};

int64_t collectPeaks(const HoughArgs& a, const int32_t* votes, uint8_t* flags) {
    Strongest strongest(a.peaks, a.maxLines);
    int64_t found = 0;
    for (ptrdiff_t n = 0; n < a.space.angles; ++n) {
        const int32_t* const row = votes + n * pitchOf(a.space);
        flagPeaks(row, a.space, a.threshold, flags);
        for (ptrdiff_t r = findSet(flags, 0, a.space.distances); r < a.space.distances;
             r = findSet(flags, r + 1, a.space.distances)) {
            strongest.add({row[r], static_cast<int32_t>(n * a.space.distances + r)});
            ++found;
        }
    }
    strongest.sort();
    return found;
}

int64_t run(const HoughArgs& a) {
    Carver carver(a.buffer);
    const ptrdiff_t pitch = pitchOf(a.space);
    int32_t* const cells = carver.take<int32_t>((a.space.angles + 2) * pitch);
    double* const x = carver.take<double>(houghPortion);
    double* const y = carver.take<double>(houghPortion);
    int32_t* const portionCells = carver.take<int32_t>(houghPortion);
    uint8_t* const flags = carver.take<uint8_t>(a.space.distances);
    fillRun<int32_t>(cells, 0, (a.space.angles + 2) * pitch, 0);
    int32_t* const votes = cells + pitch + 1;
    castAllVotes(a, {x, y, portionCells, 0}, votes);
    return collectPeaks(a, votes, flags);
}

}  // namespace

const HoughKernels houghKernels = {run};

}  // namespace zmo::ZMO_LEVEL
