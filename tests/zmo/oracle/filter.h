// Filters with kernels of the caller's, one pixel at a time: integers in 64 bits, floats in the order
// that the headers tell.
#pragma once

#include <cmath>

#include "mask.h"

namespace oracle {

// term(i) for i from 0 to taps-1, added in this order without a zero to start with.
template <class Term>
float sumInOrder(int taps, Term term) {
    float sum = term(0);
    for (int i = 1; i < taps; ++i) sum = sum + term(i);
    return sum;
}

struct Taps {
    std::vector<Zmo16s> row;
    std::vector<Zmo16s> column;
    ZmoiPoint anchor;
    int divisor;

    ZmoiSize size() const {
        return {static_cast<int>(row.size()), static_cast<int>(column.size())};
    }
};

template <class S>
int64_t separable(const Extended<S>& a, int x, int y, const Taps& taps) {
    int64_t sum = 0;
    for (int j = 0; j < taps.size().height; ++j) {
        for (int i = 0; i < taps.size().width; ++i) {
            const int64_t weight = taps.column[static_cast<size_t>(j)] *
                                   static_cast<int64_t>(taps.row[static_cast<size_t>(i)]);
            sum += weight * static_cast<int64_t>(a(x + i - taps.anchor.x, y + j - taps.anchor.y));
        }
    }
    return roundedQuotient(sum, taps.divisor);
}

template <class S>
float separable32f(const Extended<S>& a, int x, int y, const std::vector<float>& row,
                   const std::vector<float>& column, ZmoiPoint anchor) {
    return sumInOrder(static_cast<int>(row.size()), [&](int i) {
        const float down = sumInOrder(static_cast<int>(column.size()), [&](int j) {
            const float pixel = static_cast<float>(a(x + i - anchor.x, y + j - anchor.y));
            return column[static_cast<size_t>(j)] * pixel;
        });
        return row[static_cast<size_t>(i)] * down;
    });
}

inline std::vector<float> gaussian(int taps, double sigma) {
    std::vector<double> g;
    double sum = 0;
    for (int i = 0; i < taps; ++i) {
        const int offset = i - taps / 2;
        const double distance = offset;
        const double value = std::exp(-distance * distance / (2 * sigma * sigma));
        g.push_back(value < 0x1p-40 ? 0 : value);
        sum += g.back();
    }
    std::vector<float> weights;
    for (const double value : g) weights.push_back(static_cast<float>(value / sum));
    return weights;
}

// The taps i (x or y) of a kernel that meet a source pixel, with that pixel's coordinate.
struct Met {
    std::vector<int> weights;
    std::vector<int> at;
    int sum = 0;
};
inline Met met(const std::vector<Zmo16s>& kernel, int rate, bool up, int x) {
    Met result;
    const int radius = static_cast<int>(kernel.size()) / 2;
    for (int i = -radius; i <= radius; ++i) {
        if (up && (x - i) % rate != 0) continue;
        result.weights.push_back(kernel[static_cast<size_t>(i + radius)]);
        result.at.push_back(up ? (x - i) / rate : rate * x + i);
        result.sum += result.weights.back();
    }
    return result;
}

template <class T>
double layer(const Extended<T>& a, const Met& xs, const Met& ys) {
    if constexpr (std::is_same_v<T, float>) {
        const auto weight = [](const Met& m, int i) {
            return static_cast<float>(m.weights[static_cast<size_t>(i)]) /
                   static_cast<float>(m.sum);
        };
        return sumInOrder(static_cast<int>(xs.at.size()), [&](int i) {
            return weight(xs, i) * sumInOrder(static_cast<int>(ys.at.size()), [&](int j) {
                       return weight(ys, j) *
                              a(xs.at[static_cast<size_t>(i)], ys.at[static_cast<size_t>(j)]);
                   });
        });
    } else {
        int64_t sum = 0;
        for (size_t j = 0; j < ys.at.size(); ++j) {
            for (size_t i = 0; i < xs.at.size(); ++i) {
                sum += int64_t{xs.weights[i]} * ys.weights[j] *
                       static_cast<int64_t>(a(xs.at[i], ys.at[j]));
            }
        }
        return static_cast<double>(roundedQuotient(sum, int64_t{xs.sum} * ys.sum));
    }
}

}  // namespace oracle
