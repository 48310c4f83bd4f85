// Morphology by its definition, one pixel and one point of the element at a time.
#pragma once

#include <limits>
#include <vector>

#include "border.h"

namespace oracle {

enum class MorphOp { erode, dilate, open, close, gradient, tophat, blackhat };

// A channel of an image, extended by a border; with the border in memory, also its margin.
template <class V>
struct Plane {
    ZmoiSize size;
    ZmoiSize margin;
    std::vector<V> pixels;

    Plane(ZmoiSize s, ZmoiSize m)
        : size(s),
          margin(m),
          pixels(static_cast<size_t>(s.width + 2 * m.width) *
                 static_cast<size_t>(s.height + 2 * m.height)) {}
    V& at(int x, int y) {
        const auto row = static_cast<size_t>(y + margin.height);
        return pixels[row * static_cast<size_t>(size.width + 2 * margin.width) +
                      static_cast<size_t>(x + margin.width)];
    }
    V extended(int x, int y, ZmoiBorderType border, V value) {
        const bool inside = x >= -margin.width && x < size.width + margin.width &&
                            y >= -margin.height && y < size.height + margin.height;
        if (inside) return at(x, y);
        if (border == zmoiBorderConst) return value;
        return at(folded(x, size.width, border), folded(y, size.height, border));
    }
};

// One erosion or dilation, also of the part of the margin from which the element does not reach beyond
// the source's margin. value(pixel, point) is what a pixel counts under a point of the element.
template <class V, class Value>
Plane<V> pass(Plane<V>& a, bool dilates, ZmoiSize mask, ZmoiPoint anchor, ZmoiBorderType border,
              V outside, Value value) {
    Plane<V> result(a.size, {std::max(0, a.margin.width - mask.width),
                             std::max(0, a.margin.height - mask.height)});
    for (int y = -result.margin.height; y < a.size.height + result.margin.height; ++y) {
        for (int x = -result.margin.width; x < a.size.width + result.margin.width; ++x) {
            bool first = true;
            V best{};
            for (int j = 0; j < mask.height; ++j) {
                for (int i = 0; i < mask.width; ++i) {
                    const int dx = dilates ? anchor.x - i : i - anchor.x;
                    const int dy = dilates ? anchor.y - j : j - anchor.y;
                    V pixel = a.extended(x + dx, y + dy, border, outside);
                    if (!value(pixel, j * mask.width + i)) continue;
                    if (first || (dilates ? pixel > best : pixel < best)) best = pixel;
                    first = false;
                }
            }
            result.at(x, y) = best;
        }
    }
    return result;
}

template <class T>
using MorphValue = std::conditional_t<std::is_same_v<T, float>, double, int64_t>;

// margin: how far `pixel` may be asked beyond the region. value: as for pass.
template <class T, class Pixel, class Value>
std::vector<T> morph(MorphOp op, ZmoiSize size, ZmoiSize margin, ZmoiSize mask, ZmoiPoint anchor,
                     ZmoiBorderType border, T outside, Pixel pixel, Value value) {
    using V = MorphValue<T>;
    Plane<V> source(size, margin);
    for (int y = -margin.height; y < size.height + margin.height; ++y) {
        for (int x = -margin.width; x < size.width + margin.width; ++x)
            source.at(x, y) = static_cast<V>(pixel(x, y));
    }
    const auto run = [&](Plane<V>& a, bool dilates) {
        return pass(a, dilates, mask, anchor, border, static_cast<V>(outside), value);
    };
    const auto twice = [&](bool dilatesFirst) {
        Plane<V> first = run(source, dilatesFirst);
        return run(first, !dilatesFirst);
    };
    Plane<V> a(size, {});
    Plane<V> b(size, {});
    switch (op) {
        case MorphOp::erode:
            a = run(source, false);
            break;
        case MorphOp::dilate:
            a = run(source, true);
            break;
        case MorphOp::open:
            a = twice(false);
            break;
        case MorphOp::close:
            a = twice(true);
            break;
        case MorphOp::gradient:
            a = run(source, true);
            b = run(source, false);
            break;
        case MorphOp::tophat:
            a = source;
            b = twice(false);
            break;
        case MorphOp::blackhat:
            a = twice(true);
            b = source;
            break;
    }
    std::vector<T> result;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            V v = a.at(x, y);
            if (op >= MorphOp::gradient) {
                v -= b.at(x, y);
                if (std::is_integral_v<T>) {
                    v = std::clamp(v, static_cast<V>(std::numeric_limits<T>::lowest()),
                                   static_cast<V>(std::numeric_limits<T>::max()));
                }
            }
            result.push_back(static_cast<T>(v));
        }
    }
    return result;
}

}  // namespace oracle
