// Base of the tests of functions that work on regions in place: the image is drawn once a set, and
// every timed call starts from that copy. Also the pictures that these modules share.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "pp.h"

namespace regions {

// The arguments of these functions, for the module that runs.
inline ppImage pSrc;  // only of functions that are not in place
inline ppImage pDst;  // pSrcDst of those in place
inline int srcStep;
inline int dstStep;
inline ZmoiSize roi;
inline ppBuffer pBuffer;

// The init expression: the bytes that initData drew.
inline int restoreImage() {
    return pDst.setReservedCopy();
}

// A picture as a function of the place.
using Drawing = int (*)(int x, int y);

// Fills a one-channel image of any type with the drawing, or with the given picture file, whose grey
// values pass through `ofGrey`.
inline bool draw(ppImage& image, Drawing drawing, int (*ofGrey)(int grey)) {
    ppImage grey(pp8u, 1, false);
    if (ppPictureGiven() &&
        (!grey.createImage(image.width(), image.height()) || !ppDrawPicture(grey)))
        return false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int value = ppPictureGiven() ? ofGrey(static_cast<int>(grey.getImageAt(x, y, 0)))
                                               : drawing(x, y);
            image.setImageAt(x, y, 0, value);
        }
    }
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

class InPlaceTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    virtual bool createImages() = 0;
    // Makes the work buffer of a function that has one.
    virtual bool createBuffer() { return true; }
    // Registers what the function takes besides the images.
    virtual void regOwnParms() {}

    bool canStart() override {
        regParm(ImageSize);
        regOwnParms();
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }

    bool initData() override {
        roi = ImageSize.value();
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        return createImages() && createBuffer();
    }

    void flushData() override {
        pSrc.deleteVector();
        pDst.deleteReservedCopy();
        pDst.deleteVector();
        pBuffer.release();
    }

    double getDivisor() override { return static_cast<double>(roi.width) * roi.height; }
    psString getUnit() override { return "pxch"; }

    ZmoDataType dataType() const { return libraryType(func().srcType()); }
};

// One image, drawn anew for each set.
class RegionTest : public InPlaceTest {
  public:
    using InPlaceTest::InPlaceTest;

  protected:
    // What the function works on.
    virtual bool drawImage(ppImage& image) = 0;

    bool createImages() override {
        const bool inPlace = func().inplace();
        pDst.init(func(), ppArgDst);
        if (!pDst.createImage(roi.width, roi.height, 0, ppMisalign(inPlace ? 0 : 1))) return false;
        dstStep = pDst.step();
        if (inPlace) return drawImage(pDst) && pDst.reserveCopy() != 0;
        pSrc.init(func(), ppArgSrc);
        if (!pSrc.createImage(roi.width, roi.height, 0, ppMisalign(0))) return false;
        srcStep = pSrc.step();
        return drawImage(pSrc);
    }
};

}  // namespace regions
