// Flat morphology with full rectangles.
#include <memory>

#include "levels.h"
#include "plain_morph.h"
#include "zmocv.h"

namespace {

using levels::Function;

struct Data {
    Data(ZmoiSize size, int side) : roi(size), src(bench::noise<Zmo8u>(size)), dst(src.size()) {
        work.growBy("zmoiMorphGetSize", zmoiMorphGetSize, roi, zmo8u, 1, ZmoiSize{side, side});
        const std::vector<Zmo8u> mask(static_cast<size_t>(side * side), 1);
        bench::require(
            zmoiMorphInit(zmo8u, 1, mask.data(), {side, side}, {side / 2, side / 2}, morphState()),
            "zmoiMorphInit");
    }
    ZmoiMorphState* morphState() { return work.stateOf<ZmoiMorphState>(); }

    ZmoiSize roi;
    std::vector<Zmo8u> src;
    std::vector<Zmo8u> dst;
    bench::Work work;
};

Function erode(ZmoiSize size, int side) {
    const auto d = std::make_shared<Data>(size, side);
    const std::string mask = std::to_string(side);
    return {.name = "zmoiErodeBorder_8u_C1R " + mask + "x" + mask,
            .call =
                [d] {
                    const int step = bench::stepOf<Zmo8u>(d->roi);
                    return zmoiErodeBorder_8u_C1R(d->src.data(), step, d->dst.data(), step, d->roi,
                                                  zmoiBorderReplicate, nullptr, d->morphState(),
                                                  d->work.buffer.data());
                },
            .plainLoop = [d, side] { plainErode8u(d->src.data(), d->dst.data(), d->roi, side); },
            .divisor = static_cast<double>(d->src.size())};
}

std::vector<Function> functions(ZmoiSize size) {
    return {erode(size, 3), erode(size, 7), erode(size, 15), erode(size, 31)};
}

const levels::Registered registered("morph", functions);

}  // namespace
