// Base of the tests of functions that reduce an image, or two, to a few numbers: whole images or
// those pixels that a mask selects, all of one channel.
#pragma once

#include "pp.h"

namespace masked {

using namespace images;

inline int coi;  // for the module that runs

class MaskedTest : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    virtual bool hasSecondSource() const { return false; }

    void regOwnParms() override {
        if (func().mask()) regParm(Density);
        if (func().coi()) regParm(Channel);
        regCacheParm(ImageSize, pSrc);  // the result is no image
    }

    bool createImages() override {
        coi = func().coi() ? Channel.value() : 1;
        return createSource() && (!hasSecondSource() || createSource(pSrc2, 1)) &&
               (!func().mask() || createMask(2));
    }

    // Means are 64f for all sources: whether a function computes with floats, its source says.
    double getFlops() override { return func().srcType() == pp32f ? ppImageTest::getFlops() : 0.0; }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are selected", 100.0 * selectedShare());
    }
};

}  // namespace masked
