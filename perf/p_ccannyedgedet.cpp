// Canny edges of a picture (zmoiCannyBorder).
#include "corners.h"
#include "hysteresis.h"

namespace {

using namespace corners;
using hysteresis::highThreshold;
using hysteresis::lowThreshold;

psMapIterator<_ZmoiNorm> Norm("Norm", "Size of the gradient",
                              {{zmoiNormL1, "L1"}, {zmoiNormL2, "L2"}}, {zmoiNormL1, zmoiNormL2});

ZmoiMaskSize maskSize;
ZmoiNorm norm;

PP_SERVICE(zmoiCannyBorderGetBufferSize);

class TimcCannyEdgeDet : public PictureTest {
  public:
    using PictureTest::PictureTest;

  protected:
    void regMaskParms() override {
        PictureTest::regMaskParms();
        regParm(Norm);
    }

    bool prepare() override {
        maskSize = static_cast<ZmoiMaskSize>(kernelSize);
        norm = Norm.value();
        setThresholds();
        return createBufferBy(pBuffer, lib_zmoiCannyBorderGetBufferSize, roi, maskSize, zmo8u, 1);
    }

    psString dataFigure() override {
        return hysteresis::figure(pDst, [this] { callOnce(); });
    }

  private:
    // Straight pieces of the squares' outlines answer with 4 (sobel3), 16 (scharr3) or 48 (sobel5)
    // times the 190 that they stand out by, a little more or less for the uneven ground, and the
    // steps between the pieces with more. The masks of 3x3 drop the weaker half of the pieces; what
    // is left of them is followed from the steps.
    static void setThresholds() {
        switch (Kernel.value()) {
            case DerivativeMask::sobel3:
                hysteresis::setThresholds(762, 800);
                break;
            case DerivativeMask::scharr3:
                hysteresis::setThresholds(3054, 3200, 4);
                break;
            case DerivativeMask::sobel5:
                hysteresis::setThresholds(3600, 9150, 12);
                break;
        }
    }
};

PP_REG(TimcCannyEdgeDet, zmoiCannyBorder_8u_C1R, BORDERED_SRC(8u), PP_IMAGE(pDst, 8u), roi,
       kernel<ZmoiDifferentialKernel>, maskSize, lowThreshold, highThreshold, norm,
       BORDERED_BORDER(8u), pBuffer.get())

}  // namespace
