// Edges and corners: with the image and with the window.
#include <memory>

#include "scaling.h"
#include "zmocv.h"

namespace {

using scaling::Function;

struct Data {
    explicit Data(ZmoiSize roi)
        : size(roi), src(bench::noise<Zmo8u>(roi)), dst(6 * bench::pixelsOf(roi)) {}

    ZmoiSize size;
    std::vector<Zmo8u> src;
    std::vector<Zmo32f> dst;
    std::vector<Zmo8u> buffer;
};

// The last step is the largest, and its buffer serves all.
constexpr int windows[] = {3, 15, 63, 255};

template <class Run, class Query>
Function corners(const char* name, Run run, Query query, int floats, ZmoiSize size) {
    Function function{std::string(name) + ", window", {}};
    const auto data = std::make_shared<Data>(size);
    bench::growBy(data->buffer, name, query, size, 3, windows[3], zmo8u, 1);
    for (const int window : windows) {
        function.steps.push_back({scaling::named({window, window}), [data, run, floats, window] {
                                      return run(data->src.data(), bench::stepOf<Zmo8u>(data->size),
                                                 data->dst.data(),
                                                 floats * bench::stepOf<Zmo32f>(data->size),
                                                 data->size, window, data->buffer.data());
                                  }});
    }
    return function;
}

// Noise makes edges that are short and many.
Function cannyBorder(ZmoiSize size) {
    Function function{"zmoiCannyBorder_8u_C1R, image", {}};
    for (const ZmoiSize roi : {ZmoiSize{(size.width + 1) / 2, (size.height + 1) / 2}, size,
                               ZmoiSize{size.width * 2, size.height * 2}}) {
        const auto data = std::make_shared<Data>(roi);
        bench::growBy(data->buffer, "zmoiCannyBorderGetBufferSize", zmoiCannyBorderGetBufferSize,
                      roi, zmoiMask3x3, zmo8u, 1);
        function.steps.push_back(
            {scaling::named(roi), [data] {
                 const int step = bench::stepOf<Zmo8u>(data->size);
                 return zmoiCannyBorder_8u_C1R(
                     data->src.data(), step, reinterpret_cast<Zmo8u*>(data->dst.data()), step,
                     data->size, zmoiDiffSobel, zmoiMask3x3, 300, 600, zmoiNormL2,
                     zmoiBorderReplicate, nullptr, data->buffer.data());
             }});
    }
    return function;
}

std::vector<Function> functions(ZmoiSize size) {
    const auto harris = [](const Zmo8u* src, int srcStep, Zmo32f* dst, int dstStep, ZmoiSize roi,
                           int window, Zmo8u* buffer) {
        return zmoiHarrisCorner_8u32f_C1R(src, srcStep, dst, dstStep, roi, zmoiDiffSobel, 3, window,
                                          0.04F, 1, zmoiBorderReplicate, nullptr, buffer);
    };
    const auto vectors = [](const Zmo8u* src, int srcStep, Zmo32f* dst, int dstStep, ZmoiSize roi,
                            int window, Zmo8u* buffer) {
        return zmoiEigenValsVecs_8u32f_C1R(src, srcStep, dst, dstStep, roi, zmoiKernelSobel, 3,
                                           window, buffer);
    };
    return {
        corners("zmoiHarrisCorner_8u32f_C1R", harris, zmoiHarrisCornerGetBufferSize, 1, size),
        corners("zmoiEigenValsVecs_8u32f_C1R", vectors, zmoiEigenValsVecsGetBufferSize, 6, size),
        cannyBorder(size)};
}

const scaling::Registered registered("corners", functions);

}  // namespace
