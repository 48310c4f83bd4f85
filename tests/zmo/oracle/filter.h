// Filters with kernels of the caller's, one pixel at a time: exact for integers, and in single
// precision for floats, in the order of the headers.
#pragma once

#include <cmath>
#include <numeric>

#include "border.h"

namespace oracle {

// term(i) for i from 0 to taps-1, added in this order without a zero to start with.
template <class Term>
double sumInOrder(size_t taps, bool real, Term term) {
    const auto rounded = [=](double value) { return real ? kit::single(value) : value; };
    double sum = rounded(term(0));
    for (size_t i = 1; i < taps; ++i) sum = rounded(sum + rounded(term(i)));
    return sum;
}

// Weights, and the coordinates of the source that they meet.
struct Met {
    std::vector<double> weights;
    std::vector<int> at;
};

// Columns first.
inline double weighed(const Extended& a, const Met& xs, const Met& ys, bool real) {
    return sumInOrder(xs.at.size(), real, [&](size_t i) {
        const double down = sumInOrder(
            ys.at.size(), real, [&](size_t j) { return ys.weights[j] * a(xs.at[i], ys.at[j]); });
        return xs.weights[i] * down;
    });
}

struct Taps {
    std::vector<double> row;
    std::vector<double> column;
    ZmoiPoint anchor;
    int divisor = 1;

    ZmoiSize size() const {
        return {static_cast<int>(row.size()), static_cast<int>(column.size())};
    }
};

inline double separable(const Extended& a, int x, int y, const Taps& taps, bool real) {
    Met xs{taps.row, {}};
    Met ys{taps.column, {}};
    for (int i = 0; i < taps.size().width; ++i) xs.at.push_back(x + i - taps.anchor.x);
    for (int j = 0; j < taps.size().height; ++j) ys.at.push_back(y + j - taps.anchor.y);
    return weighed(a, xs, ys, real) / (real ? 1 : taps.divisor);
}

inline std::vector<double> gaussian(int taps, double sigma) {
    std::vector<double> weights;
    double sum = 0;
    for (int i = 0; i < taps; ++i) {
        const double distance = i - taps / 2;
        const double value = std::exp(-distance * distance / (2 * sigma * sigma));
        weights.push_back(value < 0x1p-40 ? 0 : value);
        sum += weights.back();
    }
    for (double& weight : weights) weight = kit::single(weight / sum);
    return weights;
}

// The taps of a kernel that meet a pixel of a layer that is larger or smaller by a rate; floats
// have weights whose sum is 1.
inline Met met(const std::vector<double>& kernel, int rate, bool up, int x, bool real) {
    Met result;
    double sum = 0;
    const int radius = static_cast<int>(kernel.size()) / 2;
    for (int i = -radius; i <= radius; ++i) {
        if (up && (x - i) % rate != 0) continue;
        result.weights.push_back(kernel[static_cast<size_t>(i + radius)]);
        result.at.push_back(up ? (x - i) / rate : rate * x + i);
        sum += result.weights.back();
    }
    for (double& weight : result.weights) weight = real ? kit::single(weight / sum) : weight;
    return result;
}

inline double layer(const Extended& a, const Met& xs, const Met& ys, bool real) {
    const auto total = [&](const Met& m) {
        return real ? 1 : std::accumulate(m.weights.begin(), m.weights.end(), 0.0);
    };
    return weighed(a, xs, ys, real) / (total(xs) * total(ys));
}

}  // namespace oracle
