// Copies of windows at fractional positions: inside the image (zmoiCopySubpix), and over its edges
// (zmoiCopySubpixIntersect).
#include "pp.h"
#include "zmocv.h"

namespace {

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

ppImage pSrc;
ppImage pDst;
int srcStep;
int dstStep;
ZmoiSize srcRoi;
ZmoiSize roi;
Zmo32f dx;
Zmo32f dy;
ZmoiPoint32f corner;
ZmoiPoint first;
ZmoiPoint last;
int scaleFactor;

// The window has the size asked for, the image a row and a column more.
class CopySubpixTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    bool canStart() override {
        regParm(ImageSize);
        regParm(Fraction);
        regOwnParms();
        if (func().scale()) regParm(ScaleFactor);
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }

    bool initData() override {
        roi = ImageSize.value();
        srcRoi = {roi.width + 1, roi.height + 1};
        dx = isFractional(Axes::x) ? fractionX : 0;
        dy = isFractional(Axes::y) ? fractionY : 0;
        scaleFactor = func().scale() ? ScaleFactor.value() : 0;
        pSrc.init(func(), ppArgSrc);
        pDst.init(func(), ppArgDst);
        if (!pSrc.createImage(srcRoi.width, srcRoi.height, 0, ppMisalign(0)) ||
            !pDst.createImage(roi.width, roi.height, 0, ppMisalign(1)))
            return false;
        srcStep = pSrc.step();
        dstStep = pDst.step();
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        return ppDrawSource(pSrc);
    }

    void flushData() override {
        pSrc.deleteVector();
        pDst.deleteVector();
    }

    double getDivisor() override { return static_cast<double>(roi.width) * roi.height; }
    psString getUnit() override { return "pxch"; }
    // Two products and a sum for each axis.
    double getFlops() override {
        const int axes = isFractional(Axes::x) + isFractional(Axes::y);
        return func().dstType() == pp32f ? getDivisor() * 3 * axes : 0.0;
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the window lie inside the image, moved by %g, %g",
                        validPercent(), dx, dy);
    }
    virtual double validPercent() const { return 100; }

    virtual void regOwnParms() {}

  private:
    static bool isFractional(Axes axis) {
        return Fraction.value() == axis || Fraction.value() == Axes::both;
    }
};

class TimcvCopySub : public CopySubpixTest {
  public:
    using CopySubpixTest::CopySubpixTest;
};

// The window hangs over the image's upper left corner.
class TimcvCopySubInter : public CopySubpixTest {
  public:
    using CopySubpixTest::CopySubpixTest;

  protected:
    void regOwnParms() override { regParm(Outside); }

    bool initData() override {
        if (!CopySubpixTest::initData()) return false;
        corner = {dx - static_cast<Zmo32f>(outside(roi.width)),
                  dy - static_cast<Zmo32f>(outside(roi.height))};
        return true;
    }

    double validPercent() const override {
        return 100.0 * (last.x - first.x + 1) * (last.y - first.y + 1) / roi.width / roi.height;
    }

  private:
    static int outside(int side) { return side * Outside.value() / 100; }
};

#define REG_COPY_SUBPIX(name, from, to, ...)                                                     \
    PP_REG(TimcvCopySub, zmoiCopySubpix_##name, pSrc.ptr##from(), srcStep, pDst.ptr##to(),       \
           dstStep, roi, dx, dy __VA_ARGS__)                                                     \
    PP_REG(TimcvCopySubInter, zmoiCopySubpixIntersect_##name, pSrc.ptr##from(), srcStep, srcRoi, \
           pDst.ptr##to(), dstStep, roi, corner, &first, &last __VA_ARGS__)

REG_COPY_SUBPIX(8u_C1R, 8u, 8u)
REG_COPY_SUBPIX(16u_C1R, 16u, 16u)
REG_COPY_SUBPIX(8u16u_C1R_Sfs, 8u, 16u, , scaleFactor)
REG_COPY_SUBPIX(8u32f_C1R, 8u, 32f)
REG_COPY_SUBPIX(16u32f_C1R, 16u, 32f)
REG_COPY_SUBPIX(32f_C1R, 32f, 32f)

}  // namespace
