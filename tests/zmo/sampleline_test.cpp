#include "kit.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    T* pLine;
    ZmoiSize roi;
    ZmoiPoint first;
    ZmoiPoint last;
};

template <class T>
struct Function {
    const char* name;
    int channels;
    ZmoStatus (*run)(const T*, int, T*, ZmoiSize, ZmoiPoint, ZmoiPoint);

    ZmoStatus operator()(const Args<T>& a) const {
        return run(a.pSrc, a.srcStep, a.pLine, a.roi, a.first, a.last);
    }
};

#define SAMPLE_LINE(type, channels) \
    { "SampleLine_" #type "_C" #channels "R", channels, zmoiSampleLine_##type##_C##channels##R }

std::vector<Function<Zmo8u>> functions(Zmo8u) {
    return {SAMPLE_LINE(8u, 1), SAMPLE_LINE(8u, 3)};
}
std::vector<Function<Zmo16u>> functions(Zmo16u) {
    return {SAMPLE_LINE(16u, 1), SAMPLE_LINE(16u, 3)};
}
std::vector<Function<Zmo32f>> functions(Zmo32f) {
    return {SAMPLE_LINE(32f, 1), SAMPLE_LINE(32f, 3)};
}

template <class T>
void expectLine(const Function<T>& function, const kit::Image<T>& image, ZmoiPoint first,
                ZmoiPoint last, int misalign) {
    SCOPED_TRACE(testing::Message() << "(" << first.x << ", " << first.y << ") to (" << last.x
                                    << ", " << last.y << ") in " << image.size());
    const int count = oracle::lineLength(first, last);
    kit::Image<T> line({count, 1}, {misalign, 0}, 0, function.channels);
    line.fill([] { return 77; });
    kit::succeed([&] {
        return function({image.ptr(), image.step(), line.ptr(), image.size(), first, last});
    });
    for (int k = 0; k < count; ++k) {
        const ZmoiPoint p = oracle::linePixel(first, last, k);
        for (int c = 0; c < function.channels; ++c) {
            ASSERT_TRUE(kit::sameBits(line.get(k, 0, c), image.get(p.x, p.y, c)))
                << "pixel " << k << " channel " << c;
        }
    }
    line.expectSurroundingsUntouched("line");
}

// Every pair of corners and of random points of every size: all eight octants, axes, diagonals,
// single points.
template <class T, class Draw>
void expectLines(kit::Random& random, Draw draw) {
    const auto layouts = kit::layouts();
    size_t turn = 0;
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        for (const ZmoiSize size : kit::sizes()) {
            const kit::Layout layout = layouts[turn++ % layouts.size()];
            kit::Image<T> image(size, layout, 0, function.channels);
            image.fill(draw);
            const auto coordinate = [&](int length) {
                return static_cast<int>(random.between(0, length - 1));
            };
            std::vector<ZmoiPoint> points = {{0, 0},
                                             {size.width - 1, 0},
                                             {0, size.height - 1},
                                             {size.width - 1, size.height - 1}};
            points.push_back({coordinate(size.width), coordinate(size.height)});
            for (const ZmoiPoint first : points) {
                for (const ZmoiPoint last : points) {
                    expectLine(function, image, first, last, layout.misalign * 3 % 64);
                }
            }
            image.expectUntouched("image");
        }
    }
}

TEST(SampleLine, Oracle) {
    kit::Random random(61);
    kit::forEachLevel([&] {
        expectLines<Zmo8u>(random, [&] { return random.between(0, 255); });
        expectLines<Zmo16u>(random, [&] { return random.between(0, 65535); });
        expectLines<Zmo32f>(random, [&] { return random.uniform(-1e9, 1e9); });
    });
}

// All directions around one point: exact ties, and both senses of each line.
TEST(SampleLine, EveryDirection) {
    kit::Image<Zmo16u> image({25, 25});
    Zmo16u next = 0;
    image.fill([&] { return next++; });
    const ZmoiPoint centre{12, 12};
    const Function<Zmo16u> function = functions(Zmo16u())[0];
    kit::forEachLevel([&] {
        for (int i = 0; i < 25 * 25; ++i) {
            const ZmoiPoint point{i % 25, i / 25};
            expectLine(function, image, centre, point, 0);
            expectLine(function, image, point, centre, 0);
        }
    });
}

// Floats are copied, whatever they hold: even a signalling NaN keeps its bits and raises no flag.
TEST(SampleLine, CopiesBits) {
    kit::Image<Zmo32f> image({5, 3});
    const uint32_t odd[] = {0x7f800001U, 0xffc00000U, 0x80000000U, 0x00000001U, 0xff800000U};
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 5; ++x) std::memcpy(image.ptr() + 5 * y + x, odd + (x + y) % 5, 4);
    }
    image.snapshot();
    const Function<Zmo32f> function = functions(Zmo32f())[0];
    kit::forEachLevel([&] { expectLine(function, image, {0, 0}, {4, 2}, 1); });
}

template <class T>
void expectBadArguments() {
    constexpr int element = sizeof(T);
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        const int row = 12 * function.channels * element;
        kit::Image<T> image({12, 4}, {}, 0, function.channels);
        kit::Image<T> line({12, 1}, {}, 0, function.channels);
        using A = Args<T>;
        std::vector<kit::Fault<A>> faults = {
            {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
            {"null line", zmoStsNullPtrErr, [](A& a) { a.pLine = nullptr; }},
            {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
            {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
            {"step short", zmoStsStepErr, [=](A& a) { a.srcStep = row - element; }},
            {"step negative", zmoStsStepErr, [=](A& a) { a.srcStep = -row; }},
            {"first left", zmoStsPointErr, [](A& a) { a.first.x = -1; }},
            {"first right", zmoStsPointErr, [](A& a) { a.first.x = 12; }},
            {"first below", zmoStsPointErr, [](A& a) { a.first.y = 4; }},
            {"last above", zmoStsPointErr, [](A& a) { a.last.y = -1; }},
            {"last right", zmoStsPointErr, [](A& a) { a.last.x = 12; }},
            {"last below", zmoStsPointErr, [](A& a) { a.last.y = 4; }},
        };
        if (element > 1) {
            faults.insert(faults.begin() + 6,
                          {"step odd", zmoStsStepErr, [=](A& a) { a.srcStep = row + 1; }});
        }
        const A good{image.ptr(), image.step(), line.ptr(), image.size(), {0, 0}, {11, 3}};
        line.snapshot();
        kit::expectFaults(good, function, faults, [&] { line.expectUntouched("line"); });
    }
}

TEST(SampleLine, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16u>();
    expectBadArguments<Zmo32f>();
}

}  // namespace
