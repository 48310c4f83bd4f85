// Differences, accumulation, norms and means under a mask, tables of sums.
#include <memory>

#include "levels.h"
#include "plain_sums.h"
#include "zmocv.h"

namespace {

using levels::Function;

struct Data {
    explicit Data(ZmoiSize roi)
        : size(roi),
          noise8u(bench::noise<Zmo8u>(roi)),
          noise16u(bench::noise<Zmo16u>(roi)),
          noise32f(bench::noise<Zmo32f>(roi)),
          rectangles(bench::rectangles(roi, {4, 4})),
          differences(noise8u.size()),
          sums(noise8u.size()),
          table32s(bench::pixelsOf({roi.width + 1, roi.height + 1})),
          table32f(table32s.size()),
          squares(table32s.size()) {
        for (const Zmo8u value : noise8u) mask.push_back(value % 4 != 0 ? 255 : 0);
    }

    ZmoiSize size;
    std::vector<Zmo8u> noise8u;
    std::vector<Zmo16u> noise16u;
    std::vector<Zmo32f> noise32f;
    std::vector<Zmo8u> mask;
    std::vector<Zmo8u> rectangles;
    std::vector<Zmo8u> differences;
    std::vector<Zmo32f> sums;
    std::vector<Zmo32s> table32s;
    std::vector<Zmo32f> table32f;
    std::vector<Zmo32s> squares;
    double result = 0;
};

using Shared = std::shared_ptr<Data>;

template <class T>
using Reduction = ZmoStatus (*)(const T*, int, const Zmo8u*, int, ZmoiSize, Zmo64f*);
template <class T>
using PlainReduction = double (*)(const T*, const Zmo8u*, size_t);

template <class T>
Function reduction(const char* name, Reduction<T> run, PlainReduction<T> plain, const Shared& d,
                   const std::vector<T>& src) {
    return {.name = name,
            .call =
                [d, &src, run] {
                    return run(src.data(), bench::stepOf<T>(d->size), d->mask.data(),
                               bench::stepOf<Zmo8u>(d->size), d->size, &d->result);
                },
            .plainLoop = [d, &src,
                          plain] { d->result = plain(src.data(), d->mask.data(), src.size()); },
            .divisor = static_cast<double>(src.size())};
}

template <class Integral, class T, class D>
Function integral(const char* name, Integral run, const Shared& d, const std::vector<T>& src,
                  std::vector<D>& table) {
    return {
        .name = name,
        .call =
            [d, &src, &table, run] {
                return run(src.data(), bench::stepOf<T>(d->size), table.data(),
                           bench::stepOf<D>({d->size.width + 1, 0}), d->size, 0);
            },
        .plainLoop = [d, &src, &table] { bench::plainIntegral(src.data(), table.data(), d->size); },
        .divisor = static_cast<double>(src.size())};
}

std::vector<Function> functions(ZmoiSize size) {
    const Shared d = std::make_shared<Data>(size);
    const auto pixels = static_cast<double>(bench::pixelsOf(size));
    const int step8u = bench::stepOf<Zmo8u>(size);
    return {
        {.name = "zmoiAbsDiff_8u_C1R",
         .call =
             [d, step8u] {
                 return zmoiAbsDiff_8u_C1R(d->noise8u.data(), step8u, d->rectangles.data(), step8u,
                                           d->differences.data(), step8u, d->size);
             },
         .plainLoop =
             [d] {
                 bench::plainAbsDiff(d->noise8u.data(), d->rectangles.data(), d->differences.data(),
                                     d->noise8u.size());
             },
         .divisor = pixels},
        {.name = "zmoiAdd_8u32f_C1IR",
         .call =
             [d, step8u] {
                 return zmoiAdd_8u32f_C1IR(d->noise8u.data(), step8u, d->sums.data(),
                                           bench::stepOf<Zmo32f>(d->size), d->size);
             },
         .plainLoop =
             [d] { bench::plainAdd(d->noise8u.data(), d->sums.data(), d->noise8u.size()); },
         .divisor = pixels},
        reduction("zmoiNorm_L2_8u_C1MR", zmoiNorm_L2_8u_C1MR, bench::plainNormL2, d, d->noise8u),
        reduction("zmoiNorm_L2_16u_C1MR", zmoiNorm_L2_16u_C1MR, bench::plainNormL2, d, d->noise16u),
        reduction("zmoiNorm_L2_32f_C1MR", zmoiNorm_L2_32f_C1MR, bench::plainNormL2, d, d->noise32f),
        reduction("zmoiMean_8u_C1MR", zmoiMean_8u_C1MR, bench::plainMean, d, d->noise8u),
        reduction("zmoiMean_16u_C1MR", zmoiMean_16u_C1MR, bench::plainMean, d, d->noise16u),
        reduction("zmoiMean_32f_C1MR", zmoiMean_32f_C1MR, bench::plainMean, d, d->noise32f),
        integral("zmoiIntegral_8u32s_C1R", zmoiIntegral_8u32s_C1R, d, d->noise8u, d->table32s),
        integral("zmoiIntegral_8u32f_C1R", zmoiIntegral_8u32f_C1R, d, d->noise8u, d->table32f),
        integral("zmoiIntegral_32f_C1R", zmoiIntegral_32f_C1R, d, d->noise32f, d->table32f),
        {.name = "zmoiSqrIntegral_8u32s_C1R",
         .call =
             [d, step8u] {
                 const int step = bench::stepOf<Zmo32s>({d->size.width + 1, 0});
                 return zmoiSqrIntegral_8u32s_C1R(d->noise8u.data(), step8u, d->table32s.data(),
                                                  step, d->squares.data(), step, d->size, 0, 0);
             },
         .plainLoop =
             [d] {
                 bench::plainSqrIntegral(d->noise8u.data(), d->table32s.data(), d->squares.data(),
                                         d->size);
             },
         .divisor = pixels},
    };
}

const levels::Registered registered("sums", functions);

}  // namespace
