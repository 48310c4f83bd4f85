// Adaptive mixtures of Gaussians (zmoiFGMMForeground, zmoiFGMMBackground).
#include <algorithm>
#include <cmath>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

psIterator<int> Components("Components", "Components of a pixel, at most", {3, 5});

constexpr Zmo32f learningRate = 0.05F;
constexpr Zmo32f matchThreshold = 9;
constexpr Zmo32f backgroundShare = 0.9F;
constexpr Zmo32f complexity = 0.05F;
constexpr Zmo32f initialVariance = 225;

// The state of a timed call has seen so many pictures; the next one is measured.
constexpr int picturesSeen = 25;

ppVector pModel;  // the state

PP_SERVICE(zmoiFGMMGetSize);
PP_SERVICE(zmoiFGMMInit);
PP_SERVICE(zmoiFGMMForeground_8u_C3R);

ZmoiFGMMState* model() {
    return reinterpret_cast<ZmoiFGMMState*>(pModel.ptr8u());
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

// In every fourth tile every other stripe goes through four shades: too far apart for one
// component, too many for three.
bool isWaving(int x, int y) {
    constexpr int tile = 32;
    return (x / tile + 2 * (y / tile)) % 4 == 1 && (x / 5 + y / 7) % 2 == 0;
}
int waving(int x, int y, int frame) {
    return 20 + 60 * ((x / 5 + y / 7 + frame) % 4);
}

class TimiGMM : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(Components); }

    bool createImages() override {
        pSrc.init(pp8u, 3, false);
        pDst.init(pp8u, isForeground() ? 1 : 3, false);
        return place(pSrc, 0) && place(pDst, 1) && drawGround() && createState() &&
               showPictures() && pModel.reserveCopy() != 0;
    }

    void flushData() override {
        ppImageTest::flushData();
        m_ground.deleteVector();
        pModel.deleteVector();
    }

    void regArguments() override {
        regOutput("pDst", pDst);
        if (isForeground()) {
            regInput("pSrc", pSrc);
            regScratch("pModel", pModel);
        } else {
            regInput("pModel", pModel);
        }
    }

    double getDivisor() override { return 3.0 * roi.width * roi.height; }

    psString dataFigure() override {
        if (isForeground())
            return psFormat("%.2f%% of the pixels are foreground", 100.0 * ppMeanOf(pDst) / 255);
        double sum = 0;
        ppForEachPixel(roi, [&](int x, int y) {
            sum += std::fabs(pDst.getImageAt(x, y, 1) - m_ground.getImageAt(x, y, 0));
        });
        return psFormat("the background is off by %.2f", sum / roi.width / roi.height);
    }

  private:
    bool isForeground() const { return named("Foreground"); }

    // What stands still: the picture, or tiles of several shades.
    bool drawGround() {
        m_ground.init(pp8u, 1, false);
        if (!m_ground.createImage(roi.width, roi.height)) return false;
        if (ppPictureGiven()) return ppDrawPicture(m_ground);
        ppDrawBy(m_ground,
                 [](int x, int y) { return 40 + (x / 20 + y / 15) % 4 * 30 + (x + y) % 8; });
        return true;
    }

    bool createState() {
        int size = 0;
        const int components = Components.value();
        return prepared(lib_zmoiFGMMGetSize, roi, components, zmo8u, 3, &size) &&
               createVector(size) &&
               prepared(lib_zmoiFGMMInit, roi, components, learningRate, matchThreshold,
                        backgroundShare, complexity, initialVariance, zmo8u, 3, model());
    }
    static bool createVector(int size) {
        pModel.init(pp8u);
        return pModel.createZeroed(size, ppMisalign(2));
    }

    bool showPictures() {
        ppImage mask(pp8u, 1, false);
        if (!mask.createImage(roi.width, roi.height)) return false;
        unsigned noise = 7;
        for (int frame = 0; frame < picturesSeen; ++frame) {
            drawFrame(frame, noise);
            if (!prepared(lib_zmoiFGMMForeground_8u_C3R, PP_IMAGE(pSrc, 8u), PP_IMAGE(mask, 8u),
                          roi, model()))
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

PP_REG_I(TimiGMM, zmoiFGMMForeground_8u_C3R, pModel.setReservedCopy(), PP_IMAGE(pSrc, 8u),
         PP_IMAGE(pDst, 8u), roi, model())
// Reads the state only: the copy keeps what the pictures have taught.
PP_REG_I(TimiGMM, zmoiFGMMBackground_8u_C3R, pModel.setReservedCopy(), PP_IMAGE(pDst, 8u), roi,
         model())

}  // namespace
