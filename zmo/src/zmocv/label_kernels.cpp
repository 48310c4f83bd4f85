#include "zmocv/label.h"

#include "common/components.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
void flagMarkers(uint8_t* __restrict flags, const Elem<T>* __restrict pixels, ptrdiff_t width) {
    for (ptrdiff_t x = 0; x < width; ++x) flags[x] = pixels[x] != 0;
}

template <class T>
void findRuns(Components& components, Source src, Region roi, int reach, uint8_t* flags) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        components.beginRow(y);
        flagMarkers<T>(flags, rowOf<T>(src, y), roi.width);
        for (ptrdiff_t x = findSet(flags, 0, roi.width); x < roi.width;) {
            const ptrdiff_t end = findClear(flags, x + 1, roi.width);
            components.add(x, end);
            x = findSet(flags, end, roi.width);
        }
        if (y > 0) components.joinWithRowAbove(y, reach, [](PixelRun, PixelRun) { return true; });
    }
    components.endRows(roi.height);
}

// Numbers the components by their first runs. From here on the parent of a run is the complement of
// its label. A component that finds no free label is labelled 0.
int number(Components& components, int minLabel, int maxLabel) {
    int64_t next = minLabel;
    for (int32_t i = 0; i < components.count(); ++i) {
        PixelRun& run = components[i];
        if (run.parent != i) {
            run.parent = components[run.parent].parent;
        } else {
            run.parent = ~(next <= maxLabel ? static_cast<int>(next) : 0);
            ++next;
        }
    }
    return static_cast<int>(next - minLabel);
}

template <class From, class To>
int label(Source src, Target dst, Region roi, int minLabel, int maxLabel, int connectivity,
          void* buffer) {
    Carver carver(buffer);
    PixelRun* const runs = carver.take<PixelRun>((roi.width + 1) / 2 * roi.height);
    uint8_t* const flags = carver.take<uint8_t>(roi.width);
    Components components(runs, carver.take<int32_t>(roi.height + 1));
    findRuns<From>(components, src, roi, connectivity == 8 ? 1 : 0, flags);
    const int count = number(components, minLabel, maxLabel);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        Elem<To>* const row = rowOf<To>(dst, y);
        ptrdiff_t done = 0;
        components.forRow(y, [&](PixelRun run) {
            fillRun<Elem<To>>(row, done, run.first, 0);
            fillRun<Elem<To>>(row, run.first, run.end, static_cast<To>(~run.parent));
            done = run.end;
        });
        fillRun<Elem<To>>(row, done, roi.width, 0);
    }
    return count;
}

}  // namespace

const LabelKernels labelKernels = {label<uint8_t, uint8_t>, label<uint16_t, uint16_t>,
                                   label<uint8_t, int32_t>};

}  // namespace zmo::ZMO_LEVEL
