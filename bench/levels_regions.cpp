// Exact distances to the outlines of discs, and the discs numbered.
#include <memory>

#include "levels.h"
#include "plain_regions.h"
#include "zmocv.h"

namespace {

using levels::Function;

// Two sizes of discs in a grid.
bool isDisc(int x, int y) {
    constexpr int cell = 48;
    const int dx = x % cell - cell / 2;
    const int dy = y % cell - cell / 2;
    const int radius = (x / cell + y / cell) % 3 == 0 ? 6 : 19;
    return dx * dx + dy * dy <= radius * radius;
}

struct Data {
    explicit Data(ZmoiSize size)
        : roi(size),
          discs(bench::pixelsOf(size)),
          outlines(discs.size()),
          distances(discs.size()),
          labels(discs.size()),
          columns(discs.size()) {
        size_t i = 0;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const bool inside = isDisc(x, y);
                const bool edge = inside != isDisc(x + 1, y) || inside != isDisc(x, y + 1);
                discs[i] = inside ? 255 : 0;
                outlines[i++] = edge ? 0 : 255;
            }
        }
        outlines[0] = 0;  // in an image smaller than a disc too
    }

    ZmoiSize roi;
    std::vector<Zmo8u> discs;
    std::vector<Zmo8u> outlines;
    std::vector<Zmo32f> distances;
    std::vector<Zmo32s> labels;
    std::vector<int> columns;
    int count = 0;
};

using Shared = std::shared_ptr<Data>;

Function trueDistance(const Shared& d) {
    const auto buffer = std::make_shared<std::vector<Zmo8u>>();
    bench::growBy(*buffer, "zmoiTrueDistanceTransformGetBufferSize",
                  zmoiTrueDistanceTransformGetBufferSize, d->roi, zmo8u, 1);
    const auto call = [d, buffer] {
        return zmoiTrueDistanceTransform_8u32f_C1R(
            d->outlines.data(), bench::stepOf<Zmo8u>(d->roi), d->distances.data(),
            bench::stepOf<Zmo32f>(d->roi), d->roi, buffer->data());
    };
    const auto plain = [d] {
        plainTrueDistance(d->outlines.data(), d->distances.data(), d->roi, d->columns);
    };
    bench::require(call(), "zmoiTrueDistanceTransform_8u32f_C1R");
    const std::vector<Zmo32f> result = d->distances;
    plain();
    if (result != d->distances) throw std::runtime_error("distances differ from the plain loop's");
    return {.name = "zmoiTrueDistanceTransform_8u32f_C1R",
            .call = call,
            .plainLoop = plain,
            .divisor = static_cast<double>(d->discs.size())};
}

Function labelMarkers(const Shared& d, int connectivity) {
    const auto buffer = std::make_shared<std::vector<Zmo8u>>();
    bench::growBy(*buffer, "zmoiLabelMarkersGetBufferSize", zmoiLabelMarkersGetBufferSize, d->roi,
                  zmo8u, 1);
    const auto call = [d, connectivity, buffer] {
        return zmoiLabelMarkers_8u32s_C1R(d->discs.data(), bench::stepOf<Zmo8u>(d->roi),
                                          d->labels.data(), bench::stepOf<Zmo32s>(d->roi), d->roi,
                                          1, 1 << 30, connectivity, &d->count, buffer->data());
    };
    const auto stack = std::make_shared<std::vector<int>>();
    const auto plain = [d, connectivity, stack] {
        d->count = plainLabels(d->discs.data(), d->labels.data(), d->roi, connectivity, *stack);
    };
    bench::require(call(), "zmoiLabelMarkers_8u32s_C1R");
    const std::vector<Zmo32s> result = d->labels;
    plain();
    if (result != d->labels) throw std::runtime_error("labels differ from the plain loop's");
    return {.name = "zmoiLabelMarkers_8u32s_C1R " + std::to_string(connectivity) + "-connected",
            .call = call,
            .plainLoop = plain,
            .divisor = static_cast<double>(d->discs.size())};
}

std::vector<Function> functions(ZmoiSize size) {
    const auto data = std::make_shared<Data>(size);
    return {trueDistance(data), labelMarkers(data, 4), labelMarkers(data, 8)};
}

const levels::Registered registered("regions", functions);

}  // namespace
