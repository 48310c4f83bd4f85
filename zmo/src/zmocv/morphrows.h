// Rows for the passes of morphology: the lines of an image, or of an earlier pass, with the
// border's pixels on both sides, as many as the window of the pass still needs. 1u becomes words of
// 64 pixels, the first pixel in the most significant bit.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/image.h"

namespace zmo {

// bytes counts those of a pixel; 0: eight pixels a byte.
struct PixelFormat {
    ptrdiff_t bytes;
    ptrdiff_t channels;
    bool bits() const { return bytes == 0; }
};

// firstBit, 0 to 7, counts only for 1u.
struct MorphImage {
    char* data;
    ptrdiff_t step;
    int64_t firstBit;
};

// Size of a structuring element, and how far it reaches to the left of its pixel and above it.
struct Window {
    ptrdiff_t width;
    ptrdiff_t height;
    ptrdiff_t left;
    ptrdiff_t top;

    ptrdiff_t right() const { return width - 1 - left; }
    ptrdiff_t bottom() const { return height - 1 - top; }
    Window reflected() const { return {width, height, right(), bottom()}; }
};

// Bytes of a row of `pixels` and of the window around them, and of what kernels read beyond.
int64_t bytesOfExtendedRow(PixelFormat format, int64_t pixels, int64_t windowWidth);

// Cuts rows off the caller's work buffer.
class RowCarver {
  public:
    RowCarver(void* buffer, ptrdiff_t pitch);
    // Consecutive rows, pitch() bytes apart, zero from byte `used` on as far as loops may read.
    char* rows(ptrdiff_t count, ptrdiff_t used);
    ptrdiff_t pitch() const { return m_pitch; }
    template <class T>
    T* array(ptrdiff_t count) {
        return reinterpret_cast<T*>(take(count * static_cast<ptrdiff_t>(sizeof(T))));
    }

  private:
    char* take(ptrdiff_t bytes);

    char* m_next;
    ptrdiff_t m_pitch;
};

class ExtendedRows {
  public:
    // region: of the pass that reads these rows. block: rows that the pass makes at a time, as many
    // as the window is high. blocks: that are kept; two are enough for rows that are loaded one by
    // one.
    ExtendedRows(PixelFormat format, Region region, Window window, Border border, ptrdiff_t block,
                 ptrdiff_t blocks, RowCarver& carver);

    // The pixels that have to be loaded: the region, and in memory the window's reach around it.
    Region content() const { return m_content; }
    // Of the first region pixel in the content.
    ptrdiff_t originX() const { return m_inMemory ? m_window.left : 0; }
    ptrdiff_t originY() const { return m_inMemory ? m_window.top : 0; }

    // Rows are loaded in their order. A row's pixels are written to place(), then loaded() adds the
    // border on both sides. A block whose first number is a multiple of block lies in one piece.
    ptrdiff_t loadedCount() const { return m_loaded; }
    char* place(ptrdiff_t contentRow) const { return slot(contentRow) + m_contentOffset; }
    void finishRows(ptrdiff_t count);

    // The last content row that row y of the region needs.
    ptrdiff_t lastNeeded(ptrdiff_t y) const;
    // Row y of the region, -top to height - 1 + bottom, from the window's first pixel on; of words,
    // from the word that contains it: firstBit() is its number there.
    const char* row(ptrdiff_t y) const;
    ptrdiff_t firstBit() const { return m_firstBit; }
    // Elements of a row, or words; and as many as loops between work rows compute.
    ptrdiff_t elements() const { return m_elements; }
    ptrdiff_t paddedElements() const;
    ptrdiff_t usedBytes() const { return m_format.bits() ? 0 : m_elements * elementBytes(); }

  private:
    char* slot(ptrdiff_t contentRow) const { return m_rows + contentRow % m_capacity * m_pitch; }
    ptrdiff_t elementBytes() const {
        return m_format.bits() ? 8 : m_format.bytes / m_format.channels;
    }
    void fillConstantRow(char* row);
    void extendRow(char* row) const;
    void extendBits(char* row) const;

    PixelFormat m_format;
    Region m_region;
    Window m_window;
    Border m_border;
    bool m_inMemory;
    Region m_content;
    ptrdiff_t m_pitch;
    ptrdiff_t m_capacity;
    ptrdiff_t m_loaded = 0;
    ptrdiff_t m_contentOffset = 0;
    ptrdiff_t m_firstBit = 0;
    ptrdiff_t m_elements = 0;
    char* m_rows = nullptr;
    char* m_constant = nullptr;
};

// count pixels of an image row, its pixel x first. Nothing beyond the bytes of these is touched.
void loadPixels(PixelFormat format, const MorphImage& image, ptrdiff_t x, ptrdiff_t y,
                ptrdiff_t count, char* dst);
void storeBits(const char* words, const MorphImage& image, ptrdiff_t y, ptrdiff_t count);

}  // namespace zmo
