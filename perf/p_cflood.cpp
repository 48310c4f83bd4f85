// Flood fills from a seed, of equal pixels and of pixels that differ little (zmoiFloodFill).
#include "regions.h"
#include "zmocv.h"

namespace {

using namespace regions;

psIterator<int> Delta("Threshold", "Difference that a fill allows", {2, 16});

constexpr int paint = 250;  // what no drawn pixel has

ZmoiPoint seed;
ZmoiFloodRegion region;
Zmo8u delta8u;
Zmo32f delta32f;

PP_SERVICE(zmoiFloodFillGetBufferSize);

// Bands with a passage at alternate ends: one region that winds down the whole image. Pillars break
// its long rows.
constexpr int bandHeight = 8;
constexpr int wallHeight = 3;
constexpr int passage = 10;
constexpr int pillarDistance = 37;
constexpr int wall = 20;
constexpr int ground = 100;

bool isOpen(int x, int y) {
    const int fromEnd = y / bandHeight % 2 == 0 ? roi.width - 1 - x : x;
    if (y % bandHeight >= bandHeight - wallHeight) return fromEnd < passage;
    return x % pillarDistance != pillarDistance / 2 || y % bandHeight > 2;
}

int windingFlat(int x, int y) {
    return isOpen(x, y) ? ground : wall;
}

// Three shades, side by side, for the fills that allow differences. The rugs on the way are so much
// brighter that the smaller threshold goes round them and the larger one over them.
int windingShaded(int x, int y) {
    if (!isOpen(x, y)) return wall;
    const bool rug = y % bandHeight <= 2 && x % pillarDistance >= 4 && x % pillarDistance < 14;
    return ground + (rug ? 10 : 0) + (x / 3 + y / 2) % 3;
}

class TimcFlood : public RegionTest {
  public:
    using RegionTest::RegionTest;

  protected:
    void regOwnParms() override {
        if (hasDelta()) regParm(Delta);
    }

    bool drawImage(ppImage& image) override {
        if (hasDelta() && !ppInRange(Delta, 0, 255)) return false;
        seed = ppPictureGiven() ? ZmoiPoint{roi.width / 2, roi.height / 2} : ZmoiPoint{0, 0};
        region = {};
        delta8u = static_cast<Zmo8u>(Delta.value());
        delta32f = static_cast<Zmo32f>(Delta.value());
        return draw(image, hasDelta() ? windingShaded : windingFlat, greyItself);
    }

    bool prepare() override {
        return createBufferBy(pBuffer, lib_zmoiFloodFillGetBufferSize, roi, srcType(), 1);
    }

    void regArguments() override {
        RegionTest::regArguments();
        regOutput("area", &region.area);
        regOutput("rect", &region.rect.x, 4);
        regOutput("value", &region.value);
    }

    // The timed calls have stored the area.
    double getDivisor() override { return std::max(1.0, region.area); }
    psString getUnit() override { return "px"; }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are filled",
                        100.0 * region.area / roi.width / roi.height);
    }

  private:
    bool hasDelta() const { return named("Grad") || named("Range"); }
};

#define REG_FLOOD(con, type)                                                  \
    PP_REG_I(TimcFlood, zmoiFloodFill_##con##Con_##type##_C1IR, restoreDst(), \
             PP_IMAGE(pDst, type), roi, seed, paint, &region, pBuffer.get())
#define REG_FLOOD_DELTA(rule, con, type)                                                \
    PP_REG_I(TimcFlood, zmoiFloodFill_##rule##con##Con_##type##_C1IR, restoreDst(),     \
             PP_IMAGE(pDst, type), roi, seed, paint, delta##type, delta##type, &region, \
             pBuffer.get())

REG_FLOOD(4, 8u)
REG_FLOOD(8, 8u)
REG_FLOOD(4, 32s)
REG_FLOOD(8, 32s)
REG_FLOOD(4, 32f)
REG_FLOOD(8, 32f)
REG_FLOOD_DELTA(Grad, 4, 8u)
REG_FLOOD_DELTA(Grad, 4, 32f)
REG_FLOOD_DELTA(Grad, 8, 8u)
REG_FLOOD_DELTA(Grad, 8, 32f)
REG_FLOOD_DELTA(Range, 4, 8u)
REG_FLOOD_DELTA(Range, 4, 32f)
REG_FLOOD_DELTA(Range, 8, 8u)
REG_FLOOD_DELTA(Range, 8, 32f)

}  // namespace
