// Canny edges from two derivative images (zmoiCanny).
#include "canny.h"

namespace {

using namespace canny;

PP_SERVICE(zmoiCannyGetSize);

class TimcCanny : public CannyTest {
  public:
    using CannyTest::CannyTest;

  protected:
    bool createBuffer() override { return createBufferBy(pBuffer, lib_zmoiCannyGetSize, roi); }
};

PP_REG(TimcCanny, zmoiCanny_16s8u_C1R, pSrc1.ptr16s(), srcStep, pSrc2.ptr16s(), src2Step,
       pDst.ptr8u(), dstStep, roi, lowThreshold, highThreshold, zmoiNormL2, pBuffer.get())
PP_REG(TimcCanny, zmoiCanny_32f8u_C1R, pSrc1.ptr32f(), srcStep, pSrc2.ptr32f(), src2Step,
       pDst.ptr8u(), dstStep, roi, lowThreshold, highThreshold, zmoiNormL2, pBuffer.get())

}  // namespace
