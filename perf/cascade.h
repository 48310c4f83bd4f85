// Data of a cascade that looks for bright discs: the picture, and stages of classifiers that
// separate the disc in the middle of a window from other ground.
#pragma once

#include <cmath>
#include <cstdlib>
#include <vector>

#include "pp.h"

namespace cascade {

constexpr int windowSide = 24;

// A perfect disc, seen through the window: places are relative to its corner.
inline int disc(int x, int y) {
    const int dx = 2 * x - windowSide + 1;
    const int dy = 2 * y - windowSide + 1;
    return dx * dx + dy * dy < 4 * 7 * 7 ? 200 : 60;
}

// Discs at distances of 40 pixels, some fainter, on a ground of soft waves and noise.
inline bool drawDiscs(ppImage& picture) {
    constexpr int cell = 40;
    constexpr int place = (cell - windowSide) / 2;
    if (!picture.setRandom(0, 20)) return false;
    ppDrawBy(picture, [&](int x, int y) {
        const bool faint = (x / cell + y / cell) % 3 == 2;
        const int object = disc(x % cell - place, y % cell - place) - 60;
        const double ground = 60 + 30 * std::sin(x * 0.11) * std::cos(y * 0.07);
        return std::floor(ground + (faint ? object / 4 : object) + picture.getImageAt(x, y, 0));
    });
    return true;
}

// What zmoiHaarInit takes.
struct Stage {
    std::vector<ZmoiRect> rects;
    std::vector<double> weights;
    std::vector<int> rectCounts;
    std::vector<double> thresholds;
    std::vector<double> low;
    std::vector<double> high;

    int classifiers() const { return static_cast<int>(low.size()); }
    int rectangles() const { return static_cast<int>(rects.size()); }
};

// Trains one stage after the other. The rectangles are drawn at random, the same in every run.
class Trainer {
  public:
    explicit Trainer(bool tilted) : m_tilted(tilted), m_table(side * side) {
        double sum = 0;
        double squares = 0;
        for (int y = 0; y < windowSide; ++y) {
            for (int x = 0; x < windowSide; ++x) {
                const int value = disc(x, y);
                sum += value;
                squares += value * value;
                addToTable(x, y, value);
            }
        }
        constexpr double pixels = windowSide * windowSide;
        m_deviation = std::sqrt(squares / pixels - sum / pixels * (sum / pixels));
    }

    // Each classifier votes for the disc with 1, against it with -1.
    Stage train(int classifiers) {
        // A window must reach this part of the disc's response.
        constexpr double share = 0.5;
        Stage stage;
        while (stage.classifiers() < classifiers) {
            const Feature f = drawFeature();
            if (!fits(f.whole)) continue;
            const double response = (f.weight * sumOf(f.part) - sumOf(f.whole)) / m_deviation;
            if (std::fabs(response) < 0.3 * f.part.width * f.part.height) continue;
            stage.rects.insert(stage.rects.end(), {f.whole, f.part});
            stage.weights.insert(stage.weights.end(), {-1.0, static_cast<double>(f.weight)});
            stage.rectCounts.push_back(2);
            stage.thresholds.push_back(share * response);
            stage.low.push_back(response > 0 ? -1 : 1);
            stage.high.push_back(response > 0 ? 1 : -1);
        }
        return stage;
    }

  private:
    static constexpr int side = windowSide + 1;

    // A rectangle and a part of it, a half or the middle third, with the weight that makes them
    // even.
    struct Feature {
        ZmoiRect whole;
        ZmoiRect part;
        int weight;
    };

    static std::size_t placeOf(int column, int row) {
        return static_cast<std::size_t>(row) * side + static_cast<std::size_t>(column);
    }

    void addToTable(int x, int y, int value) {
        for (int row = y + 1; row < side; ++row) {
            for (int column = 0; column < side; ++column) {
                const bool counts =
                    m_tilted ? std::abs(x - (column - 1)) <= row - 1 - y : x < column;
                if (counts) m_table[placeOf(column, row)] += value;
            }
        }
    }

    int sumOf(const ZmoiRect& r) const {
        const auto at = [&](int column, int row) { return m_table[placeOf(column, row)]; };
        const int x = r.x, y = r.y, w = r.width, h = r.height;
        if (m_tilted)
            return at(x + w - h, y + w + h) - at(x + w, y + w) - at(x - h, y + h) + at(x, y);
        return at(x + w, y + h) - at(x, y + h) - at(x + w, y) + at(x, y);
    }

    bool fits(const ZmoiRect& r) const {
        const int left = m_tilted ? r.x - r.height : r.x;
        const int below = r.y + r.height + (m_tilted ? r.width : 0);
        return left >= 0 && r.x + r.width <= windowSide && below <= windowSide;
    }

    int draw(int low, int high) {
        m_turn = m_turn * 1664525U + 1013904223U;
        return low + static_cast<int>((m_turn >> 8) % static_cast<unsigned>(high - low + 1));
    }

    Feature drawFeature() {
        const int weight = draw(2, 3);
        const bool alongX = draw(0, 1) == 0;
        const int part = draw(2, windowSide / weight / (m_tilted ? 2 : 1));
        const int other = draw(4, m_tilted ? windowSide / 2 : windowSide);
        const int before = weight == 3 ? part : 0;
        const int x = draw(0, windowSide);
        const int y = draw(0, windowSide);
        // Along the sides of a tilted rectangle a step goes one pixel across and one down.
        if (alongX)
            return {{x, y, part * weight, other},
                    {x + before, m_tilted ? y + before : y, part, other},
                    weight};
        return {{x, y, other, part * weight},
                {m_tilted ? x - before : x, y + before, other, part},
                weight};
    }

    bool m_tilted;
    unsigned m_turn = 1;
    std::vector<int> m_table;  // of the perfect disc
    double m_deviation = 1;
};

}  // namespace cascade
