// levels [width height]
//
// Clocks per pixel of each function at each processor level, and how many times faster that is than
// the baseline, or than a plain loop of one pixel after the other where plain_loops.h has it. The
// level is switched within the run, call by call of zmoSetCpuFeatures.
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "figures.h"
#include "filters_plain.h"
#include "plain_loops.h"
#include "zmocore.h"
#include "zmocv.h"
#include "zmoi.h"

namespace {

template <class T>
using Plane = std::vector<T>;

// All data of the run. Every plane is packed.
struct Data {
    explicit Data(ZmoiSize roi)
        : size(roi),
          pixels(static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height)),
          rectangles(bench::rectangles(roi, {4, 4})),
          picture(pixels),
          edges(pixels),
          picture32f(pixels),
          dx16s(pixels),
          dy16s(pixels),
          dx32f(pixels),
          dy32f(pixels),
          noise8u(pixels),
          noise16u(pixels),
          noise32f(pixels),
          mask(pixels),
          sums(pixels),
          table32s(static_cast<size_t>(roi.width + 1) * static_cast<size_t>(roi.height + 1)),
          table32f(table32s.size()) {
        unsigned seed = 7;
        for (size_t i = 0; i < pixels; ++i) {
            seed = seed * 1664525U + 1013904223U;
            noise8u[i] = static_cast<Zmo8u>(seed >> 24);
            noise16u[i] = static_cast<Zmo16u>(seed >> 16);
            noise32f[i] = static_cast<Zmo32f>(seed >> 8) / 65536;
            mask[i] = (seed >> 12) % 4 != 0 ? 255 : 0;
        }
        int bytes = 0;
        zmoiCannyGetSize(size, &bytes);
        buffer.resize(static_cast<size_t>(bytes));
        zmoiFilterSobelVertBorderGetBufferSize(size, zmoiMask5x5, zmo32f, 1, &bytes);
        buffer.resize(std::max(buffer.size(), static_cast<size_t>(bytes)));
        zmoiRotateGetShift(size.width / 2.0, size.height / 2.0, 10, &xShift, &yShift);
    }

    int step(size_t element) const { return size.width * static_cast<int>(element); }

    ZmoiSize size;
    size_t pixels;
    Plane<Zmo8u> rectangles;
    Plane<Zmo8u> picture;
    Plane<Zmo8u> edges;
    Plane<Zmo32f> picture32f;
    Plane<Zmo16s> dx16s;
    Plane<Zmo16s> dy16s;
    Plane<Zmo32f> dx32f;
    Plane<Zmo32f> dy32f;
    Plane<Zmo8u> noise8u;
    Plane<Zmo16u> noise16u;
    Plane<Zmo32f> noise32f;
    Plane<Zmo8u> mask;
    Plane<Zmo32f> sums;
    Plane<Zmo32s> table32s;
    Plane<Zmo32f> table32f;
    double result = 0;
    Plane<Zmo8u> buffer;
    double xShift = 0;
    double yShift = 0;
};

struct Function {
    const char* name;
    std::function<ZmoStatus()> call;
    std::function<void()> plainLoop = {};
    int pixelsPerResult = 1;
};

template <class Sobel, class T, class D>
Function sobel(const char* name, Sobel run, Data& data, const Plane<T>& src, Plane<D>& dst,
               ZmoiMaskSize mask) {
    return {name, [&data, &src, &dst, run, mask] {
                return run(src.data(), data.step(sizeof(T)), dst.data(), data.step(sizeof(D)),
                           data.size, mask, zmoiBorderReplicate, nullptr, data.buffer.data());
            }};
}

template <class Canny, class T>
Function canny(const char* name, Canny run, Data& data, const Plane<T>& dx, const Plane<T>& dy,
               ZmoiNorm norm) {
    return {name, [&data, &dx, &dy, run, norm] {
                const int step = data.step(sizeof(T));
                return run(dx.data(), step, dy.data(), step, data.edges.data(), data.step(1),
                           data.size, 127.5F, 382.5F, norm, data.buffer.data());
            }};
}

template <class T>
using Reduction = ZmoStatus (*)(const T*, int, const Zmo8u*, int, ZmoiSize, Zmo64f*);
template <class T>
using PlainReduction = double (*)(const T*, const Zmo8u*, size_t);

template <class T>
Function reduction(const char* name, Reduction<T> run, PlainReduction<T> plain, Data& data,
                   const Plane<T>& src) {
    return {
        name,
        [&data, &src, run] {
            return run(src.data(), data.step(sizeof(T)), data.mask.data(), data.step(1), data.size,
                       &data.result);
        },
        [&data, &src, plain] { data.result = plain(src.data(), data.mask.data(), data.pixels); }};
}

template <class T>
std::vector<T> product(const std::vector<T>& kernel) {
    std::vector<T> weights;
    for (const T column : kernel) {
        for (const T row : kernel) weights.push_back(column * row);
    }
    return weights;
}

// States, work memory and results of the filters.
struct Filters {
    explicit Filters(const Data& data)
        : gray16s(data.pixels), result(data.pixels * 4), state(8192) {
        int bytes = 0;
        int ignored = 0;
        int64_t ignored64 = 0;
        int64_t bytes64 = 0;
        zmoiFilterGaussianGetSize(data.size, 255, zmo32f, 3, &ignored, &bytes);
        zmoiFilterSeparableGetSize_L({data.size.width, data.size.height}, {255, 255}, zmo32f,
                                     zmo32f, 4, &ignored64, &bytes64);
        buffer.resize(static_cast<size_t>(std::max<int64_t>(bytes, bytes64)));
        zmoiPyramidGetSize(data.size, zmo32f, 3, &ignored, &bytes);
        buffer.resize(std::max(buffer.size(), static_cast<size_t>(bytes)));
        for (size_t i = 0; i < gray16s.size(); ++i) {
            gray16s[i] = static_cast<Zmo16s>(data.rectangles[i] * 100 - 9000);
        }
    }
    template <class T>
    T* results() {
        return reinterpret_cast<T*>(result.data());
    }

    Plane<Zmo16s> gray16s;
    Plane<Zmo8u> result;
    Plane<Zmo8u> state;
    Plane<Zmo8u> buffer;
};

template <class Gaussian, class Plain, class T>
Function gaussian(const char* name, Gaussian run, Plain plain, Data& d, Filters& f,
                  const Plane<T>& src, ZmoDataType type, int taps) {
    auto* const state = reinterpret_cast<ZmoiGaussianState*>(f.state.data());
    const auto kernel =
        std::vector<float>(static_cast<size_t>(taps), 1.0F / static_cast<float>(taps));
    return {name,
            [&d, &f, &src, run, state, type, taps] {
                const int step = d.step(sizeof(T));
                const ZmoStatus status = zmoiFilterGaussianInit(taps, 1.5F, type, 1, state);
                return status != zmoStsNoErr
                           ? status
                           : run(src.data(), step, f.results<T>(), step, d.size,
                                 zmoiBorderReplicate, nullptr, state, f.buffer.data());
            },
            [&d, &f, &src, plain, taps, weights = product(kernel)] {
                plain(src.data(), f.results<T>(), d.size, weights.data(), taps);
            }};
}

Function separable7x7(Data& d, Filters& f) {
    static constexpr Zmo16s kernel[] = {1, 2, 3, 4, 3, 2, 1};
    auto* const state = reinterpret_cast<ZmoiSeparableState*>(f.state.data());
    return {"zmoiFilterSeparable_16s_C1R_L 7x7",
            [&d, &f, state] {
                const ZmoStatus status = zmoiFilterSeparableInit_16s_L(
                    kernel, kernel, {7, 7}, {3, 3}, 256, zmo16s, zmo16s, 1, state);
                return status != zmoStsNoErr
                           ? status
                           : zmoiFilterSeparable_16s_C1R_L(
                                 f.gray16s.data(), d.step(2), f.results<Zmo16s>(), d.step(2),
                                 {d.size.width, d.size.height}, zmoiBorderReplicate, nullptr, state,
                                 f.buffer.data());
            },
            [&d, &f, weights = product(std::vector<int>(kernel, kernel + 7))] {
                plainFilter16s(f.gray16s.data(), f.results<Zmo16s>(), d.size, weights.data(), 7,
                               256);
            }};
}

// Per pixel of the result.
Function layerDown(Data& d, Filters& f) {
    auto* const state = reinterpret_cast<ZmoiPyramidState*>(f.state.data());
    return {"zmoiPyramidLayerDown_8u_C1R",
            [&d, &f, state] {
                const ZmoiSize half{(d.size.width + 1) / 2, (d.size.height + 1) / 2};
                const ZmoStatus status =
                    zmoiPyramidInit(nullptr, 0, 2, zmoiBorderReplicate, nullptr, zmo8u, 1, state);
                return status != zmoStsNoErr
                           ? status
                           : zmoiPyramidLayerDown_8u_C1R(d.picture.data(), d.step(1), d.size,
                                                         f.results<Zmo8u>(), half.width, half,
                                                         state, f.buffer.data());
            },
            [&d, &f] { plainLayerDown8u(d.picture.data(), f.results<Zmo8u>(), d.size); }, 4};
}

template <class Integral, class T, class D>
Function integral(const char* name, Integral run, Data& data, const Plane<T>& src,
                  Plane<D>& table) {
    return {name,
            [&data, &src, &table, run] {
                return run(src.data(), data.step(sizeof(T)), table.data(),
                           (data.size.width + 1) * static_cast<int>(sizeof(D)), data.size, 0);
            },
            [&data, &src, &table] { bench::plainIntegral(src.data(), table.data(), data.size); }};
}

// In this order each function finds its input made by an earlier one.
std::vector<Function> functions(Data& d, Filters& f) {
    return {
        {"zmoiRotate_8u_C1R",
         [&d] {
             return zmoiRotate_8u_C1R(d.rectangles.data(), d.step(1), d.size, d.picture.data(),
                                      d.step(1), d.size, 10, d.xShift, d.yShift);
         }},
        {"zmoiConvert_8u32f_C1R",
         [&d] {
             return zmoiConvert_8u32f_C1R(d.picture.data(), d.step(1), d.picture32f.data(),
                                          d.step(4), d.size);
         }},
        sobel("zmoiFilterSobelVertBorder_8u16s_C1R 5x5", zmoiFilterSobelVertBorder_8u16s_C1R, d,
              d.picture, d.dx16s, zmoiMask5x5),
        sobel("zmoiFilterSobelHorizBorder_8u16s_C1R 5x5", zmoiFilterSobelHorizBorder_8u16s_C1R, d,
              d.picture, d.dy16s, zmoiMask5x5),
        sobel("zmoiFilterSobelVertBorder_8u16s_C1R 3x3", zmoiFilterSobelVertBorder_8u16s_C1R, d,
              d.picture, d.dx16s, zmoiMask3x3),
        sobel("zmoiFilterSobelHorizBorder_8u16s_C1R 3x3", zmoiFilterSobelHorizBorder_8u16s_C1R, d,
              d.picture, d.dy16s, zmoiMask3x3),
        sobel("zmoiFilterSobelVertBorder_32f_C1R 5x5", zmoiFilterSobelVertBorder_32f_C1R, d,
              d.picture32f, d.dx32f, zmoiMask5x5),
        sobel("zmoiFilterSobelHorizBorder_32f_C1R 5x5", zmoiFilterSobelHorizBorder_32f_C1R, d,
              d.picture32f, d.dy32f, zmoiMask5x5),
        sobel("zmoiFilterSobelVertBorder_32f_C1R 3x3", zmoiFilterSobelVertBorder_32f_C1R, d,
              d.picture32f, d.dx32f, zmoiMask3x3),
        sobel("zmoiFilterSobelHorizBorder_32f_C1R 3x3", zmoiFilterSobelHorizBorder_32f_C1R, d,
              d.picture32f, d.dy32f, zmoiMask3x3),
        canny("zmoiCanny_16s8u_C1R L1", zmoiCanny_16s8u_C1R, d, d.dx16s, d.dy16s, zmoiNormL1),
        canny("zmoiCanny_16s8u_C1R L2", zmoiCanny_16s8u_C1R, d, d.dx16s, d.dy16s, zmoiNormL2),
        canny("zmoiCanny_32f8u_C1R L1", zmoiCanny_32f8u_C1R, d, d.dx32f, d.dy32f, zmoiNormL1),
        canny("zmoiCanny_32f8u_C1R L2", zmoiCanny_32f8u_C1R, d, d.dx32f, d.dy32f, zmoiNormL2),
        gaussian("zmoiFilterGaussianBorder_8u_C1R 5x5", zmoiFilterGaussianBorder_8u_C1R,
                 plainFilter8u, d, f, d.picture, zmo8u, 5),
        gaussian("zmoiFilterGaussianBorder_8u_C1R 31x31", zmoiFilterGaussianBorder_8u_C1R,
                 plainFilter8u, d, f, d.picture, zmo8u, 31),
        gaussian("zmoiFilterGaussianBorder_32f_C1R 5x5", zmoiFilterGaussianBorder_32f_C1R,
                 plainFilter32f, d, f, d.picture32f, zmo32f, 5),
        separable7x7(d, f),
        layerDown(d, f),
        reduction("zmoiNorm_L2_8u_C1MR", zmoiNorm_L2_8u_C1MR, bench::plainNormL2, d, d.noise8u),
        reduction("zmoiNorm_L2_16u_C1MR", zmoiNorm_L2_16u_C1MR, bench::plainNormL2, d, d.noise16u),
        reduction("zmoiNorm_L2_32f_C1MR", zmoiNorm_L2_32f_C1MR, bench::plainNormL2, d, d.noise32f),
        reduction("zmoiMean_8u_C1MR", zmoiMean_8u_C1MR, bench::plainMean, d, d.noise8u),
        reduction("zmoiMean_16u_C1MR", zmoiMean_16u_C1MR, bench::plainMean, d, d.noise16u),
        reduction("zmoiMean_32f_C1MR", zmoiMean_32f_C1MR, bench::plainMean, d, d.noise32f),
        {"zmoiAbsDiff_8u_C1R",
         [&d] {
             return zmoiAbsDiff_8u_C1R(d.noise8u.data(), d.step(1), d.picture.data(), d.step(1),
                                       d.edges.data(), d.step(1), d.size);
         },
         [&d] {
             bench::plainAbsDiff(d.noise8u.data(), d.picture.data(), d.edges.data(), d.pixels);
         }},
        {"zmoiAdd_8u32f_C1IR",
         [&d] {
             return zmoiAdd_8u32f_C1IR(d.noise8u.data(), d.step(1), d.sums.data(), d.step(4),
                                       d.size);
         },
         [&d] { bench::plainAdd(d.noise8u.data(), d.sums.data(), d.pixels); }},
        integral("zmoiIntegral_8u32s_C1R", zmoiIntegral_8u32s_C1R, d, d.noise8u, d.table32s),
        integral("zmoiIntegral_32f_C1R", zmoiIntegral_32f_C1R, d, d.noise32f, d.table32f),
    };
}

constexpr struct {
    const char* name;
    Zmo64u mask;
} levels[] = {{"sse2", ZMO_LEVEL_SSE2},
              {"sse42", ZMO_LEVEL_SSE42},
              {"avx2", ZMO_LEVEL_AVX2},
              {"avx512", ZMO_LEVEL_AVX512}};

template <class Call>
double clocksPerPixel(const Call& call, size_t pixels) {
    return static_cast<double>(bench::fewestClocks(call)) / static_cast<double>(pixels);
}

// One line: clocks per pixel of the plain loop and at each level, with the ratio to the first.
bool printFunction(const Function& function, size_t pixels) {
    std::printf("%-42s", function.name);
    double baseline = function.plainLoop ? clocksPerPixel(function.plainLoop, pixels) : 0;
    if (baseline == 0) {
        std::printf("%9s", "-");
    } else {
        std::printf("%9.3f", baseline);
    }
    for (const auto& level : levels) {
        if (zmoSetCpuFeatures(level.mask) != zmoStsNoErr) {
            std::printf("%16s", "-");
            continue;
        }
        if (const ZmoStatus status = function.call(); status != zmoStsNoErr) {
            std::fprintf(stderr, "levels: %s: %s\n", function.name, zmoGetStatusString(status));
            return false;
        }
        const double clocks = clocksPerPixel(function.call, pixels);
        if (baseline == 0) baseline = clocks;
        std::printf("%8.3f x%6.2f", clocks, baseline / clocks);
        std::fflush(stdout);
    }
    std::printf("\n");
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const ZmoiSize size{argc > 2 ? std::atoi(argv[1]) : 640, argc > 2 ? std::atoi(argv[2]) : 480};
    if (size.width < 1 || size.height < 1 || size.width > 30000 || size.height > 30000) {
        std::fprintf(stderr, "usage: levels [width height], from 1 to 30000\n");
        return 1;
    }
    Data data(size);
    Filters filters(data);
    std::printf("clocks per pixel and ratio to the first of a line, %dx%d\n%-42s%9s", size.width,
                size.height, "", "plain");
    for (const auto& level : levels) std::printf("%16s", level.name);
    std::printf("\n");
    for (const Function& function : functions(data, filters)) {
        if (!printFunction(function, data.pixels / static_cast<size_t>(function.pixelsPerResult))) {
            return 1;
        }
    }
    return 0;
}
