#include "zmocv/pixelwise.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
T distance(T a, T b) {
    const T high = a > b ? a : b;
    const T low = a > b ? b : a;
    return static_cast<T>(high - low);
}
float distance(float a, float b) {
    return __builtin_fabsf(a - b);
}

template <class T>
void absDiffRow(const Elem<T>* __restrict src, const Elem<T>* __restrict src2,
                Elem<T>* __restrict dst, ptrdiff_t count) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        const T a = src[x];
        const T b = src2[x];
        dst[x] = distance(a, b);
    }
}

template <class T>
void absDiff(Source src, Source src2, Target dst, Region roi) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        absDiffRow<T>(rowOf<T>(src, y), rowOf<T>(src2, y), rowOf<T>(dst, y), roi.width);
    }
}

template <class T>
void absDiffCRow(const Elem<T>* __restrict src, Elem<T>* __restrict dst, ptrdiff_t count, T value) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        const T a = src[x];
        dst[x] = distance(a, value);
    }
}

template <class T>
void absDiffC(Source src, Target dst, Region roi, const void* value) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        absDiffCRow<T>(rowOf<T>(src, y), rowOf<T>(dst, y), roi.width,
                       *static_cast<const Elem<T>*>(value));
    }
}

template <class T>
T largestOf(T u, T v, T w) {
    const T most = u > v ? u : v;
    return most > w ? most : w;
}
template <class T>
T meanOf(T u, T v, T w) {
    const uint32_t sum = static_cast<uint32_t>(u) + v + w;
    return static_cast<T>((sum + 1) / 3);
}
float meanOf(float u, float v, float w) {
    return withOneNan((u + v + w) / 3.0F);
}

double rootOfMeanSquare(double u, double v, double w) {
    return __builtin_sqrt((u * u + v * v + w * w) / 3.0);
}

// Rounded half up; halves do not occur: 4 (u u + v v + w w) = 3 (2 k + 1) (2 k + 1) would make an
// even number odd.
template <class T>
T rounded(double value) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<T>(static_cast<int32_t>(value + 0.5));
}
template <>
float rounded<float>(double value) {
    return withOneNan(static_cast<float>(value));
}

template <class T>
T sizeOf(T value) {
    return value;
}
float sizeOf(float value) {
    return __builtin_fabsf(value);
}

template <ZmoNormType norm, class T>
void colorToGrayRow(const Elem<T>* __restrict src, Elem<T>* __restrict dst, ptrdiff_t count) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        const T u = sizeOf(T(src[3 * x]));
        const T v = sizeOf(T(src[3 * x + 1]));
        const T w = sizeOf(T(src[3 * x + 2]));
        if (norm == zmoNormInf) {
            dst[x] = largestOf(u, v, w);
        } else if (norm == zmoNormL1) {
            dst[x] = meanOf(u, v, w);
        } else {
            dst[x] = rounded<T>(rootOfMeanSquare(u, v, w));
        }
    }
}

template <ZmoNormType norm, class T>
void colorToGray(Source src, Target dst, Region roi) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        colorToGrayRow<norm, T>(rowOf<T>(src, y), rowOf<T>(dst, y), roi.width);
    }
}

template <class T>
void motionHistoryRow(const Elem<T>* __restrict silhouette, Elem<float>* __restrict history,
                      ptrdiff_t count, float timestamp, float oldest) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        const float before = history[x];
        const float remembered = before < oldest ? 0.0F : before;
        history[x] = silhouette[x] != 0 ? timestamp : remembered;
    }
}

template <class T>
void motionHistory(Source silhouette, Target history, Region roi, float timestamp, float oldest) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        motionHistoryRow<T>(rowOf<T>(silhouette, y), rowOf<float>(history, y), roi.width, timestamp,
                            oldest);
    }
}

#define ZMO_BY_TYPE(kernel) \
    { kernel<uint8_t>, kernel<uint16_t>, kernel<float> }
#define ZMO_GRAY(norm) \
    { colorToGray<norm, uint8_t>, colorToGray<norm, uint16_t>, colorToGray<norm, float> }

}  // namespace

const PixelwiseKernels pixelwiseKernels = {
    ZMO_BY_TYPE(absDiff),
    ZMO_BY_TYPE(absDiffC),
    {ZMO_GRAY(zmoNormInf), ZMO_GRAY(zmoNormL1), ZMO_GRAY(zmoNormL2)},
    ZMO_BY_TYPE(motionHistory)};

}  // namespace zmo::ZMO_LEVEL
