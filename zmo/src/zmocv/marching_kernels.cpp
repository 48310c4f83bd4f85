#include "zmocv/marching.h"

namespace zmo::ZMO_LEVEL {
namespace {

void fastMarching(Source src, Target dst, Region roi, float radius, void* buffer) {
    Carver carver(buffer);
    const ptrdiff_t count = roi.width * roi.height;
    FrontPixel* const pixels = carver.take<FrontPixel>(count);
    Front front(dst, roi, pixels, carver.take<int>(count));
    const int width = static_cast<int>(roi.width);
    const int height = static_cast<int>(roi.height);
    for (int y = 0; y < height; ++y) {
        const Elem<uint8_t>* const row = rowOf<uint8_t>(src, y);
        for (int x = 0; x < width; ++x) {
            if (row[x] == 0) {
                front.setReached(x, y, 0);
            } else {
                front.setUnseen(x, y);
                front.timeOf(x, y) = radius;
            }
        }
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (rowOf<uint8_t>(src, y)[x] == 0) front.leave(x, y, radius);
        }
    }
    front.advance(radius, [](int, int) {});
}

}  // namespace

const MarchingKernels marchingKernels = {fastMarching};

}  // namespace zmo::ZMO_LEVEL
