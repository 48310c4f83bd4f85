// Morphology by its definition, one pixel and one point of the element at a time.
#pragma once

#include "border.h"

namespace oracle {

enum class MorphOp { erode, dilate, open, close, gradient, tophat, blackhat };

// A channel of an image, extended by a border; with the border in memory, also its margin.
struct Plane {
    ZmoiSize size;
    ZmoiSize margin;
    std::vector<double> pixels;

    Plane(ZmoiSize s, ZmoiSize m)
        : size(s),
          margin(m),
          pixels(static_cast<size_t>(s.width + 2 * m.width) *
                 static_cast<size_t>(s.height + 2 * m.height)) {}
    double& at(int x, int y) {
        const auto row = static_cast<size_t>(y + margin.height);
        return pixels[row * static_cast<size_t>(size.width + 2 * margin.width) +
                      static_cast<size_t>(x + margin.width)];
    }
    double extended(int x, int y, ZmoiBorderType border, double value) {
        const bool inside = x >= -margin.width && x < size.width + margin.width &&
                            y >= -margin.height && y < size.height + margin.height;
        if (inside) return at(x, y);
        if (border == zmoiBorderConst) return value;
        return at(folded(x, size.width, border), folded(y, size.height, border));
    }
    // body(x, y) for the region and its margin.
    template <class Body>
    void forEach(Body body) const {
        for (int y = -margin.height; y < size.height + margin.height; ++y) {
            for (int x = -margin.width; x < size.width + margin.width; ++x) body(x, y);
        }
    }
};

// What a function works with. counts(pixel, point, dilates) returns whether a point of the element
// counts, and changes the pixel to what it counts under that point.
struct Element {
    ZmoiSize size;
    ZmoiPoint anchor;
    std::function<bool(double& pixel, size_t point, bool dilates)> counts;
    ZmoiBorderType border;
    double outside;
};

// One erosion or dilation, also of the part of the margin from which the element does not reach
// beyond the source's margin.
inline Plane pass(Plane& a, bool dilates, const Element& e) {
    Plane result(a.size, {std::max(0, a.margin.width - e.size.width),
                          std::max(0, a.margin.height - e.size.height)});
    result.forEach([&](int x, int y) {
        bool first = true;
        double best = 0;
        for (int j = 0; j < e.size.height; ++j) {
            for (int i = 0; i < e.size.width; ++i) {
                const int dx = dilates ? e.anchor.x - i : i - e.anchor.x;
                const int dy = dilates ? e.anchor.y - j : j - e.anchor.y;
                double pixel = a.extended(x + dx, y + dy, e.border, e.outside);
                if (!e.counts(pixel, kit::indexIn(e.size, i, j), dilates)) continue;
                if (first || (dilates ? pixel > best : pixel < best)) best = pixel;
                first = false;
            }
        }
        result.at(x, y) = best;
    });
    return result;
}

// The result before it is stored: erosions ('e') and dilations ('d') in their order, less others.
inline Plane morph(MorphOp op, const Plane& source, const Element& e) {
    static constexpr struct {
        const char* passes;
        const char* less = nullptr;
    } steps[] = {{"e"}, {"d"}, {"ed"}, {"de"}, {"d", "e"}, {"", "ed"}, {"de", ""}};
    const auto after = [&](std::string_view passes) {
        Plane made = source;
        for (const char one : passes) made = pass(made, one == 'd', e);
        return made;
    };
    const auto& [passes, subtracted] = steps[static_cast<size_t>(op)];
    Plane result = after(passes);
    if (subtracted == nullptr) return result;
    Plane less = after(subtracted);
    kit::forEachPixel(source.size, [&](int x, int y) { result.at(x, y) -= less.at(x, y); });
    return result;
}

}  // namespace oracle
