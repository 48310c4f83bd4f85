#include "ppbmpfile.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

#include "ppimage.h"
#include "psstream.h"

using enum MessageLevel;

namespace {

constexpr int typeLittleEndian = 19778;  // the bytes "BM"
constexpr int typeBigEndian = 16973;     // the same swapped

// Fields of a header at their offset, in the byte order of the file.
class Header {
  public:
    Header(const unsigned char* bytes, bool bigEndian) : m_bytes(bytes), m_big(bigEndian) {}

    std::uint32_t field(int offset, int size) const {
        std::uint32_t value = 0;
        for (int i = 0; i < size; ++i) {
            const std::uint32_t byte = m_bytes[offset + (m_big ? i : size - 1 - i)];
            value = value << 8 | byte;
        }
        return value;
    }
    std::uint16_t u16(int offset) const { return static_cast<std::uint16_t>(field(offset, 2)); }
    std::uint32_t u32(int offset) const { return field(offset, 4); }
    std::int32_t s32(int offset) const { return static_cast<std::int32_t>(field(offset, 4)); }

  private:
    const unsigned char* m_bytes;
    bool m_big;
};

bool readBytes(std::FILE* file, void* p, std::size_t n) {
    return std::fread(p, 1, n, file) == n;
}

// The length of the file, as far as an image can use it; 0 for what has none.
// The file stands at its beginning afterwards.
long long lengthOf(std::FILE* file) {
    const long long length = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : 0;
    std::rewind(file);
    return std::clamp<long long>(length, 0, INT_MAX);
}

}  // namespace

bool ppBmpFile::error(const psString& text) const {
    g_ostrm << ERR << "--- Can't load file " << m_fileName << ": " << text << "\n" << END;
    return false;
}

bool ppBmpFile::load(const psString& fileName, int firstPlaneOnly) {
    m_fileName = fileName;
    const i_stream stream(fileName, io_stream::READ | io_stream::BINARY, false);
    if (!stream.isOpen()) return error(psString("Open fail: ") + std::strerror(stream.error()));
    std::FILE* file = stream.handle();
    m_fileLength = lengthOf(file);
    return readHeaders(file) && readPalette(file) && CreateImage(firstPlaneOnly) &&
           readPixels(file);
}

bool ppBmpFile::readHeaders(std::FILE* file) {
    unsigned char bytes[FileHeaderSize() + InfoHeaderSize()];
    if (!readBytes(file, bytes, FileHeaderSize())) return false;
    const int type = Header(bytes, false).u16(0);
    if (type != typeLittleEndian && type != typeBigEndian)
        return error("Bitmap files are valid only");
    const Header header(bytes, type == typeBigEndian);
    const std::uint32_t bfSize = header.u32(2);
    bfOffBits = header.u32(10);
    if (bfSize == 0 || bfOffBits < 1) return false;

    if (!readBytes(file, bytes + FileHeaderSize(), InfoHeaderSize())) return false;
    const std::uint32_t biSize = header.u32(14);
    biWidth = header.s32(18);
    biHeight = header.s32(22);
    biPlanes = header.u16(26);
    biBitCount = header.u16(28);
    biCompression = header.u32(30);
    biClrUsed = header.u32(46);
    constexpr int bitCounts[] = {1, 2, 4, 8, 16, 24, 32};
    return biSize != 0 && biWidth >= 1 && biHeight >= 1 && biPlanes == 1 &&
           std::ranges::find(bitCounts, biBitCount) != std::end(bitCounts) && header.s32(38) >= 0 &&
           header.s32(42) >= 0;
}

bool ppBmpFile::IsCompressed() const {
    return biBitCount <= 8 && biCompression == 0;
}

long long ppBmpFile::GetDataStep() const {
    return (static_cast<long long>(biBitCount) * biWidth + 31) / 32 * 4;
}

long long ppBmpFile::GetDataSize() const {
    return GetDataStep() * biHeight * biPlanes;
}

int ppBmpFile::GetPaletteNum() const {
    if (!IsCompressed()) return 0;
    const std::uint32_t all = 1U << biBitCount;
    return static_cast<int>(biClrUsed != 0 && biClrUsed < all ? biClrUsed : all);
}

// The palette follows the 40 bytes whatever the header says of its own size.
bool ppBmpFile::readPalette(std::FILE* file) {
    const auto bytes = static_cast<std::size_t>(GetPaletteNum()) * sizeof(Colour);
    return readBytes(file, m_palette.data(), bytes);
}

bool ppBmpFile::IsGrayPalette() const {
    return std::all_of(m_palette.begin(), m_palette.begin() + GetPaletteNum(),
                       [](const Colour& c) { return c.blue == c.green && c.green == c.red; });
}

int ppBmpFile::SetImageChannels() const {
    switch (biBitCount) {
        case 1:
        case 4:
        case 8:
            return IsGrayPalette() ? 1 : 3;
        case 16:
            return 2;
        case 24:
            return 3;
        case 32:
            return 4;
        default:
            return 0;
    }
}

bool ppBmpFile::CreateImage(int firstPlaneOnly) {
    m_channels = SetImageChannels();
    if (biCompression != 0) return error("Compression is not valid");
    if (biWidth <= 0) return error("Bitmap header is corrupted: biWidth is invalid");
    if (biHeight <= 0) return error("Bitmap header is corrupted: biHeight is invalid");
    if (m_channels == 0) return error("Bitmap header is corrupted: biBitCount is invalid");
    if (biPlanes != 1) return error("Bitmap header is corrupted: biPlanes is invalid");
    m_image.init(pp8u, m_channels, false);
    return isWorthTheFile() && m_image.createImage(biWidth, biHeight, 0, -1, firstPlaneOnly);
}

// A header may promise more than its file holds. Of a palette file all indices
// must be there. Direct colour loads as far as it goes, so a file that is cut
// short may ask for 64 MiB, or for 16 times its length (a row of one pixel takes
// 64 bytes in the image and 4 in the file).
bool ppBmpFile::isWorthTheFile() const {
    const long long bytes = ppImage::size(m_image.name(), biWidth, biHeight);
    if (bytes > INT_MAX)
        return error(psFormat("An image of %dx%d is too large", biWidth, biHeight));
    const long long held = m_fileLength - bfOffBits;
    if (IsCompressed()) return GetDataSize() <= held;
    if (bytes <= std::max(64LL << 20, 16 * m_fileLength)) return true;
    return error(
        psFormat("It holds %lld of %lld bytes of pixels", std::max(held, 0LL), GetDataSize()));
}

bool ppBmpFile::readPixels(std::FILE* file) {
    if (std::fseek(file, static_cast<long>(bfOffBits), SEEK_SET) != 0) return false;
    if (biBitCount <= 8) return readIndices(file);
    readColours(file);
    return true;
}

// What the file lacks stays zero.
void ppBmpFile::readColours(std::FILE* file) {
    const std::size_t read =
        std::fread(m_image.data(), 1, static_cast<std::size_t>(m_image.size()), file);
    const auto held = static_cast<long long>(read);
    if (held >= GetDataSize()) return;
    g_ostrm << ERR << "--- File " << m_fileName
            << psFormat(
                   " is cut short: %lld of %lld bytes of pixels are loaded, the rest is zero\n",
                   held, GetDataSize())
            << END;
}

bool ppBmpFile::readIndices(std::FILE* file) {
    std::vector<unsigned char> data(static_cast<std::size_t>(GetDataSize()));
    if (!readBytes(file, data.data(), data.size())) return false;
    for (int row = 0; row < biHeight; ++row) unpackRow(data.data() + GetDataStep() * row, row);
    return true;
}

void ppBmpFile::unpackRow(const unsigned char* bytes, int row) {
    auto* out = static_cast<unsigned char*>(m_image.getRowPointer(row));
    // Of single bits whole bytes run from the highest bit down, and the partial
    // byte at the end of a row from the lowest up.
    const int whole = biWidth & ~7;
    for (int x = 0; x < biWidth; ++x) {
        int index = 0;
        if (biBitCount == 8) {
            index = bytes[x];
        } else if (biBitCount == 4) {
            index = x % 2 == 0 ? bytes[x / 2] >> 4 : bytes[x / 2] & 15;
        } else if (x < whole) {
            index = (bytes[x / 8] << (x % 8)) & 128;
        } else {
            index = (bytes[x / 8] >> (x % 8)) & 1;
        }
        SetPixel(index, out, x);
    }
}

void ppBmpFile::SetPixel(int index, unsigned char* row, int x) {
    const auto entry = static_cast<std::size_t>(std::min(index, GetPaletteNum() - 1));
    const Colour& colour = m_palette[entry];
    unsigned char* pixel = row + static_cast<std::ptrdiff_t>(x) * m_channels;
    pixel[0] = colour.blue;
    if (m_channels == 1) return;
    pixel[1] = colour.green;
    pixel[2] = colour.red;
}
