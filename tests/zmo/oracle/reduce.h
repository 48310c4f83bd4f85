// Numbers made of the selected pixels of an image, one pixel at a time.
#pragma once

#include <algorithm>
#include <cmath>

#include "kit.h"

namespace oracle {

// Which pixels count.
struct Selection {
    ZmoiSize size;
    std::function<bool(int x, int y)> selects;

    bool operator()(int x, int y) const { return selects(x, y); }

    template <class Body>
    void forEach(Body body) const {
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                if ((*this)(x, y)) body(x, y);
            }
        }
    }

    int count() const {
        int n = 0;
        forEach([&](int, int) { ++n; });
        return n;
    }
};

// A sum in 8 lanes by column, folded pairwise at the end of each row.
template <class Term>
double rowSum(const Selection& selection, int y, Term term) {
    double lanes[8] = {};
    for (int x = 0; x < selection.size.width; ++x) {
        if (selection(x, y)) lanes[x % 8] += term(x, y);
    }
    for (int half = 4; half > 0; half /= 2) {
        for (int i = 0; i < half; ++i) lanes[i] = lanes[2 * i] + lanes[2 * i + 1];
    }
    return lanes[0];
}

template <class Term>
double laneSum(const Selection& selection, Term term) {
    double sum = 0;
    for (int y = 0; y < selection.size.height; ++y) sum += rowSum(selection, y, term);
    return sum;
}

// Of whole numbers, exact in 64 bits.
template <class Term>
double exactSum(const Selection& selection, Term term) {
    uint64_t sum = 0;
    selection.forEach([&](int x, int y) { sum += static_cast<uint64_t>(term(x, y)); });
    return static_cast<double>(sum);
}

// Of value(x, y); whole numbers are told as such.
template <class Value>
double norm(ZmoNormType kind, bool whole, const Selection& selection, Value value) {
    if (kind == zmoNormInf) {
        double most = 0;
        selection.forEach([&](int x, int y) { most = std::max(most, std::fabs(value(x, y))); });
        return most;
    }
    const auto term = [&](int x, int y) {
        const double v = value(x, y);
        return kind == zmoNormL2 ? v * v : std::fabs(v);
    };
    const double sum = whole ? exactSum(selection, term) : laneSum(selection, term);
    return kind == zmoNormL2 ? std::sqrt(sum) : sum;
}

// 0 when nothing is selected, as is the deviation.
template <class Value>
double mean(bool whole, const Selection& selection, Value value) {
    const int n = selection.count();
    if (n == 0) return 0;
    return (whole ? exactSum(selection, value) : laneSum(selection, value)) / n;
}

// The exact variance times n n of whole numbers.
template <class Value>
double wholeDeviation(const Selection& selection, Value value) {
    const int n = selection.count();
    __extension__ __int128 sum = 0;
    __extension__ __int128 squares = 0;
    selection.forEach([&](int x, int y) {
        const auto v = static_cast<int64_t>(value(x, y));
        sum += v;
        squares += v * v;
    });
    return std::sqrt(static_cast<double>(n * squares - sum * sum)) / n;
}

// Floats row by row about the row's own mean.
template <class Value>
double deviation(bool whole, const Selection& selection, Value value) {
    const int n = selection.count();
    if (n == 0) return 0;
    if (whole) return wholeDeviation(selection, value);
    double above = 0;
    double sumAbove = 0;
    double distances = 0;
    for (int y = 0; y < selection.size.height; ++y) {
        const double m = rowSum(selection, y, [](int, int) { return 1.0; });
        if (m == 0) continue;
        const double sum = rowSum(selection, y, value);
        distances += rowSum(selection, y, [&](int x, int) {
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
    return std::sqrt(distances / n);
}

}  // namespace oracle

namespace kit {

enum class Masked { some, all, none, single };

// Selected pixels have any value but 0.
inline void drawMask(Image<Zmo8u>& mask, Masked how, Random& random) {
    mask.fill([&]() -> int64_t {
        if (how == Masked::none || how == Masked::single) return 0;
        return how == Masked::all || random.between(0, 1) != 0 ? random.between(1, 255) : 0;
    });
    if (how != Masked::single) return;
    mask.set(static_cast<int>(random.between(0, mask.size().width - 1)),
             static_cast<int>(random.between(0, mask.size().height - 1)), 128);
    mask.snapshot();
}

}  // namespace kit
