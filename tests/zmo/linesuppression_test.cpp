#include "case.h"
#include "oracle/border.h"
#include "zmocv.h"

namespace {

bool isOnLine(const kit::Image& picture, int x, int y, int radius, int threshold) {
    const oracle::Extended at{picture, zmoiBorderReplicate};
    double a = 0;
    double b = 0;
    double c = 0;
    for (int j = y - radius; j <= y + radius; ++j) {
        for (int i = x - radius; i <= x + radius; ++i) {
            const double gx = at(i + 1, j) - at(i - 1, j);
            const double gy = at(i, j + 1) - at(i, j - 1);
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
    kit::forEachCase({121, 4}, 1, [&](kit::Turn& t, size_t) {
        const int radius = std::array{1, 3, 15, 2, 7}[t.number % 5];
        const int threshold = std::array{0, 60, 130, 255}[t.number / 3 % 4];
        const int density = std::array{100, 4, 30}[t.number % 3];
        const int contrast = t.number % 2 == 0 ? 255 : 3;
        kit::Case c(function, t);
        // Bars of random lengths: windows with one, two and no directions.
        int left = 0;
        int grey = 0;
        c.src().fill([&] {
            if (--left < 0) {
                left = t.between(1, t.size.width);
                grey = t.between(0, 1) * contrast;
            }
            return grey;
        });
        c.image("pSrc2").fill([&] { return t.between(0, 99) < density ? t.between(1, 255) : 0; });
        const kit::Image src = c.src().numbers();
        c.with({{"radius", radius}, {"threshold", threshold}}).sized(query);
        return c.want([&](int x, int y) {
            const double response = c.image(1)(x, y);
            const bool goes = response == 0 || isOnLine(src, x, y, radius, threshold);
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
}

}  // namespace
