// Edges, and what prepares their data.
#include <memory>

#include "levels.h"
#include "zmocv.h"
#include "zmoi.h"

namespace {

using levels::Function;

struct Data {
    explicit Data(ZmoiSize roi)
        : size(roi),
          rectangles(bench::rectangles(roi, {4, 4})),
          picture(bench::pixelsOf(roi)),
          edges(picture.size()),
          picture32f(picture.size()),
          dx16s(picture.size()),
          dy16s(picture.size()),
          dx32f(picture.size()),
          dy32f(picture.size()) {
        bench::growBy(buffer, "zmoiCannyGetSize", zmoiCannyGetSize, size);
        bench::growBy(buffer, "zmoiFilterSobelVertBorderGetBufferSize",
                      zmoiFilterSobelVertBorderGetBufferSize, size, zmoiMask5x5, zmo32f, 1);
        bench::require(
            zmoiRotateGetShift(size.width / 2.0, size.height / 2.0, 10, &xShift, &yShift),
            "zmoiRotateGetShift");
    }

    ZmoiSize size;
    std::vector<Zmo8u> rectangles;
    std::vector<Zmo8u> picture;
    std::vector<Zmo8u> edges;
    std::vector<Zmo32f> picture32f;
    std::vector<Zmo16s> dx16s;
    std::vector<Zmo16s> dy16s;
    std::vector<Zmo32f> dx32f;
    std::vector<Zmo32f> dy32f;
    std::vector<Zmo8u> buffer;
    double xShift = 0;
    double yShift = 0;
};

using Shared = std::shared_ptr<Data>;

template <class Sobel, class T, class D>
Function sobel(const char* name, Sobel run, const Shared& data, const std::vector<T>& src,
               std::vector<D>& dst, ZmoiMaskSize mask) {
    return {.name = name,
            .call =
                [data, &src, &dst, run, mask] {
                    return run(src.data(), bench::stepOf<T>(data->size), dst.data(),
                               bench::stepOf<D>(data->size), data->size, mask, zmoiBorderReplicate,
                               nullptr, data->buffer.data());
                },
            .divisor = static_cast<double>(src.size())};
}

template <class Canny, class T>
Function canny(const char* name, Canny run, const Shared& data, const std::vector<T>& dx,
               const std::vector<T>& dy, ZmoiNorm norm) {
    return {.name = name,
            .call =
                [data, &dx, &dy, run, norm] {
                    const int step = bench::stepOf<T>(data->size);
                    return run(dx.data(), step, dy.data(), step, data->edges.data(),
                               bench::stepOf<Zmo8u>(data->size), data->size, 127.5F, 382.5F, norm,
                               data->buffer.data());
                },
            .divisor = static_cast<double>(dx.size())};
}

// In this order each function finds its input made by an earlier one.
std::vector<Function> functions(ZmoiSize size) {
    const Shared d = std::make_shared<Data>(size);
    const auto pixels = static_cast<double>(bench::pixelsOf(size));
    const int step8u = bench::stepOf<Zmo8u>(size);
    return {
        {.name = "zmoiRotate_8u_C1R",
         .call =
             [d, step8u] {
                 return zmoiRotate_8u_C1R(d->rectangles.data(), step8u, d->size, d->picture.data(),
                                          step8u, d->size, 10, d->xShift, d->yShift);
             },
         .divisor = pixels},
        {.name = "zmoiConvert_8u32f_C1R",
         .call =
             [d, step8u] {
                 return zmoiConvert_8u32f_C1R(d->picture.data(), step8u, d->picture32f.data(),
                                              bench::stepOf<Zmo32f>(d->size), d->size);
             },
         .divisor = pixels},
        sobel("zmoiFilterSobelVertBorder_8u16s_C1R 5x5", zmoiFilterSobelVertBorder_8u16s_C1R, d,
              d->picture, d->dx16s, zmoiMask5x5),
        sobel("zmoiFilterSobelHorizBorder_8u16s_C1R 5x5", zmoiFilterSobelHorizBorder_8u16s_C1R, d,
              d->picture, d->dy16s, zmoiMask5x5),
        sobel("zmoiFilterSobelVertBorder_8u16s_C1R 3x3", zmoiFilterSobelVertBorder_8u16s_C1R, d,
              d->picture, d->dx16s, zmoiMask3x3),
        sobel("zmoiFilterSobelHorizBorder_8u16s_C1R 3x3", zmoiFilterSobelHorizBorder_8u16s_C1R, d,
              d->picture, d->dy16s, zmoiMask3x3),
        sobel("zmoiFilterSobelVertBorder_32f_C1R 5x5", zmoiFilterSobelVertBorder_32f_C1R, d,
              d->picture32f, d->dx32f, zmoiMask5x5),
        sobel("zmoiFilterSobelHorizBorder_32f_C1R 5x5", zmoiFilterSobelHorizBorder_32f_C1R, d,
              d->picture32f, d->dy32f, zmoiMask5x5),
        sobel("zmoiFilterSobelVertBorder_32f_C1R 3x3", zmoiFilterSobelVertBorder_32f_C1R, d,
              d->picture32f, d->dx32f, zmoiMask3x3),
        sobel("zmoiFilterSobelHorizBorder_32f_C1R 3x3", zmoiFilterSobelHorizBorder_32f_C1R, d,
              d->picture32f, d->dy32f, zmoiMask3x3),
        canny("zmoiCanny_16s8u_C1R L1", zmoiCanny_16s8u_C1R, d, d->dx16s, d->dy16s, zmoiNormL1),
        canny("zmoiCanny_32f8u_C1R L1", zmoiCanny_32f8u_C1R, d, d->dx32f, d->dy32f, zmoiNormL1),
        canny("zmoiCanny_32f8u_C1R L2", zmoiCanny_32f8u_C1R, d, d->dx32f, d->dy32f, zmoiNormL2),
    };
}

const levels::Registered registered("canny", functions);

}  // namespace
