// Gradients of colour pictures in grey (zmoiGradientColorToGray).
#include "pixels.h"
#include "zmocv.h"

namespace {

using namespace pixels;

ZmoNormType norm;

class TimcGradientColorToGray : public PixelTest {
  public:
    using PixelTest::PixelTest;

  protected:
    void regOwnParms() override {
        regParm(Norm);
        regParm(Picture);
    }

    bool createImages() override {
        norm = Norm.value();
        return create(pSrc, ppArgSrc, 0, srcStep) && ppDrawSource(pSrc) &&
               create(pDst, ppArgDst, 1, dstStep);
    }

    // Two comparisons; two sums and a quotient; three squares more and a root.
    int flopsOfPixel() const override {
        if (norm == zmoNormInf) return 2;
        return norm == zmoNormL1 ? 3 : 7;
    }

    psString dataFigure() override {
        return psFormat("the result's mean is %.2f%% of the source's",
                        100.0 * ppMeanOf(pDst) / ppMeanOf(pSrc));
    }
};

#define REG_GRADIENT(type)                                                                    \
    PP_REG(TimcGradientColorToGray, zmoiGradientColorToGray_##type##_C3C1R, pSrc.ptr##type(), \
           srcStep, pDst.ptr##type(), dstStep, roi, norm)

REG_GRADIENT(8u)
REG_GRADIENT(16u)
REG_GRADIENT(32f)

}  // namespace
