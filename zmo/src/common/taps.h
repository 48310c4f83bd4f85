// Sums of rows with weights that are known at run time, the inner loop of all filters with a kernel
// of the caller's, and the way from a row of sums to pixels.
#pragma once

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// The weights of sums of type A. Products of 16-bit weights with 8- and 16-bit pixels need no
// 32-bit multiplication, which SSE2 lacks.
template <class A>
struct WeightOf {
    using type = A;
};
template <>
struct WeightOf<int32_t> {
    using type = int16_t;
};
template <>
struct WeightOf<double> {
    using type = int16_t;
};
template <class A>
using Weight = typename WeightOf<A>::type;

enum class Add { exact, saturating16 };

template <Add add>
[[maybe_unused]] inline int32_t added(int32_t sum, int32_t product) {
    sum += product;
    if constexpr (add == Add::saturating16) {
        sum = sum < INT16_MIN ? INT16_MIN : sum;
        sum = sum > INT16_MAX ? INT16_MAX : sum;
    }
    return sum;
}
template <Add>
[[maybe_unused]] inline float added(float sum, float product) {
    return sum + product;
}
template <Add>
[[maybe_unused]] inline double added(double sum, double product) {
    return sum + product;
}

// Adds the first `taps` rows to the sums; `fresh` sums start with this call.
template <class A, class S, Add add, int taps, bool fresh>
[[gnu::noinline]] void sumSomeRows(A* __restrict sums, const Elem<S>* const* rows,
                                   const Elem<Weight<A>>* weights, ptrdiff_t count) {
    const auto row = [rows](int i) { return rows[i < taps ? i : 0]; };
    const auto weight = [weights](int i) { return static_cast<A>(weights[i < taps ? i : 0]); };
    const Elem<S>* const a = row(0);
    const Elem<S>* const b = row(1);
    const Elem<S>* const c = row(2);
    const Elem<S>* const d = row(3);
    const Elem<S>* const e = row(4);
    const A wa = weight(0);
    const A wb = weight(1);
    const A wc = weight(2);
    const A wd = weight(3);
    const A we = weight(4);
    for (ptrdiff_t x = 0; x < count; ++x) {
        A sum = wa * static_cast<A>(a[x]);
        if constexpr (!fresh) {
            sum = added<add>(sums[x], sum);
        } else if constexpr (add == Add::saturating16) {
            sum = added<add>(0, sum);
        }
        if constexpr (taps > 1) sum = added<add>(sum, wb * static_cast<A>(b[x]));
        if constexpr (taps > 2) sum = added<add>(sum, wc * static_cast<A>(c[x]));
        if constexpr (taps > 3) sum = added<add>(sum, wd * static_cast<A>(d[x]));
        if constexpr (taps > 4) sum = added<add>(sum, we * static_cast<A>(e[x]));
        sums[x] = sum;
    }
}

// sums[x] = the sum, in the order of the taps, of which there is one at least, of weights[i] *
// rowAt(i)[x]. Rows are of type S.
template <class A, class S, Add add = Add::exact, class RowAt>
void sumRows(A* sums, ptrdiff_t count, const Elem<Weight<A>>* weights, ptrdiff_t taps,
             RowAt rowAt) {
    using Sum = void (*)(A*, const Elem<S>* const*, const Elem<Weight<A>>*, ptrdiff_t);
    static constexpr Sum table[2][5] = {
        {sumSomeRows<A, S, add, 1, true>, sumSomeRows<A, S, add, 2, true>,
         sumSomeRows<A, S, add, 3, true>, sumSomeRows<A, S, add, 4, true>,
         sumSomeRows<A, S, add, 5, true>},
        {sumSomeRows<A, S, add, 1, false>, sumSomeRows<A, S, add, 2, false>,
         sumSomeRows<A, S, add, 3, false>, sumSomeRows<A, S, add, 4, false>,
         sumSomeRows<A, S, add, 5, false>}};
    if (taps < 1) __builtin_unreachable();
    ptrdiff_t done = 0;
    do {
        const ptrdiff_t some = taps - done < 5 ? taps - done : 5;
        const Elem<S>* rows[5];
        for (ptrdiff_t i = 0; i < some; ++i) rows[i] = rowAt(done + i);
        table[done != 0][some - 1](sums, rows, weights + done, count);
        done += some;
    } while (done < taps);
}

// How sums become pixels: divided, rounded half to even, saturated. A power of two is shifted; all
// other divisors multiply with the inverse. `snap` rounds such a quotient to a multiple of 2^-g
// with 2^g > 2 divisor, so that halves, which the inverse misses by an error far smaller, are met
// exactly and no other quotient becomes a half. It holds for sums below 2^47 and divisors below
// 2^31.
struct Quotient {
    int shift;  // negative: not a power of two
    double inverse;
    double snap;
};

[[maybe_unused]] Quotient quotientBy(int64_t divisor) {
    int bits = 0;
    while ((int64_t(1) << bits) < divisor) ++bits;
    const double granules = static_cast<double>(int64_t(1) << (bits + 2));
    return {(int64_t(1) << bits) == divisor ? bits : -1, 1.0 / static_cast<double>(divisor),
            0x1.8p52 / granules};
}

template <class D>
struct Bounds;
template <>
struct Bounds<uint8_t> {
    static constexpr int low = 0;
    static constexpr int high = UINT8_MAX;
};
template <>
struct Bounds<int8_t> {
    static constexpr int low = INT8_MIN;
    static constexpr int high = INT8_MAX;
};
template <>
struct Bounds<uint16_t> {
    static constexpr int low = 0;
    static constexpr int high = UINT16_MAX;
};
template <>
struct Bounds<int16_t> {
    static constexpr int low = INT16_MIN;
    static constexpr int high = INT16_MAX;
};

template <class D, class V>
inline V saturated(V value) {
    value = value < V(Bounds<D>::low) ? V(Bounds<D>::low) : value;
    return value > V(Bounds<D>::high) ? V(Bounds<D>::high) : value;
}

template <class D, class A>
[[gnu::noinline]] void storeQuotients(Elem<D>* __restrict dst, const A* __restrict sums,
                                      ptrdiff_t count, Quotient by) {
    const double inverse = by.inverse;
    const double snap = by.snap;
    for (ptrdiff_t x = 0; x < count; ++x) {
        double value = static_cast<double>(sums[x]) * inverse;
        value = (value + snap) - snap;
        // Quotients of 32-bit sums can wait until they are integers, whose comparisons vectorise.
        if constexpr (sizeof(A) > sizeof(int32_t)) value = saturated<D>(value);
        const auto whole = static_cast<int32_t>((value + 0x1.8p52) - 0x1.8p52);
        dst[x] = static_cast<D>(saturated<D>(whole));
    }
}

template <class D>
[[gnu::noinline]] void storeShifted(Elem<D>* __restrict dst, const int32_t* __restrict sums,
                                    ptrdiff_t count, int shift) {
    const int32_t rest = static_cast<int32_t>((int64_t(1) << shift) - 1);
    const int32_t half = shift == 0 ? 1 : 1 << (shift - 1);
    for (ptrdiff_t x = 0; x < count; ++x) {
        const int32_t whole = sums[x] >> shift;
        const int32_t up = (sums[x] & rest) + (whole & 1) > half ? 1 : 0;
        dst[x] = static_cast<D>(saturated<D>(whole + up));
    }
}

template <class D>
void store(Elem<D>* dst, const int32_t* sums, ptrdiff_t count, const Quotient& by) {
    if (by.shift < 0 || by.shift > 29) return storeQuotients<D>(dst, sums, count, by);
    storeShifted<D>(dst, sums, count, by.shift);
}
template <class D>
void store(Elem<D>* dst, const double* sums, ptrdiff_t count, const Quotient& by) {
    storeQuotients<D>(dst, sums, count, by);
}
// Sums in single precision are not divided, and lie below 2^22 when they become integers.
template <class D>
[[gnu::noinline]] void store(Elem<D>* __restrict dst, const float* __restrict sums, ptrdiff_t count,
                             const Quotient&) {
    for (ptrdiff_t x = 0; x < count; ++x) {
        dst[x] = static_cast<D>(saturated<D>(wholeOf(sums[x])));
    }
}
template <>
[[maybe_unused, gnu::noinline]] void store<float>(Elem<float>* __restrict dst,
                                                  const float* __restrict sums, ptrdiff_t count,
                                                  const Quotient&) {
    for (ptrdiff_t x = 0; x < count; ++x) dst[x] = sums[x];
}

// Pixels from weighted sums of rows, a block at a time: its sums stay in the first-level cache.
// rowAt(i) is the row of tap i.
template <class A, class S, class D, Add add = Add::exact, class RowAt>
void filterRow(Elem<D>* dst, ptrdiff_t count, const Elem<Weight<A>>* weights, ptrdiff_t taps,
               const Quotient& by, RowAt rowAt) {
    constexpr ptrdiff_t block = 512;
    A sums[block];
    for (ptrdiff_t x = 0; x < count; x += block) {
        const ptrdiff_t length = count - x < block ? count - x : block;
        sumRows<A, S, add>(sums, length, weights, taps, [&](ptrdiff_t i) { return rowAt(i) + x; });
        store<D>(dst + x, sums, length, by);
    }
}

}  // namespace
}  // namespace zmo::ZMO_LEVEL
