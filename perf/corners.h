// Base of the tests of edges and corners of a picture: derivatives, and what is made of them around
// each pixel.
#pragma once

#include <algorithm>

#include "bordered.h"
#include "zmocv.h"

namespace corners {

using namespace bordered;

enum class DerivativeMask { sobel3, sobel5, scharr3 };

inline psMapIterator<DerivativeMask> Kernel("Kernel", "Mask of the derivatives",
                                            {{DerivativeMask::sobel3, "sobel3"},
                                             {DerivativeMask::sobel5, "sobel5"},
                                             {DerivativeMask::scharr3, "scharr3"}},
                                            {DerivativeMask::sobel3, DerivativeMask::scharr3});
inline psIterator<int> Window("Window", "Side of the window in pixels", {3, 15});

// The library's arguments for the mask.
inline int kernelSize;
inline int windowSize;
template <class Type>
Type kernel;

class PictureTest : public BorderedTest {
  public:
    using BorderedTest::BorderedTest;

  protected:
    void regMaskParms() override { regParm(Kernel); }
    ZmoiSize margin() const override { return {kernelSize / 2, kernelSize / 2}; }

    bool initData() override {
        const bool scharr = Kernel.value() == DerivativeMask::scharr3;
        kernelSize = Kernel.value() == DerivativeMask::sobel5 ? 5 : 3;
        kernel<ZmoiKernelType> = scharr ? zmoiKernelScharr : zmoiKernelSobel;
        kernel<ZmoiDifferentialKernel> = scharr ? zmoiDiffScharr : zmoiDiffSobel;
        return BorderedTest::initData();
    }

    // Squares that stand askew, on a ground that is not quite even: corners and edges, and a large
    // area of neither.
    bool drawSource() override {
        if (ppPictureGiven()) return BorderedTest::drawSource();
        constexpr int side = 40;
        ppDrawBy(pSrc, [](int x, int y) {
            const int across = (63 * x + 11 * y) / 64 / side;
            const int down = (63 * y - 11 * x + (pSrc.width() << 6)) / 64 / side;
            const int bright = across % 2 == 0 && down % 2 == 0 ? 190 : 0;
            return 30 + bright + (x * 7 + y * 5) % 3;
        });
        return true;
    }
    // Both derivatives.
    double flopsOfElement() const override { return kernelSize == 3 ? 8 : 22; }
};

class CornerTest : public PictureTest {
  public:
    using PictureTest::PictureTest;

  protected:
    // The element of a pixel's results that is large at corners.
    virtual int cornerElement() const { return 0; }
    virtual int elementsOfPixel() const { return 1; }
    int resultElements(int pixels) const override { return elementsOfPixel() * pixels; }

    void regMaskParms() override {
        PictureTest::regMaskParms();
        regParm(Window);
    }
    ZmoiSize margin() const override {
        const int reach = kernelSize / 2 + windowSize / 2;
        return {reach, reach};
    }
    bool initData() override {
        windowSize = Window.value();
        return PictureTest::initData();
    }

    template <class Query>
    bool createCornerBuffer(const Query& query) {
        return createBufferBy(pBuffer, query, roi, kernelSize, windowSize, srcType(), 1);
    }

    // Four operations for each of three products that a column takes and loses, and two for the
    // window.
    double flopsOfElement() const override {
        return PictureTest::flopsOfElement() + 3 * (4 + 2) + flopsOfResult();
    }
    virtual double flopsOfResult() const = 0;

    psString dataFigure() override {
        double largest = 0;
        forEachResult([&](double value) { largest = std::max(largest, value); });
        double corners = 0;
        forEachResult([&](double value) { corners += value > 0.1 * largest ? 1 : 0; });
        return psFormat("%.2f%% of the pixels are corners", 100 * corners / roi.width / roi.height);
    }

  private:
    template <class Body>
    void forEachResult(Body body) const {
        const int first = cornerElement();
        const int step = elementsOfPixel();
        ppForEachPixel(roi, [&](int x, int y) { body(pDst.getImageAt(first + x * step, y, 0)); });
    }
};

// The smaller eigenvalue, or both and their vectors.
class EigenTest : public CornerTest {
  public:
    using CornerTest::CornerTest;

  protected:
    bool isMinimum() const { return named("MinEigenVal"); }
    int elementsOfPixel() const override { return isMinimum() ? 1 : 6; }
    int cornerElement() const override { return isMinimum() ? 0 : 1; }
    double flopsOfResult() const override { return isMinimum() ? 9 : 18; }
};

}  // namespace corners
