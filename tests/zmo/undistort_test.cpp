#include <algorithm>
#include <cmath>

#include "call.h"
#include "zmocv.h"

namespace {

// The model as the header has it: floats, each operation rounded once.
ZmoiPoint32f distorted(int x, int y, const Zmo32f* camera, const Zmo32f* lens) {
    const float u = (static_cast<float>(x) - camera[2]) / camera[0];
    const float v = (static_cast<float>(y) - camera[3]) / camera[1];
    const float uu = u * u;
    const float vv = v * v;
    const float r2 = uu + vv;
    const float g = 1 + r2 * (lens[0] + r2 * lens[1]);
    const float du = u * g + 2 * lens[2] * (u * v) + lens[3] * (r2 + 2 * uu);
    const float dv = v * g + lens[2] * (r2 + 2 * vv) + 2 * lens[3] * (u * v);
    return {camera[2] + camera[0] * du, camera[3] + camera[1] * dv};
}

template <class T>
T interpolated(const kit::Image<T>& src, ZmoiPoint32f at, int c) {
    const int lastX = src.size().width - 1;
    const int lastY = src.size().height - 1;
    const bool inside = at.x >= 0 && at.y >= 0 && at.x <= static_cast<float>(lastX) &&
                        at.y <= static_cast<float>(lastY);
    if (!inside) return 0;
    const int x = static_cast<int>(std::floor(at.x));
    const int y = static_cast<int>(std::floor(at.y));
    const float a = at.x - std::floor(at.x);
    const float b = at.y - std::floor(at.y);
    const auto line = [&](int row) {
        return (1 - a) * static_cast<float>(src.get(x, row, c)) +
               a * static_cast<float>(src.get(std::min(x + 1, lastX), row, c));
    };
    const float value = (1 - b) * line(y) + b * line(std::min(y + 1, lastY));
    if constexpr (std::is_same_v<T, float>) return value;
    return static_cast<T>(std::nearbyint(value));
}

struct Optics {
    Zmo32f camera[4];
    Zmo32f lens[4];
};

// Lenses of all kinds; also one that leaves everything in place, and one that sees nothing.
std::vector<Optics> opticsFor(ZmoiSize size) {
    const float w = static_cast<float>(size.width);
    const float h = static_cast<float>(size.height);
    return {{{64, 32, 16, 8}, {0, 0, 0, 0}},
            {{w, 0.8F * w, 0.5F * w, 0.5F * h}, {-0.3F, 0.1F, 0.01F, -0.02F}},
            {{w, w, 0.45F * w - 0.3F, 0.6F * h}, {0.25F, -0.05F, -0.03F, 0.004F}},
            {{0.7F * w, w, 0.1F * w, 0.2F * h}, {0, 0.4F, 0.001F, 0}},
            {{9, 9, -1e4F, 3}, {0.5F, 0, 0, 0}}};
}

template <class T>
using Radial = ZmoStatus (*)(const T*, int, T*, int, ZmoiSize, const Zmo32f*, Zmo32f, Zmo32f,
                             Zmo8u*);

template <class T>
T drawn(kit::Random& random, bool extreme) {
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(random.uniform(-1000, 1000) * (extreme ? 1e34 : 1));
    } else {
        constexpr int most = std::numeric_limits<T>::max();
        return static_cast<T>(extreme ? random.between(0, 1) * most : random.between(0, most));
    }
}

// Calls body(function, channels, T()) for each function of UndistortRadial.
template <class Body>
void forEachRadial(Body body) {
    body(zmoiUndistortRadial_8u_C1R, 1, Zmo8u());
    body(zmoiUndistortRadial_8u_C3R, 3, Zmo8u());
    body(zmoiUndistortRadial_16u_C1R, 1, Zmo16u());
    body(zmoiUndistortRadial_16u_C3R, 3, Zmo16u());
    body(zmoiUndistortRadial_32f_C1R, 1, Zmo32f());
    body(zmoiUndistortRadial_32f_C3R, 3, Zmo32f());
}

template <class T>
kit::Buffer bufferFor(ZmoiSize size, int channels) {
    return kit::bufferOf(zmoiUndistortRadialGetBufferSize, size, kit::typeOf<T>, channels);
}

TEST(UndistortRadial, Oracle) {
    forEachRadial([]<class T>(Radial<T> function, int channels, T) {
        SCOPED_TRACE(testing::Message() << "C" << channels << " of " << sizeof(T));
        kit::forEachCase(
            91, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
                Optics optics = opticsFor(size)[turn % 5];
                kit::Image<T> src(size, layout, 0, channels);
                src.fill([&] { return drawn<T>(random, turn % 3 == 0); });
                kit::Image<T> dst(size, {layout.misalign + 2, layout.padding}, 0, channels);
                kit::Buffer buffer = bufferFor<T>(size, channels);
                kit::succeed(function, src, dst, size, &optics.camera[0], optics.lens[0],
                             optics.lens[1], buffer);
                optics.lens[2] = optics.lens[3] = 0;
                kit::expectPixels(dst, [&](int x, int y, int c) {
                    return interpolated(src, distorted(x, y, optics.camera, optics.lens), c);
                });
            });
    });
}

TEST(CreateMapCameraUndistort, Oracle) {
    kit::forEachCase(93, [](kit::Random&, ZmoiSize size, kit::Layout layout, size_t turn) {
        const Optics optics = opticsFor(size)[turn % 5];
        kit::Image<Zmo32f> mapX(size, layout);
        kit::Image<Zmo32f> mapY(size, {layout.misalign + 1, layout.padding + 3});
        kit::succeed(zmoiCreateMapCameraUndistort_32f_C1R, mapX, mapY, size, &optics.camera[0],
                     &optics.lens[0]);
        const auto at = [&](int x, int y) { return distorted(x, y, optics.camera, optics.lens); };
        kit::expectPixels(mapX, [&](int x, int y) { return at(x, y).x; });
        kit::expectPixels(mapY, [&](int x, int y) { return at(x, y).y; });
    });
}

// Whatever they become, they become the same everywhere.
TEST(UndistortRadial, NotANumberAndInfinity) {
    const ZmoiSize size{100, 31};
    const Optics optics = opticsFor(size)[1];
    kit::Random random(92);
    kit::Image<Zmo32f> src(size);
    src.fill([&] {
        const auto drawn = static_cast<size_t>(random.between(0, 15));
        return drawn < 4 ? std::array{INFINITY, -INFINITY, NAN, -NAN}[drawn] : 1.0F;
    });
    kit::atAllLevels([&] {
        kit::Image<Zmo32f> dst(size);
        kit::Buffer buffer = bufferFor<Zmo32f>(size, 1);
        EXPECT_EQ(kit::runUnwatched(zmoiUndistortRadial_32f_C1R, src, dst, size, &optics.camera[0],
                                    optics.lens[0], optics.lens[1], buffer),
                  zmoStsNoErr);
        return dst;
    });
}

// With each value in turn not a number, infinite, or, of those that must be positive, not that.
std::vector<std::array<Zmo32f, 4>> wrongFour(std::array<Zmo32f, 4> good, size_t positive) {
    std::vector<std::array<Zmo32f, 4>> all;
    for (size_t i = 0; i < 4; ++i) {
        for (const float value : {NAN, INFINITY, -INFINITY, 0.0F, -1.0F}) {
            if (i >= positive && std::isfinite(value)) continue;
            all.push_back(good);
            all.back()[i] = value;
        }
    }
    return all;
}

TEST(Undistort, BadArguments) {
    const ZmoiSize size{12, 4};
    const std::array<Zmo32f, 4> camera{9, 9, 5, 2};
    const std::array<Zmo32f, 4> lens{0.1F, 0.1F, 0, 0};
    const auto badCameras = wrongFour(camera, 2);
    const auto badLenses = wrongFour(lens, 0);
    std::vector<kit::Wrong> wrong;
    for (const auto& bad : badCameras) wrong.push_back({5, bad.data(), zmoStsRangeErr});
    std::vector<kit::Wrong> wrongRadial = wrong;
    for (const size_t place : {6U, 7U}) {
        for (const float k : {NAN, INFINITY, -INFINITY}) {
            wrongRadial.push_back({place, k, zmoStsRangeErr});
        }
    }
    for (const auto& bad : badLenses) wrong.push_back({6, bad.data(), zmoStsRangeErr});
    forEachRadial([&]<class T>(Radial<T> function, int channels, T) {
        kit::Image<T> src(size, {}, 0, channels);
        src.fill([] { return 3; });
        kit::Image<T> dst(size, {}, 0, channels);
        kit::Buffer buffer = bufferFor<T>(size, channels);
        kit::expectBadArguments(function, wrongRadial, src, dst, size, camera.data(), lens[0],
                                lens[1], buffer);
    });
    kit::Image<Zmo32f> mapX(size);
    kit::Image<Zmo32f> mapY(size);
    kit::expectBadArguments(zmoiCreateMapCameraUndistort_32f_C1R, wrong, mapX, mapY, size,
                            camera.data(), lens.data());
}

}  // namespace
