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
    // The sum; distance, square and its sum.
    int flopsOfPixel() const override { return 4; }
};

PP_REG(TimcMean, zmoiMean_StdDev_32f_C1R, pSrc.ptr32f(), srcStep, roi, &mean, &stdDev)
PP_REG(TimcMean, zmoiMean_StdDev_32f_C3CR, pSrc.ptr32f(), srcStep, roi, coi, &mean, &stdDev)
PP_REG(TimcMean, zmoiMean_StdDev_32f_C1MR, pSrc.ptr32f(), srcStep, pMask.ptr8u(), maskStep, roi,
       &mean, &stdDev)
PP_REG(TimcMean, zmoiMean_StdDev_32f_C3CMR, pSrc.ptr32f(), srcStep, pMask.ptr8u(), maskStep, roi,
       coi, &mean, &stdDev)

}  // namespace
