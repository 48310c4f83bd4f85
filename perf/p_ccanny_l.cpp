// Canny edges of large images from two derivative images (zmoiCanny_L).
#include "canny.h"

namespace {

using namespace canny;

PP_SERVICE(zmoiCannyGetSize_L);

class TimcCannyL : public CannyTest {
  public:
    using CannyTest::CannyTest;

  protected:
    bool createBuffer() override { return createBufferBy(pBuffer, lib_zmoiCannyGetSize_L, roiL); }
};

PP_REG(TimcCannyL, zmoiCanny_16s8u_C1R_L, pSrc1.ptr16s(), srcStep, pSrc2.ptr16s(), src2Step,
       pDst.ptr8u(), dstStep, roiL, lowThreshold, highThreshold, zmoiNormL2, pBuffer.get())
PP_REG(TimcCannyL, zmoiCanny_32f8u_C1R_L, pSrc1.ptr32f(), srcStep, pSrc2.ptr32f(), src2Step,
       pDst.ptr8u(), dstStep, roiL, lowThreshold, highThreshold, zmoiNormL2, pBuffer.get())

}  // namespace
