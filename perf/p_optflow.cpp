// Points followed between two shifted pictures (zmoiOpticalFlowPyrLK).
#include <algorithm>
#include <array>
#include <cmath>

#include "pp.h"
#include "zmocv.h"
#include "zmoi.h"

namespace {

using namespace images;  // the state is that of the pyramid

psIterator<int> Window("Window", "Window size", {11, 21});
psIterator<int> Levels("Levels", "Layers of the pyramids", {1, 4});

constexpr int mostLevels = 8;
constexpr int maxIterations = 20;
constexpr Zmo32f epsilon = 0.03F;

// How far the second picture has moved. Without a pyramid that is far.
constexpr double shiftX = 3.75;
constexpr double shiftY = -2.5;

constexpr int pointDistance = 16;

using Layers = std::array<ppImage, mostLevels>;

Layers firstLayers;
Layers secondLayers;
ppVector pFrom;  // coordinates in pairs
ppVector pTo;    // alike; each timed call starts from the reserved copy
ppVector pFound;
ppVector pError;
ppBuffer pPyramidBuffer;
ZmoiPyramidLevels first;
ZmoiPyramidLevels second;
int count;
int window;
int maxLevel;

PP_SERVICE(zmoiPyramidGetSize);
PP_SERVICE(zmoiPyramidInit);
PP_SERVICE(zmoiPyramidLayerDown_8u_C1R);
PP_SERVICE(zmoiPyramidLayerDown_16u_C1R);
PP_SERVICE(zmoiPyramidLayerDown_32f_C1R);
PP_SERVICE(zmoiOpticalFlowPyrLKGetBufferSize);

ZmoiPoint32f* pointsOf(const ppVector& vector) {
    return reinterpret_cast<ZmoiPoint32f*>(vector.ptr32f());
}

// A number in 0 ... 1 for each place of a lattice.
double latticeValue(int x, int y) {
    unsigned hash = static_cast<unsigned>(x) * 374761393U + static_cast<unsigned>(y) * 668265263U;
    hash = (hash ^ (hash >> 13)) * 1274126177U;
    return static_cast<double>((hash ^ (hash >> 16)) & 0xffffU) / 65535.0;
}

// at(x, y) between its whole places.
template <class At>
double blended(double x, double y, At at) {
    const int left = static_cast<int>(std::floor(x));
    const int top = static_cast<int>(std::floor(y));
    const double fx = x - left;
    const double fy = y - top;
    return (1 - fy) * ((1 - fx) * at(left, top) + fx * at(left + 1, top)) +
           fy * ((1 - fx) * at(left, top + 1) + fx * at(left + 1, top + 1));
}

class TimOptFlow : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        regParm(Window);
        regParm(Levels);
        regCacheParm(ImageSize);
    }

    bool createImages() override {
        if (!ppInRange(Levels, 1, mostLevels)) return false;
        maxLevel = Levels.value() - 1;
        return preparePyramid() && createLayers(firstLayers, first, 0, 0, 0) &&
               createLayers(secondLayers, second, shiftX, shiftY, 1) && createPoints();
    }

    bool prepare() override {
        window = Window.value();
        return createBufferBy(pBuffer, lib_zmoiOpticalFlowPyrLKGetBufferSize, window, srcType(), 1);
    }

    void flushData() override {
        ppImageTest::flushData();
        for (Layers* layers : {&firstLayers, &secondLayers}) {
            for (ppImage& layer : *layers) layer.deleteVector();
        }
        for (ppVector* vector : {&pFrom, &pTo, &pFound, &pError}) vector->deleteVector();
        pPyramidBuffer.release();
    }

    void regArguments() override {
        for (const Layers* layers : {&firstLayers, &secondLayers}) {
            for (const ppImage& layer : *layers) regInput("layer", layer);
        }
        regInput("pFrom", pFrom);
        regInOut("pTo", pTo);
        regOutput("pFound", pFound);
        regOutput("pError", pError);
        regScratch("pBuffer", pBuffer);
    }

    double getDivisor() override { return count; }
    psString getUnit() override { return "point"; }

    // In a layer: the window of the first picture with slopes and their products, and the steps,
    // each a window of the second picture, differences and their products.
    double getFlops() override {
        if (func().srcType() != pp32f) return 0;
        const double pixels = static_cast<double>(window) * window;
        const double stepsOfLayer = maxLevel == 0 ? 5 : 2.2;  // these pictures need, on average
        return count * (maxLevel + 1) * pixels * (16.0 + stepsOfLayer * 11.0);
    }

    psString dataFigure() override {
        double error = 0;
        int found = 0;
        for (int i = 0; i < count; ++i) {
            if (pFound.getIndex(i) == 0) continue;
            ++found;
            const double dx = pTo.getIndex(2 * i) - pFrom.getIndex(2 * i) - shiftX;
            const double dy = pTo.getIndex(2 * i + 1) - pFrom.getIndex(2 * i + 1) - shiftY;
            error += std::hypot(dx, dy);
        }
        return psFormat("mean flow error %.3f pixels, %.1f%% of %d points are found",
                        found > 0 ? error / found : 0.0, 100.0 * found / count, count);
    }

  private:
    bool preparePyramid() {
        return createBuffersBy(pState, pPyramidBuffer, lib_zmoiPyramidGetSize, roi, srcType(), 1) &&
               prepared(lib_zmoiPyramidInit, nullptr, 5, 2, zmoiBorderReplicate, nullptr, srcType(),
                        1, state<ZmoiPyramidState>());
    }

    // The picture shifted by (dx, dy), and its layers.
    bool createLayers(Layers& layers, ZmoiPyramidLevels& levels, double dx, double dy, int index) {
        levels = {};
        ZmoiSize size = roi;
        for (int k = 0; k <= maxLevel; ++k) {
            ppImage& layer = layers[static_cast<std::size_t>(k)];
            layer.init(func(), ppArgSrc);
            if (!layer.createImage(size.width, size.height, 0, ppMisalign(index))) return false;
            levels.pImage[k] = layer.data();
            levels.step[k] = layer.step();
            levels.roi[k] = size;
            levels.levels = k + 1;
            if (k == 0 ? !drawPicture(layer, dx, dy) : !layerDown(levels, k)) return false;
            size = {(size.width + 1) / 2, (size.height + 1) / 2};
        }
        return true;
    }

    static bool drawPicture(ppImage& image, double dx, double dy) {
        ppImage grey(pp8u, 1, false);
        if (ppPictureGiven() &&
            (!grey.createImage(image.width(), image.height()) || !ppDrawPicture(grey)))
            return false;
        const auto pixel = [&](int x, int y) {
            return grey.getImageAt(std::clamp(x, 0, image.width() - 1),
                                   std::clamp(y, 0, image.height() - 1), 0);
        };
        const double most = image.type() == pp16u ? 65535.0 : 255.0;
        ppDrawBy(image, [&](int x, int y) {
            const double px = x - dx;
            const double py = y - dy;
            if (ppPictureGiven()) return blended(px, py, pixel) / 255 * most;
            const double coarse = blended(px / 17, py / 17, latticeValue);
            const double fine = blended(px / 5, py / 5, latticeValue);
            return (0.6 * coarse + 0.4 * fine) * most;
        });
        return true;
    }

    bool layerDown(const ZmoiPyramidLevels& levels, int k) {
        const auto make = [&](const auto& service, auto* to) {
            using T = std::remove_pointer_t<decltype(to)>;
            return prepared(service, static_cast<const T*>(levels.pImage[k - 1]),
                            levels.step[k - 1], levels.roi[k - 1], to, levels.step[k],
                            levels.roi[k], state<ZmoiPyramidState>(), pPyramidBuffer.get());
        };
        void* const to = const_cast<void*>(levels.pImage[k]);
        switch (func().srcType()) {
            case pp8u:
                return make(lib_zmoiPyramidLayerDown_8u_C1R, static_cast<Zmo8u*>(to));
            case pp16u:
                return make(lib_zmoiPyramidLayerDown_16u_C1R, static_cast<Zmo16u*>(to));
            default:
                return make(lib_zmoiPyramidLayerDown_32f_C1R, static_cast<Zmo32f*>(to));
        }
    }

    // A grid of points, searched where they were.
    bool createPoints() {
        const int columns = std::max(roi.width / pointDistance, 1);
        const int rows = std::max(roi.height / pointDistance, 1);
        count = columns * rows;
        for (ppVector* vector : {&pFrom, &pTo, &pError}) vector->init(pp32f);
        pFound.init(pp8u);
        if (!pFrom.createZeroed(2 * count) || !pTo.createZeroed(2 * count) ||
            !pFound.createZeroed(count) || !pError.createZeroed(count))
            return false;
        for (int i = 0; i < count; ++i) {
            const double x = (i % columns + 0.5) * roi.width / columns;
            const int row = i / columns;
            const double y = (row + 0.5) * roi.height / rows;
            for (ppVector* vector : {&pFrom, &pTo}) {
                vector->setIndex(2 * i, SET_CONST, x, 0);
                vector->setIndex(2 * i + 1, SET_CONST, y, 0);
            }
        }
        return pTo.reserveCopy() != 0;
    }
};

#define REG_FLOW(type)                                                                        \
    PP_REG_I(TimOptFlow, zmoiOpticalFlowPyrLK_##type##_C1R, pTo.setReservedCopy(), &first,    \
             &second, pointsOf(pFrom), pointsOf(pTo), pFound.ptr8u(), pError.ptr32f(), count, \
             window, maxLevel, maxIterations, epsilon, pBuffer.get())

REG_FLOW(8u)
REG_FLOW(16u)
REG_FLOW(32f)

}  // namespace
