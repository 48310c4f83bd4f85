// First derivatives of a picture, by the library's Sobel filters.
#pragma once

#include <algorithm>

#include "pp.h"
#include "zmoi.h"

namespace derivatives {

PP_SERVICE(zmoiFilterSobelVertBorderGetBufferSize);
PP_SERVICE(zmoiFilterSobelHorizBorderGetBufferSize);
PP_SERVICE(zmoiFilterSobelVertBorder_8u16s_C1R);
PP_SERVICE(zmoiFilterSobelHorizBorder_8u16s_C1R);
PP_SERVICE(zmoiFilterSobelVertBorder_32f_C1R);
PP_SERVICE(zmoiFilterSobelHorizBorder_32f_C1R);

template <class Vert, class Horiz, class T, class D>
bool derive(const Vert& vert, const Horiz& horiz, ZmoDataType type, ZmoiSize roi, const T* picture,
            int step, D* dx, int dxStep, D* dy, int dyStep) {
    constexpr ZmoiMaskSize mask = zmoiMask3x3;
    constexpr ZmoiBorderType border = zmoiBorderReplicate;
    int vertSize = 0;
    int horizSize = 0;
    ppBuffer buffer;
    return ppTest::prepared(lib_zmoiFilterSobelVertBorderGetBufferSize, roi, mask, type, 1,
                            &vertSize) &&
           ppTest::prepared(lib_zmoiFilterSobelHorizBorderGetBufferSize, roi, mask, type, 1,
                            &horizSize) &&
           buffer.create(std::max(vertSize, horizSize)) &&
           ppTest::prepared(vert, picture, step, dx, dxStep, roi, mask, border, nullptr,
                            buffer.get()) &&
           ppTest::prepared(horiz, picture, step, dy, dyStep, roi, mask, border, nullptr,
                            buffer.get());
}

// Along x into dx and along y into dy, images of the picture's size: of 16s for a picture of 8u,
// else all of 32f.
inline bool deriveBytes(const ppImage& picture, ppImage& dx, ppImage& dy) {
    return derive(lib_zmoiFilterSobelVertBorder_8u16s_C1R, lib_zmoiFilterSobelHorizBorder_8u16s_C1R,
                  zmo8u, {picture.width(), picture.height()}, PP_IMAGE(picture, 8u),
                  PP_IMAGE(dx, 16s), PP_IMAGE(dy, 16s));
}
inline bool deriveFloats(const ppImage& picture, ppImage& dx, ppImage& dy) {
    return derive(lib_zmoiFilterSobelVertBorder_32f_C1R, lib_zmoiFilterSobelHorizBorder_32f_C1R,
                  zmo32f, {picture.width(), picture.height()}, PP_IMAGE(picture, 32f),
                  PP_IMAGE(dx, 32f), PP_IMAGE(dy, 32f));
}

}  // namespace derivatives
