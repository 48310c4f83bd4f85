// Base of the tests of Gaussian filters.
#pragma once

#include "filters.h"
#include "zmoi.h"

namespace filters {

inline psIterator<float> Sigma("Sigma", "Standard deviation of the Gaussian in pixels", {1.0F});

class GaussianTest : public FilterTest {
  public:
    using FilterTest::FilterTest;

  protected:
    void regMaskParms() override {
        regParm(MaskSize);
        regParm(Sigma);
    }
    ZmoiSize margin() const override {
        return {MaskSize.value().width / 2, MaskSize.value().height / 2};
    }
    double flopsOfElement() const override { return 4.0 * MaskSize.value().width - 2; }

    // Size and Init are services: zmoiFilterGaussianGetSize and zmoiFilterGaussianInit, or _L.
    template <class Roi, class Size, class Init>
    bool prepareGaussian(const Roi& region, const Size& size, const Init& init) {
        const int taps = MaskSize.value().width;
        if (MaskSize.value().height != taps) {
            g_ostrm << MessageLevel::ERR << "-- A Gaussian has the same taps in both directions\n"
                    << MessageLevel::END;
            return false;
        }
        return createBuffersBy(pState, pBuffer, size, region, taps, srcType(), channels()) &&
               prepared(init, taps, Sigma.value(), srcType(), channels(),
                        state<ZmoiGaussianState>());
    }
};

}  // namespace filters
