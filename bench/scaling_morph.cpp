// Morphology with the element, reconstruction with the image.
#include <memory>

#include "scaling.h"
#include "zmocv.h"

namespace {

using scaling::Function;

template <class T>
using Erode = ZmoStatus (*)(const T*, int, T*, int, ZmoiSize, ZmoiBorderType, const T*,
                            const ZmoiMorphState*, Zmo8u*);

// One state, work buffer and pair of images.
template <class T>
struct Data {
    Data(ZmoiSize size, ZmoDataType type, int channels, int side, bool full)
        : roi(size),
          step(bench::stepOf<T>(size) * channels),
          src(bench::noise<T>({size.width * channels, size.height})),
          dst(src.size()) {
        work.growBy("zmoiMorphGetSize", zmoiMorphGetSize, roi, type, channels,
                    ZmoiSize{side, side});
        std::vector<Zmo8u> mask(static_cast<size_t>(side * side), 1);
        if (!full) mask[0] = 0;
        bench::require(zmoiMorphInit(type, channels, mask.data(), {side, side},
                                     {side / 2, side / 2}, morphState()),
                       "zmoiMorphInit");
    }
    ZmoiMorphState* morphState() { return work.stateOf<ZmoiMorphState>(); }

    ZmoiSize roi;
    int step;
    std::vector<T> src;
    std::vector<T> dst;
    bench::Work work;
};

template <class T>
Function erode(const char* name, Erode<T> run, ZmoDataType type, int channels, bool full,
               ZmoiSize size) {
    Function function{std::string(name) + (full ? ", rectangle" : ", without a corner"), {}};
    for (const int side : {3, 7, 15, 31, 63}) {
        const auto d = std::make_shared<Data<T>>(size, type, channels, side, full);
        function.steps.push_back({scaling::named({side, side}), [d, run] {
                                      return run(d->src.data(), d->step, d->dst.data(), d->step,
                                                 d->roi, zmoiBorderReplicate, nullptr,
                                                 d->morphState(), d->work.buffer.data());
                                  }});
    }
    return function;
}

// One marker in a corridor that winds through the whole image, column by column.
struct Corridor {
    explicit Corridor(ZmoiSize size)
        : roi(size), limit(bench::pixelsOf(size), 255), marker(limit.size()), result(limit.size()) {
        for (int x = 1; x < roi.width; x += 2) {
            const int gap = x % 4 == 1 ? 0 : roi.height - 1;
            for (int y = 0; y < roi.height; ++y) {
                if (y != gap)
                    limit[static_cast<size_t>(y) * static_cast<size_t>(roi.width) +
                          static_cast<size_t>(x)] = 0;
            }
        }
        marker[0] = 255;
        bench::growBy(buffer, "zmoiMorphReconstructGetBufferSize",
                      zmoiMorphReconstructGetBufferSize, roi, zmo8u, 1);
    }

    ZmoiSize roi;
    std::vector<Zmo8u> limit;
    std::vector<Zmo8u> marker;
    std::vector<Zmo8u> result;
    std::vector<Zmo8u> buffer;
};

Function reconstruct(ZmoiSize size) {
    Function function{"zmoiMorphReconstructDilate_8u_C1IR_Copy, winding corridor", {}};
    for (const int parts : {4, 2, 1}) {
        const auto d = std::make_shared<Corridor>(
            ZmoiSize{(size.width + parts - 1) / parts, (size.height + parts - 1) / parts});
        function.steps.push_back({scaling::named(d->roi), [d] {
                                      const int step = bench::stepOf<Zmo8u>(d->roi);
                                      return zmoiMorphReconstructDilate_8u_C1IR_Copy(
                                          d->limit.data(), step, d->marker.data(), step,
                                          d->result.data(), step, d->roi, 4, d->buffer.data());
                                  }});
    }
    return function;
}

std::vector<Function> functions(ZmoiSize size) {
    return {erode("zmoiErodeBorder_8u_C1R", zmoiErodeBorder_8u_C1R, zmo8u, 1, true, size),
            erode("zmoiErodeBorder_8u_C3R", zmoiErodeBorder_8u_C3R, zmo8u, 3, true, size),
            erode("zmoiErodeBorder_16u_C1R", zmoiErodeBorder_16u_C1R, zmo16u, 1, true, size),
            erode("zmoiErodeBorder_32f_C1R", zmoiErodeBorder_32f_C1R, zmo32f, 1, true, size),
            erode("zmoiErodeBorder_8u_C1R", zmoiErodeBorder_8u_C1R, zmo8u, 1, false, size),
            erode("zmoiMorphOpenBorder_8u_C1R", zmoiMorphOpenBorder_8u_C1R, zmo8u, 1, true, size),
            reconstruct(size)};
}

const scaling::Registered registered("morph", functions);

}  // namespace
