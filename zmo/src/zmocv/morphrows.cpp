#include "zmocv/morphrows.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

#include "zmocv/morph.h"

namespace zmo {
namespace {

constexpr ptrdiff_t wordBytes = 8;
constexpr ptrdiff_t wordBits = 64;
constexpr ptrdiff_t alignment = 64;

constexpr int64_t roundedUp(int64_t value, int64_t unit) {
    return (value + unit - 1) / unit * unit;
}

// The pixel inside 0..n-1 that stands for pixel i.
ptrdiff_t inside(ptrdiff_t i, ptrdiff_t n, ZmoiBorderType border) {
    if (i >= 0 && i < n) return i;
    if (border == zmoiBorderReplicate) return i < 0 ? 0 : n - 1;
    if (n == 1) return 0;
    const ptrdiff_t period = 2 * (n - 1);
    if (i < 0) i = -i;
    if (i >= period) i %= period;
    return i < n ? i : period - i;
}

template <ptrdiff_t bytes>
struct Pixel {
    char data[bytes];
};

// One pixel before the first of `count` pixels at `first`, counted from there, to `left` of them,
// and `right` of them behind the last one.
template <ptrdiff_t bytes>
void extend(char* first, ptrdiff_t count, ptrdiff_t left, ptrdiff_t right, Border border) {
    Pixel<bytes>* const pixels = reinterpret_cast<Pixel<bytes>*>(first);
    if (border.type == zmoiBorderMirror) {
        for (ptrdiff_t i = -left; i < 0; ++i) pixels[i] = pixels[inside(i, count, border.type)];
        for (ptrdiff_t i = count; i < count + right; ++i) {
            pixels[i] = pixels[inside(i, count, border.type)];
        }
        return;
    }
    Pixel<bytes> before = pixels[0];
    Pixel<bytes> behind = pixels[count - 1];
    if (border.type == zmoiBorderConst) {
        std::memcpy(&before, border.value, sizeof before);
        behind = before;
    }
    std::fill(pixels - left, pixels, before);
    std::fill(pixels + count, pixels + count + right, behind);
}

bool bitOf(const uint64_t* words, ptrdiff_t i) {
    return ((words[i / wordBits] >> (wordBits - 1 - i % wordBits)) & 1) != 0;
}

// Bits first to last - 1.
void setBits(uint64_t* words, ptrdiff_t first, ptrdiff_t last, bool on) {
    while (first < last) {
        const ptrdiff_t word = first / wordBits;
        const ptrdiff_t end = std::min(last, (word + 1) * wordBits);
        const uint64_t mask = ~uint64_t{0} >> (wordBits - (end - first))
                                                  << ((word + 1) * wordBits - end);
        words[word] = on ? words[word] | mask : words[word] & ~mask;
        first = end;
    }
}

bool constantBit(Border border) {
    return *static_cast<const uint8_t*>(border.value) != 0;
}

uint64_t bigEndian(const uint8_t* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

// The first `count` bits, 1 to 64, behind bit `first`, 0 to 7, of bytes; the rest is 0.
uint64_t bitsAt(const uint8_t* bytes, int first, ptrdiff_t count) {
    uint64_t word = 0;
    if (first + count >= wordBits) {
        word = bigEndian(bytes) << first;
        if (first + count > wordBits) word |= uint64_t{bytes[8]} >> (8 - first);
    } else {
        for (ptrdiff_t i = 0; i * 8 < first + count; ++i) {
            word |= uint64_t{bytes[i]} << (wordBits - 8 - 8 * i);
        }
        word <<= first;
    }
    return count == wordBits ? word : word >> (wordBits - count) << (wordBits - count);
}

// Writes the bits of `mine`; bytes without one are not touched.
void storeMine(uint64_t word, uint64_t mine, uint8_t* bytes) {
    if (mine == ~uint64_t{0}) {
        word = bigEndian(reinterpret_cast<const uint8_t*>(&word));
        std::memcpy(bytes, &word, sizeof word);
        return;
    }
    for (ptrdiff_t shift = wordBits - 8; shift >= 0; shift -= 8, ++bytes) {
        const uint64_t mask = (mine >> shift) & 0xff;
        if (mask != 0) {
            *bytes = static_cast<uint8_t>((*bytes & ~mask) | ((word >> shift) & mask));
        }
    }
}

void loadBits(const MorphImage& image, ptrdiff_t x, ptrdiff_t y, ptrdiff_t count, char* dst) {
    const ptrdiff_t bit = static_cast<ptrdiff_t>(image.firstBit) + x;
    const ptrdiff_t byte = bit >= 0 ? bit / 8 : -((7 - bit) / 8);
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(image.data) + y * image.step + byte;
    const int first = static_cast<int>(bit - byte * 8);
    uint64_t* word = reinterpret_cast<uint64_t*>(dst);
    for (ptrdiff_t done = 0; done < count; done += wordBits, bytes += wordBytes) {
        *word++ = bitsAt(bytes, first, std::min(wordBits, count - done));
    }
}

}  // namespace

int64_t bytesOfExtendedRow(PixelFormat format, int64_t pixels, int64_t windowWidth) {
    if (!format.bits()) {
        return roundedUp((pixels + windowWidth - 1) * format.bytes, alignment) + 2 * morphPadding;
    }
    const int64_t words = roundedUp(pixels, wordBits) / wordBits + 2 * (windowWidth / wordBits) + 8;
    return roundedUp(words * wordBytes, alignment);
}

RowCarver::RowCarver(void* buffer, ptrdiff_t pitch)
    : m_next(static_cast<char*>(buffer)), m_pitch(pitch) {
    const auto address = reinterpret_cast<uintptr_t>(m_next);
    m_next += roundedUp(static_cast<int64_t>(address % alignment), alignment) -
              static_cast<int64_t>(address % alignment);
}

char* RowCarver::take(ptrdiff_t bytes) {
    char* const start = m_next;
    m_next += roundedUp(bytes, alignment);
    return start;
}

char* RowCarver::rows(ptrdiff_t count, ptrdiff_t used) {
    char* const start = take(count * m_pitch);
    // Words, of which nothing counts as used, are read farther than elements.
    const ptrdiff_t zeros = used == 0 ? m_pitch : std::min(m_pitch - used, 3 * morphPadding);
    for (ptrdiff_t i = 0; i < count; ++i) {
        std::memset(start + i * m_pitch + used, 0, static_cast<size_t>(zeros));
    }
    return start;
}

ExtendedRows::ExtendedRows(PixelFormat format, Region region, Window window, Border border,
                           ptrdiff_t block, ptrdiff_t blocks, RowCarver& carver)
    : m_format(format),
      m_region(region),
      m_window(window),
      m_border(border),
      m_inMemory(border.type == zmoiBorderInMem),
      m_content(region),
      m_pitch(carver.pitch()),
      m_capacity(blocks * block) {
    if (m_inMemory) {
        m_content.width += window.width - 1;
        m_content.height += window.height - 1;
    }
    const ptrdiff_t left = m_inMemory ? 0 : window.left;
    const ptrdiff_t width = region.width + window.width - 1;
    if (format.bits()) {
        // Content begins with a word.
        const ptrdiff_t padding = roundedUp(left, wordBits);
        m_contentOffset = padding / 8;
        m_firstBit = padding - left;
        m_elements = roundedUp(m_firstBit + width, wordBits) / wordBits;
    } else {
        m_contentOffset = left * format.bytes;
        m_elements = width * format.channels;
    }
    m_rows = carver.rows(m_capacity, usedBytes());
    if (border.type == zmoiBorderConst) {
        m_constant = carver.rows(1, usedBytes());
        fillConstantRow(m_constant);
    }
}

ptrdiff_t ExtendedRows::paddedElements() const {
    if (m_format.bits()) return m_elements;
    return roundedUp(usedBytes(), morphPadding) / elementBytes();
}

void ExtendedRows::fillConstantRow(char* row) {
    if (m_format.bits()) {
        std::memset(row, constantBit(m_border) ? 0xff : 0, static_cast<size_t>(m_pitch));
        return;
    }
    const ptrdiff_t width = m_region.width + m_window.width - 1;
    for (ptrdiff_t x = 0; x < width; ++x) {
        std::memcpy(row + x * m_format.bytes, m_border.value, static_cast<size_t>(m_format.bytes));
    }
}

void ExtendedRows::extendBits(char* row) const {
    uint64_t* const words = reinterpret_cast<uint64_t*>(row);
    const ptrdiff_t first = m_contentOffset * 8;
    const ptrdiff_t end = m_region.width + m_window.right();
    if (m_border.type == zmoiBorderMirror) {
        const auto mirror = [&](ptrdiff_t i) {
            const bool on = bitOf(words, first + inside(i, m_region.width, m_border.type));
            setBits(words, first + i, first + i + 1, on);
        };
        for (ptrdiff_t i = -m_window.left; i < 0; ++i) mirror(i);
        for (ptrdiff_t i = m_region.width; i < end; ++i) mirror(i);
        return;
    }
    const bool constant = m_border.type == zmoiBorderConst;
    const auto extension = [&](ptrdiff_t i) {
        return constant ? constantBit(m_border) : bitOf(words, first + i);
    };
    setBits(words, first - m_window.left, first, extension(0));
    setBits(words, first + m_region.width, first + end, extension(m_region.width - 1));
}

void ExtendedRows::extendRow(char* row) const {
    char* const first = row + m_contentOffset;
    const auto extendBy = [&](auto bytes) {
        extend<bytes()>(first, m_region.width, m_window.left, m_window.right(), m_border);
    };
    switch (m_format.bytes) {
        case 0:
            return extendBits(row);
        case 1:
            return extendBy(std::integral_constant<ptrdiff_t, 1>());
        case 2:
            return extendBy(std::integral_constant<ptrdiff_t, 2>());
        case 3:
            return extendBy(std::integral_constant<ptrdiff_t, 3>());
        case 4:
            return extendBy(std::integral_constant<ptrdiff_t, 4>());
        case 12:
            return extendBy(std::integral_constant<ptrdiff_t, 12>());
        default:
            return extendBy(std::integral_constant<ptrdiff_t, 16>());
    }
}

void ExtendedRows::finishRows(ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count && !m_inMemory; ++i) extendRow(slot(m_loaded + i));
    m_loaded += count;
}

ptrdiff_t ExtendedRows::lastNeeded(ptrdiff_t y) const {
    return std::min(y + m_window.bottom() + originY(), m_content.height - 1);
}

const char* ExtendedRows::row(ptrdiff_t y) const {
    if (m_inMemory) return slot(y + m_window.top);
    if (m_constant != nullptr && (y < 0 || y >= m_region.height)) return m_constant;
    return slot(inside(y, m_region.height, m_border.type));
}

void loadPixels(PixelFormat format, const MorphImage& image, ptrdiff_t x, ptrdiff_t y,
                ptrdiff_t count, char* dst) {
    if (format.bits()) return loadBits(image, x, y, count, dst);
    std::memcpy(dst, image.data + y * image.step + x * format.bytes,
                static_cast<size_t>(count * format.bytes));
}

void storeBits(const char* words, const MorphImage& image, ptrdiff_t y, ptrdiff_t count) {
    const uint64_t* const from = reinterpret_cast<const uint64_t*>(words);
    uint8_t* bytes = reinterpret_cast<uint8_t*>(image.data) + y * image.step;
    const int first = static_cast<int>(image.firstBit);
    const ptrdiff_t end = first + count;
    for (ptrdiff_t i = 0; i * wordBits < end; ++i, bytes += wordBytes) {
        uint64_t word = from[i] >> first;
        if (first > 0 && i > 0) word |= from[i - 1] << (wordBits - first);
        uint64_t mine = ~uint64_t{0};
        if (i == 0) mine >>= first;
        if ((i + 1) * wordBits > end) mine &= ~uint64_t{0} << ((i + 1) * wordBits - end);
        storeMine(word, mine, bytes);
    }
}

}  // namespace zmo
