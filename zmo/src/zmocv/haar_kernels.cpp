#include "zmocv/haar.h"

#include "common/kernel.h"

// Windows are looked at in groups of neighbours, so that each sum over a rectangle is taken from
// four runs of the table: the search for a classifier's rectangles costs as much as the sums of a
// group. A group is left as soon as no window in it can reach the threshold any more.
namespace zmo::ZMO_LEVEL {
namespace {

// Loops of up to 16 turns are unrolled before they can be vectorised.
constexpr int group = 24;
// A window that the mask does not select starts here and never keeps its group alive.
constexpr double unselected = -0x1p100;

template <class Entry>
Entry entryOf(const char* list, int32_t index) {
    Entry entry;
    __builtin_memcpy(&entry, list + static_cast<size_t>(index) * sizeof(Entry), sizeof(Entry));
    return entry;
}

float sumOf(float farthest, float far, float near, float nearest) {
    return (farthest - far) - (near - nearest);
}
double sumOf(int32_t farthest, int32_t far, int32_t near, int32_t nearest) {
    const auto wrapped = [](int32_t value) { return static_cast<uint32_t>(value); };
    return static_cast<int32_t>((wrapped(farthest) - wrapped(far)) -
                                (wrapped(near) - wrapped(nearest)));
}

// The rows that belong to the windows of a group.
template <class T>
struct Windows {
    const Elem<T>* sums;
    const Elem<T>* deviations;
    uint8_t* mask;
};

// The weighted sums over a classifier's rectangles. Real is what T is computed in.
template <class T, class Real, int lanes>
void evaluate(const Elem<T>* sums, ptrdiff_t step, const char* list, int32_t first, int32_t end,
              Real* __restrict features) {
    for (int i = 0; i < lanes; ++i) features[i] = 0;
    for (int32_t r = first; r < end; ++r) {
        const HaarRectangle rectangle = entryOf<HaarRectangle>(list, r);
        const Elem<T>* corners[haarCorners];
        for (int c = 0; c < haarCorners; ++c) {
            const char* const row = reinterpret_cast<const char*>(sums) + rectangle.y[c] * step;
            corners[c] = reinterpret_cast<const Elem<T>*>(row) + rectangle.x[c];
        }
        const Elem<T>* const farthest = corners[haarFarthest];
        const Elem<T>* const far = corners[haarFar];
        const Elem<T>* const near = corners[haarNear];
        const Elem<T>* const nearest = corners[haarNearest];
        const Real weight = static_cast<Real>(rectangle.weight);
        for (int i = 0; i < lanes; ++i) {
            features[i] += weight * sumOf(farthest[i], far[i], near[i], nearest[i]);
        }
    }
}

template <class Real, int lanes>
bool anyReaches(const Real* votes, double limit) {
    const Real atLeast = static_cast<Real>(limit);
    int reaching = 0;
    for (int i = 0; i < lanes; ++i) reaching |= votes[i] >= atLeast ? 1 : 0;
    return reaching != 0;
}

// The sums of low and high; false, with early sums, when no window can reach the threshold.
template <class T, class Real, int lanes>
bool vote(const HaarArgs& a, const Windows<T>& windows, Real* __restrict votes) {
    for (int i = 0; i < lanes; ++i) votes[i] = windows.mask[i] != 0 ? 0 : Real(unselected);
    int32_t first = 0;
    for (int32_t k = 0; k < a.count; ++k) {
        const HaarClassifier classifier = entryOf<HaarClassifier>(a.classifiers, k);
        Real features[lanes];
        evaluate<T, Real, lanes>(windows.sums, a.sums.step, a.rectangles, first,
                                 first + classifier.rectangles, features);
        first += classifier.rectangles;
        const Real threshold = static_cast<Real>(classifier.threshold * a.scale);
        const Real low = static_cast<Real>(classifier.low);
        const Real high = static_cast<Real>(classifier.high);
        for (int i = 0; i < lanes; ++i) {
            const Real deviation = static_cast<Real>(windows.deviations[i]);
            votes[i] += features[i] < threshold * deviation ? low : high;
        }
        if (!anyReaches<Real, lanes>(votes, a.threshold - classifier.rest - a.slack)) return false;
    }
    return true;
}

// The first `done` windows have been decided before: the decision is the same, but they are not
// counted again.
template <class T, class Real, int lanes>
void decide(const HaarArgs& a, const Windows<T>& windows, ptrdiff_t done, HaarCount& count) {
    int selected = 0;
    for (ptrdiff_t i = 0; i < lanes; ++i) selected += windows.mask[i] != 0 && i >= done ? 1 : 0;
    if (selected == 0) return;
    count.selected += selected;
    Real votes[lanes];
    const bool complete = vote<T, Real, lanes>(a, windows, votes);
    const Real threshold = static_cast<Real>(a.threshold);
    int positive = 0;
    for (ptrdiff_t i = 0; i < lanes; ++i) {
        const bool stays = complete && windows.mask[i] != 0 && votes[i] >= threshold;
        if (!stays) windows.mask[i] = 0;
        positive += stays && i >= done ? 1 : 0;
    }
    count.positive += positive;
}

template <class T, class Real>
HaarCount apply(const HaarArgs& a) {
    HaarCount count{0, 0};
    for (ptrdiff_t y = 0; y < a.roi.height; ++y) {
        const Elem<T>* const sums = rowOf<T>(a.sums, y);
        const Elem<T>* const deviations = rowOf<T>(a.deviations, y);
        uint8_t* const mask = rowOf<uint8_t>(a.mask, y);
        const auto at = [&](ptrdiff_t x) { return Windows<T>{sums + x, deviations + x, mask + x}; };
        ptrdiff_t x = 0;
        for (; x + group <= a.roi.width; x += group) decide<T, Real, group>(a, at(x), 0, count);
        if (x == a.roi.width) continue;
        if (a.roi.width >= group) {
            const ptrdiff_t last = a.roi.width - group;
            decide<T, Real, group>(a, at(last), x - last, count);
        } else {
            for (; x < a.roi.width; ++x) decide<T, Real, 1>(a, at(x), 0, count);
        }
    }
    return count;
}

}  // namespace

const HaarKernels haarKernels = {apply<float, float>, apply<int32_t, double>};

}  // namespace zmo::ZMO_LEVEL
