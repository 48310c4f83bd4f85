#include "zmocv/copysubpix.h"

#include "common/kernel.h"

// A strip of columns goes down the window, so that each row of the image is interpolated along x
// only once: the lower line of one row is the upper line of the next. Both stay in the first-level
// cache.
namespace zmo::ZMO_LEVEL {
namespace {

constexpr ptrdiff_t stripWidth = 512;

ptrdiff_t clamped(ptrdiff_t i, ptrdiff_t limit) {
    return i < 0 ? 0 : i < limit ? i : limit;
}

// Values of positive sources are never negative, and exceed the type's maximum by less than
// rounding removes.
template <class D>
D rounded(float value) {
    return static_cast<D>(wholeOf(value));
}
template <>
float rounded<float>(float value) {
    return value;
}

// The bits of positive floats have the order of the floats; the loop with a comparison of floats
// stays scalar.
template <class D>
float limited(float value) {
    constexpr float most = sizeof(D) == 1 ? 255.0F : 65535.0F;
    return floatOf(bitsOf(value) < bitsOf(most) ? bitsOf(value) : bitsOf(most));
}

// Interpolates `count` pixels of a row of the image from column `left` on.
template <class S>
void loadLine(float* __restrict line, const Elem<S>* __restrict row, ptrdiff_t width,
              ptrdiff_t left, ptrdiff_t count, float fx) {
    const float rest = 1.0F - fx;
    const auto at = [=](float s0, float s1) { return rest * s0 + fx * s1; };
    const auto repeated = [=](ptrdiff_t i) {
        const float s = static_cast<float>(row[i]);
        return fx == 0 ? s : at(s, s);
    };
    const ptrdiff_t begin = clamped(-left, count);
    const ptrdiff_t end = clamped(width - 1 - left, count);
    const float before = repeated(0);
    for (ptrdiff_t k = 0; k < begin; ++k) line[k] = before;
    // A window right of the image has no inner part, and its pixels no address.
    const Elem<S>* const inner = begin < end ? row + left : row;
    if (fx == 0) {
        for (ptrdiff_t k = begin; k < end; ++k) line[k] = static_cast<float>(inner[k]);
    } else {
        for (ptrdiff_t k = begin; k < end; ++k) {
            line[k] = at(static_cast<float>(inner[k]), static_cast<float>(inner[k + 1]));
        }
    }
    const float behind = repeated(width - 1);
    for (ptrdiff_t k = end; k < count; ++k) line[k] = behind;
}

template <class D, bool scaled>
void storeLines(Elem<D>* __restrict dst, const float* __restrict upper,
                const float* __restrict lower, ptrdiff_t count, float fy, float scale) {
    const float rest = 1.0F - fy;
    const auto result = [=](float value) {
        return rounded<D>(scaled ? limited<D>(value * scale) : value);
    };
    if (fy == 0) {
        for (ptrdiff_t k = 0; k < count; ++k) dst[k] = result(upper[k]);
    } else {
        for (ptrdiff_t k = 0; k < count; ++k) dst[k] = result(rest * upper[k] + fy * lower[k]);
    }
}

template <class S, class D, bool scaled = false>
void copySubpix(Source src, Region image, Target dst, Region window, SubpixPlace place,
                float scale) {
    float lines[2][stripWidth];
    for (ptrdiff_t x = 0; x < window.width; x += stripWidth) {
        const ptrdiff_t count = window.width - x < stripWidth ? window.width - x : stripWidth;
        float* upper = lines[0];
        float* lower = lines[1];
        const auto load = [&](float* line, ptrdiff_t y) {
            loadLine<S>(line, rowOf<S>(src, replicated(place.top + y, image.height)), image.width,
                        place.left + x, count, place.fx);
        };
        if (place.fy != 0) load(upper, 0);
        for (ptrdiff_t y = 0; y < window.height; ++y) {
            if (place.fy != 0) {
                load(lower, y + 1);
            } else {
                load(upper, y);
            }
            storeLines<D, scaled>(rowOf<D>(dst, y) + x, upper, lower, count, place.fy, scale);
            float* const used = upper;
            upper = lower;
            lower = used;
        }
    }
}

}  // namespace

// In the order of SubpixTypes.
const CopySubpixKernels copySubpixKernels = {
    {copySubpix<uint8_t, uint8_t>, copySubpix<uint16_t, uint16_t>,
     copySubpix<uint8_t, uint16_t, true>, copySubpix<uint8_t, float>, copySubpix<uint16_t, float>,
     copySubpix<float, float>}};

}  // namespace zmo::ZMO_LEVEL
