// Copies of windows at fractional positions: inside the image (zmoiCopySubpix), and over its edges
// (zmoiCopySubpixIntersect).
#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

// The axes along which the position is fractional: along the others nothing is interpolated.
enum class Axes { none, x, y, both };

psMapIterator<Axes> Fraction(
    "Fraction", "Axes of the fractional position",
    {{Axes::none, "none"}, {Axes::x, "x"}, {Axes::y, "y"}, {Axes::both, "both"}},
    {Axes::none, Axes::x, Axes::y, Axes::both});
psIterator<int> Outside("Outside", "Part of the window's sides outside the image, percent",
                        {0, 25});

constexpr Zmo32f fractionX = 0.3125F;
constexpr Zmo32f fractionY = 0.6875F;

ZmoiSize srcRoi;
Zmo32f dx;
Zmo32f dy;
ZmoiPoint32f corner;
ZmoiPoint first;
ZmoiPoint last;
int scaleFactor;

// The window has the size asked for, the image a row and a column more.
class TimcvCopySub : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        regParm(Fraction);
        regPlace();
        if (func().scale()) regParm(ScaleFactor);
    }
    virtual void regPlace() {}

    bool createImages() override {
        srcRoi = {roi.width + 1, roi.height + 1};
        dx = isFractional(Axes::x) ? fractionX : 0;
        dy = isFractional(Axes::y) ? fractionY : 0;
        scaleFactor = func().scale() ? ScaleFactor.value() : 0;
        return create(pSrc, ppArgSrc, 0, srcRoi) && ppDrawSource(pSrc) && create(pDst, ppArgDst, 1);
    }

    // Two products and a sum for each axis.
    double flopsOfElement() const override {
        return 3 * (isFractional(Axes::x) + isFractional(Axes::y));
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the window lie inside the image, moved by %g, %g",
                        validPercent(), dx, dy);
    }
    virtual double validPercent() const { return 100; }

  private:
    static bool isFractional(Axes axis) {
        return Fraction.value() == axis || Fraction.value() == Axes::both;
    }
};

// The window hangs over the image's upper left corner.
class TimcvCopySubInter : public TimcvCopySub {
  public:
    using TimcvCopySub::TimcvCopySub;

  protected:
    void regPlace() override { regParm(Outside); }

    bool prepare() override {
        corner = {dx - static_cast<Zmo32f>(outside(roi.width)),
                  dy - static_cast<Zmo32f>(outside(roi.height))};
        return true;
    }

    void regArguments() override {
        TimcvCopySub::regArguments();
        regOutput("first", &first.x, 2);
        regOutput("last", &last.x, 2);
    }

    double validPercent() const override {
        return 100.0 * (last.x - first.x + 1) * (last.y - first.y + 1) / roi.width / roi.height;
    }

  private:
    static int outside(int side) { return side * Outside.value() / 100; }
};

#define REG_COPY_SUBPIX(name, from, to, ...)                                                       \
    PP_REG(TimcvCopySub, zmoiCopySubpix_##name, PP_IMAGE(pSrc, from), PP_IMAGE(pDst, to), roi, dx, \
           dy __VA_ARGS__)                                                                         \
    PP_REG(TimcvCopySubInter, zmoiCopySubpixIntersect_##name, PP_IMAGE(pSrc, from), srcRoi,        \
           PP_IMAGE(pDst, to), roi, corner, &first, &last __VA_ARGS__)

REG_COPY_SUBPIX(8u_C1R, 8u, 8u)
REG_COPY_SUBPIX(16u_C1R, 16u, 16u)
REG_COPY_SUBPIX(8u16u_C1R_Sfs, 8u, 16u, , scaleFactor)
REG_COPY_SUBPIX(8u32f_C1R, 8u, 32f)
REG_COPY_SUBPIX(16u32f_C1R, 16u, 32f)
REG_COPY_SUBPIX(32f_C1R, 32f, 32f)

}  // namespace
