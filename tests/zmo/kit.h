// Test kit of the zmo library: guarded images, seeded data, a loop over processor levels, and calls
// that watch the floating-point flags. A family's test needs an oracle and cases (case.h).
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <ostream>
#include <span>
#include <string>
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
constexpr bool sanitized = SANITIZED;

// The seed of this run: ZMO_TEST_SEED from the environment, or a fresh one. It is printed once.
uint64_t runSeed();

class Random {
  public:
    // The stream distinguishes the generators of one run.
    explicit Random(uint64_t stream = 0) : m_state(runSeed() + stream * 0x9e3779b97f4a7c15U) {}

    uint64_t bits();
    // Whole numbers, both ends included.
    template <class Low, class High>
    std::common_type_t<Low, High> between(Low low, High high) {
        return static_cast<std::common_type_t<Low, High>>(
            whole(static_cast<int64_t>(low), static_cast<int64_t>(high)));
    }
    double uniform(double low, double high);
    template <class T>
    T pick(const std::vector<T>& from) {
        return from[between(size_t{0}, from.size() - 1)];
    }

  private:
    int64_t whole(int64_t low, int64_t high);

    uint64_t m_state;
};

// Where an image lies: its first pixel `misalign` bytes off a 64-byte boundary, `padding` elements
// between the end of a row and the next row.
struct Layout {
    int misalign = 0;
    int padding = 0;
};

std::vector<Layout> layouts();

// Regions that are small, narrow, and just around the lengths of vectors.
std::vector<ZmoiSize> sizes();

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
    size_t rowBytes() const { return static_cast<size_t>(m_rows.bytes); }

  protected:
    struct Own {
        int64_t first;  // byte of the memory
        int64_t step;
        int64_t bytes;
        int64_t count;
    };
    Block(int64_t bytes, int misalign, Own rows);

    unsigned char* data() { return m_storage.front().bytes.data() + m_start; }
    const unsigned char* data() const { return m_storage.front().bytes.data() + m_start; }

  private:
    // Copies lie as the original does.
    struct alignas(64) CacheLine {
        std::array<unsigned char, 64> bytes;
        bool operator==(const CacheLine&) const = default;
    };
    int64_t size() const { return static_cast<int64_t>(m_storage.size() * sizeof(CacheLine)); }

    Own m_rows;
    int64_t m_start;
    std::vector<CacheLine> m_storage;
    mutable std::vector<CacheLine> m_before;
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

// Single precision: of one operation on singles, rounding twice makes no difference.
inline double single(double value) {
    return static_cast<float>(value);
}

class Image;

// A number for each pixel: the same for all, an image's, or what a function of (x, y, channel), of
// (x, y) or of nothing returns.
class Pixels {
  public:
    template <class Of>
    Pixels(Of of) {
        if constexpr (std::is_arithmetic_v<Of>) {
            m_of = [value = static_cast<double>(of)](int, int, int) { return value; };
        } else if constexpr (std::is_invocable_v<Of&, int, int, int>) {
            m_of = std::move(of);
        } else if constexpr (std::is_invocable_v<Of&, int, int>) {
            m_of = [of](int x, int y, int) mutable { return static_cast<double>(of(x, y)); };
        } else {
            m_of = [of](int, int, int) mutable { return static_cast<double>(of()); };
        }
    }
    Pixels(const Image& image);
    Pixels(Image& image) : Pixels(std::as_const(image)) {}

    double operator()(int x, int y, int channel) const { return m_of(x, y, channel); }

  private:
    std::function<double(int, int, int)> m_of;
};

// The code of an element type, 0 of others.
template <class T>
inline constexpr ZmoDataType typeOf = std::is_same_v<T, Zmo8u>    ? zmo8u
                                      : std::is_same_v<T, Zmo8s>  ? zmo8s
                                      : std::is_same_v<T, Zmo16u> ? zmo16u
                                      : std::is_same_v<T, Zmo16s> ? zmo16s
                                      : std::is_same_v<T, Zmo32s> ? zmo32s
                                      : std::is_same_v<T, Zmo32f> ? zmo32f
                                      : std::is_same_v<T, Zmo64f> ? zmo64f
                                                                  : ZmoDataType();

// An image in guarded memory, with `margin` readable pixels around the region. Its pixels are seen
// as doubles, which hold all types exactly.
class Image : public Block {
  public:
    Image(ZmoDataType type, ZmoiSize size, Layout layout = {}, int margin = 0, int channels = 1);
    // Numbers of an oracle.
    explicit Image(ZmoiSize size, const Pixels& numbers = 0, int margin = 0, int channels = 1);

    ZmoDataType type() const { return m_type; }
    ZmoiSize size() const { return m_size; }
    int channels() const { return m_channels; }
    int64_t step() const { return m_step; }
    char* ptr(int y = 0) { return reinterpret_cast<char*>(data() + offset(0, y, 0)); }
    const char* ptr(int y = 0) const { return const_cast<Image*>(this)->ptr(y); }
    // The largest and the smallest value of an integer type, 0 of floats.
    double most() const;
    double least() const;
    bool isWhole() const { return most() != 0; }
    // As the type stores a value: integers rounded half to even and saturated.
    double stored(double value) const;

    double operator()(int x, int y, int channel = 0) const {
        double number;
        if (m_type != zmo64f) return read(offset(x, y, channel));
        std::memcpy(&number, data() + offset(x, y, channel), sizeof(number));
        return number;
    }
    void set(int x, int y, double value, int channel = 0);
    // Every pixel of the region and its margin.
    Image& fill(const Pixels& pixels);
    Image& fillBits(Random& random);
    // The same as numbers, with the margin.
    Image numbers() const { return Image(m_size, *this, m_margin, m_channels); }
    // An image of this kind without surroundings.
    Image alike(const Pixels& pixels) const {
        return Image(m_type, m_size, {}, 0, m_channels).fill(pixels);
    }
    // An image of this kind; each pixel has the bits of the source's at from(x, y).
    Image alikeOf(const Image& source, const std::function<ZmoiPoint(int, int)>& from) const;
    // Every pixel of the region has these bits; prints the first that has not.
    void expect(const Image& want) const;

  private:
    Image(ZmoDataType type, ZmoiSize size, int misalign, int margin, int channels, int64_t step);

    ptrdiff_t offset(int x, int y, int channel) const {
        return (y + m_margin) * m_step +
               ((x + m_margin) * ptrdiff_t{m_channels} + channel) * m_element;
    }
    double read(ptrdiff_t offset) const;
    template <class Body>
    void forEachElement(int margin, Body body) const;

    ZmoDataType m_type;
    ZmoiSize m_size;
    int m_margin;
    int m_channels;
    int m_element;
    int64_t m_step;
};

inline Pixels::Pixels(const Image& image)
    : m_of([&image](int x, int y, int c) { return image(x, y, c); }) {}

// A state, a work buffer of exactly the size that a query gave, or a list.
class Buffer : public Block {
  public:
    explicit Buffer(int64_t size, int misalign = 1)
        : Block(size, misalign, {0, size, size, 1}), m_size(static_cast<int>(size)) {}
    template <class T>
    explicit Buffer(const std::vector<T>& list)
        : Buffer(static_cast<int64_t>(list.size() * sizeof(T)), 0) {
        std::ranges::copy(std::as_bytes(std::span(list)), reinterpret_cast<std::byte*>(ptr()));
        snapshot();
    }
    Zmo8u* ptr() { return data(); }
    const Zmo8u* ptr() const { return data(); }
    int size() const { return m_size; }

  private:
    int m_size;
};

// Runs body at every level that the processor has, and prints which ones it lacks. The library is
// at its best level afterwards.
struct LevelInfo {
    const char* name;
    Zmo64u mask;
};
const std::vector<LevelInfo>& allLevels();
void forEachLevel(const std::function<void()>& body);
// Of long tests: under the sanitizers at the best level only.
inline void forLevels(const std::function<void()>& body) {
    sanitized ? body() : forEachLevel(body);
}

// Makes a call and checks that it raises no floating-point flag but "inexact".
ZmoStatus watched(const std::function<ZmoStatus()>& call);

}  // namespace kit
