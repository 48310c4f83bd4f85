// Connected components of markers (zmoiLabelMarkers).
#include "regions.h"
#include "zmocv.h"

namespace {

using namespace regions;

constexpr int minLabel = 1;
constexpr int maxLabel8u = 255;
constexpr int maxLabel16u = 65535;
constexpr int maxLabel32s = std::numeric_limits<int>::max();

int connectivity;
int count;

PP_SERVICE(zmoiLabelMarkersGetBufferSize);

// Discs in a grid; in place of the small ones two squares that touch at a corner, one component
// only for eight neighbours.
int markers(int x, int y) {
    if ((x / discCell + y / discCell) % 3 != 0) return discs(x, y);
    constexpr int side = 8;
    const int dx = x % discCell - discCell / 2;
    const int dy = y % discCell - discCell / 2;
    const bool inSquare =
        (dx < 0) == (dy < 0) && std::min(dx, dy) >= -side && std::max(dx, dy) < side;
    return inSquare ? 255 : 0;
}

class TimcLabelMarkers : public RegionTest {
  public:
    using RegionTest::RegionTest;

  protected:
    void regOwnParms() override { regParm(Connectivity); }

    bool drawImage(ppImage& image) override {
        connectivity = Connectivity.value();
        return draw(image, markers, brightOnly);
    }

    bool prepare() override {
        return createBufferBy(pBuffer, lib_zmoiLabelMarkersGetBufferSize, roi, srcType(), 1);
    }

    void regArguments() override {
        RegionTest::regArguments();
        regOutput("count", &count);
    }

    psString dataFigure() override { return psFormat("%d components", count); }
};

// The tag has no I, and yet two of the functions label in place.
PP_REG_INIT(TimcLabelMarkers, zmoiLabelMarkers_8u_C1IR, restoreDst(), PP_IMAGE(pDst, 8u), roi,
            minLabel, maxLabel8u, connectivity, &count, pBuffer.get())
PP_REG_INIT(TimcLabelMarkers, zmoiLabelMarkers_16u_C1IR, restoreDst(), PP_IMAGE(pDst, 16u), roi,
            minLabel, maxLabel16u, connectivity, &count, pBuffer.get())
PP_REG(TimcLabelMarkers, zmoiLabelMarkers_8u32s_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, 32s), roi,
       minLabel, maxLabel32s, connectivity, &count, pBuffer.get())

}  // namespace
