// Canny edges of a picture (zmoiCannyBorder).
#include "corners.h"

namespace {

using namespace corners;

psMapIterator<_ZmoiNorm> Norm("Norm", "Size of the gradient",
                              {{zmoiNormL1, "L1"}, {zmoiNormL2, "L2"}}, {zmoiNormL1, zmoiNormL2});

constexpr Zmo32f lowThreshold = 127.5F;
constexpr Zmo32f highThreshold = 382.5F;

ZmoiMaskSize maskSize;
ZmoiNorm norm;

PP_SERVICE(zmoiCannyBorderGetBufferSize);

class TimcCannyEdgeDet : public PictureTest {
  public:
    using PictureTest::PictureTest;

  protected:
    void regOwnParms() override {
        PictureTest::regOwnParms();
        regParm(Norm);
    }

    bool prepare() override {
        maskSize = static_cast<ZmoiMaskSize>(kernelSize);
        norm = Norm.value();
        return createBufferBy(pBuffer, lib_zmoiCannyBorderGetBufferSize, roi, maskSize, zmo8u, 1);
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are edges",
                        100.0 * ppShareOf(pDst, [](double value) { return value != 0; }));
    }
};

PP_REG(TimcCannyEdgeDet, zmoiCannyBorder_8u_C1R, BORDERED_SRC(8u), srcStep, pDst.ptr8u(), dstStep,
       roi, kernel<ZmoiDifferentialKernel>, maskSize, lowThreshold, highThreshold, norm, border,
       borderValue<Zmo8u>, pBuffer.get())

}  // namespace
