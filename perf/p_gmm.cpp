// Adaptive mixtures of Gaussians (zmoiFGMMForeground, zmoiFGMMBackground).
#include <algorithm>
#include <cmath>

#include "pixels.h"
#include "zmocv.h"

namespace {

using namespace pixels;

psIterator<int> Components("Components", "Components of a pixel, at most", {3, 5});

constexpr Zmo32f learningRate = 0.05F;
constexpr Zmo32f matchThreshold = 9;
constexpr Zmo32f backgroundShare = 0.9F;
constexpr Zmo32f complexity = 0.05F;
constexpr Zmo32f initialVariance = 225;

// The state of a timed call has seen so many pictures; the next one is measured.
constexpr int picturesSeen = 25;

ppVector pState;

PP_SERVICE(zmoiFGMMGetSize);
PP_SERVICE(zmoiFGMMInit);
PP_SERVICE(zmoiFGMMForeground_8u_C3R);

ZmoiFGMMState* state() {
    return reinterpret_cast<ZmoiFGMMState*>(pState.ptr8u());
}

// Discs of one colour go their ways to the right and wrap around.
constexpr int discRadius = 14;
constexpr int discDistance = 96;
constexpr int discSpeed = 9;
constexpr int discValue = 240;

bool isDisc(int x, int y, int frame) {
    const int dx =
        (x + (y / discDistance) * 31 + (picturesSeen + 1 - frame) * discSpeed) % discDistance -
        discDistance / 2;
    const int dy = y % discDistance - discDistance / 4;
    return dx * dx + dy * dy < discRadius * discRadius;
}

// In every fourth tile every other stripe goes through four shades: too far apart for one component, too
// many for three.
bool isWaving(int x, int y) {
    constexpr int tile = 32;
    return (x / tile + 2 * (y / tile)) % 4 == 1 && (x / 5 + y / 7) % 2 == 0;
}
int waving(int x, int y, int frame) {
    return 20 + 60 * ((x / 5 + y / 7 + frame) % 4);
}

class TimiGMM : public PixelTest {
  public:
    using PixelTest::PixelTest;

  protected:
    void regOwnParms() override {
        regParm(Components);
        regParm(Picture);
    }

    bool createImages() override {
        pSrc.init(pp8u, 3, false);
        pDst.init(pp8u, isForeground() ? 1 : 3, false);
        return create(pSrc, 0, srcStep) && create(pDst, 1, dstStep) && drawGround() &&
               createState() && showPictures() && pState.reserveCopy() != 0;
    }

    void flushData() override {
        PixelTest::flushData();
        m_ground.deleteVector();
        pState.deleteReservedCopy();
        pState.deleteVector();
    }

    int flopsOfPixel() const override { return 0; }
    double getDivisor() override { return PixelTest::getDivisor() * 3; }

    psString dataFigure() override {
        if (isForeground())
            return psFormat("%.2f%% of the pixels are foreground", 100.0 * ppMeanOf(pDst) / 255);
        double sum = 0;
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x)
                sum += std::fabs(pDst.getImageAt(x, y, 1) - m_ground.getImageAt(x, y, 0));
        }
        return psFormat("the background is off by %.2f", sum / PixelTest::getDivisor());
    }

  private:
    bool isForeground() const { return func().baseName().contains("Foreground"); }

    // What stands still: the picture, or tiles of several shades.
    bool drawGround() {
        m_ground.init(pp8u, 1, false);
        if (!m_ground.createImage(roi.width, roi.height)) return false;
        if (ppPictureGiven()) return ppDrawPicture(m_ground);
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x)
                m_ground.setImageAt(x, y, 0, 40 + (x / 20 + y / 15) % 4 * 30 + (x + y) % 8);
        }
        return true;
    }

    bool createState() {
        int size = 0;
        const int components = Components.value();
        return prepared(lib_zmoiFGMMGetSize, roi, components, zmo8u, 3, &size) &&
               createVector(size) &&
               prepared(lib_zmoiFGMMInit, roi, components, learningRate, matchThreshold,
                        backgroundShare, complexity, initialVariance, zmo8u, 3, state());
    }
    static bool createVector(int size) {
        pState.init(pp8u);
        return pState.createZeroed(size, ppMisalign(2));
    }

    bool showPictures() {
        ppImage mask(pp8u, 1, false);
        if (!mask.createImage(roi.width, roi.height)) return false;
        unsigned noise = 7;
        for (int frame = 0; frame < picturesSeen; ++frame) {
            drawFrame(frame, noise);
            if (!prepared(lib_zmoiFGMMForeground_8u_C3R, pSrc.ptr8u(), srcStep, mask.ptr8u(),
                          mask.step(), roi, state()))
                return false;
        }
        drawFrame(picturesSeen, noise);
        return true;
    }

    void drawFrame(int frame, unsigned& noise) {
        for (int y = 0; y < roi.height; ++y) {
            const auto* const ground = static_cast<const Zmo8u*>(m_ground.getRowPointer(y));
            auto* const row = static_cast<Zmo8u*>(pSrc.getRowPointer(y));
            for (int x = 0; x < roi.width; ++x) {
                const int still = isWaving(x, y) ? waving(x, y, frame) : ground[x];
                const int value = isDisc(x, y, frame) ? discValue : still;
                for (int c = 0; c < 3; ++c) {
                    noise = noise * 1664525U + 1013904223U;
                    const int grain = static_cast<int>(noise >> 24) % 9 - 4;
                    row[3 * x + c] = static_cast<Zmo8u>(std::clamp(value + grain, 0, 255));
                }
            }
        }
    }

    ppImage m_ground;
};

PP_REG_I(TimiGMM, zmoiFGMMForeground_8u_C3R, pState.setReservedCopy(), pSrc.ptr8u(), srcStep,
         pDst.ptr8u(), dstStep, roi, state())
// Reads the state only: the copy keeps what the pictures have taught.
PP_REG_I(TimiGMM, zmoiFGMMBackground_8u_C3R, pState.setReservedCopy(), pDst.ptr8u(), dstStep, roi,
         state())

}  // namespace
