// Base of the tests of pyramid layers.
#pragma once

#include "filters.h"
#include "zmoi.h"

namespace filters {

inline psIterator<int> Ratio("Ratio", "Rate from layer to layer", {2});

// ImageSize is that of the larger layer.
class PyramidTest : public FilterTest {
  public:
    using FilterTest::FilterTest;

  protected:
    void regMaskParms() override { regParm(Ratio); }
    ZmoiSize sourceSize() const override { return isDown() ? ImageSize.value() : smaller(); }
    ZmoiSize destinationSize() const override { return isDown() ? smaller() : ImageSize.value(); }

    ZmoiSize margin() const override { return {2, 2}; }

    // Five taps down the columns of all source pixels that take part and five along the row; up, on
    // average so many at most.
    double flopsOfElement() const override {
        const double columns = isDown() ? 9.0 * Ratio.value() : 4.0 / Ratio.value();
        return columns + (isDown() ? 9.0 : 4.0);
    }

    template <class Roi, class Size, class Init>
    bool preparePyramid(const Roi& large, const Size& size, const Init& init) {
        static constexpr Zmo32f values[] = {100, 100, 100};
        return createBuffersBy(pState, pBuffer, size, large, srcType(), channels()) &&
               prepared(init, nullptr, 5, Ratio.value(), border, values, srcType(), channels(),
                        state<ZmoiPyramidState>());
    }

    bool isDown() const { return named("PyramidLayerDown"); }

  private:
    static ZmoiSize smaller() {
        const ZmoiSize size = ImageSize.value();
        const int rate = std::max(Ratio.value(), 1);
        return {(size.width + rate - 1) / rate, (size.height + rate - 1) / rate};
    }
};

}  // namespace filters
