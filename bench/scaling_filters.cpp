// Gaussian and separable filters with the kernel, pyramid layers with the image.
#include <memory>

#include "scaling.h"
#include "zmoi.h"

namespace {

using scaling::Function;

constexpr int sides[] = {3, 7, 15, 31};

template <class T, class Gaussian>
Function gaussian(const char* name, Gaussian run, ZmoDataType type, ZmoiSize roi) {
    Function function{std::string(name) + ", kernel", {}};
    const auto src = std::make_shared<std::vector<T>>(bench::noise<T>(roi));
    const auto dst = std::make_shared<std::vector<T>>(src->size());
    for (const int side : sides) {
        const auto work = std::make_shared<bench::Work>();
        work->growBy("zmoiFilterGaussianGetSize", zmoiFilterGaussianGetSize, roi, side, type, 1);
        auto* const state = work->stateOf<ZmoiGaussianState>();
        bench::require(zmoiFilterGaussianInit(side, static_cast<float>(side) / 5, type, 1, state),
                       "zmoiFilterGaussianInit");
        function.steps.push_back({scaling::named({side, side}), [=] {
                                      const int step = bench::stepOf<T>(roi);
                                      return run(src->data(), step, dst->data(), step, roi,
                                                 zmoiBorderReplicate, nullptr, state,
                                                 work->buffer.data());
                                  }});
    }
    return function;
}

// The weights are 1: all sums stay within 32 bits.
Function separable(ZmoiSize roi) {
    Function function{"zmoiFilterSeparable_16s_C1R_L, kernel", {}};
    const ZmoiSizeL large{roi.width, roi.height};
    const auto src = std::make_shared<std::vector<Zmo16s>>(bench::noise<Zmo16s>(roi));
    const auto dst = std::make_shared<std::vector<Zmo16s>>(src->size());
    const std::vector<Zmo16s> kernel(31, 1);
    for (const int side : sides) {
        const auto work = std::make_shared<bench::Work>();
        work->growBy("zmoiFilterSeparableGetSize_L", zmoiFilterSeparableGetSize_L, large,
                     ZmoiSize{side, side}, zmo16s, zmo16s, 1);
        auto* const state = work->stateOf<ZmoiSeparableState>();
        bench::require(zmoiFilterSeparableInit_16s_L(kernel.data(), kernel.data(), {side, side},
                                                     {side / 2, side / 2}, side * side, zmo16s,
                                                     zmo16s, 1, state),
                       "zmoiFilterSeparableInit_16s_L");
        function.steps.push_back({scaling::named({side, side}), [=] {
                                      const int step = bench::stepOf<Zmo16s>(roi);
                                      return zmoiFilterSeparable_16s_C1R_L(
                                          src->data(), step, dst->data(), step, large,
                                          zmoiBorderReplicate, nullptr, state, work->buffer.data());
                                  }});
    }
    return function;
}

Function layerDown(ZmoiSize size) {
    Function function{"zmoiPyramidLayerDown_8u_C1R, image", {}};
    for (const int parts : {4, 2, 1}) {
        const ZmoiSize roi{(size.width + parts - 1) / parts, (size.height + parts - 1) / parts};
        const ZmoiSize half{(roi.width + 1) / 2, (roi.height + 1) / 2};
        const auto work = std::make_shared<bench::Work>();
        work->growBy("zmoiPyramidGetSize", zmoiPyramidGetSize, roi, zmo8u, 1);
        auto* const state = work->stateOf<ZmoiPyramidState>();
        bench::require(
            zmoiPyramidInit(nullptr, 0, 2, zmoiBorderReplicate, nullptr, zmo8u, 1, state),
            "zmoiPyramidInit");
        const auto dst = std::make_shared<std::vector<Zmo8u>>(bench::pixelsOf(half));
        function.steps.push_back({scaling::named(roi), [=, src = bench::noise<Zmo8u>(roi)] {
                                      return zmoiPyramidLayerDown_8u_C1R(
                                          src.data(), roi.width, roi, dst->data(), half.width, half,
                                          state, work->buffer.data());
                                  }});
    }
    return function;
}

std::vector<Function> functions(ZmoiSize size) {
    return {gaussian<Zmo8u>("zmoiFilterGaussianBorder_8u_C1R", zmoiFilterGaussianBorder_8u_C1R,
                            zmo8u, size),
            gaussian<Zmo32f>("zmoiFilterGaussianBorder_32f_C1R", zmoiFilterGaussianBorder_32f_C1R,
                             zmo32f, size),
            separable(size), layerDown(size)};
}

const scaling::Registered registered("filters", functions);

}  // namespace
