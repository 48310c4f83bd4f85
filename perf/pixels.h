// Base of the tests of functions that make images out of images of the same region: the arguments
// that most of them have, and figures for each pixel.
#pragma once

#include <algorithm>

#include "pp.h"

// For the module that runs.
namespace pixels {

inline ppImage pSrc;
inline ppImage pSrc2;
inline ppImage pDst;
inline int srcStep;
inline int src2Step;
inline int dstStep;
inline ZmoiSize roi;

class PixelTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    // Floating-point operations for one pixel of a function that computes with floats.
    virtual int flopsOfPixel() const = 0;

    bool canStart() override {
        regParm(ImageSize);
        regOwnParms();
        regCacheParm(ImageSize, pDst);
        return true;
    }
    virtual void regOwnParms() { regParm(Picture); }

    bool initData() override {
        roi = ImageSize.value();
        if (ppPictureGiven() && drawsPicture()) setDataComment(ppPictureTitle());
        return createImages();
    }
    virtual bool createImages() = 0;

    void flushData() override {
        pSrc.deleteVector();
        pSrc2.deleteVector();
        pDst.deleteVector();
    }

    double getDivisor() override { return static_cast<double>(roi.width) * roi.height; }
    psString getUnit() override { return "pxch"; }
    double getFlops() override {
        const bool isFloat = func().dstType() == pp32f || func().dstType() == pp64f;
        return isFloat ? getDivisor() * flopsOfPixel() : 0.0;
    }

    bool drawsPicture() const {
        return std::ranges::find(parms(), static_cast<psParameter*>(&Picture)) != parms().end();
    }

    // The image has been set up; it is the index-th of the test's.
    static bool create(ppImage& image, int index, int& step, ZmoiSize size = roi) {
        if (!image.createImage(size.width, size.height, 0, ppMisalign(index))) return false;
        step = image.step();
        return true;
    }
    bool create(ppImage& image, ppArg arg, int index, int& step) const {
        image.init(func(), arg);
        return create(image, index, step);
    }
};

}  // namespace pixels
