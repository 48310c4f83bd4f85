#include <algorithm>

#include "call.h"
#include "zmocv.h"

namespace {

bool isOnLine(const kit::Image<Zmo8u>& picture, int x, int y, int radius, int threshold) {
    const auto at = [&](int i, int j) {
        return int64_t{picture.get(std::clamp(i, 0, picture.size().width - 1),
                                   std::clamp(j, 0, picture.size().height - 1))};
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

TEST(LineSuppression, Oracle) {
    int kept = 0;
    kit::forEachCase(121, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        const int radius = std::array{1, 3, 15, 2, 7}[turn % 5];
        const int threshold = std::array{0, 60, 130, 255}[turn / 3 % 4];
        const int density = std::array{100, 4, 30}[turn % 3];
        const int contrast = turn % 2 == 0 ? 255 : 3;
        kit::Image<Zmo8u> picture(size, layout);
        kit::Image<Zmo8u> responses(size, layout);
        // Bars of random lengths: windows with one, two and no directions.
        int64_t left = 0;
        int grey = 0;
        picture.fill([&] {
            if (--left < 0) {
                left = random.between(1, size.width);
                grey = random.between(0, 1) == 0 ? 0 : contrast;
            }
            return grey;
        });
        responses.fill(
            [&] { return random.between(0, 99) < density ? random.between(1, 255) : int64_t{0}; });
        kit::Buffer buffer =
            kit::bufferOf(zmoiLineSuppressionGetBufferSize, size, radius, zmo8u, 1);
        kit::Image<Zmo8u> dst(size, layout);
        kit::succeed(zmoiLineSuppression_8u_C1R, picture, responses, dst, size, radius, threshold,
                     buffer);
        kit::expectPixels(dst, [&](int x, int y) {
            kept += dst.get(x, y) != 0;
            const Zmo8u response = responses.get(x, y);
            const bool goes = response == 0 || isOnLine(picture, x, y, radius, threshold);
            return goes ? Zmo8u{0} : response;
        });
    });
    EXPECT_GT(kept, 1000);
}

TEST(LineSuppression, BadArguments) {
    const ZmoiSize roi{12, 4};
    kit::Image<Zmo8u> src(roi);
    kit::Image<Zmo8u> dst(roi);
    kit::Buffer buffer(4096);
    int size = -1;
    kit::expectBadArguments(zmoiLineSuppression_8u_C1R,
                            {{7, {0, 16}, zmoStsRangeErr}, {8, {-1, 256}, zmoStsThresholdErr}}, src,
                            src, dst, roi, 2, 9, buffer);
    kit::expectBadArguments(zmoiLineSuppressionGetBufferSize,
                            {{1, 16, zmoStsRangeErr},
                             {2, zmo16u, zmoStsDataTypeErr},
                             {3, 3, zmoStsChannelsErr},
                             {0, ZmoiSize{INT32_MAX, 1}, zmoStsTooLargeErr}},
                            roi, 1, zmo8u, 1, &size);
}

}  // namespace
