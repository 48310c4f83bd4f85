// Extremes with their positions, means and standard deviations (zmoiMinMaxIndx, zmoiMean,
// zmoiMean_StdDev), of whole images and under a mask.
#include "masked.h"
#include "zmocv.h"

namespace {

using namespace masked;

Zmo32f low;
Zmo32f high;
ZmoiPoint lowPosition;
ZmoiPoint highPosition;
Zmo64f mean;
Zmo64f stdDev;

// Functions without a mask.
class TimeStatNull : public MaskedTest {
  public:
    using MaskedTest::MaskedTest;

  protected:
    void regArguments() override {
        MaskedTest::regArguments();
        if (named("MinMaxIndx")) {
            regOutput("low", &low);
            regOutput("high", &high);
            regOutput("lowPosition", &lowPosition.x, 2);
            regOutput("highPosition", &highPosition.x, 2);
            return;
        }
        regOutput("mean", &mean);
        if (named("StdDev")) regOutput("stdDev", &stdDev);
    }

    // Two comparisons or one addition; means with a deviation are of integers here.
    double flopsOfElement() const override { return named("MinMaxIndx") ? 2 : 1; }
};

// Functions with a mask.
class TimcStat : public TimeStatNull {
  public:
    using TimeStatNull::TimeStatNull;
};

#define REG_MIN_MAX(type)                                                                          \
    PP_REG(TimeStatNull, zmoiMinMaxIndx_##type##_C1R, PP_IMAGE(pSrc, type), roi, &low, &high,      \
           &lowPosition, &highPosition)                                                            \
    PP_REG(TimeStatNull, zmoiMinMaxIndx_##type##_C3CR, PP_IMAGE(pSrc, type), roi, coi, &low,       \
           &high, &lowPosition, &highPosition)                                                     \
    PP_REG(TimcStat, zmoiMinMaxIndx_##type##_C1MR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u), roi, \
           &low, &high, &lowPosition, &highPosition)                                               \
    PP_REG(TimcStat, zmoiMinMaxIndx_##type##_C3CMR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u),     \
           roi, coi, &low, &high, &lowPosition, &highPosition)
#define REG_MEAN(type)                                                                             \
    PP_REG(TimcStat, zmoiMean_##type##_C1MR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u), roi,       \
           &mean)                                                                                  \
    PP_REG(TimcStat, zmoiMean_##type##_C3CMR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u), roi, coi, \
           &mean)
#define REG_MEAN_STDDEV(type)                                                                     \
    PP_REG(TimeStatNull, zmoiMean_StdDev_##type##_C1R, PP_IMAGE(pSrc, type), roi, &mean, &stdDev) \
    PP_REG(TimeStatNull, zmoiMean_StdDev_##type##_C3CR, PP_IMAGE(pSrc, type), roi, coi, &mean,    \
           &stdDev)                                                                               \
    PP_REG(TimcStat, zmoiMean_StdDev_##type##_C1MR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u),    \
           roi, &mean, &stdDev)                                                                   \
    PP_REG(TimcStat, zmoiMean_StdDev_##type##_C3CMR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u),   \
           roi, coi, &mean, &stdDev)

REG_MIN_MAX(8u)
REG_MIN_MAX(16u)
REG_MIN_MAX(32f)
REG_MEAN(8u)
REG_MEAN(16u)
REG_MEAN(32f)
REG_MEAN_STDDEV(8u)
REG_MEAN_STDDEV(16u)

}  // namespace
