// Mean and standard deviation of 32f images (zmoiMean_StdDev), whole and under a mask.
#include "masked.h"
#include "zmocv.h"

namespace {

using namespace masked;

Zmo64f mean;
Zmo64f stdDev;

class TimcMean : public MaskedTest {
  public:
    using MaskedTest::MaskedTest;

  protected:
    void regArguments() override {
        MaskedTest::regArguments();
        regOutput("mean", &mean);
        regOutput("stdDev", &stdDev);
    }

    // The sum; distance, square and its sum.
    double flopsOfElement() const override { return 4; }
};

PP_REG(TimcMean, zmoiMean_StdDev_32f_C1R, PP_IMAGE(pSrc, 32f), roi, &mean, &stdDev)
PP_REG(TimcMean, zmoiMean_StdDev_32f_C3CR, PP_IMAGE(pSrc, 32f), roi, coi, &mean, &stdDev)
PP_REG(TimcMean, zmoiMean_StdDev_32f_C1MR, PP_IMAGE(pSrc, 32f), PP_IMAGE(pMask, 8u), roi, &mean,
       &stdDev)
PP_REG(TimcMean, zmoiMean_StdDev_32f_C3CMR, PP_IMAGE(pSrc, 32f), PP_IMAGE(pMask, 8u), roi, coi,
       &mean, &stdDev)

}  // namespace
