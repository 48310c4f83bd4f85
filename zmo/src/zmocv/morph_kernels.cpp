#include "zmocv/morph.h"

#include <emmintrin.h>

#include <utility>

#include "common/kernel.h"

namespace zmo::ZMO_LEVEL {
namespace {

// Minimum or maximum of two elements or vectors of them; of words, pixel by pixel.
template <class T, bool max>
inline T extremum(T a, T b) {
    if constexpr (sizeof(T) == sizeof(uint64_t)) {
        return max ? a | b : a & b;
    } else if constexpr (max) {
        return a < b ? b : a;
    } else {
        return a < b ? a : b;
    }
}

// SSE2 has the minimum and maximum of signed words only.
#ifndef __SSE4_1__
typedef uint16_t Words __attribute__((vector_size(16)));
inline Words excess(Words a, Words b) {
    return __builtin_bit_cast(
        Words, _mm_subs_epu16(__builtin_bit_cast(__m128i, a), __builtin_bit_cast(__m128i, b)));
}
template <>
inline Words extremum<Words, false>(Words a, Words b) {
    return a - excess(a, b);
}
template <>
inline Words extremum<Words, true>(Words a, Words b) {
    return b + excess(a, b);
}
#endif

template <class T, bool max>
void combine(const void* a, const void* b, void* dst, ptrdiff_t count) {
    const Elem<T>* __restrict const first = static_cast<const Elem<T>*>(a);
    const Elem<T>* __restrict const second = static_cast<const Elem<T>*>(b);
    Elem<T>* __restrict const out = static_cast<Elem<T>*>(dst);
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = extremum<T, max>(first[i], second[i]);
}

template <class T, bool max>
void sweep(const void* before, const void* row, const void* suffix, void* next, void* dst,
           ptrdiff_t count) {
    const T* __restrict const running = static_cast<const T*>(before);
    const T* __restrict const added = static_cast<const T*>(row);
    const T* __restrict const rest = static_cast<const T*>(suffix);
    T* __restrict const extended = static_cast<T*>(next);
    Elem<T>* __restrict const out = static_cast<Elem<T>*>(dst);
    for (ptrdiff_t i = 0; i < count; ++i) {
        const T value = extremum<T, max>(running[i], added[i]);
        extended[i] = value;
        out[i] = extremum<T, max>(rest[i], value);
    }
}

// To the end of the last morphPadding bytes.
template <class T>
constexpr ptrdiff_t roundedUp(ptrdiff_t count) {
    constexpr ptrdiff_t unit = morphPadding / static_cast<ptrdiff_t>(sizeof(T));
    return (count + unit - 1) / unit * unit;
}

// As many elements of T as the level's loops keep in one register.
#ifdef __AVX2__
constexpr ptrdiff_t registerBytes = 32;
#else
constexpr ptrdiff_t registerBytes = 16;
#endif
template <class T>
struct Register {
    typedef T Vector __attribute__((vector_size(registerBytes)));
    static constexpr ptrdiff_t lanes = registerBytes / static_cast<ptrdiff_t>(sizeof(T));
};
template <>
struct Register<uint64_t> {
    typedef uint64_t Vector;
    static constexpr ptrdiff_t lanes = 1;
};

// The vector that begins `shift` lanes behind the first one of a, where b follows a.
template <class T, ptrdiff_t shift, size_t... lane>
inline typename Register<T>::Vector vectorAt(typename Register<T>::Vector a,
                                             typename Register<T>::Vector b,
                                             std::index_sequence<lane...>) {
#ifdef __SSSE3__
    return __builtin_shufflevector(a, b, static_cast<int>(lane) + static_cast<int>(shift)...);
#else
    constexpr int bytes = shift * sizeof(T);
    const __m128i head = _mm_srli_si128(__builtin_bit_cast(__m128i, a), bytes);
    const __m128i tail = _mm_slli_si128(__builtin_bit_cast(__m128i, b), 16 - bytes);
    return __builtin_bit_cast(typename Register<T>::Vector, _mm_or_si128(head, tail));
#endif
}

// Windows of 2^turns `shift` elements from each two of half the length. It takes the vectors of a
// row one by one and gives back the extrema of the one that came `delay` turns earlier, so that all
// doublings run side by side in registers.
template <class T, bool max, ptrdiff_t shift, int turns>
class Doubling {
    using Vector = typename Register<T>::Vector;
    using Next = Doubling<T, max, 2 * shift, turns - 1>;
    static constexpr ptrdiff_t lanes = Register<T>::lanes;
    static constexpr ptrdiff_t kept = (shift + lanes - 1) / lanes;

  public:
    static constexpr ptrdiff_t delay = kept + Next::delay;

    Vector operator()(Vector newest) {
        Vector partner = newest;
        if constexpr (shift % lanes != 0) {
            partner = vectorAt<T, shift % lanes>(m_last[kept - 1], newest,
                                                 std::make_index_sequence<lanes>());
        }
        const Vector best = extremum<Vector, max>(m_last[0], partner);
        for (ptrdiff_t i = 1; i < kept; ++i) m_last[i - 1] = m_last[i];
        m_last[kept - 1] = newest;
        return m_next(best);
    }

  private:
    Vector m_last[kept] = {};
    Next m_next;
};
template <class T, bool max, ptrdiff_t shift>
class Doubling<T, max, shift, 0> {
  public:
    static constexpr ptrdiff_t delay = 0;
    typename Register<T>::Vector operator()(typename Register<T>::Vector best) { return best; }
};

// Windows of 2^turns pixels over a row of `elements`, as far as the row goes and to the end of the
// last morphPadding bytes. The last vector of the row is the last one that is read.
template <class T, bool max, ptrdiff_t stride, int turns>
void doubledWindows(const T* __restrict row, T* __restrict dst, ptrdiff_t elements) {
    using Vector = typename Register<T>::Vector;
    constexpr ptrdiff_t lanes = Register<T>::lanes;
    const ptrdiff_t last = (elements - 1) / lanes;
    const ptrdiff_t vectors = roundedUp<T>(elements - ((1 << turns) - 1) * stride) / lanes;
    Doubling<T, max, stride, turns> doubling;
    const auto next = [&](ptrdiff_t i) {
        Vector newest;
        __builtin_memcpy(&newest, row + (i < last ? i : last) * lanes, sizeof newest);
        return doubling(newest);
    };
    constexpr ptrdiff_t delay = Doubling<T, max, stride, turns>::delay;
    for (ptrdiff_t i = 0; i < delay; ++i) next(i);
    for (ptrdiff_t i = 0; i < vectors; ++i) {
        const Vector best = next(i + delay);
        __builtin_memcpy(dst + i * lanes, &best, sizeof best);
    }
}

// As many doublings as wanted, four at most. Returns their number.
template <class T, bool max, ptrdiff_t stride, int turns = 1>
int doubleWindows(const T* row, T* dst, ptrdiff_t elements, int wanted) {
    if constexpr (turns < 4) {
        if (wanted > turns) {
            return doubleWindows<T, max, stride, turns + 1>(row, dst, elements, wanted);
        }
    }
    doubledWindows<T, max, stride, turns>(row, dst, elements);
    return turns;
}

// The doublings that leave two overlapping windows to make one of `length`.
int doublingsFor(ptrdiff_t length) {
    int turns = 0;
    while ((ptrdiff_t{2} << turns) < length) ++turns;
    return turns;
}

// Windows of two, four, eight and so on pixels, each from two of half the length; two overlapping
// ones make the length wanted. Writes the scratch's first two rows.
template <class T, bool max>
void shortWindow(const void* row, void* dst, ptrdiff_t count, ptrdiff_t stride, ptrdiff_t length,
                 void* scratch, ptrdiff_t pitch) {
    const T* from = static_cast<const T*>(row);
    const auto scratchRow = [&](int turn) {
        return reinterpret_cast<T*>(static_cast<char*>(scratch) + (turn % 2) * pitch);
    };
    const ptrdiff_t elements = count + (length - 1) * stride;
    const int wanted = doublingsFor(length);
    int made = 0;
    if (wanted > 0) {
        T* const to = scratchRow(0);
        made = stride == 1   ? doubleWindows<T, max, 1>(from, to, elements, wanted)
               : stride == 3 ? doubleWindows<T, max, 3>(from, to, elements, wanted)
                             : doubleWindows<T, max, 4>(from, to, elements, wanted);
        from = to;
    }
    ptrdiff_t reach = ptrdiff_t{1} << made;
    for (int turn = 1; made < wanted; ++made, ++turn, reach *= 2) {
        T* const to = scratchRow(turn);
        combine<T, max>(from, from + reach * stride, to,
                        roundedUp<T>(elements - (2 * reach - 1) * stride));
        from = to;
    }
    combine<T, max>(from, from + (length - reach) * stride, dst, count);
}

// dst[i] = extremum of row[i + k step], k from 0 to terms - 1 and terms > 1, by van Herk's running
// extrema: of a group of `terms` steps from each element to the group's end, and of the next group
// up to each element. Neighbours run side by side in a register; a step is a multiple of its
// length. suffixes holds a group.
template <class T, bool max>
void joinWindows(const T* __restrict row, void* dst, ptrdiff_t count, ptrdiff_t step,
                 ptrdiff_t terms, T* __restrict suffixes) {
    using Vector = typename Register<T>::Vector;
    constexpr ptrdiff_t lanes = Register<T>::lanes;
    const auto load = [](const T* from) {
        Vector value;
        __builtin_memcpy(&value, from, sizeof value);
        return value;
    };
    const auto store = [](Vector value, void* to, ptrdiff_t elements) {
        if (elements >= lanes) {
            __builtin_memcpy(to, &value, sizeof value);
        } else {
            __builtin_memcpy(to, &value, static_cast<size_t>(elements) * sizeof(T));
        }
    };
    for (ptrdiff_t group = 0; group < count; group += terms * step) {
        const ptrdiff_t end = count - group < step ? count - group : step;
        for (ptrdiff_t lane = 0; lane < end; lane += lanes) {
            const T* const from = row + group + lane;
            Vector running = load(from + (terms - 1) * step);
            for (ptrdiff_t k = terms - 2; k >= 0; --k) {
                store(running, suffixes + (k + 1) * step, lanes);
                running = extremum<Vector, max>(running, load(from + k * step));
            }
            Elem<T>* out = static_cast<Elem<T>*>(dst) + group + lane;
            store(running, out, count - group - lane);
            const T* next = from + terms * step;
            for (ptrdiff_t k = 1; k < terms; ++k, next += step) {
                const ptrdiff_t left = count - group - lane - k * step;
                if (left <= 0) break;
                running = k == 1 ? load(next) : extremum<Vector, max>(running, load(next));
                out += step;
                store(extremum<Vector, max>(load(suffixes + k * step), running), out, left);
            }
        }
    }
}

// Longer windows are made of parts of so many pixels, or up to twice as many. A part takes up to
// seven comparisons and joining them three: from here on, no more than doubling on, and never any
// more.
constexpr ptrdiff_t joinedPixels = 64;
constexpr ptrdiff_t longestDoubled = 1024;

template <class T, bool max>
void window(const void* row, void* dst, ptrdiff_t count, ptrdiff_t, ptrdiff_t stride,
            ptrdiff_t length, void* scratch, ptrdiff_t pitch) {
    if (length <= longestDoubled) {
        return shortWindow<T, max>(row, dst, count, stride, length, scratch, pitch);
    }
    // The parts reach over what a whole number of them would leave.
    const ptrdiff_t part = joinedPixels + length % joinedPixels;
    T* const parts = reinterpret_cast<T*>(static_cast<char*>(scratch) + 2 * pitch);
    shortWindow<T, max>(row, parts, roundedUp<T>(count + (length - part) * stride), stride, part,
                        scratch, pitch);
    joinWindows<T, max>(parts, dst, count, joinedPixels * stride, length / joinedPixels,
                        static_cast<T*>(scratch));
}

// The word that begins `shift` pixels, 0 to 63, behind the first one of words[0].
inline uint64_t wordAt(const uint64_t* words, int shift) {
    return (words[0] << shift) | ((words[1] >> 1) >> (63 - shift));
}

template <bool max>
void combineShifted(const uint64_t* __restrict a, const uint64_t* __restrict b, int shift,
                    uint64_t* __restrict dst, ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        dst[i] = extremum<uint64_t, max>(a[i], wordAt(b + i, shift));
    }
}

// Windows of two, four, eight and so on pixels, each from two of half the length.
template <bool max>
void shortWindowOfBits(const void* row, void* dst, ptrdiff_t count, ptrdiff_t first,
                       ptrdiff_t length, void* scratch, ptrdiff_t pitch) {
    const auto rowAt = [&](int turn) {
        return reinterpret_cast<uint64_t*>(static_cast<char*>(scratch) + turn * pitch);
    };
    const ptrdiff_t wide = count + (length + 62) / 64;
    const uint64_t* const words = static_cast<const uint64_t*>(row) + first / 64;
    uint64_t* from = rowAt(0);
    for (ptrdiff_t i = 0; i < wide; ++i) from[i] = wordAt(words + i, static_cast<int>(first % 64));
    ptrdiff_t reach = 1;
    for (int turn = 1; 2 * reach < length; turn = 1 - turn) {
        combineShifted<max>(from, from + reach / 64, static_cast<int>(reach % 64), rowAt(turn),
                            wide);
        from = rowAt(turn);
        reach *= 2;
    }
    const ptrdiff_t rest = length - reach;
    combineShifted<max>(from, from + rest / 64, static_cast<int>(rest % 64),
                        static_cast<uint64_t*>(dst), count);
}

template <bool max>
void windowOfBits(const void* row, void* dst, ptrdiff_t count, ptrdiff_t first, ptrdiff_t,
                  ptrdiff_t length, void* scratch, ptrdiff_t pitch) {
    if (length <= longestDoubled) {
        return shortWindowOfBits<max>(row, dst, count, first, length, scratch, pitch);
    }
    const ptrdiff_t terms = length / joinedPixels;
    uint64_t* const parts = reinterpret_cast<uint64_t*>(static_cast<char*>(scratch) + 2 * pitch);
    shortWindowOfBits<max>(row, parts, count + terms - 1, first,
                           joinedPixels + length % joinedPixels, scratch, pitch);
    joinWindows<uint64_t, max>(parts, dst, count, 1, terms, static_cast<uint64_t*>(scratch));
}

// Pixels of this many bytes stay in the first-level cache while all points pass over them.
constexpr ptrdiff_t stripBytes = 512;

template <class T, bool max>
[[gnu::noinline]] void takeTwo(T* __restrict best, const T* __restrict a, const T* __restrict b,
                               ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        const T both = extremum<T, max>(a[i], b[i]);
        best[i] = extremum<T, max>(best[i], both);
    }
}

template <class T, bool max>
void points(const MorphTap* taps, ptrdiff_t tapCount, void* dst, ptrdiff_t count) {
    constexpr ptrdiff_t strip = stripBytes / static_cast<ptrdiff_t>(sizeof(T));
    for (ptrdiff_t x = 0; x < count; x += strip) {
        const ptrdiff_t n = count - x < strip ? count - x : strip;
        const auto at = [taps, x](ptrdiff_t k) { return static_cast<const T*>(taps[k].data) + x; };
        T best[strip];
        // An odd number of points begins with one, an even number with two.
        const ptrdiff_t rest = 2 - tapCount % 2;
        combine<T, max>(at(0), at(rest - 1), best, n);
        for (ptrdiff_t k = rest; k < tapCount; k += 2) takeTwo<T, max>(best, at(k), at(k + 1), n);
        __builtin_memcpy(static_cast<char*>(dst) + x * static_cast<ptrdiff_t>(sizeof(T)), best,
                         static_cast<size_t>(n) * sizeof(T));
    }
}

template <bool max>
void pointsOfBits(const MorphTap* taps, ptrdiff_t tapCount, void* dst, ptrdiff_t count) {
    uint64_t* __restrict const out = static_cast<uint64_t*>(dst);
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = max ? 0 : ~uint64_t{0};
    for (ptrdiff_t k = 0; k < tapCount; ++k) {
        const uint64_t* __restrict const words = static_cast<const uint64_t*>(taps[k].data);
        const int shift = taps[k].shift;
        for (ptrdiff_t i = 0; i < count; ++i) {
            out[i] = extremum<uint64_t, max>(out[i], wordAt(words + i, shift));
        }
    }
}

inline uint8_t saturate8u(int value) {
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

template <class T>
inline T minus(T a, T b) {
    return static_cast<T>(a < b ? 0 : a - b);
}
inline int16_t minus(int16_t a, int16_t b) {
    const int value = a - b;
    return static_cast<int16_t>(value < INT16_MIN   ? INT16_MIN
                                : value > INT16_MAX ? INT16_MAX
                                                    : value);
}
inline float minus(float a, float b) {
    return a - b;
}
inline uint64_t minus(uint64_t a, uint64_t b) {
    return a & ~b;
}

template <class T>
void difference(const void* a, const void* b, void* dst, ptrdiff_t count) {
    const Elem<T>* __restrict const first = static_cast<const Elem<T>*>(a);
    const Elem<T>* __restrict const second = static_cast<const Elem<T>*>(b);
    Elem<T>* __restrict const out = static_cast<Elem<T>*>(dst);
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = minus(T(first[i]), T(second[i]));
}

template <class T, class Wide, bool max>
[[gnu::noinline]] void takeSum(Wide* __restrict best, const T* __restrict pixels, Wide value,
                               ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        best[i] = extremum<Wide, max>(best[i], static_cast<Wide>(pixels[i] + value));
    }
}

// 8u computes in 16 bits: the values of its taps lie between -256 and 256.
template <class T, class Wide, bool max>
void grayPoints(const MorphTap* taps, ptrdiff_t tapCount, void* dst, ptrdiff_t count) {
    constexpr ptrdiff_t strip = stripBytes / static_cast<ptrdiff_t>(sizeof(Wide));
    for (ptrdiff_t x = 0; x < count; x += strip) {
        const ptrdiff_t n = count - x < strip ? count - x : strip;
        const auto pixelsOf = [x](const MorphTap& tap) {
            return static_cast<const T*>(tap.data) + x;
        };
        const auto valueOf = [](const MorphTap& tap) {
            return static_cast<Wide>(max ? tap.value : -tap.value);
        };
        Wide best[strip];
        const T* const pixels = pixelsOf(taps[0]);
        const Wide value = valueOf(taps[0]);
        for (ptrdiff_t i = 0; i < n; ++i) best[i] = static_cast<Wide>(pixels[i] + value);
        for (ptrdiff_t k = 1; k < tapCount; ++k) {
            takeSum<T, Wide, max>(best, pixelsOf(taps[k]), valueOf(taps[k]), n);
        }
        Elem<T>* const out = static_cast<Elem<T>*>(dst) + x;
        for (ptrdiff_t i = 0; i < n; ++i) {
            if constexpr (sizeof(T) == 1) {
                out[i] = saturate8u(best[i]);
            } else {
                out[i] = best[i];
            }
        }
    }
}

template <class T, bool max>
constexpr MorphLoops loopsOf = {combine<T, max>, sweep<T, max>, window<T, max>, points<T, max>};
template <bool max>
constexpr MorphLoops loopsOf<uint64_t, max> = {combine<uint64_t, max>, sweep<uint64_t, max>,
                                               windowOfBits<max>, pointsOfBits<max>};

}  // namespace

const MorphKernels morphKernels = {
    {loopsOf<uint8_t, false>, loopsOf<uint16_t, false>, loopsOf<int16_t, false>,
     loopsOf<float, false>, loopsOf<uint64_t, false>},
    {loopsOf<uint8_t, true>, loopsOf<uint16_t, true>, loopsOf<int16_t, true>, loopsOf<float, true>,
     loopsOf<uint64_t, true>},
    {difference<uint8_t>, difference<uint16_t>, difference<int16_t>, difference<float>,
     difference<uint64_t>},
    {grayPoints<uint8_t, int16_t, false>, grayPoints<float, float, false>},
    {grayPoints<uint8_t, int16_t, true>, grayPoints<float, float, true>},
};

}  // namespace zmo::ZMO_LEVEL
