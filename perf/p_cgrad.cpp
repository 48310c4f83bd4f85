// Gradients of colour pictures in grey (zmoiGradientColorToGray).
#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

ZmoNormType norm;

class TimcGradientColorToGray : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(Norm); }

    bool prepare() override {
        norm = Norm.value();
        return true;
    }

    // Two comparisons; two sums and a quotient; three squares more and a root.
    double flopsOfElement() const override {
        if (norm == zmoNormInf) return 2;
        return norm == zmoNormL1 ? 3 : 7;
    }

    psString dataFigure() override {
        return psFormat("the result's mean is %.2f%% of the source's",
                        100.0 * ppMeanOf(pDst) / ppMeanOf(pSrc));
    }
};

#define REG_GRADIENT(type)                                                                        \
    PP_REG(TimcGradientColorToGray, zmoiGradientColorToGray_##type##_C3C1R, PP_IMAGE(pSrc, type), \
           PP_IMAGE(pDst, type), roi, norm)

REG_GRADIENT(8u)
REG_GRADIENT(16u)
REG_GRADIENT(32f)

}  // namespace
