#include <algorithm>

#include "case.h"
#include "zmocv.h"

namespace {

bool isOnLine(const kit::AnyImage& picture, int x, int y, int radius, int threshold) {
    const auto at = [&](int i, int j) {
        return static_cast<int64_t>(picture.get(std::clamp(i, 0, picture.size().width - 1),
                                                std::clamp(j, 0, picture.size().height - 1)));
    };
    int64_t a = 0;
    int64_t b = 0;
    int64_t c = 0;
    for (int j = y - radius; j <= y + radius; ++j) {
        for (int i = x - radius; i <= x + radius; ++i) {
            const int64_t gx = at(i + 1, j) - at(i - 1, j);
            const int64_t gy = at(i, j + 1) - at(i, j - 1);
            a += gx * gx;
            b += gy * gy;
            c += gx * gy;
        }
    }
    return 1020 * (a * b - c * c) <= threshold * (a + b) * (a + b);
}

const kit::Function function = ZMO(zmoiLineSuppression_8u_C1R);
const kit::Function query = ZMO(zmoiLineSuppressionGetBufferSize);

TEST(LineSuppression, Oracle) {
    int kept = 0;
    kit::forEachCase(
        {121, 4}, function,
        [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int radius = std::array{1, 3, 15, 2, 7}[turn % 5];
            const int threshold = std::array{0, 60, 130, 255}[turn / 3 % 4];
            const int density = std::array{100, 4, 30}[turn % 3];
            const int contrast = turn % 2 == 0 ? 255 : 3;
            kit::Case c(function, size, layout);
            // Bars of random lengths: windows with one, two and no directions.
            int64_t left = 0;
            int grey = 0;
            c.src().fill([&] {
                if (--left < 0) {
                    left = random.between(1, size.width);
                    grey = random.between(0, 1) == 0 ? 0 : contrast;
                }
                return grey;
            });
            c.image("pSrc2").fill([&] {
                return random.between(0, 99) < density ? random.between(1, 255) : int64_t{0};
            });
            c.with({{"radius", radius}, {"threshold", threshold}}).sized(query);
            return c.want("pDst", [&](int x, int y) {
                const double response = c.image(1).get(x, y);
                const bool goes = response == 0 || isOnLine(c.src(), x, y, radius, threshold);
                kept += goes ? 0 : 1;
                return goes ? 0 : response;
            });
        });
    EXPECT_GT(kept, kit::sanitized ? 100 : 1000);
}

TEST(LineSuppression, BadArguments) {
    kit::Case(function)
        .with({{"radius", 2}, {"threshold", 9}})
        .sized(query)
        .expectBadArguments(
            {{"radius", {0, 16}, zmoStsRangeErr}, {"threshold", {-1, 256}, zmoStsThresholdErr}});
    kit::Case(query)
        .with({{"radius", 1}, {"type", zmo8u}, {"channels", 1}})
        .expectBadArguments({{"radius", 16, zmoStsRangeErr},
                             {"type", zmo16u, zmoStsDataTypeErr},
                             {"channels", 3, zmoStsChannelsErr}});
}

}  // namespace
