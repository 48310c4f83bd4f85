// Base of the tests of functions that reduce an image, or two, to a few numbers: whole images or
// those pixels that a mask selects, all of one channel.
#pragma once

#include "pp.h"

// The arguments of these functions, for the module that runs.
namespace masked {

inline ppImage pSrc;
inline ppImage pSrc2;
inline ppImage pMask;
inline int srcStep;
inline int src2Step;
inline int maskStep;
inline ZmoiSize roi;
inline int coi;

class MaskedTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    virtual bool hasSecondSource() const { return false; }
    // Floating-point operations for one pixel of a 32f function.
    virtual int flopsOfPixel() const = 0;

    bool canStart() override {
        regParm(ImageSize);
        if (func().mask()) regParm(Density);
        if (func().coi()) regParm(Channel);
        regParm(Picture);
        regCacheParm(ImageSize, pSrc);
        return true;
    }

    bool initData() override {
        roi = ImageSize.value();
        coi = func().coi() ? Channel.value() : 1;
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        if (!createSource(pSrc, 0, srcStep)) return false;
        if (hasSecondSource() && !createSource(pSrc2, 1, src2Step)) return false;
        return !func().mask() || createMask();
    }

    void flushData() override {
        pSrc.deleteVector();
        pSrc2.deleteVector();
        pMask.deleteVector();
    }

    // One channel is worked on, however many the image has.
    double getDivisor() override { return static_cast<double>(roi.width) * roi.height; }
    psString getUnit() override { return "pxch"; }
    double getFlops() override {
        return func().srcType() == pp32f ? getDivisor() * selectedShare() * flopsOfPixel() : 0.0;
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are selected", 100.0 * selectedShare());
    }

  private:
    double selectedShare() const { return func().mask() ? ppSelectedShare(pMask) : 1; }

    bool createSource(ppImage& image, int index, int& step) {
        image.init(func(), ppArgSrc);
        if (!image.createImage(roi.width, roi.height, 0, ppMisalign(index))) return false;
        step = image.step();
        return ppDrawSource(image, index);
    }

    bool createMask() {
        pMask.init(pp8u, 1, false);
        if (!pMask.createImage(roi.width, roi.height, 0, ppMisalign(2))) return false;
        maskStep = pMask.step();
        return ppDrawMask(pMask);
    }
};

}  // namespace masked
