// Connected components of runs of pixels, by union-find.
#pragma once

#include "common/runs.h"

namespace zmo {

// Pixels first..end-1 of a row; parent is the index of a run of the same component, of itself in
// the component's first run.
struct PixelRun {
    int first;
    int end;
    int parent;
};

}  // namespace zmo

namespace zmo::ZMO_LEVEL {
namespace {

// Runs in reading order. A parent always stands before its children, so that a component's root is
// its first run and one pass in order meets every root before the rest of its component.
class Components {
  public:
    // rowStarts has a place for each row and one more.
    Components(PixelRun* runs, int32_t* rowStarts) : m_runs(runs), m_rowStarts(rowStarts) {}

    void beginRow(ptrdiff_t y) { m_rowStarts[y] = m_count; }
    void endRows(ptrdiff_t height) { m_rowStarts[height] = m_count; }
    void add(ptrdiff_t first, ptrdiff_t end) {
        m_runs[m_count] = {static_cast<int>(first), static_cast<int>(end), m_count};
        ++m_count;
    }

    // Joins the runs of row y with those of the row above that they touch, where linked(above, run)
    // holds. reach is 1 when corners touch, else 0.
    template <class Linked>
    void joinWithRowAbove(ptrdiff_t y, int reach, Linked linked) {
        const int32_t start = m_rowStarts[y];
        int32_t above = m_rowStarts[y - 1];
        for (int32_t i = start; i < m_count; ++i) {
            const PixelRun run = m_runs[i];
            while (above < start && m_runs[above].end + reach <= run.first) ++above;
            for (int32_t k = above; k < start && m_runs[k].first < run.end + reach; ++k) {
                if (linked(m_runs[k], run)) join(k, i);
            }
        }
    }

    int32_t count() const { return m_count; }
    PixelRun& operator[](int32_t i) { return m_runs[i]; }

    // Calls body(run) for the runs of row y.
    template <class Body>
    void forRow(ptrdiff_t y, Body body) const {
        for (int32_t i = m_rowStarts[y]; i < m_rowStarts[y + 1]; ++i) body(m_runs[i]);
    }

  private:
    int32_t rootOf(int32_t i) {
        while (m_runs[i].parent != i) {
            m_runs[i].parent = m_runs[m_runs[i].parent].parent;
            i = m_runs[i].parent;
        }
        return i;
    }
    void join(int32_t a, int32_t b) {
        a = rootOf(a);
        b = rootOf(b);
        if (a < b) {
            m_runs[b].parent = a;
        } else {
            m_runs[a].parent = b;
        }
    }

    PixelRun* m_runs;
    int32_t* m_rowStarts;
    int32_t m_count = 0;
};

}  // namespace
}  // namespace zmo::ZMO_LEVEL
