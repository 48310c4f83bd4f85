// Edges and corners of a picture, and edges from its derivatives.
#include <algorithm>
#include <memory>

#include "levels.h"
#include "plain_corners.h"
#include "zmocv.h"

namespace {

using levels::Function;

constexpr float low = 127.5F;
constexpr float high = 382.5F;
constexpr float k = 0.04F;

struct Data {
    explicit Data(ZmoiSize roi)
        : size(roi),
          picture(bench::rectangles(roi, {16, 12})),
          dx(picture.size()),
          dy(picture.size()),
          edges(picture.size()),
          corners(picture.size() * 6) {
        // Sides askew, and a ground that is not even.
        for (int y = 0; y < size.height; ++y) {
            const auto row = picture.begin() + y * size.width;
            std::rotate(row, row + y / 4 % size.width, row + size.width);
            for (int x = 0; x < size.width; ++x) {
                row[x] = static_cast<Zmo8u>(20 + row[x] / 4 * 3 + (7 * x + 5 * y) % 3);
            }
        }
        bench::plainDerivatives(picture.data(), dx.data(), dy.data(), size);
        bench::growBy(buffer, "zmoiCannyBorderGetBufferSize", zmoiCannyBorderGetBufferSize, size,
                      zmoiMask3x3, zmo8u, 1);
        bench::growBy(buffer, "zmoiHarrisCornerGetBufferSize", zmoiHarrisCornerGetBufferSize, size,
                      3, 5, zmo8u, 1);
    }

    ZmoiSize size;
    std::vector<Zmo8u> picture;
    std::vector<Zmo16s> dx;
    std::vector<Zmo16s> dy;
    std::vector<Zmo8u> edges;
    std::vector<Zmo32f> corners;
    std::vector<Zmo8u> buffer;
};

using Shared = std::shared_ptr<Data>;

Function harris(const Shared& d, int window) {
    const auto plain = [d, window] {
        bench::plainDerivatives(d->picture.data(), d->dx.data(), d->dy.data(), d->size);
        bench::plainHarris(d->dx.data(), d->dy.data(), d->corners.data(), d->size, window, k);
    };
    return {.name = "zmoiHarrisCorner_8u32f_C1R " + std::to_string(window) + "x" +
                    std::to_string(window),
            .call =
                [d, window] {
                    return zmoiHarrisCorner_8u32f_C1R(
                        d->picture.data(), bench::stepOf<Zmo8u>(d->size), d->corners.data(),
                        bench::stepOf<Zmo32f>(d->size), d->size, zmoiDiffSobel, 3, window, k, 1,
                        zmoiBorderReplicate, nullptr, d->buffer.data());
                },
            .plainLoop = plain,
            .divisor = static_cast<double>(bench::pixelsOf(d->size))};
}

template <class Eigen>
Function eigen(const char* name, Eigen run, const Shared& d, int floats, int window) {
    return {.name = std::string(name) + " " + std::to_string(window) + "x" + std::to_string(window),
            .call =
                [d, run, floats, window] {
                    return run(d->picture.data(), bench::stepOf<Zmo8u>(d->size), d->corners.data(),
                               floats * bench::stepOf<Zmo32f>(d->size), d->size, zmoiKernelSobel, 3,
                               window, d->buffer.data());
                },
            .divisor = static_cast<double>(bench::pixelsOf(d->size))};
}

std::vector<Function> functions(ZmoiSize size) {
    const Shared d = std::make_shared<Data>(size);
    const auto pixels = static_cast<double>(bench::pixelsOf(size));
    return {
        {.name = "zmoiCanny_16s8u_C1R L2",
         .call =
             [d] {
                 const int step = bench::stepOf<Zmo16s>(d->size);
                 return zmoiCanny_16s8u_C1R(d->dx.data(), step, d->dy.data(), step, d->edges.data(),
                                            bench::stepOf<Zmo8u>(d->size), d->size, low, high,
                                            zmoiNormL2, d->buffer.data());
             },
         .plainLoop =
             [d] {
                 bench::plainCanny(d->dx.data(), d->dy.data(), d->edges.data(), d->size, low, high);
             },
         .divisor = pixels},
        {.name = "zmoiCannyBorder_8u_C1R Sobel 3x3 L2",
         .call =
             [d] {
                 const int step = bench::stepOf<Zmo8u>(d->size);
                 return zmoiCannyBorder_8u_C1R(d->picture.data(), step, d->edges.data(), step,
                                               d->size, zmoiDiffSobel, zmoiMask3x3, low, high,
                                               zmoiNormL2, zmoiBorderReplicate, nullptr,
                                               d->buffer.data());
             },
         .plainLoop =
             [d] {
                 bench::plainDerivatives(d->picture.data(), d->dx.data(), d->dy.data(), d->size);
                 bench::plainCanny(d->dx.data(), d->dy.data(), d->edges.data(), d->size, low, high);
             },
         .divisor = pixels},
        harris(d, 3),
        harris(d, 5),
        eigen("zmoiMinEigenVal_8u32f_C1R", zmoiMinEigenVal_8u32f_C1R, d, 1, 3),
        eigen("zmoiEigenValsVecs_8u32f_C1R", zmoiEigenValsVecs_8u32f_C1R, d, 6, 3)};
}

const levels::Registered registered("corners", functions);

}  // namespace
