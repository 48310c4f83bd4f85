// Numbers made of the selected pixels of an image, one pixel at a time.
#pragma once

#include <algorithm>
#include <cmath>

#include "kit.h"

namespace oracle {

using Number = std::function<double(int x, int y)>;

// The pixels that count, of whole numbers or of floats.
struct Selection {
    ZmoiSize size;
    bool whole;
    std::function<bool(int x, int y)> selects;

    template <class Body>
    void forEach(Body body) const {
        kit::forEachPixel(size, [&](int x, int y) {
            if (selects(x, y)) body(x, y);
        });
    }
    int count() const {
        int n = 0;
        forEach([&](int, int) { ++n; });
        return n;
    }

    // In 8 lanes by column, folded pairwise at the end.
    double rowSum(int y, const Number& term) const {
        double lanes[8] = {};
        for (int x = 0; x < size.width; ++x) {
            if (selects(x, y)) lanes[x % 8] += term(x, y);
        }
        for (int half = 4; half > 0; half /= 2) {
            for (int i = 0; i < half; ++i) lanes[i] = lanes[2 * i] + lanes[2 * i + 1];
        }
        return lanes[0];
    }
    // Of whole numbers exactly, in 64 bits.
    double sum(const Number& term) const {
        double sum = 0;
        uint64_t exact = 0;
        if (whole) forEach([&](int x, int y) { exact += static_cast<uint64_t>(term(x, y)); });
        for (int y = 0; !whole && y < size.height; ++y) sum += rowSum(y, term);
        return whole ? static_cast<double>(exact) : sum;
    }

    double norm(ZmoNormType kind, const Number& value) const {
        double most = 0;
        if (kind == zmoNormInf) {
            forEach([&](int x, int y) { most = std::max(most, std::fabs(value(x, y))); });
            return most;
        }
        if (kind == zmoNormL1) return sum([&](int x, int y) { return std::fabs(value(x, y)); });
        return std::sqrt(sum([&](int x, int y) { return value(x, y) * value(x, y); }));
    }

    // 0 when nothing is selected, as is the deviation.
    double mean(const Number& value) const { return count() == 0 ? 0 : sum(value) / count(); }

    double deviation(const Number& value) const {
        if (count() == 0) return 0;
        return whole ? wholeDeviation(value) : floatDeviation(value);
    }

  private:
    // From the exact variance times n n.
    double wholeDeviation(const Number& value) const {
        const int n = count();
        __extension__ __int128 sum = 0;
        __extension__ __int128 squares = 0;
        forEach([&](int x, int y) {
            const auto v = static_cast<int64_t>(value(x, y));
            sum += v;
            squares += v * v;
        });
        return std::sqrt(static_cast<double>(n * squares - sum * sum)) / n;
    }

    // Row by row about the row's own mean.
    double floatDeviation(const Number& value) const {
        double above = 0;
        double sumAbove = 0;
        double distances = 0;
        for (int y = 0; y < size.height; ++y) {
            const double m = rowSum(y, [](int, int) { return 1.0; });
            if (m == 0) continue;
            const double sum = rowSum(y, value);
            distances += rowSum(y, [&](int x, int) {
                const double distance = value(x, y) - sum / m;
                return distance * distance;
            });
            if (above != 0) {
                const double apart = sum / m - sumAbove / above;
                distances += apart * apart * (above / (above + m) * m);
            }
            above += m;
            sumAbove += sum;
        }
        return std::sqrt(distances / count());
    }
};

}  // namespace oracle

namespace kit {

enum class Masked { some, all, none, single };

// Selected pixels have any value but 0.
inline void drawMask(Image& mask, Masked how, Random& random) {
    mask.fill([&] {
        if (how == Masked::none || how == Masked::single) return 0;
        return how == Masked::all || random.between(0, 1) != 0 ? random.between(1, 255) : 0;
    });
    if (how != Masked::single) return;
    mask.set(random.between(0, mask.size().width - 1), random.between(0, mask.size().height - 1),
             128);
    mask.snapshot();
}

}  // namespace kit
