// Norms, tables of sums, local deviations, and windows at fractional positions: with the image, the
// rectangle, the window.
#include <memory>

#include "scaling.h"
#include "zmocv.h"

namespace {

using scaling::Function;

constexpr ZmoiSize larger(ZmoiSize size, int by) {
    return {size.width + by, size.height + by};
}

// Half, once and twice the sides.
std::vector<ZmoiSize> imageSizes(ZmoiSize size) {
    return {{(size.width + 1) / 2, (size.height + 1) / 2}, size, {size.width * 2, size.height * 2}};
}

Function norm(ZmoiSize size) {
    Function function{"zmoiNorm_L2_8u_C1MR, image", {}};
    for (const ZmoiSize roi : imageSizes(size)) {
        function.steps.push_back(
            {scaling::named(roi), [roi, src = bench::noise<Zmo8u>(roi),
                                   mask = std::vector<Zmo8u>(bench::pixelsOf(roi), 1)] {
                 const int step = bench::stepOf<Zmo8u>(roi);
                 double result = 0;
                 return zmoiNorm_L2_8u_C1MR(src.data(), step, mask.data(), step, roi, &result);
             }});
    }
    return function;
}

template <class Integral>
Function integral(const char* name, Integral run, ZmoiSize size) {
    Function function{std::string(name) + ", image", {}};
    for (const ZmoiSize roi : imageSizes(size)) {
        const auto table = std::make_shared<std::vector<Zmo32s>>(bench::pixelsOf(larger(roi, 1)));
        function.steps.push_back(
            {scaling::named(roi), [roi, run, table, src = bench::noise<Zmo8u>(roi)] {
                 return run(src.data(), bench::stepOf<Zmo8u>(roi), table->data(),
                            bench::stepOf<Zmo32s>(larger(roi, 1)), roi, 0);
             }});
    }
    return function;
}

constexpr int largestSide = 63;

// Tables that also hold a tilted rectangle of the largest sides beside and below each pixel.
struct Tables {
    template <class SqrIntegral>
    Tables(SqrIntegral make, ZmoiSize roi)
        : size(larger(roi, 2 * largestSide + 1)),
          sums(bench::pixelsOf(size)),
          squares(bench::pixelsOf(size)),
          dst(bench::pixelsOf(roi)) {
        const ZmoiSize picture = larger(size, -1);
        const std::vector<Zmo8u> noise = bench::noise<Zmo8u>(picture);
        bench::require(make(noise.data(), bench::stepOf<Zmo8u>(picture), sums.data(),
                            bench::stepOf<Zmo32s>(size), squares.data(),
                            bench::stepOf<Zmo64f>(size), picture, 0, 0),
                       "tables");
    }

    ZmoiSize size;
    std::vector<Zmo32s> sums;
    std::vector<Zmo64f> squares;
    std::vector<Zmo32f> dst;
};

template <class RectStdDev, class SqrIntegral>
Function deviation(const char* name, RectStdDev run, SqrIntegral make, ZmoiSize roi) {
    const auto tables = std::make_shared<Tables>(make, roi);
    Function function{std::string(name) + ", rectangle", {}};
    for (const int side : {3, 7, 15, 31, largestSide}) {
        function.steps.push_back(
            {scaling::named({side, side}), [=] {
                 return run(tables->sums.data(), bench::stepOf<Zmo32s>(tables->size),
                            tables->squares.data(), bench::stepOf<Zmo64f>(tables->size),
                            tables->dst.data(), bench::stepOf<Zmo32f>(roi), roi,
                            ZmoiRect{largestSide, 0, side, side});
             }});
    }
    return function;
}

Function copySubpix(ZmoiSize size) {
    const auto dst = std::make_shared<std::vector<Zmo8u>>(bench::pixelsOf(size));
    Function function{"zmoiCopySubpix_8u_C1R, window", {}};
    for (const int parts : {8, 4, 2, 1}) {
        const ZmoiSize window{(size.width + parts - 1) / parts, (size.height + parts - 1) / parts};
        function.steps.push_back(
            {scaling::named(window),
             [=, image = larger(size, 1), src = bench::noise<Zmo8u>(larger(size, 1))] {
                 return zmoiCopySubpix_8u_C1R(src.data(), bench::stepOf<Zmo8u>(image), dst->data(),
                                              bench::stepOf<Zmo8u>(size), window, 0.25F, 0.5F);
             }});
    }
    return function;
}

std::vector<Function> functions(ZmoiSize size) {
    return {norm(size),
            integral("zmoiIntegral_8u32s_C1R", zmoiIntegral_8u32s_C1R, size),
            integral("zmoiTiltedIntegral_8u32s_C1R", zmoiTiltedIntegral_8u32s_C1R, size),
            deviation("zmoiRectStdDev_32s32f_C1R", zmoiRectStdDev_32s32f_C1R,
                      zmoiSqrIntegral_8u32s64f_C1R, size),
            deviation("zmoiTiltedRectStdDev_32s32f_C1R", zmoiTiltedRectStdDev_32s32f_C1R,
                      zmoiTiltedSqrIntegral_8u32s64f_C1R, size),
            copySubpix(size)};
}

const scaling::Registered registered("sums", functions);

}  // namespace
