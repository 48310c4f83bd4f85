#include "zmoi/pyramid.h"

#include "common/extend.h"
#include "common/taps.h"

// Pixels whose coordinates leave the same rest when divided by the rate form a phase. Between
// phases and rows with all pixels side by side a row is dealt out or shuffled; all sums run over
// rows without gaps.
namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
struct PyramidSum {
    using type = int32_t;
};
template <>
struct PyramidSum<float> {
    using type = float;
};

// Every rate-th tap from `first`, and the sum of their weights. Floating-point weights are divided
// by it at once, integer sums at the end.
template <class A>
struct PhaseTaps {
    PhaseTaps(const PyramidTaps* all, int first, int rate) {
        for (int i = first; i < all->size; i += rate) total += all->weights[i];
        for (int i = first; i < all->size; i += rate) {
            weights[size++] = divided(all->weights[i], total, A());
        }
    }
    static int16_t divided(int16_t weight, int, int32_t) { return weight; }
    static float divided(int16_t weight, int sum, float) {
        return static_cast<float>(weight) / static_cast<float>(sum);
    }

    Weight<A> weights[pyramidMaxTaps] = {};
    int size = 0;
    int total = 0;
};

template <ptrdiff_t rate, ptrdiff_t channels, class D, class S>
void dealOutBy(D* __restrict phase, const S* row, ptrdiff_t pixels) {
    for (ptrdiff_t x = 0; x < pixels; ++x) {
        for (ptrdiff_t c = 0; c < channels; ++c) {
            phase[x * channels + c] = row[x * rate * channels + c];
        }
    }
}

// phase[x] = row[x * rate], whole pixels.
template <class A>
[[gnu::noinline]] void dealOut(A* __restrict phase, const A* row, ptrdiff_t pixels, ptrdiff_t rate,
                               ptrdiff_t channels) {
    if (rate == 2 && channels == 1) return dealOutBy<2, 1>(phase, row, pixels);
    if (rate == 2 && channels == 3) return dealOutBy<2, 3>(phase, row, pixels);
    for (ptrdiff_t x = 0; x < pixels; ++x) {
        for (ptrdiff_t c = 0; c < channels; ++c) {
            phase[x * channels + c] = row[x * rate * channels + c];
        }
    }
}

// The phases one after the other, `length` elements apart, become a row of `pixels` pixels.
template <class T>
[[gnu::noinline]] void shuffle(Elem<T>* __restrict row, const T* __restrict phases,
                               ptrdiff_t length, ptrdiff_t pixels, ptrdiff_t rate,
                               ptrdiff_t channels) {
    const T* const second = phases + length;
    ptrdiff_t x = 0;
    if (rate == 2 && channels == 1) {
        for (; x + 1 < pixels; x += 2) {
            row[x] = phases[x / 2];
            row[x + 1] = second[x / 2];
        }
    }
    if (rate == 2 && channels == 3) {
        for (; x + 1 < pixels; x += 2) {
            for (ptrdiff_t c = 0; c < 3; ++c) row[x * 3 + c] = phases[x / 2 * 3 + c];
            for (ptrdiff_t c = 0; c < 3; ++c) row[x * 3 + 3 + c] = second[x / 2 * 3 + c];
        }
    }
    for (; x < pixels; ++x) {
        const T* const from = phases + x % rate * length + x / rate * channels;
        for (ptrdiff_t c = 0; c < channels; ++c) row[x * channels + c] = from[c];
    }
}

// The source row by row, its columns summed and extended by `around` pixels, which are summed
// themselves where they lie in memory. The sums of a column of constants are the same for each row,
// except up the pyramid, where they differ with the phase.
template <class T, class A>
class ColumnSums {
  public:
    ColumnSums(Source src, Region roi, Border border, ptrdiff_t channels, ptrdiff_t around,
               Carver& memory)
        : m_src(src),
          m_roi(roi),
          m_border(border.type),
          m_channels(channels),
          m_around(around),
          m_sums(memory.take<A>((roi.width + 2 * around) * channels) + around * channels),
          m_constantRow(memory.take<T>(roi.width * channels)) {
        fillConstantRow(m_constantRow, roi.width, channels, border);
    }

    // Tap j weighs the row first + j * stride. The result points to pixel 0.
    const A* at(ptrdiff_t first, ptrdiff_t stride, const PhaseTaps<A>& taps) {
        const ptrdiff_t before = m_border == zmoiBorderInMem ? m_around * m_channels : 0;
        sumRows<A, T>(m_sums - before, m_roi.width * m_channels + 2 * before, taps.weights,
                      taps.size, [&](ptrdiff_t j) {
                          return extendedRow<T>(m_src, first + j * stride, m_roi.height, m_border,
                                                m_constantRow) -
                                 before;
                      });
        if (m_border == zmoiBorderInMem) return m_sums;
        A constants[4] = {};
        if (m_border == zmoiBorderConst) {
            sumRows<A, T>(constants, m_channels, taps.weights, taps.size,
                          [this](ptrdiff_t) { return m_constantRow; });
        }
        extendRow<A>(m_sums, m_roi.width, m_channels, m_around, m_around, m_border, constants);
        return m_sums;
    }

  private:
    Source m_src;
    Region m_roi;
    ZmoiBorderType m_border;
    ptrdiff_t m_channels;
    ptrdiff_t m_around;
    A* m_sums;
    T* m_constantRow;
};

template <class T>
void down(Source src, Region srcRoi, Target dst, Region roi, Border border, const PyramidTaps* taps,
          void* buffer) {
    using A = typename PyramidSum<T>::type;
    const ptrdiff_t channels = taps->channels;
    const ptrdiff_t rate = taps->rate;
    const ptrdiff_t radius = taps->size / 2;
    const PhaseTaps<A> all(taps, 0, 1);
    const Quotient by = quotientBy(int64_t(all.total) * all.total);
    Carver memory(buffer);
    ColumnSums<T, A> columns(src, srcRoi, border, channels, radius, memory);
    // A phase starts with the pixel `radius` before the region.
    const ptrdiff_t length = ((srcRoi.width + 2 * radius) / rate + 1) * channels;
    A* const phases = memory.take<A>(length * rate);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const A* const sums = columns.at(y * rate - radius, 1, all);
        for (ptrdiff_t p = 0; p < rate && p < all.size; ++p) {
            const ptrdiff_t pixels = (srcRoi.width + 2 * radius - p + rate - 1) / rate;
            dealOut(phases + p * length, sums + (p - radius) * channels, pixels, rate, channels);
        }
        filterRow<A, A, T>(
            rowOf<T>(dst, y), roi.width * channels, all.weights, all.size, by,
            [=](ptrdiff_t i) { return phases + i % rate * length + i / rate * channels; });
    }
}

template <class T>
void up(Source src, Region srcRoi, Target dst, Region roi, Border border, const PyramidTaps* taps,
        void* buffer) {
    using A = typename PyramidSum<T>::type;
    const ptrdiff_t channels = taps->channels;
    const int rate = taps->rate;
    const int radius = taps->size / 2;
    Carver memory(buffer);
    ColumnSums<T, A> columns(src, srcRoi, border, channels, (radius + rate - 1) / rate, memory);
    const ptrdiff_t length = (roi.width + rate - 1) / rate * channels;
    T* const phases = memory.take<T>(length * rate);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const PhaseTaps<A> down(taps, static_cast<int>((y + radius) % rate), rate);
        const A* const sums = columns.at((y + radius) / rate, -1, down);
        for (int p = 0; p < rate && p < roi.width; ++p) {
            const PhaseTaps<A> along(taps, (p + radius) % rate, rate);
            const A* const first = sums + (p + radius) / rate * channels;
            filterRow<A, A, T>(phases + p * length, (roi.width - p + rate - 1) / rate * channels,
                               along.weights, along.size,
                               quotientBy(int64_t(down.total) * along.total),
                               [=](ptrdiff_t i) { return first - i * channels; });
        }
        shuffle<T>(rowOf<T>(dst, y), phases, length, roi.width, rate, channels);
    }
}

}  // namespace

const PyramidKernels pyramidKernels = {{down<uint8_t>, down<uint16_t>, down<float>},
                                       {up<uint8_t>, up<uint16_t>, up<float>}};

}  // namespace zmo::ZMO_LEVEL
