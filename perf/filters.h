// Base of the tests of filters.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "bordered.h"

namespace filters {

using namespace bordered;

// A kernel that smooths: 1 2 3 2 1.
inline std::vector<Zmo16s> tent(int taps) {
    std::vector<Zmo16s> weights;
    if (taps > 0) weights.reserve(static_cast<std::size_t>(taps));
    for (int i = 0; i < taps; ++i)
        weights.push_back(static_cast<Zmo16s>(1 + std::min(i, taps - 1 - i)));
    return weights;
}
inline int sum(const std::vector<Zmo16s>& weights) {
    int total = 0;
    for (const Zmo16s weight : weights) total += weight;
    return total;
}

class FilterTest : public BorderedTest {
  public:
    using BorderedTest::BorderedTest;

  protected:
    // Smoothing leaves a part of the noise, derivatives raise it.
    psString dataFigure() override {
        const double before = spread(pSrc);
        return psFormat("the result varies %.2f%% as much as the source",
                        before > 0 ? 100.0 * spread(pDst) / before : 0.0);
    }

  private:
    // The standard deviation of the first channel.
    static double spread(const ppImage& image) {
        double sum = 0;
        double squares = 0;
        ppForEachPixel({image.width(), image.height()}, [&](int x, int y) {
            const double value = image.getImageAt(x, y, 0);
            sum += value;
            squares += value * value;
        });
        const double count = static_cast<double>(image.width()) * image.height();
        return std::sqrt(std::max(squares / count - sum / count * (sum / count), 0.0));
    }
};

}  // namespace filters
