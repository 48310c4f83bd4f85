// Filling of damaged pixels (zmoiInpaint).
#include <algorithm>
#include <cmath>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

psIterator<int> Radius("Radius", "Neighbourhood that a pixel is filled from, pixels", {3, 8});
psIterator<int> Damage("Damage", "Damaged pixels, percent", {2, 10});
psMapIterator<_ZmoiInpaintFlag> Flag("Flag", "Rule of filling",
                                     {{zmoiInpaintMarching, "marching"},
                                      {zmoiInpaintDiffusion, "diffusion"}},
                                     {zmoiInpaintMarching, zmoiInpaintDiffusion});

Zmo32f radius;
ZmoiInpaintFlag flag;

PP_SERVICE(zmoiInpaintGetBufferSize);

class TimcInpaint : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        regParm(Radius);
        regParm(Damage);
        regParm(Flag);
    }

    // The source keeps the values below the damage, which the function does not use: the figure
    // compares with them.
    bool createImages() override {
        return create(pSrc, ppArgSrc, 0) && drawPicture() && create(pMask, pp8u, 1) &&
               drawDamage() && create(pDst, ppArgDst, 2);
    }

    bool prepare() override {
        radius = static_cast<Zmo32f>(Radius.value());
        flag = Flag.value();
        return createBufferBy(pBuffer, lib_zmoiInpaintGetBufferSize, roi, zmo8u,
                              pSrc.numChannels());
    }
    psString dataFigure() override {
        double error = 0;
        int filled = 0;
        ppForEachPixel(roi, [&](int x, int y) {
            if (pMask.getImageAt(x, y, 0) == 0) return;
            error += std::abs(pDst.getImageAt(x, y, 0) - pSrc.getImageAt(x, y, 0));
            ++filled;
        });
        return psFormat("a mean error of %.2f where %.2f%% of the pixels are filled",
                        error / std::max(1, filled), 100.0 * filled / roi.width / roi.height);
    }

  private:
    // Hills with edges between them, other ones in each channel.
    static bool drawPicture() {
        if (ppPictureGiven()) return ppDrawSource(pSrc);
        ppDrawBy(pSrc, [](int x, int y, int c) {
            const bool other = (x + y / 2) % 96 < 40;
            const double hills = 40 * std::sin(0.05 * x + c) * std::cos(0.07 * y);
            return std::floor((other ? 170 : 80) + hills);
        });
        return true;
    }

    // Scratches: strokes three pixels wide that wind across the picture, until enough is damaged.
    static bool drawDamage() {
        if (!ppInRange(Damage, 0, 100)) return false;
        constexpr int strokeLength = 60;
        ppImage starts(pp16u, 1, false);  // random numbers, a stroke each
        const int most = roi.width * roi.height / 50 + 4;
        if (!starts.createImage(most, 3) || !starts.setRandom()) return false;
        const double wanted = Damage.value() / 100.0 * roi.width * roi.height;
        double damaged = 0;
        for (int i = 0; i < most; ++i) {
            double x = std::fmod(starts.getImageAt(i, 0, 0), roi.width);
            double y = std::fmod(starts.getImageAt(i, 1, 0), roi.height);
            double angle = starts.getImageAt(i, 2, 0);
            for (int k = 0; k < strokeLength && damaged < wanted; ++k) {
                damaged += damageAround(static_cast<int>(x), static_cast<int>(y));
                x += std::cos(angle);
                y += std::sin(angle);
                angle += 0.03;
            }
        }
        return true;
    }

    static int damageAround(int x, int y) {
        int fresh = 0;
        for (int j = std::max(0, y - 1); j <= std::min(roi.height - 1, y + 1); ++j) {
            for (int i = std::max(0, x - 1); i <= std::min(roi.width - 1, x + 1); ++i) {
                fresh += pMask.getImageAt(i, j, 0) == 0;
                pMask.setImageAt(i, j, 0, 255);
            }
        }
        return fresh;
    }
};

#define REG_INPAINT(channels)                                                                   \
    PP_REG(TimcInpaint, zmoiInpaint_8u_C##channels##R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pMask, 8u), \
           PP_IMAGE(pDst, 8u), roi, radius, flag, pBuffer.get())

REG_INPAINT(1)
REG_INPAINT(3)

}  // namespace
