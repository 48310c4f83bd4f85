// Canny edges from two derivative images (zmoiCanny).
#include "canny.h"

namespace {

using namespace canny;

PP_SERVICE(zmoiCannyGetSize);

class TimcCanny : public CannyTest {
  public:
    using CannyTest::CannyTest;

  protected:
    bool prepare() override { return createBufferBy(pBuffer, lib_zmoiCannyGetSize, roi); }
};

#define REG_CANNY(types, type)                                                              \
    PP_REG(TimcCanny, zmoiCanny_##types##_C1R, PP_IMAGE(pSrc, type), PP_IMAGE(pSrc2, type), \
           PP_IMAGE(pDst, 8u), roi, lowThreshold, highThreshold, zmoiNormL2, pBuffer.get())

REG_CANNY(16s8u, 16s)
REG_CANNY(32f8u, 32f)

}  // namespace
