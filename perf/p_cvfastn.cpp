// Corners by the segment test, and their list (zmoiFastN).
#include "squares.h"

namespace {

using namespace squares;

psIterator<int> Arc("Arc", "Neighbours on the circle that make a corner", {9, 12});
psIterator<int> Threshold("Threshold", "Difference that they need", {20});
psIterator<int> Suppress("Suppress", "Keep only the maxima", {0, 1});

// Small squares give a small picture some corners, too. On a dot every pixel is one, for any arc,
// and one of them is the largest.
constexpr int cell = 32;

bool isDot(int x, int y) {
    return x % 29 < 3 && y % 31 < 3;
}

int arc;
int threshold;
int suppress;
int count;
int maxCorners;
ppVector pList(pp32s);  // coordinates in pairs

ZmoiPoint* list() {
    return reinterpret_cast<ZmoiPoint*>(pList.ptr32s());
}

PP_SERVICE(zmoiFastNGetBufferSize);
PP_SERVICE(zmoiFastN_8u_C1R);

class TimiFastN : public SquareTest {
  public:
    using SquareTest::SquareTest;

  protected:
    void regOwnParms() override {
        regParm(Arc);
        regParm(Threshold);
        regParm(Suppress);
    }

    bool createImages() override {
        return create(pSrc, pp8u, 0) && drawSquares(pSrc, cell) && drawDots() &&
               create(pDst, pp8u, 1);
    }

    bool prepare() override {
        arc = Arc.value();
        threshold = Threshold.value();
        suppress = Suppress.value();
        return createBufferBy(pBuffer, lib_zmoiFastNGetBufferSize, roi, zmo8u, 1) &&
               (!makesList() || createMap());
    }

    void flushData() override {
        SquareTest::flushData();
        pList.deleteVector();
    }

    void regArguments() override {
        if (makesList()) {
            regInput("pDst", pDst);
            regOutput("list", pList.ptr32s(), 2 * count);
        } else {
            SquareTest::regArguments();
        }
        regOutput("count", &count);
    }

    double getDivisor() override {
        return makesList() ? std::max(1, count) : SquareTest::getDivisor();
    }
    psString getUnit() override { return makesList() ? "corner" : "pxch"; }

    psString dataFigure() override {
        return psFormat("%d corners, %.3f%% of the pixels", count,
                        100.0 * count / roi.width / roi.height);
    }

  private:
    bool makesList() const { return named("Vec"); }

    static bool drawDots() {
        if (ppPictureGiven()) return true;
        ppForEachPixel(roi, [](int x, int y) {
            if (isDot(x, y)) pSrc.setImageAt(x, y, 0, 230 + (x + 2 * y) % 5);
        });
        return true;
    }

    // The list is made of what the search for corners gives.
    static bool createMap() {
        if (!prepared(lib_zmoiFastN_8u_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, 8u), roi, arc,
                      threshold, suppress, &count, pBuffer.get()))
            return false;
        maxCorners = std::max(1, count);
        return pList.createZeroed(2 * maxCorners);
    }
};

PP_REG(TimiFastN, zmoiFastN_8u_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, 8u), roi, arc, threshold,
       suppress, &count, pBuffer.get())
PP_REG(TimiFastN, zmoiFastN2DToVec_8u, PP_IMAGE(pDst, 8u), list(), roi, maxCorners, &count)

}  // namespace
