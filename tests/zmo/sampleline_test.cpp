#include "call.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

template <class T>
struct Function {
    int channels;
    ZmoStatus (*run)(const T*, int, T*, ZmoiSize, ZmoiPoint, ZmoiPoint);
};

#define SAMPLE_LINE(type)                                                      \
    Function<Zmo##type>{1, zmoiSampleLine_##type##_C1R}, Function<Zmo##type> { \
        3, zmoiSampleLine_##type##_C3R                                         \
    }

// body(function, drawn pixel)
template <class Body>
void forEachFunction(Body body) {
    kit::Random random(61);
    for (const auto& f : {SAMPLE_LINE(8u)}) body(f, [&] { return random.between(0, 255); });
    for (const auto& f : {SAMPLE_LINE(16u)}) body(f, [&] { return random.between(0, 65535); });
    // Even a signalling NaN keeps its bits and raises no flag.
    const auto anyBits = [&] { return std::bit_cast<float>(static_cast<uint32_t>(random.bits())); };
    for (const auto& f : {SAMPLE_LINE(32f)}) body(f, anyBits);
}

template <class T>
void expectLine(const Function<T>& function, const kit::Image<T>& image, ZmoiPoint first,
                ZmoiPoint last, int misalign) {
    SCOPED_TRACE(testing::Message() << "(" << first.x << ", " << first.y << ") to (" << last.x
                                    << ", " << last.y << ") in " << image.size());
    const int count = oracle::lineLength(first, last);
    kit::Image<T> line({count, 1}, {misalign, 0}, 0, function.channels);
    line.fill([] { return 77; });
    kit::succeed(function.run, image, line.withoutStep(), image.size(), first, last);
    kit::expectPixels(line, [&](int k, int, int c) {
        const ZmoiPoint p = oracle::linePixel(first, last, k);
        return image.get(p.x, p.y, c);
    });
}

// Every pair of corners and of random points of every size: all eight octants, axes, diagonals,
// single points.
TEST(SampleLine, Oracle) {
    const auto layouts = kit::layouts();
    kit::Random random(62);
    size_t turn = 0;
    const auto expectLines = [&]<class T>(const Function<T>& function, auto draw) {
        for (const ZmoiSize size : kit::sizes()) {
            const kit::Layout layout = layouts[turn++ % layouts.size()];
            kit::Image<T> image(size, layout, 0, function.channels);
            image.fill(draw);
            const int right = size.width - 1;
            const int below = size.height - 1;
            const ZmoiPoint points[] = {{0, 0},
                                        {right, 0},
                                        {0, below},
                                        {right, below},
                                        {static_cast<int>(random.between(0, right)),
                                         static_cast<int>(random.between(0, below))}};
            for (const ZmoiPoint first : points) {
                for (const ZmoiPoint last : points)
                    expectLine(function, image, first, last, layout.misalign * 3 % 64);
            }
        }
    };
    kit::forEachLevel([&] { forEachFunction(expectLines); });
}

TEST(SampleLine, BadArguments) {
    forEachFunction([]<class T>(const Function<T>& function, auto) {
        kit::Image<T> image({12, 4}, {}, 0, function.channels);
        kit::Image<T> line({12, 1}, {}, 0, function.channels);
        kit::expectBadArguments(
            function.run,
            {{4, {ZmoiPoint{-1, 0}, ZmoiPoint{12, 0}, ZmoiPoint{0, 4}}, zmoStsPointErr},
             {5, {ZmoiPoint{0, -1}, ZmoiPoint{12, 3}, ZmoiPoint{11, 4}}, zmoStsPointErr}},
            image, line.withoutStep(), image.size(), ZmoiPoint{0, 0}, ZmoiPoint{11, 3});
    });
}

}  // namespace
