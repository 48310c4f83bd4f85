// Base of the tests of functions that look for corners and lines: a picture of turned squares with
// noise, and its edges.
#pragma once

#include <algorithm>

#include "derivatives.h"
#include "zmocv.h"

namespace squares {

using namespace images;

PP_SERVICE(zmoiCannyGetSize);
PP_SERVICE(zmoiCanny_16s8u_C1R);

constexpr int noise = 8;

// Whether a place in quarters of a pixel lies in a square: they are turned by 10 degrees, and their
// sides are half a cell.
inline bool inSquare(int x, int y, int cell) {
    constexpr int cosine = 1008;  // of 1024
    constexpr int sine = 178;
    const int period = cell * 4 * 1024;
    const auto inBand = [period](int place) {
        const int inCell = (place % period + period) % period;
        return inCell >= period / 4 && inCell < period * 3 / 4;
    };
    return inBand(x * cosine + y * sine) && inBand(y * cosine - x * sine);
}

class SquareTest : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    // Smooth outlines, as a camera gives them.
    static bool drawSquares(ppImage& image, int cell = 64) {
        if (ppPictureGiven()) return ppDrawPicture(image);
        if (!image.setRandom(0, noise)) return false;
        ppDrawBy(image, [&](int x, int y) {
            int inside = 0;
            for (int part = 0; part < 16; ++part)
                inside += inSquare(4 * x + part % 4, 4 * y + part / 4, cell) ? 1 : 0;
            return image.getImageAt(x, y, 0) + 60 + 8 * inside;
        });
        return true;
    }

    static bool findEdges(const ppImage& picture, ppImage& edges) {
        constexpr Zmo32f low = 150;
        constexpr Zmo32f high = 300;
        ppImage dx(pp16s, 1, false);
        ppImage dy(pp16s, 1, false);
        ppBuffer buffer;
        return dx.createImage(roi.width, roi.height) && dy.createImage(roi.width, roi.height) &&
               derivatives::deriveBytes(picture, dx, dy) &&
               createBufferBy(buffer, lib_zmoiCannyGetSize, roi) &&
               prepared(lib_zmoiCanny_16s8u_C1R, PP_IMAGE(dx, 16s), PP_IMAGE(dy, 16s),
                        PP_IMAGE(edges, 8u), roi, low, high, zmoiNormL2, buffer.get());
    }

    // The number of pixels that are not 0.
    static int countIn(const ppImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            const auto* const row = static_cast<const unsigned char*>(image.getRowPointer(y));
            count += image.width() - static_cast<int>(std::count(row, row + image.width(), 0));
        }
        return count;
    }
};

}  // namespace squares
