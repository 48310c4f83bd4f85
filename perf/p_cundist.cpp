// Lens distortion: correction of pictures and the map for it (zmoiUndistortRadial,
// zmoiCreateMapCameraUndistort).
#include <algorithm>
#include <cmath>
#include <vector>

#include "pixels.h"
#include "zmocv.h"

namespace {

using namespace pixels;

// A barrel takes its pixels from inside the picture, a cushion leaves corners without any.
enum class Lens { barrel, cushion };
psMapIterator<Lens> LensKind("Lens", "Distortion of the lens",
                             {{Lens::barrel, "barrel"}, {Lens::cushion, "cushion"}},
                             {Lens::barrel, Lens::cushion});

ppImage pDst2;
int dst2Step;
ppBuffer pBuffer;
Zmo32f camera[4];  // fx, fy, cx, cy
Zmo32f lens[4];    // k1, k2, p1, p2

PP_SERVICE(zmoiUndistortRadialGetBufferSize);
PP_SERVICE(zmoiCreateMapCameraUndistort_32f_C1R);

class TimcUndistort : public PixelTest {
  public:
    using PixelTest::PixelTest;

  protected:
    void regOwnParms() override {
        regParm(LensKind);
        if (!makesMap()) regParm(Picture);
    }

    bool createImages() override {
        setOptics();
        if (!create(pDst, ppArgDst, 1, dstStep)) return false;
        return makesMap() ? create(pDst2, ppArgDst, 2, dst2Step)
                          : create(pSrc, ppArgSrc, 0, srcStep) && drawPicture() && createBuffer();
    }

    void flushData() override {
        PixelTest::flushData();
        pDst2.deleteVector();
        pBuffer.release();
    }

    double getDivisor() override {
        return PixelTest::getDivisor() * std::max(1, pDst.numActualChannels());
    }

    // The place: eight sums and nine products, and the tangential part of the map; then nine
    // operations of the interpolation for each channel.
    int flopsOfPixel() const override {
        return makesMap() ? 35 : 17 / std::max(1, pDst.numActualChannels()) + 9;
    }

    psString dataFigure() override {
        std::vector<Zmo32f> mapX(static_cast<std::size_t>(roi.width) *
                                 static_cast<std::size_t>(roi.height));
        std::vector<Zmo32f> mapY(mapX.size());
        const int step = roi.width * static_cast<int>(sizeof(Zmo32f));
        if (!prepared(lib_zmoiCreateMapCameraUndistort_32f_C1R, mapX.data(), step, mapY.data(),
                      step, roi, camera, lens))
            return psString();
        double inside = 0;
        double farthest = 0;
        const auto width = static_cast<std::size_t>(roi.width);
        for (std::size_t i = 0; i < mapX.size(); ++i) {
            const std::size_t x = i % width;
            const std::size_t y = i / width;
            const double dx = mapX[i] - static_cast<double>(x);
            const double dy = mapY[i] - static_cast<double>(y);
            farthest = std::max(farthest, std::hypot(dx, dy));
            inside += mapX[i] >= 0 && mapY[i] >= 0 &&
                      mapX[i] <= static_cast<Zmo32f>(roi.width - 1) &&
                      mapY[i] <= static_cast<Zmo32f>(roi.height - 1);
        }
        return psFormat("%.2f%% of the pixels come from inside, from up to %.1f pixels away",
                        100.0 * inside / static_cast<double>(mapX.size()), farthest);
    }

  private:
    bool makesMap() const { return func().baseName().contains("Map"); }

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
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                const bool dark = (x / square + y / square) % 2 != 0;
                for (int c = 0; c < pSrc.numChannels(); ++c)
                    pSrc.setImageAt(x, y, c, (dark ? 30 : 200) + 10 * c + (x + y) % 7);
            }
        }
        return true;
    }

    bool createBuffer() {
        const auto type = libraryType(func().srcType());
        return createBufferBy(pBuffer, lib_zmoiUndistortRadialGetBufferSize, roi, type,
                              pSrc.numChannels());
    }
};

#define REG_UNDISTORT(type, channels)                                                             \
    PP_REG(TimcUndistort, zmoiUndistortRadial_##type##_C##channels##R, pSrc.ptr##type(), srcStep, \
           pDst.ptr##type(), dstStep, roi, camera, lens[0], lens[1], pBuffer.get())

REG_UNDISTORT(8u, 1)
REG_UNDISTORT(16u, 1)
REG_UNDISTORT(8u, 3)
REG_UNDISTORT(16u, 3)
REG_UNDISTORT(32f, 1)
REG_UNDISTORT(32f, 3)
PP_REG(TimcUndistort, zmoiCreateMapCameraUndistort_32f_C1R, pDst.ptr32f(), dstStep, pDst2.ptr32f(),
       dst2Step, roi, camera, lens)

}  // namespace
