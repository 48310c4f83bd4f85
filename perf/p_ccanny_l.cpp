// Canny edges of large images from two derivative images (zmoiCanny_L).
#include "canny.h"

namespace {

using namespace canny;

PP_SERVICE(zmoiCannyGetSize_L);

class TimcCannyL : public CannyTest {
  public:
    using CannyTest::CannyTest;

  protected:
    bool prepare() override { return createBufferBy(pBuffer, lib_zmoiCannyGetSize_L, roiL); }
};

#define REG_CANNY(types, type)                                                                 \
    PP_REG(TimcCannyL, zmoiCanny_##types##_C1R_L, PP_IMAGE(pSrc, type), PP_IMAGE(pSrc2, type), \
           PP_IMAGE(pDst, 8u), roiL, lowThreshold, highThreshold, zmoiNormL2, pBuffer.get())

REG_CANNY(16s8u, 16s)
REG_CANNY(32f8u, 32f)

}  // namespace
