// Test kit of the zmo library: guarded images, seeded data, a loop over processor levels, and calls that
// watch the floating-point flags. A family's test needs an oracle and one call of its function (call.h)
// inside these loops.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "zmotypes.h"

inline bool operator==(ZmoiSize a, ZmoiSize b) {
    return a.width == b.width && a.height == b.height;
}
inline std::ostream& operator<<(std::ostream& out, ZmoiSize size) {
    return out << size.width << "x" << size.height;
}

namespace kit {

// Tests that walk over many cases take fewer under the sanitizers.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer);
#else
constexpr bool sanitized = false;
#endif

// The seed of this run: ZMO_TEST_SEED from the environment, or a fresh one. It is printed once.
uint64_t runSeed();

class Random {
  public:
    // stream tells apart the generators of one run.
    explicit Random(uint64_t stream = 0) : m_state(runSeed() + stream * 0x9e3779b97f4a7c15U) {}

    uint64_t bits();
    // Uniform, both ends included.
    int64_t between(int64_t low, int64_t high);
    double uniform(double low, double high);
    template <class T>
    T pick(const std::vector<T>& from) {
        return from[static_cast<size_t>(between(0, static_cast<int64_t>(from.size()) - 1))];
    }

  private:
    uint64_t m_state;
};

// Where an image lies: its first pixel `misalign` bytes off a 64-byte boundary, `padding` elements
// between the end of a row and the next row.
struct Layout {
    int misalign = 0;
    int padding = 0;
};
inline std::ostream& operator<<(std::ostream& out, Layout layout) {
    return out << "misalign " << layout.misalign << " padding " << layout.padding;
}

std::vector<Layout> layouts();

// Regions that are small, narrow, and just around the lengths of vectors.
std::vector<ZmoiSize> sizes();

// Copies of a block lie as it does.
template <class T>
struct OnCacheLines {
    using value_type = T;
    T* allocate(size_t n) {
        return static_cast<T*>(::operator new (n * sizeof(T), std::align_val_t{64}));
    }
    void deallocate(T* memory, size_t) { ::operator delete (memory, std::align_val_t{64}); }
    bool operator==(const OnCacheLines&) const = default;
};

// Memory with a fixed pattern around the rows that belong to the test.
class Block {
  public:
    // Remembers the present content for the two checks below.
    void snapshot() const { m_before = m_storage; }
    // No byte outside the rows changed since the snapshot.
    void expectSurroundingsUntouched(const std::string& name) const;
    // No byte at all changed since the snapshot.
    void expectUntouched(const std::string& name) const;
    // The content of the snapshot again.
    void restore() { m_storage = m_before; }
    int64_t rowBytes() const { return m_rows.bytes; }

  protected:
    struct Own {
        int64_t first;  // byte of the memory
        int64_t step;
        int64_t bytes;
        int64_t count;
    };
    Block(int64_t bytes, int misalign, Own rows);

    unsigned char* data() { return m_storage.data() + m_start; }
    const unsigned char* data() const { return m_storage.data() + m_start; }

  private:
    Own m_rows;
    size_t m_start;
    using Bytes = std::vector<unsigned char, OnCacheLines<unsigned char>>;
    Bytes m_storage;
    mutable Bytes m_before;
};

// body(x, y) for all pixels, in reading order.
template <class Body>
void forEachPixel(ZmoiSize size, Body body) {
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) body(x, y);
    }
}
inline bool contains(ZmoiSize size, int x, int y) {
    return x >= 0 && y >= 0 && x < size.width && y < size.height;
}
// The place of a pixel in a list of all of them.
inline size_t indexIn(ZmoiSize size, int x, int y) {
    return static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x);
}

// An image in guarded memory, with `margin` readable pixels around the region.
template <class T>
class Image : public Block {
  public:
    explicit Image(ZmoiSize size, Layout layout = {}, int margin = 0, int channels = 1)
        : Image(size, layout, margin, channels,
                (size.width + 2 * margin) * channels + layout.padding) {}

    ZmoiSize size() const { return m_size; }
    int channels() const { return m_channels; }
    int step() const { return m_stepElements * static_cast<int>(sizeof(T)); }
    T* ptr() { return reinterpret_cast<T*>(data() + offset(0, 0, 0)); }
    const T* ptr() const { return reinterpret_cast<const T*>(data() + offset(0, 0, 0)); }

    T get(int x, int y, int channel = 0) const {
        T value;
        std::memcpy(&value, data() + offset(x, y, channel), sizeof(T));
        return value;
    }
    void set(int x, int y, T value) { set(x, y, 0, value); }
    void set(int x, int y, int channel, T value) {
        std::memcpy(data() + offset(x, y, channel), &value, sizeof(T));
    }

    // Every element of the region and its margin becomes draw(), draw(x, y) or draw(x, y, channel).
    template <class Draw>
    Image& fill(Draw draw) {
        for (int y = -m_margin; y < m_size.height + m_margin; ++y) {
            for (int x = -m_margin; x < m_size.width + m_margin; ++x) {
                for (int c = 0; c < m_channels; ++c) {
                    if constexpr (std::is_invocable_v<Draw>) {
                        set(x, y, c, static_cast<T>(draw()));
                    } else {
                        set(x, y, c, static_cast<T>(told(draw, x, y, c)));
                    }
                }
            }
        }
        snapshot();
        return *this;
    }
    template <class Of>
    static auto told(Of& of, int x, int y, int c) {
        if constexpr (std::is_invocable_v<Of&, int, int, int>) {
            return of(x, y, c);
        } else {
            return of(x, y);
        }
    }

  private:
    Image(ZmoiSize size, Layout layout, int margin, int channels, int stepElements)
        : Block(int64_t{stepElements} * int64_t{sizeof(T)} * (size.height + 2 * margin),
                layout.misalign,
                {(int64_t{margin} * stepElements + margin * channels) * int64_t{sizeof(T)},
                 int64_t{stepElements} * int64_t{sizeof(T)},
                 int64_t{size.width} * channels * int64_t{sizeof(T)}, size.height}),
          m_size(size),
          m_margin(margin),
          m_channels(channels),
          m_stepElements(stepElements) {}

    ptrdiff_t offset(int x, int y, int channel) const {
        const ptrdiff_t row = static_cast<ptrdiff_t>(y + m_margin) * m_stepElements;
        return (row + static_cast<ptrdiff_t>(x + m_margin) * m_channels + channel) *
               static_cast<ptrdiff_t>(sizeof(T));
    }

    ZmoiSize m_size;
    int m_margin;
    int m_channels;
    int m_stepElements;
};

// A state or a work buffer of exactly the size that a query told.
class Buffer : public Block {
  public:
    explicit Buffer(int64_t size, int misalign = 1)
        : Block(size, misalign, {0, size, size, 1}), m_size(static_cast<int>(size)) {}
    Zmo8u* ptr() { return data(); }
    const Zmo8u* ptr() const { return data(); }
    int size() const { return m_size; }
    void expectSurroundingsUntouched() const { Block::expectSurroundingsUntouched("buffer"); }

  private:
    int m_size;
};

// The code of the element type.
template <class T>
inline constexpr ZmoDataType typeOf = std::is_same_v<T, Zmo8u>    ? zmo8u
                                      : std::is_same_v<T, Zmo8s>  ? zmo8s
                                      : std::is_same_v<T, Zmo16u> ? zmo16u
                                      : std::is_same_v<T, Zmo16s> ? zmo16s
                                      : std::is_same_v<T, Zmo32s> ? zmo32s
                                      : std::is_same_v<T, Zmo32f> ? zmo32f
                                                                  : zmo64f;

// Runs body at every level that the processor has, and says which ones it lacks. The library is at
// its best level afterwards.
struct LevelInfo {
    const char* name;
    Zmo64u mask;
};
const std::vector<LevelInfo>& allLevels();
// How many of them the processor has.
size_t levelsHere();
void forEachLevel(const std::function<void()>& body);
// Of long tests: under the sanitizers at the best level only.
inline void forLevels(const std::function<void()>& body) {
    sanitized ? body() : forEachLevel(body);
}

// Makes a call and checks that it raises no floating-point flag but "inexact".
ZmoStatus watched(const std::function<ZmoStatus()>& call);

template <class T>
bool sameBits(T a, T b) {
    using Bytes = std::array<unsigned char, sizeof(T)>;
    return std::bit_cast<Bytes>(a) == std::bit_cast<Bytes>(b);
}

// Every element of the region has the bits that expected(x, y, channel), or expected(x, y) of an image
// of one channel, tells; prints the first that has not.
template <class T, class Expected>
void expectPixels(const Image<T>& image, Expected expected) {
    for (int y = 0; y < image.size().height; ++y) {
        for (int x = 0; x < image.size().width; ++x) {
            for (int c = 0; c < image.channels(); ++c) {
                const T want = static_cast<T>(image.told(expected, x, y, c));
                const T have = image.get(x, y, c);
                if (sameBits(want, have)) continue;
                ADD_FAILURE() << "pixel (" << x << ", " << y << ") of " << image.size()
                              << " channel " << c << " is " << +have << " instead of " << +want
                              << "; ZMO_TEST_SEED=" << runSeed();
                return;
            }
        }
    }
}
template <class T>
void expectPixels(const Image<T>& image, const Image<T>& want) {
    expectPixels(image, [&](int x, int y, int c) { return want.get(x, y, c); });
}

}  // namespace kit
