#include "case.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

#define SAMPLE_LINE(type) ZMO(zmoiSampleLine_##type##_C1R), ZMO(zmoiSampleLine_##type##_C3R)

const std::vector<kit::Function> functions = {SAMPLE_LINE(8u), SAMPLE_LINE(16u), SAMPLE_LINE(32f)};

kit::Case caseOf(const kit::Function& function, const kit::Turn& t, ZmoiPoint first,
                 ZmoiPoint last) {
    return kit::Case(function, t, {{"pLine", {oracle::lineLength(first, last), 1}}})
        .with({{"first", first}, {"last", last}});
}

// Between all corners and random points: all eight octants, axes, diagonals, single points. Even a
// signalling NaN keeps its bits and raises no flag.
TEST(SampleLine, Oracle) {
    kit::forEachCase({62, 25}, functions, [](kit::Turn& t, const auto& function) {
        const int right = t.size.width - 1;
        const int below = t.size.height - 1;
        const ZmoiPoint points[] = {{0, 0},
                                    {right, 0},
                                    {0, below},
                                    {right, below},
                                    {t.between(0, right), t.between(0, below)}};
        const ZmoiPoint first = points[t.number % 5];
        const ZmoiPoint last = points[t.number / 5 % 5];
        kit::Case c = caseOf(function, t, first, last);
        c.src().fillBits(t);
        c.dst().fill(77);
        return c.wantCopy([=](int k, int) { return oracle::linePixel(first, last, k); });
    });
}

TEST(SampleLine, BadArguments) {
    for (const auto& function : functions) {
        caseOf(function, kit::Turn(63, {12, 4}), {0, 0}, {11, 3})
            .expectBadArguments(
                {{"first", {ZmoiPoint{-1, 0}, ZmoiPoint{12, 0}, ZmoiPoint{0, 4}}, zmoStsPointErr},
                 {"last", {ZmoiPoint{0, -1}, ZmoiPoint{12, 3}, ZmoiPoint{11, 4}}, zmoStsPointErr}});
    }
}

}  // namespace
