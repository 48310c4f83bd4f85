#include "plain_sums.h"

#include <cmath>
#include <vector>

namespace bench {
namespace {

template <class Sum, class T>
double normL2(const T* src, const Zmo8u* mask, size_t pixels) {
    Sum sum = 0;
    for (size_t i = 0; i < pixels; ++i) {
        if (mask[i] != 0) sum += Sum{src[i]} * src[i];
    }
    return std::sqrt(static_cast<double>(sum));
}

template <class Sum, class T>
double mean(const T* src, const Zmo8u* mask, size_t pixels) {
    Sum sum = 0;
    size_t count = 0;
    for (size_t i = 0; i < pixels; ++i) {
        if (mask[i] == 0) continue;
        sum += src[i];
        ++count;
    }
    return count == 0 ? 0 : static_cast<double>(sum) / static_cast<double>(count);
}

template <class Sum, class T, class D>
void integral(const T* src, D* table, ZmoiSize size) {
    const int columns = size.width + 1;
    for (int x = 0; x < columns; ++x) table[x] = 0;
    for (int y = 0; y < size.height; ++y) {
        const D* const above = table;
        table += columns;
        table[0] = 0;
        Sum sum = 0;
        for (int x = 0; x < size.width; ++x) {
            sum += *src++;
            table[x + 1] = static_cast<D>(static_cast<Sum>(above[x + 1]) + sum);
        }
    }
}

}  // namespace

double plainNormL2(const Zmo8u* src, const Zmo8u* mask, size_t pixels) {
    return normL2<uint64_t>(src, mask, pixels);
}
double plainNormL2(const Zmo16u* src, const Zmo8u* mask, size_t pixels) {
    return normL2<uint64_t>(src, mask, pixels);
}
double plainNormL2(const Zmo32f* src, const Zmo8u* mask, size_t pixels) {
    return normL2<double>(src, mask, pixels);
}

double plainMean(const Zmo8u* src, const Zmo8u* mask, size_t pixels) {
    return mean<uint64_t>(src, mask, pixels);
}
double plainMean(const Zmo16u* src, const Zmo8u* mask, size_t pixels) {
    return mean<uint64_t>(src, mask, pixels);
}
double plainMean(const Zmo32f* src, const Zmo8u* mask, size_t pixels) {
    return mean<double>(src, mask, pixels);
}

void plainAbsDiff(const Zmo8u* src, const Zmo8u* src2, Zmo8u* dst, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i) {
        dst[i] = static_cast<Zmo8u>(src[i] > src2[i] ? src[i] - src2[i] : src2[i] - src[i]);
    }
}

void plainAdd(const Zmo8u* src, Zmo32f* sums, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i) sums[i] += static_cast<Zmo32f>(src[i]);
}

void plainIntegral(const Zmo8u* src, Zmo32s* table, ZmoiSize size) {
    integral<uint32_t>(src, table, size);
}
void plainIntegral(const Zmo8u* src, Zmo32f* table, ZmoiSize size) {
    // Exact beyond the 24 bits of the table.
    static std::vector<double> sums;
    sums.resize(static_cast<size_t>(size.width + 1) * static_cast<size_t>(size.height + 1));
    integral<double>(src, sums.data(), size);
    for (const double sum : sums) *table++ = static_cast<float>(sum);
}
void plainIntegral(const Zmo32f* src, Zmo32f* table, ZmoiSize size) {
    integral<double>(src, table, size);
}

void plainSqrIntegral(const Zmo8u* src, Zmo32s* table, Zmo32s* squares, ZmoiSize size) {
    const int columns = size.width + 1;
    for (int x = 0; x < columns; ++x) table[x] = squares[x] = 0;
    for (int y = 0; y < size.height; ++y) {
        const Zmo32s* const above = table;
        const Zmo32s* const squaresAbove = squares;
        table += columns;
        squares += columns;
        table[0] = squares[0] = 0;
        uint32_t sum = 0;
        uint32_t squareSum = 0;
        for (int x = 0; x < size.width; ++x, ++src) {
            sum += *src;
            squareSum += static_cast<uint32_t>(*src * *src);
            table[x + 1] = static_cast<Zmo32s>(static_cast<uint32_t>(above[x + 1]) + sum);
            squares[x + 1] =
                static_cast<Zmo32s>(static_cast<uint32_t>(squaresAbove[x + 1]) + squareSum);
        }
    }
}

}  // namespace bench
