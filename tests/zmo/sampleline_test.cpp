#include "case.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

#define SAMPLE_LINE(type) ZMO(zmoiSampleLine_##type##_C1R), ZMO(zmoiSampleLine_##type##_C3R)

const std::vector<kit::Function> functions = {SAMPLE_LINE(8u), SAMPLE_LINE(16u), SAMPLE_LINE(32f)};

kit::Case caseOf(const kit::Function& function, ZmoiSize size, kit::Layout layout, ZmoiPoint first,
                 ZmoiPoint last) {
    return kit::Case(function, size, layout, {{"pLine", {oracle::lineLength(first, last), 1}}})
        .with({{"first", first}, {"last", last}});
}

// Between all corners and random points: all eight octants, axes, diagonals, single points.
TEST(SampleLine, Oracle) {
    kit::forEachCase(
        {62, 25}, functions,
        [](auto& random, const auto& function, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int right = size.width - 1;
            const int below = size.height - 1;
            const ZmoiPoint points[] = {{0, 0},
                                        {right, 0},
                                        {0, below},
                                        {right, below},
                                        {static_cast<int>(random.between(0, right)),
                                         static_cast<int>(random.between(0, below))}};
            const ZmoiPoint first = points[turn % 5];
            const ZmoiPoint last = points[turn / 5 % 5];
            kit::Case c = caseOf(function, size, layout, first, last);
            if (c.src().most() == 0) {
                // Even a signalling NaN keeps its bits and raises no flag.
                c.src().as<Zmo32f>().fill(
                    [&] { return std::bit_cast<float>(static_cast<uint32_t>(random.bits())); });
            } else {
                c.src().fill(
                    [&] { return random.between(0, static_cast<int64_t>(c.src().most())); });
            }
            c.dst().fill([] { return 77; });
            c.wantCopy("pLine", [=](int k, int) { return oracle::linePixel(first, last, k); });
            return c;
        });
}

TEST(SampleLine, BadArguments) {
    for (const auto& function : functions) {
        caseOf(function, {12, 4}, {}, {0, 0}, {11, 3})
            .expectBadArguments(
                {{"first", {ZmoiPoint{-1, 0}, ZmoiPoint{12, 0}, ZmoiPoint{0, 4}}, zmoStsPointErr},
                 {"last", {ZmoiPoint{0, -1}, ZmoiPoint{12, 3}, ZmoiPoint{11, 4}}, zmoStsPointErr}});
    }
}

}  // namespace
