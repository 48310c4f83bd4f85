#include "zmocv/integral.h"

#include "common/kernel.h"

// Sums of 8u are kept exact while they grow: as 64f, or as 32-bit numbers that wrap around, in the
// cells of the table itself. A row is finished, with start added and in the table's type, as soon
// as the rows below it no longer read it.
namespace zmo::ZMO_LEVEL {
namespace {

template <class D>
struct SumFor {
    using type = uint32_t;
};
template <>
struct SumFor<double> {
    using type = double;
};
template <class D>
using Sum = typename SumFor<D>::type;

template <class D>
Sum<D> firstSum(double) {
    return 0;
}
template <>
uint32_t firstSum<int32_t>(double start) {
    return static_cast<uint32_t>(static_cast<int32_t>(start));
}

// Rows are finished in their order.
template <class D>
void finishRow(Target, ptrdiff_t, ptrdiff_t, double) {}

template <>
void finishRow<double>(Target table, ptrdiff_t y, ptrdiff_t columns, double start) {
    Elem<double>* const row = rowOf<double>(table, y);
    if (start == 0) return;
    for (ptrdiff_t x = 0; x < columns; ++x) row[x] += start;
}

double roundedToWhole(double value) {
    constexpr double ulpIsOne = 0x1.8p52;
    return (value + ulpIsOne) - ulpIsOne;
}

// A sum has lost the multiples of 2^32. It is less than 2^31 larger than the one above it, which is
// known up to its rounding to 32f.
void restoreRow(Elem<float>* row, const Elem<float>* __restrict above, ptrdiff_t columns,
                double start) {
    const Elem<int32_t>* const sums = reinterpret_cast<const Elem<int32_t>*>(row);
    for (ptrdiff_t x = 0; x < columns; ++x) {
        const double sum = sums[x];
        const double about = above[x] - start;
        const double lost = roundedToWhole((about - sum) * 0x1p-32);
        row[x] = static_cast<float>(start + (sum + lost * 0x1p32));
    }
}

template <>
void finishRow<float>(Target table, ptrdiff_t y, ptrdiff_t columns, double start) {
    Elem<float>* const row = rowOf<float>(table, y);
    if (y > 0) return restoreRow(row, rowOf<float>(table, y - 1), columns, start);
    for (ptrdiff_t x = 0; x < columns; ++x) row[x] = static_cast<float>(start);
}

template <bool squares>
uint32_t term(uint8_t value) {
    return squares ? uint32_t{value} * value : value;
}

typedef uint8_t Bytes __attribute__((vector_size(16)));
typedef uint16_t Words __attribute__((vector_size(16)));
typedef uint32_t Quad __attribute__((vector_size(16)));
typedef uint64_t Pair __attribute__((vector_size(16)));

Words eightValues(const uint8_t* pixels) {
    // By way of a register: eight bytes copied into a vector in memory are waited for when it is
    // read.
    uint64_t eight = 0;
    __builtin_memcpy(&eight, pixels, sizeof eight);
    const Pair pair = {eight, 0};
    const Bytes zero = {};
    return reinterpret_cast<Words>(__builtin_shufflevector(reinterpret_cast<Bytes>(pair), zero, 0,
                                                           16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6,
                                                           22, 7, 23));
}

// Within each half of four, a lane becomes the sum of the lanes up to it. Shifts of whole 64-bit
// lanes are one instruction at every level, while moving lanes across a vector is many at the
// lowest.
Words sumsInHalves(Words v) {
    v += reinterpret_cast<Words>(reinterpret_cast<Pair>(v) << 16);
    return v + reinterpret_cast<Words>(reinterpret_cast<Pair>(v) << 32);
}
// Each lane becomes the sum of the lanes up to it.
Quad runningSums(Quad v) {
    const Quad zero = {};
    v += reinterpret_cast<Quad>(reinterpret_cast<Pair>(v) << 32);
    const Quad lowSum = __builtin_shufflevector(v, v, 1, 1, 1, 1);
    return v + __builtin_shufflevector(zero, lowSum, 0, 1, 4, 5);
}

Quad lowHalf(Words v) {
    const Words zero = {};
    return reinterpret_cast<Quad>(__builtin_shufflevector(v, zero, 0, 8, 1, 9, 2, 10, 3, 11));
}
Quad highHalf(Words v) {
    const Words zero = {};
    return reinterpret_cast<Quad>(__builtin_shufflevector(v, zero, 4, 12, 5, 13, 6, 14, 7, 15));
}

Quad lastOf(Quad v) {
    return __builtin_shufflevector(v, v, 3, 3, 3, 3);
}

// Sums along a stretch of a row that fit 32 bits.
constexpr ptrdiff_t stretch = 512;

// sums[i] = term(pixels[0]) + ... + term(pixels[i]); returns the last.
template <bool squares>
uint32_t sumAlong(uint32_t* __restrict sums, const uint8_t* __restrict pixels, ptrdiff_t count) {
    Quad before = {};
    ptrdiff_t i = 0;
    for (; i + 8 <= count; i += 8) {
        Words v = eightValues(pixels + i);
        Quad low;
        Quad high;
        if (squares) {
            v *= v;
            low = runningSums(lowHalf(v));
            high = runningSums(highHalf(v));
        } else {
            v = sumsInHalves(v);
            low = lowHalf(v);
            high = highHalf(v);
        }
        high += lastOf(low);
        const Quad here = lastOf(high);
        low += before;
        high += before;
        before += here;
        __builtin_memcpy(sums + i, &low, sizeof low);
        __builtin_memcpy(sums + i + 4, &high, sizeof high);
    }
    uint32_t sum = before[0];
    for (; i < count; ++i) {
        sum += term<squares>(pixels[i]);
        sums[i] = sum;
    }
    return sum;
}

template <class S>
void addAlong(Elem<S>* __restrict row, const Elem<S>* __restrict above,
              const uint32_t* __restrict sums, ptrdiff_t count, S before) {
    // A stretch sums to less than 2^31, and the conversion from int32_t is one instruction.
    for (ptrdiff_t i = 0; i < count; ++i) {
        row[i] = above[i] + (before + static_cast<S>(static_cast<int32_t>(sums[i])));
    }
}

// Row y + 1 of an upright table.
template <class S, bool squares>
void addUprightRow(Source src, Target table, ptrdiff_t y, ptrdiff_t width) {
    const Elem<S>* const above = rowOf<S>(table, y);
    Elem<S>* const row = rowOf<S>(table, y + 1);
    const uint8_t* const pixels = rowOf<uint8_t>(src, y);
    uint32_t sums[stretch];
    S before = 0;
    row[0] = above[0];
    for (ptrdiff_t x = 0; x < width; x += stretch) {
        const ptrdiff_t count = width - x < stretch ? width - x : stretch;
        const uint32_t sum = sumAlong<squares>(sums, pixels + x, count);
        addAlong<S>(row + x + 1, above + x + 1, sums, count, before);
        before += static_cast<S>(sum);
    }
}

// Two triangles overlap in the third; what is left are the two lowest pixels.
template <class S, bool squares>
void addTriangles(Elem<S>* __restrict row, const Elem<S>* __restrict above,
                  const Elem<S>* __restrict above2, const uint8_t* __restrict pixels,
                  const uint8_t* __restrict pixelsAbove, ptrdiff_t count) {
    for (ptrdiff_t x = 1; x < count; ++x) {
        const int32_t lowest =
            static_cast<int32_t>(term<squares>(pixels[x - 1]) + term<squares>(pixelsAbove[x - 1]));
        row[x] = (above[x - 1] + above[x + 1] - above2[x]) + static_cast<S>(lowest);
    }
}

// Row y + 1 of a tilted table.
template <class S, bool squares>
void addTiltedRow(Source src, Target table, ptrdiff_t y, ptrdiff_t width) {
    const Elem<S>* const above = rowOf<S>(table, y);
    Elem<S>* const row = rowOf<S>(table, y + 1);
    const uint8_t* const pixels = rowOf<uint8_t>(src, y);
    if (y == 0) {
        row[0] = above[0];
        for (ptrdiff_t x = 1; x <= width; ++x) {
            row[x] = above[x] + static_cast<S>(term<squares>(pixels[x - 1]));
        }
        return;
    }
    const uint8_t* const pixelsAbove = rowOf<uint8_t>(src, y - 1);
    // A triangle beside the picture covers as much of it as the next one inside and above.
    row[0] = above[1];
    addTriangles<S, squares>(row, above, rowOf<S>(table, y - 1), pixels, pixelsAbove, width);
    row[width] = above[width - 1] + static_cast<S>(term<squares>(pixels[width - 1]) +
                                                   term<squares>(pixelsAbove[width - 1]));
}

template <class D, bool squares, bool tilted>
void fillTable(Source src, Target table, Region roi, double start) {
    using S = Sum<D>;
    constexpr ptrdiff_t rowsRead = tilted ? 2 : 1;
    const ptrdiff_t columns = roi.width + 1;
    Elem<S>* const top = rowOf<S>(table, 0);
    for (ptrdiff_t x = 0; x < columns; ++x) top[x] = firstSum<D>(start);
    ptrdiff_t finished = 0;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        if (tilted) {
            addTiltedRow<S, squares>(src, table, y, roi.width);
        } else {
            addUprightRow<S, squares>(src, table, y, roi.width);
        }
        if (y + 1 >= rowsRead) finishRow<D>(table, finished++, columns, start);
    }
    while (finished <= roi.height) finishRow<D>(table, finished++, columns, start);
}

// Several rows at once: the sums along one row wait for each other.
template <int rows>
void addFloatRows(Source src, Target table, ptrdiff_t y, ptrdiff_t width) {
    double sums[rows] = {};
    for (ptrdiff_t x = 0; x < width; ++x) {
        float value = rowOf<float>(table, y)[x + 1];
        for (int r = 0; r < rows; ++r) {
            sums[r] += rowOf<float>(src, y + r)[x];
            value = static_cast<float>(value + sums[r]);
            rowOf<float>(table, y + r + 1)[x + 1] = value;
        }
    }
    for (int r = 1; r <= rows; ++r) rowOf<float>(table, y + r)[0] = rowOf<float>(table, y)[0];
}

void fillFloatTable(Source src, Target table, Region roi, double start) {
    Elem<float>* const top = rowOf<float>(table, 0);
    for (ptrdiff_t x = 0; x <= roi.width; ++x) top[x] = static_cast<float>(start);
    ptrdiff_t y = 0;
    for (; y + 4 <= roi.height; y += 4) addFloatRows<4>(src, table, y, roi.width);
    for (; y < roi.height; ++y) addFloatRows<1>(src, table, y, roi.width);
}

// In the order of TableContent.
#define ZMO_TABLES(tilted)                                                    \
    {                                                                         \
        fillTable<int32_t, false, tilted>, fillTable<float, false, tilted>,   \
            fillTable<int32_t, true, tilted>, fillTable<double, true, tilted> \
    }

}  // namespace

const IntegralKernels integralKernels = {{ZMO_TABLES(false), ZMO_TABLES(true)}, fillFloatTable};

}  // namespace zmo::ZMO_LEVEL
