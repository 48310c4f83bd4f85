#include "zmocv/undistort.h"

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The part of the model that is the same along a row.
struct CameraRow {
    CameraRow(const Camera& c, int y)
        : camera(c), v((static_cast<float>(y) - c.cy) / c.fy), vv(v * v) {}

    // Where pixel x of the row lies, u = (x - cx) / fx.
    template <bool tangential>
    void place(float u, float& mapX, float& mapY) const {
        const float uu = u * u;
        const float r2 = uu + vv;
        const float g = 1.0F + r2 * (camera.k1 + r2 * camera.k2);
        float x = u * g;
        float y = v * g;
        if constexpr (tangential) {
            const float uv = u * v;
            x = (x + 2.0F * camera.p1 * uv) + camera.p2 * (r2 + 2.0F * uu);
            y = (y + camera.p1 * (r2 + 2.0F * vv)) + 2.0F * camera.p2 * uv;
        }
        mapX = camera.cx + camera.fx * x;
        mapY = camera.cy + camera.fy * y;
    }

    Camera camera;  // a copy, so that no store can change it
    float v;
    float vv;
};

float columnOf(const Camera& camera, int x) {
    return (static_cast<float>(x) - camera.cx) / camera.fx;
}

void createMap(Target mapX, Target mapY, Region roi, const Camera* camera) {
    const Camera c = *camera;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        Elem<float>* __restrict const xs = rowOf<float>(mapX, y);
        Elem<float>* __restrict const ys = rowOf<float>(mapY, y);
        const CameraRow row(c, static_cast<int>(y));
        const int width = static_cast<int>(roi.width);
        for (int x = 0; x < width; ++x) {
            float toX = 0;
            float toY = 0;
            row.place<true>(columnOf(c, x), toX, toY);
            xs[x] = toX;
            ys[x] = toY;
        }
    }
}

// Weighted means exceed the type's maximum by less than rounding removes.
template <class T>
T rounded(float value) {
    return static_cast<T>(wholeOf(value));
}
template <>
float rounded<float>(float value) {
    return withOneNan(value);
}

// A row goes in strips. Only the loads of neighbours are done one by one; the places before and the
// interpolation after them are loops over arrays.
constexpr int stripWidth = 128;

template <class T, int channels>
struct Strip {
    int left[stripWidth];
    int top[stripWidth];
    float along[stripWidth];  // fractions
    float down[stripWidth];
    int32_t inside[stripWidth];  // all bits or none
    // From here on one element a channel; the first three are for more channels than one.
    float weightAlong[stripWidth * channels];
    float weightDown[stripWidth * channels];
    int32_t kept[stripWidth * channels];
    T s00[stripWidth * channels];
    T s01[stripWidth * channels];
    T s10[stripWidth * channels];
    T s11[stripWidth * channels];
};

inline float limited(float value, float last) {
    const float low = value > 0.0F ? value : 0.0F;
    return low < last ? low : last;
}

template <class T, int channels>
void findPlaces(Strip<T, channels>& strip, const CameraRow& row, const float* __restrict columns,
                int count, Region roi) {
    const float lastX = static_cast<float>(roi.width - 1);
    const float lastY = static_cast<float>(roi.height - 1);
    int* __restrict const left = strip.left;
    int* __restrict const top = strip.top;
    float* __restrict const along = strip.along;
    float* __restrict const down = strip.down;
    int32_t* __restrict const inside = strip.inside;
    for (int i = 0; i < count; ++i) {
        float toX = 0;
        float toY = 0;
        row.place<false>(columns[i], toX, toY);
        const float x = limited(toX, lastX);
        const float y = limited(toY, lastY);
        left[i] = static_cast<int>(x);
        top[i] = static_cast<int>(y);
        along[i] = x - static_cast<float>(left[i]);
        down[i] = y - static_cast<float>(top[i]);
        inside[i] = -((x == toX) & (y == toY));
    }
}

template <class T, int channels>
void loadNeighbours(Strip<T, channels>& strip, Source src, int count, Region roi) {
    for (int i = 0; i < count; ++i) {
        const int x = strip.left[i];
        const int y = strip.top[i];
        const Elem<T>* const upper = rowOf<T>(src, y) + ptrdiff_t{x} * channels;
        const ptrdiff_t next = x + 1 < roi.width ? channels : 0;
        const Elem<T>* const lower =
            y + 1 < roi.height ? rowOf<T>(src, y + 1) + ptrdiff_t{x} * channels : upper;
        for (int c = 0; c < channels; ++c) {
            const int k = i * channels + c;
            strip.s00[k] = upper[c];
            strip.s01[k] = upper[next + c];
            strip.s10[k] = lower[c];
            strip.s11[k] = lower[next + c];
            if constexpr (channels > 1) {
                strip.weightAlong[k] = strip.along[i];
                strip.weightDown[k] = strip.down[i];
                strip.kept[k] = strip.inside[i];
            }
        }
    }
}

template <class T, int channels>
void interpolate(const Strip<T, channels>& strip, Elem<T>* __restrict out, int count) {
    const float* const along = channels > 1 ? strip.weightAlong : strip.along;
    const float* const down = channels > 1 ? strip.weightDown : strip.down;
    const int32_t* const kept = channels > 1 ? strip.kept : strip.inside;
    for (int k = 0; k < count * channels; ++k) {
        const float a = along[k];
        const float b = down[k];
        const float upper =
            (1.0F - a) * static_cast<float>(strip.s00[k]) + a * static_cast<float>(strip.s01[k]);
        const float lower =
            (1.0F - a) * static_cast<float>(strip.s10[k]) + a * static_cast<float>(strip.s11[k]);
        const float value = (1.0F - b) * upper + b * lower;
        out[k] = rounded<T>(floatOf(bitsOf(value) & kept[k]));
    }
}

template <class T, int channels>
void undistortRadial(Source src, Target dst, Region roi, const Camera* camera, void* buffer) {
    const Camera c = *camera;
    const int width = static_cast<int>(roi.width);
    float* const columns = Carver(buffer).take<float>(roi.width);
    for (int x = 0; x < width; ++x) columns[x] = columnOf(c, x);
    Strip<T, channels> strip;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const CameraRow row(c, static_cast<int>(y));
        Elem<T>* const out = rowOf<T>(dst, y);
        for (int x = 0; x < width; x += stripWidth) {
            const int count = width - x < stripWidth ? width - x : stripWidth;
            findPlaces(strip, row, columns + x, count, roi);
            loadNeighbours(strip, src, count, roi);
            interpolate(strip, out + ptrdiff_t{x} * channels, count);
        }
    }
}

}  // namespace

const UndistortKernels undistortKernels = {
    {{undistortRadial<uint8_t, 1>, undistortRadial<uint8_t, 3>},
     {undistortRadial<uint16_t, 1>, undistortRadial<uint16_t, 3>},
     {undistortRadial<float, 1>, undistortRadial<float, 3>}},
    createMap};

}  // namespace zmo::ZMO_LEVEL
