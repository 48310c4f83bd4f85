// Tables of sums and of squares, upright and tilted (zmoiIntegral, zmoiTiltedIntegral,
// zmoiSqrIntegral, zmoiTiltedSqrIntegral).
#include <algorithm>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

class TimcvIntegral : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    bool createImages() override {
        // One row and one column more than the picture has.
        const ZmoiSize size{roi.width + 1, roi.height + 1};
        return createSource() && create(pDst, func().type(2), 1, size) &&
               (!hasSquares() || create(pDst2, func().type(3), 2, size));
    }

    // A sum along the row and one with the row above, for each table of floats.
    double flopsOfElement() const override {
        const int values = func().type(2) == pp32f ? 2 : 0;
        return values + (hasSquares() && func().type(3) == pp64f ? 2 : 0);
    }
    double getFlops() override { return getDivisor() * flopsOfElement(); }

    psString dataFigure() override {
        return psFormat("the mean of the pixels in the last sum is %.5g",
                        pDst.getImageAt(roi.width, roi.height, 0) / pixelsInLastSum());
    }

  private:
    // A tilted sum is over the triangle above, of which the left half lies in the picture.
    double pixelsInLastSum() {
        if (!named("Tilted")) return getDivisor();
        double pixels = 0;
        for (int y = 1; y <= roi.height; ++y) pixels += std::min(y, roi.width);
        return pixels;
    }
    bool hasSquares() const { return named("Sqr"); }
};

#define REG_INTEGRAL(name, src, dst) \
    PP_REG(TimcvIntegral, zmoi##name##_C1R, PP_IMAGE(pSrc, src), PP_IMAGE(pDst, dst), roi, 0)
#define REG_SQR_INTEGRAL(name, dst, sqr)                                             \
    PP_REG(TimcvIntegral, zmoi##name##_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, dst), \
           PP_IMAGE(pDst2, sqr), roi, 0, 0)
#define REG_SQR_INTEGRALS(base)                 \
    REG_SQR_INTEGRAL(base##_8u32s, 32s, 32s)    \
    REG_SQR_INTEGRAL(base##_8u32s64f, 32s, 64f) \
    REG_SQR_INTEGRAL(base##_8u32f64f, 32f, 64f)

REG_INTEGRAL(Integral_8u32s, 8u, 32s)
REG_INTEGRAL(Integral_8u32f, 8u, 32f)
REG_INTEGRAL(Integral_32f, 32f, 32f)
REG_INTEGRAL(TiltedIntegral_8u32s, 8u, 32s)
REG_INTEGRAL(TiltedIntegral_8u32f, 8u, 32f)
REG_SQR_INTEGRALS(SqrIntegral)
REG_SQR_INTEGRALS(TiltedSqrIntegral)

}  // namespace
