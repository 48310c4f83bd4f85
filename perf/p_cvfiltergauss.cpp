// Gaussian filters (zmoiFilterGaussianBorder).
#include "gaussians.h"

namespace {

using namespace filters;

PP_SERVICE(zmoiFilterGaussianGetSize);
PP_SERVICE(zmoiFilterGaussianInit);

class TimcvFilterGaussian : public GaussianTest {
  public:
    using GaussianTest::GaussianTest;

  protected:
    bool prepare() override {
        return prepareGaussian(roi, lib_zmoiFilterGaussianGetSize, lib_zmoiFilterGaussianInit);
    }
};

#define REG_GAUSSIAN(type, channels)                                              \
    PP_REG(TimcvFilterGaussian, zmoiFilterGaussianBorder_##type##_C##channels##R, \
           BORDERED_SRC(type), PP_IMAGE(pDst, type), roi, BORDERED_BORDER(type),  \
           state<ZmoiGaussianState>(), pBuffer.get())

REG_GAUSSIAN(32f, 1)
REG_GAUSSIAN(16u, 1)
REG_GAUSSIAN(16s, 1)
REG_GAUSSIAN(8u, 1)
REG_GAUSSIAN(32f, 3)
REG_GAUSSIAN(16u, 3)
REG_GAUSSIAN(16s, 3)
REG_GAUSSIAN(8u, 3)

}  // namespace
