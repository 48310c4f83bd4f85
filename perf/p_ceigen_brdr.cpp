// Eigenvalues of the structure tensor, with any border (zmoiMinEigenValBorder,
// zmoiEigenValsVecsBorder).
#include "corners.h"

namespace {

using namespace corners;

PP_SERVICE(zmoiMinEigenValBorderGetBufferSize);
PP_SERVICE(zmoiEigenValsVecsBorderGetBufferSize);

class TimcEigenBrd : public EigenTest {
  public:
    using EigenTest::EigenTest;

  protected:
    bool prepare() override {
        return isMinimum() ? createCornerBuffer(lib_zmoiMinEigenValBorderGetBufferSize)
                           : createCornerBuffer(lib_zmoiEigenValsVecsBorderGetBufferSize);
    }
};

#define REG_EIGEN(Base, types, type)                                                 \
    PP_REG(TimcEigenBrd, zmoi##Base##Border_##types##_C1R, BORDERED_SRC(type),       \
           PP_IMAGE(pDst, 32f), roi, kernel<ZmoiKernelType>, kernelSize, windowSize, \
           BORDERED_BORDER(type), pBuffer.get())

REG_EIGEN(MinEigenVal, 8u32f, 8u)
REG_EIGEN(MinEigenVal, 32f, 32f)
REG_EIGEN(EigenValsVecs, 8u32f, 8u)
REG_EIGEN(EigenValsVecs, 32f, 32f)

}  // namespace
