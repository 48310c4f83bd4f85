// Weighted neighbourhoods: Gaussian and separable filters, pyramid layers.
#include <memory>

#include "levels.h"
#include "plain_filters.h"
#include "zmoi.h"

namespace {

using levels::Function;

struct Data {
    explicit Data(ZmoiSize roi)
        : size(roi),
          gray8u(bench::rectangles(roi, {4, 4})),
          gray32f(gray8u.begin(), gray8u.end()),
          result(gray8u.size() * sizeof(Zmo32f)) {
        for (const Zmo8u gray : gray8u) gray16s.push_back(static_cast<Zmo16s>(gray * 100 - 9000));
        work.growBy("zmoiFilterGaussianGetSize", zmoiFilterGaussianGetSize, size, 255, zmo32f, 3);
        work.growBy("zmoiFilterSeparableGetSize_L", zmoiFilterSeparableGetSize_L,
                    ZmoiSizeL{size.width, size.height}, ZmoiSize{255, 255}, zmo32f, zmo32f, 4);
        work.growBy("zmoiPyramidGetSize", zmoiPyramidGetSize, size, zmo32f, 3);
    }
    template <class T>
    T* results() {
        return reinterpret_cast<T*>(result.data());
    }

    ZmoiSize size;
    std::vector<Zmo8u> gray8u;
    std::vector<Zmo32f> gray32f;
    std::vector<Zmo16s> gray16s;
    std::vector<Zmo8u> result;
    bench::Work work;
};

using Shared = std::shared_ptr<Data>;

template <class T>
std::vector<T> product(const std::vector<T>& kernel) {
    std::vector<T> weights;
    for (const T column : kernel) {
        for (const T row : kernel) weights.push_back(column * row);
    }
    return weights;
}

template <class Gaussian, class Plain, class T>
Function gaussian(const char* name, Gaussian run, Plain plain, const Shared& d,
                  const std::vector<T>& src, ZmoDataType type, int taps) {
    const auto kernel =
        std::vector<float>(static_cast<size_t>(taps), 1.0F / static_cast<float>(taps));
    return {.name = name,
            .call =
                [d, &src, run, type, taps] {
                    auto* const state = d->work.stateOf<ZmoiGaussianState>();
                    const int step = bench::stepOf<T>(d->size);
                    const ZmoStatus status = zmoiFilterGaussianInit(taps, 1.5F, type, 1, state);
                    return status != zmoStsNoErr
                               ? status
                               : run(src.data(), step, d->results<T>(), step, d->size,
                                     zmoiBorderReplicate, nullptr, state, d->work.buffer.data());
                },
            .plainLoop =
                [d, &src, plain, taps, weights = product(kernel)] {
                    plain(src.data(), d->results<T>(), d->size, weights.data(), taps);
                },
            .divisor = static_cast<double>(src.size())};
}

Function separable7x7(const Shared& d) {
    static constexpr Zmo16s kernel[] = {1, 2, 3, 4, 3, 2, 1};
    return {.name = "zmoiFilterSeparable_16s_C1R_L 7x7",
            .call =
                [d] {
                    auto* const state = d->work.stateOf<ZmoiSeparableState>();
                    const int step = bench::stepOf<Zmo16s>(d->size);
                    const ZmoStatus status = zmoiFilterSeparableInit_16s_L(
                        kernel, kernel, {7, 7}, {3, 3}, 256, zmo16s, zmo16s, 1, state);
                    return status != zmoStsNoErr
                               ? status
                               : zmoiFilterSeparable_16s_C1R_L(
                                     d->gray16s.data(), step, d->results<Zmo16s>(), step,
                                     {d->size.width, d->size.height}, zmoiBorderReplicate, nullptr,
                                     state, d->work.buffer.data());
                },
            .plainLoop =
                [d, weights = product(std::vector<int>(kernel, kernel + 7))] {
                    plainFilter16s(d->gray16s.data(), d->results<Zmo16s>(), d->size, weights.data(),
                                   7, 256);
                },
            .divisor = static_cast<double>(d->gray16s.size())};
}

// Per pixel of the result.
Function layerDown(const Shared& d) {
    const ZmoiSize half{(d->size.width + 1) / 2, (d->size.height + 1) / 2};
    return {.name = "zmoiPyramidLayerDown_8u_C1R",
            .call =
                [d, half] {
                    auto* const state = d->work.stateOf<ZmoiPyramidState>();
                    const ZmoStatus status = zmoiPyramidInit(nullptr, 0, 2, zmoiBorderReplicate,
                                                             nullptr, zmo8u, 1, state);
                    return status != zmoStsNoErr
                               ? status
                               : zmoiPyramidLayerDown_8u_C1R(d->gray8u.data(),
                                                             bench::stepOf<Zmo8u>(d->size), d->size,
                                                             d->results<Zmo8u>(), half.width, half,
                                                             state, d->work.buffer.data());
                },
            .plainLoop = [d] { plainLayerDown8u(d->gray8u.data(), d->results<Zmo8u>(), d->size); },
            .divisor = static_cast<double>(bench::pixelsOf(half))};
}

std::vector<Function> functions(ZmoiSize size) {
    const Shared d = std::make_shared<Data>(size);
    return {gaussian("zmoiFilterGaussianBorder_8u_C1R 5x5", zmoiFilterGaussianBorder_8u_C1R,
                     plainFilter8u, d, d->gray8u, zmo8u, 5),
            gaussian("zmoiFilterGaussianBorder_8u_C1R 31x31", zmoiFilterGaussianBorder_8u_C1R,
                     plainFilter8u, d, d->gray8u, zmo8u, 31),
            gaussian("zmoiFilterGaussianBorder_32f_C1R 5x5", zmoiFilterGaussianBorder_32f_C1R,
                     plainFilter32f, d, d->gray32f, zmo32f, 5),
            separable7x7(d), layerDown(d)};
}

const levels::Registered registered("filters", functions);

}  // namespace
