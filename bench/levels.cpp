// levels [width height]
//
// Clocks per pixel of each function at each processor level, and how many times faster that is than
// the baseline, or than a plain loop of one pixel after the other where plain_loops.h has it. The
// level is switched within the run, call by call of zmoSetCpuFeatures.
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "figures.h"
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
          mask(pixels) {
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
    double result = 0;
    Plane<Zmo8u> buffer;
    double xShift = 0;
    double yShift = 0;
};

struct Function {
    const char* name;
    std::function<ZmoStatus()> call;
    std::function<void()> plainLoop = {};
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

// In this order each function finds its input made by an earlier one.
std::vector<Function> functions(Data& d) {
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
        reduction("zmoiNorm_L2_8u_C1MR", zmoiNorm_L2_8u_C1MR, bench::plainNormL2, d, d.noise8u),
        reduction("zmoiNorm_L2_16u_C1MR", zmoiNorm_L2_16u_C1MR, bench::plainNormL2, d, d.noise16u),
        reduction("zmoiNorm_L2_32f_C1MR", zmoiNorm_L2_32f_C1MR, bench::plainNormL2, d, d.noise32f),
        reduction("zmoiMean_8u_C1MR", zmoiMean_8u_C1MR, bench::plainMean, d, d.noise8u),
        reduction("zmoiMean_16u_C1MR", zmoiMean_16u_C1MR, bench::plainMean, d, d.noise16u),
        reduction("zmoiMean_32f_C1MR", zmoiMean_32f_C1MR, bench::plainMean, d, d.noise32f),
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
    std::printf("clocks per pixel and ratio to the first of a line, %dx%d\n%-42s%9s", size.width,
                size.height, "", "plain");
    for (const auto& level : levels) std::printf("%16s", level.name);
    std::printf("\n");
    for (const Function& function : functions(data)) {
        if (!printFunction(function, data.pixels)) return 1;
    }
    return 0;
}
