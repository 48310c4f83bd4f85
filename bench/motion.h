// Two pictures, the second one moved, with their layers, for the programs that measure optical
// flow; a short film for mixtures of Gaussians; and the calls.
#pragma once

#include <cmath>
#include <memory>

#include "figures.h"
#include "zmocv.h"
#include "zmoi.h"

namespace motion {

inline constexpr int layers = 4;
inline constexpr int maxIterations = 10;
inline constexpr Zmo32f epsilon = 0.03F;
inline constexpr double shiftX = 5.25;
inline constexpr double shiftY = -3.5;

// Waves of many lengths: each layer has its own.
inline Zmo8u texture(double x, double y) {
    return static_cast<Zmo8u>(128 + 40 * std::sin(x * 0.07 + y * 0.03) +
                              35 * std::sin(y * 0.06 - x * 0.05 + 1) +
                              25 * std::sin(x * 0.31 + y * 0.12) * std::sin(y * 0.27 - x * 0.09) +
                              20 * std::sin(x * 0.83 + 2) * std::sin(y * 0.71));
}

struct Picture {
    Picture(ZmoiSize size, double dx, double dy) {
        std::vector<Zmo8u>& whole = planes[0];
        whole.resize(bench::pixelsOf(size));
        size_t i = 0;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) whole[i++] = texture(x - dx, y - dy);
        }
        bench::Work work;
        work.growBy("zmoiPyramidGetSize", zmoiPyramidGetSize, size, zmo8u, 1);
        auto* const state = work.stateOf<ZmoiPyramidState>();
        bench::require(
            zmoiPyramidInit(nullptr, 5, 2, zmoiBorderReplicate, nullptr, zmo8u, 1, state),
            "zmoiPyramidInit");
        for (int k = 0; k < layers; ++k) {
            std::vector<Zmo8u>& plane = planes[k];
            plane.resize(bench::pixelsOf(size));
            levels.pImage[k] = plane.data();
            levels.step[k] = size.width;
            levels.roi[k] = size;
            if (k > 0) {
                bench::require(zmoiPyramidLayerDown_8u_C1R(
                                   planes[k - 1].data(), levels.step[k - 1], levels.roi[k - 1],
                                   plane.data(), size.width, size, state, work.buffer.data()),
                               "zmoiPyramidLayerDown_8u_C1R");
            }
            size = {(size.width + 1) / 2, (size.height + 1) / 2};
        }
        levels.levels = layers;
    }

    std::vector<Zmo8u> planes[layers];
    ZmoiPyramidLevels levels{};
};

// Points on a spiral, away from the edges.
struct Flow {
    Flow(ZmoiSize size, int points) : first(size, 0, 0), second(size, shiftX, shiftY) {
        for (int i = 0; i < points; ++i) {
            const double angle = 2.4 * i;
            const double radius = 0.4 * std::sqrt((i + 0.5) / points);
            from.push_back({static_cast<Zmo32f>(size.width * (0.5 + radius * std::cos(angle))),
                            static_cast<Zmo32f>(size.height * (0.5 + radius * std::sin(angle)))});
        }
        to.resize(from.size());
        found.resize(from.size());
        error.resize(from.size());
    }

    Picture first;
    Picture second;
    std::vector<ZmoiPoint32f> from;
    std::vector<ZmoiPoint32f> to;
    std::vector<Zmo8u> found;
    std::vector<Zmo32f> error;
};

inline auto callFlow(const std::shared_ptr<Flow>& d, int window) {
    const auto buffer = std::make_shared<std::vector<Zmo8u>>();
    bench::growBy(*buffer, "zmoiOpticalFlowPyrLKGetBufferSize", zmoiOpticalFlowPyrLKGetBufferSize,
                  window, zmo8u, 1);
    return [d, window, buffer] {
        d->to = d->from;
        return zmoiOpticalFlowPyrLK_8u_C1R(&d->first.levels, &d->second.levels, d->from.data(),
                                           d->to.data(), d->found.data(), d->error.data(),
                                           static_cast<int>(d->from.size()), window, layers - 1,
                                           maxIterations, epsilon, buffer->data());
    };
}

// Pixels that show as many colours in turn; the state has met all of them.
struct Mixture {
    Mixture(ZmoiSize size, int colours) : roi(size), mask(bench::pixelsOf(size)) {
        constexpr int pictures = 24;
        constexpr int components = 5;
        bench::growBy(state, "zmoiFGMMGetSize", zmoiFGMMGetSize, size, components, zmo8u, 3);
        bench::require(zmoiFGMMInit(size, components, 0.02F, 9, 0.9F, 0, 225, zmo8u, 3, model()),
                       "zmoiFGMMInit");
        const std::vector<Zmo8u> grain = bench::noise<Zmo8u>({size.width * 3, size.height});
        for (int frame = 0; frame < pictures; ++frame) {
            picture = grain;
            for (Zmo8u& value : picture)
                value = static_cast<Zmo8u>(20 + frame % colours * 50 + value % 8);
            bench::require(learn(), "zmoiFGMMForeground_8u_C3R");
        }
    }
    ZmoiFGMMState* model() { return reinterpret_cast<ZmoiFGMMState*>(state.data()); }
    ZmoStatus learn() {
        return zmoiFGMMForeground_8u_C3R(picture.data(), roi.width * 3, mask.data(), roi.width, roi,
                                         model());
    }

    ZmoiSize roi;
    std::vector<Zmo8u> picture;
    std::vector<Zmo8u> mask;
    std::vector<Zmo8u> state;
};

}  // namespace motion
