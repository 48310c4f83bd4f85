// Gaussian filters of large images (zmoiFilterGaussian_L).
#include "gaussians.h"

namespace {

using namespace filters;

PP_SERVICE(zmoiFilterGaussianGetSize_L);
PP_SERVICE(zmoiFilterGaussianInit_L);

class TimcvFilterGaussianL : public GaussianTest {
  public:
    using GaussianTest::GaussianTest;

  protected:
    bool prepare() override {
        return prepareGaussian(roiL, lib_zmoiFilterGaussianGetSize_L, lib_zmoiFilterGaussianInit_L);
    }
};

#define REG_GAUSSIAN(type, channels)                                                               \
    PP_REG(TimcvFilterGaussianL, zmoiFilterGaussian_##type##_C##channels##R_L, BORDERED_SRC(type), \
           PP_IMAGE(pDst, type), roiL, BORDERED_BORDER(type), state<ZmoiGaussianState>(),          \
           pBuffer.get())

REG_GAUSSIAN(32f, 1)
REG_GAUSSIAN(16u, 1)
REG_GAUSSIAN(16s, 1)
REG_GAUSSIAN(8u, 1)
REG_GAUSSIAN(32f, 3)
REG_GAUSSIAN(16u, 3)
REG_GAUSSIAN(16s, 3)
REG_GAUSSIAN(8u, 3)

}  // namespace
