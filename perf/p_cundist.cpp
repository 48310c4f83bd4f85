// Lens distortion: correction of pictures and the map for it (zmoiUndistortRadial,
// zmoiCreateMapCameraUndistort).
#include <algorithm>
#include <cmath>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

// A barrel takes its pixels from inside the picture, a cushion leaves corners without any.
enum class Lens { barrel, cushion };
psMapIterator<Lens> LensKind("Lens", "Distortion of the lens",
                             {{Lens::barrel, "barrel"}, {Lens::cushion, "cushion"}},
                             {Lens::barrel, Lens::cushion});

Zmo32f camera[4];  // fx, fy, cx, cy
Zmo32f lens[4];    // k1, k2, p1, p2

PP_SERVICE(zmoiUndistortRadialGetBufferSize);
PP_SERVICE(zmoiCreateMapCameraUndistort_32f_C1R);

class TimcUndistort : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(LensKind); }
    bool hasPicture() const override { return !makesMap(); }

    bool createImages() override {
        if (!create(pDst, ppArgDst, 1)) return false;
        return makesMap() ? create(pDst2, ppArgDst, 2) : create(pSrc, ppArgSrc, 0) && drawPicture();
    }

    bool prepare() override {
        setOptics();
        return makesMap() || createBufferBy(pBuffer, lib_zmoiUndistortRadialGetBufferSize, roi,
                                            srcType(), pSrc.numChannels());
    }

    void regArguments() override {
        ppImageTest::regArguments();
        regInput("camera", camera, 4);
        regInput("lens", lens, makesMap() ? 4 : 2);
    }

    // The place: eight sums and nine products, and the tangential part of the map; then nine
    // operations of the interpolation for each channel.
    double flopsOfElement() const override {
        return makesMap() ? 35 : 17 / pDst.numActualChannels() + 9;
    }

    psString dataFigure() override {
        ppImage mapX(pp32f, 1, false);
        ppImage mapY(pp32f, 1, false);
        if (!mapX.createImage(roi.width, roi.height) || !mapY.createImage(roi.width, roi.height) ||
            !prepared(lib_zmoiCreateMapCameraUndistort_32f_C1R, PP_IMAGE(mapX, 32f),
                      PP_IMAGE(mapY, 32f), roi, camera, lens))
            return psString();
        double inside = 0;
        double farthest = 0;
        ppForEachPixel(roi, [&](int x, int y) {
            const double fromX = mapX.getImageAt(x, y, 0);
            const double fromY = mapY.getImageAt(x, y, 0);
            farthest = std::max(farthest, std::hypot(fromX - x, fromY - y));
            inside += fromX >= 0 && fromY >= 0 && fromX <= roi.width - 1 && fromY <= roi.height - 1;
        });
        return psFormat("%.2f%% of the pixels come from inside, from up to %.1f pixels away",
                        100.0 * inside / roi.width / roi.height, farthest);
    }

  private:
    bool makesMap() const { return named("Map"); }

    // A wide lens, its axis a little off the middle.
    void setOptics() {
        camera[0] = camera[1] = 0.8F * static_cast<Zmo32f>(roi.width);
        camera[2] = 0.51F * static_cast<Zmo32f>(roi.width);
        camera[3] = 0.48F * static_cast<Zmo32f>(roi.height);
        const bool barrel = LensKind.value() == Lens::barrel;
        lens[0] = barrel ? -0.28F : 0.18F;
        lens[1] = barrel ? 0.07F : 0.02F;
        lens[2] = makesMap() ? 0.0008F : 0;
        lens[3] = makesMap() ? -0.0005F : 0;
    }

    // A chart of squares, as for a calibration.
    static bool drawPicture() {
        if (ppPictureGiven()) return ppDrawSource(pSrc);
        constexpr int square = 24;
        ppDrawBy(pSrc, [](int x, int y, int c) {
            const bool dark = (x / square + y / square) % 2 != 0;
            return (dark ? 30 : 200) + 10 * c + (x + y) % 7;
        });
        return true;
    }
};

#define REG_UNDISTORT(type, channels)                                                        \
    PP_REG(TimcUndistort, zmoiUndistortRadial_##type##_C##channels##R, PP_IMAGE(pSrc, type), \
           PP_IMAGE(pDst, type), roi, camera, lens[0], lens[1], pBuffer.get())

REG_UNDISTORT(8u, 1)
REG_UNDISTORT(16u, 1)
REG_UNDISTORT(8u, 3)
REG_UNDISTORT(16u, 3)
REG_UNDISTORT(32f, 1)
REG_UNDISTORT(32f, 3)
PP_REG(TimcUndistort, zmoiCreateMapCameraUndistort_32f_C1R, PP_IMAGE(pDst, 32f),
       PP_IMAGE(pDst2, 32f), roi, camera, lens)

}  // namespace
