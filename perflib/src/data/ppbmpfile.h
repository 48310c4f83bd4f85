// Loader of uncompressed Windows bitmap files.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "psstring.h"

class ppImage;

// Fills an 8u image in pixel order. The first row of the file becomes row 0 and
// the order of the channels stays the file's (blue, green, red). Palette files of
// 1, 4 and 8 bits are looked up; files of 16, 24 and 32 bits are read straight
// into the image, whose rows are longer than the file's unless they match; one that
// is cut short loads as far as it goes, and a message says so.
class ppBmpFile {
  public:
    explicit ppBmpFile(ppImage& image) : m_image(image) {}

    // A relative name lies in the input directory. The argument goes to
    // ppImage::createImage. After a failure the image is as far as it was created.
    bool load(const psString& fileName, int firstPlaneOnly = 0);

    static constexpr int FileHeaderSize() { return 14; }
    static constexpr int InfoHeaderSize() { return 40; }
    // True for a palette file without compression, whatever the name says.
    bool IsCompressed() const;
    long long GetDataSize() const;
    long long GetDataStep() const;  // bytes of one row in the file
    int GetPaletteNum() const;
    bool IsGrayPalette() const;

    // Reports why the file is not loaded; false.
    bool error(const psString& text) const;

  private:
    struct Colour {
        unsigned char blue, green, red, reserved;
    };

    bool readHeaders(std::FILE* file);
    bool readPalette(std::FILE* file);
    bool CreateImage(int firstPlaneOnly);
    int SetImageChannels() const;
    bool isWorthTheFile() const;
    bool readPixels(std::FILE* file);
    void readColours(std::FILE* file);
    bool readIndices(std::FILE* file);
    void unpackRow(const unsigned char* bytes, int row);
    void SetPixel(int index, unsigned char* row, int x);

    ppImage& m_image;
    psString m_fileName;
    long long m_fileLength = 0;

    std::uint32_t bfOffBits = 0;
    std::int32_t biWidth = 0;
    std::int32_t biHeight = 0;
    std::uint16_t biPlanes = 0;
    std::uint16_t biBitCount = 0;
    std::uint32_t biCompression = 0;
    std::uint32_t biClrUsed = 0;
    std::array<Colour, 256> m_palette{};
    int m_channels = 0;
};
