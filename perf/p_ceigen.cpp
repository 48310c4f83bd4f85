// Eigenvalues of the structure tensor, with a replicated border (zmoiMinEigenVal,
// zmoiEigenValsVecs).
#include "corners.h"

namespace {

using namespace corners;

PP_SERVICE(zmoiMinEigenValGetBufferSize);
PP_SERVICE(zmoiEigenValsVecsGetBufferSize);

class TimcEigen : public EigenTest {
  public:
    using EigenTest::EigenTest;

  protected:
    bool hasBorder() const override { return false; }

    bool prepare() override {
        return isMinimum() ? createCornerBuffer(lib_zmoiMinEigenValGetBufferSize)
                           : createCornerBuffer(lib_zmoiEigenValsVecsGetBufferSize);
    }
};

#define REG_EIGEN(Base, types, type)                                                            \
    PP_REG(TimcEigen, zmoi##Base##_##types##_C1R, BORDERED_SRC(type), PP_IMAGE(pDst, 32f), roi, \
           kernel<ZmoiKernelType>, kernelSize, windowSize, pBuffer.get())

REG_EIGEN(MinEigenVal, 8u32f, 8u)
REG_EIGEN(MinEigenVal, 32f, 32f)
REG_EIGEN(EigenValsVecs, 8u32f, 8u)
REG_EIGEN(EigenValsVecs, 32f, 32f)

}  // namespace
