// Base of the tests of functions that work on regions in place: the image is drawn once a set, and
// every timed call starts from that copy. Also the pictures that these modules share.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "pp.h"

namespace regions {

using namespace images;

// A picture as a function of the place.
using Drawing = int (*)(int x, int y);

// Fills a one-channel image of any type with the drawing, or with the given picture file, whose
// grey values pass through `ofGrey`.
inline bool draw(ppImage& image, Drawing drawing, int (*ofGrey)(int grey)) {
    ppImage grey(pp8u, 1, false);
    if (ppPictureGiven() &&
        (!grey.createImage(image.width(), image.height()) || !ppDrawPicture(grey)))
        return false;
    ppDrawBy(image, [&](int x, int y) {
        return ppPictureGiven() ? ofGrey(static_cast<int>(grey.getImageAt(x, y, 0)))
                                : drawing(x, y);
    });
    return true;
}

inline int greyItself(int grey) {
    return grey;
}
inline int brightOnly(int grey) {
    return grey < 128 ? 0 : 255;
}

// Discs in a grid, every third one small: objects on an empty ground. 255 inside, 0 outside.
constexpr int discCell = 48;
inline int discs(int x, int y) {
    const int dx = x % discCell - discCell / 2;
    const int dy = y % discCell - discCell / 2;
    const int radius = (x / discCell + y / discCell) % 3 == 0 ? 6 : 19;
    return dx * dx + dy * dy <= radius * radius ? 255 : 0;
}

// One image, drawn anew for each set.
class RegionTest : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    // What the function works on.
    virtual bool drawImage(ppImage& image) = 0;

    bool createImages() override {
        const bool inPlace = func().inplace();
        if (!create(pDst, ppArgDst, inPlace ? 0 : 1)) return false;
        if (inPlace) return drawImage(pDst) && pDst.reserveCopy() != 0;
        return create(pSrc, ppArgSrc, 0) && drawImage(pSrc);
    }
};

}  // namespace regions
