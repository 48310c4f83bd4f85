// The corner response of Harris (zmoiHarrisCorner).
#include "corners.h"

namespace {

using namespace corners;

constexpr Zmo32f k = 0.04F;
constexpr Zmo32f scale = 1.0F;

PP_SERVICE(zmoiHarrisCornerGetBufferSize);

class TimHarrisCorner : public CornerTest {
  public:
    using CornerTest::CornerTest;

  protected:
    bool prepare() override { return createCornerBuffer(lib_zmoiHarrisCornerGetBufferSize); }
    double flopsOfResult() const override { return 8; }
};

#define REG_HARRIS(types, type)                                                                 \
    PP_REG(TimHarrisCorner, zmoiHarrisCorner_##types##_C1R, BORDERED_SRC(type),                 \
           PP_IMAGE(pDst, 32f), roi, kernel<ZmoiDifferentialKernel>, kernelSize, windowSize, k, \
           scale, BORDERED_BORDER(type), pBuffer.get())

REG_HARRIS(8u32f, 8u)
REG_HARRIS(32f, 32f)

}  // namespace
