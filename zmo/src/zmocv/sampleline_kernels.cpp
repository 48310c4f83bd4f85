#include "zmocv/sampleline.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class T, int channels>
void copyPixel(Elem<T>* to, const char* from) {
    // Spelled out: auto would drop the alignment attribute of Elem.
    const Elem<T>* const pixel = reinterpret_cast<const Elem<T>*>(from);
    for (int c = 0; c < channels; ++c) to[c] = pixel[c];
}

// Whether to step aside follows no pattern that a branch predictor learns, hence no branch: the
// step is masked by the sign of the error.
template <class T, int channels>
void sampleLine(const void* first, LineSteps steps, void* line) {
    const char* from = static_cast<const char*>(first);
    Elem<T>* to = static_cast<Elem<T>*>(line);
    int64_t error = -static_cast<int64_t>(steps.longer);
    for (ptrdiff_t k = 0; k < steps.longer; ++k) {
        copyPixel<T, channels>(to, from);
        to += channels;
        error += 2 * steps.shorter;
        const int64_t stays = error >> 63;
        from += steps.along + (steps.aside & ~stays);
        error -= 2 * steps.longer & ~stays;
    }
    copyPixel<T, channels>(to, from);
}

}  // namespace

const SampleLineKernels sampleLineKernels = {{{sampleLine<uint8_t, 1>, sampleLine<uint8_t, 3>},
                                              {sampleLine<uint16_t, 1>, sampleLine<uint16_t, 3>},
                                              {sampleLine<uint32_t, 1>, sampleLine<uint32_t, 3>}}};

}  // namespace zmo::ZMO_LEVEL
