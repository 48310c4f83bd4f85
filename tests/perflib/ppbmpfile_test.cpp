#include "ppbmpfile.h"

#include <numeric>

#include "ppimage.h"
#include "pppicture.h"
#include "psdata.h"
#include "unit.h"

namespace {

using Bytes = std::vector<unsigned char>;

// A bitmap file written by hand; every field can lie.
struct Bmp {
    int bits = 8;
    std::int64_t width = 3, height = 2;
    std::vector<std::uint32_t> palette = {};  // 0xRRGGBB
    Bytes pixels = {};
    bool bigEndian = false;
    int compression = 0, bfSize = 1, biSize = 40;
    std::uint32_t clrUsed = 0;
    std::int64_t offBits = -1;  // -1: right behind the palette
    int planes = 1, xPels = 0, yPels = 0;
    std::string magic = "BM";
    std::size_t cut = SIZE_MAX;  // the file ends here

    Bytes bytes() const {
        Bytes out(magic.begin(), magic.end());
        if (bigEndian) std::swap(out[0], out[1]);
        const auto put = [&](std::int64_t value, int size) {
            for (int i = 0; i < size; ++i) {
                const int shift = 8 * (bigEndian ? size - 1 - i : i);
                out.push_back(static_cast<unsigned char>(value >> shift));
            }
        };
        const std::int64_t fields[][2] = {
            {bfSize, 4},  {0, 4},     {offBits >= 0 ? offBits : 54 + 4 * std::ssize(palette), 4},
            {biSize, 4},  {width, 4}, {height, 4},
            {planes, 2},  {bits, 2},  {compression, 4},
            {0, 4},       {xPels, 4}, {yPels, 4},
            {clrUsed, 4}, {0, 4}};
        for (const auto& [value, size] : fields) put(value, static_cast<int>(size));
        for (const std::uint32_t colour : palette) {  // bytes, whatever the byte order
            for (int i = 0; i < 4; ++i)
                out.push_back(static_cast<unsigned char>(colour >> (8 * i)));
        }
        out.insert(out.end(), pixels.begin(), pixels.end());
        out.resize(std::min(cut, out.size()));
        return out;
    }
};

std::vector<std::uint32_t> greys(std::size_t n) {
    std::vector<std::uint32_t> palette(n);
    for (std::size_t i = 0; i < n; ++i)
        palette[i] = static_cast<std::uint32_t>((i * 3 + 1) % 256 * 0x010101);
    return palette;
}

class PpBmpFile : public testing::Test {
  protected:
    // Loads the file; the messages go into m_messages.
    bool load(const Bmp& bmp) { return load(write(bmp)); }
    bool load(const psString& path) {
        m_image.deleteVector();
        MessageCapture messages(showErrors);
        const bool loaded = m_image.loadImage(path);
        m_messages = messages.text();
        return loaded;
    }
    psString write(const Bmp& bmp) const {
        const Bytes bytes = bmp.bytes();
        return m_dir.write("x.bmp", std::string(bytes.begin(), bytes.end()));
    }
    const TempDir m_dir = {};
    ppImage m_image;
    std::string m_messages;
};

TEST_F(PpBmpFile, LooksPalettesUp) {
    const std::vector<std::uint32_t> all = greys(256), sixteen = greys(16);
    std::vector<std::uint32_t> coloured = all;
    coloured[255] = 0x102030;
    const Bytes eight{0, 1, 2, 9, 85, 255, 7, 9}, four{0x12, 0x3F, 0, 0, 0xF0, 0x40, 0, 0};
    // Whole bytes from the highest bit, the rest of the row from the lowest.
    const Bytes one{0b10000010, 0b00000001, 0, 0};
    const std::pair<Bmp, const char*> cases[] = {
        {{.palette = all, .pixels = eight}, "_8u_C1   1   4   7\n   0 254  22"},
        {{.palette = coloured, .pixels = eight},
         "_8u_C3   1   1   1   4   4   4   7   7   7\n   0   0   0  48  32  16  22  22  22"},
        {{.bits = 4, .palette = sixteen, .pixels = four}, "_8u_C1   4   7  10\n  46   1  13"},
        {{.bits = 1, .width = 10, .height = 1, .palette = {0x050505, 0x090909}, .pixels = one},
         "_8u_C1   9   5   5   5   5   5   9   5   9   5"},
        // The index is clamped to the last entry.
        {{.width = 2, .height = 1, .palette = greys(3), .pixels = {2, 200, 0, 0}, .clrUsed = 3},
         "_8u_C1   7   7"},
        {{.bits = 4, .width = 2, .height = 1, .palette = sixteen, .pixels = four, .clrUsed = 16},
         "_8u_C1   4   7"}};
    for (const auto& [picture, text] : cases) {
        for (bool bigEndian : {false, true}) {
            Bmp bmp = picture;
            bmp.bigEndian = bigEndian;
            ASSERT_TRUE(load(bmp)) << text << m_messages;
            EXPECT_EQ(str(m_image.name() + m_image.getString()), text);
        }
    }
}

// This runs in a process of its own, since a picture stays loaded.
TEST_F(PpBmpFile, IsDrawnInGreyAsTheEyeWeighsColours) {
    // Blue, green, red.
    const Bmp bmp{.bits = 24, .height = 1, .pixels = {255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0}};
    const auto isWeighed = [&] {
        Picture.setValue(write(bmp));
        ppImage grey(pp8u, 1, false);
        return grey.createImage(3, 1) && ppDrawPicture(grey) && grey.getString() == "  29 150  76";
    };
    EXPECT_EQ(inChild(isWeighed), 0);
}

TEST_F(PpBmpFile, ReadsDirectColourAsItStands) {
    const std::pair<int, const char*> cases[] = {{16, "_8u_C2"}, {24, "_8u_C3"}, {32, "_8u_AC4"}};
    for (const auto& [bits, name] : cases) {
        // The file's rows are shorter than the image's: all of them fall into row 0.
        Bmp bmp{.bits = bits, .pixels = Bytes(24)};
        std::iota(bmp.pixels.begin(), bmp.pixels.end(), static_cast<unsigned char>(1));
        ASSERT_TRUE(load(bmp)) << bits;
        EXPECT_STREQ(m_image.name().c_str(), name);
        const auto* first = static_cast<unsigned char*>(m_image.getRowPointer(0));
        EXPECT_TRUE(std::equal(bmp.pixels.begin(), bmp.pixels.end(), first));
        EXPECT_TRUE(first[24] == 0 && m_image.getImageAt(0, 1, 0) == 0);
    }
    // A row that equals the step arrives row by row.
    Bmp bmp{.bits = 32, .width = 16, .height = 2, .pixels = Bytes(128, 9)};
    bmp.pixels[64] = 77;
    ASSERT_TRUE(load(bmp));
    EXPECT_EQ(m_image.getImageAt(0, 1, 0), 77);
    EXPECT_EQ(m_image.getImageAt(15, 1, 3), 9);
    EXPECT_EQ(m_messages, "");
    bmp.cut = 54 + 65;
    ASSERT_TRUE(load(bmp)) << "a truncated one loads";
    EXPECT_EQ(m_messages, "--- File " + str(m_dir / "x.bmp") +
                              " is cut short: 65 of 128 bytes of pixels are loaded, the rest is "
                              "zero\n");
    EXPECT_EQ(m_image.getImageAt(0, 1, 0), 77);
    EXPECT_EQ(m_image.getImageAt(1, 1, 0), 0);
}

TEST_F(PpBmpFile, TakesPixelsFromTheirOffset) {
    Bmp bmp{.palette = greys(256),
            .pixels = {9, 9, 9, 9, 9, 9, 9, 9, 0, 1, 2, 0, 2, 1, 0, 0},
            .offBits = 54 + 1024 + 8};
    bmp.biSize = 124;  // the palette follows the 40 bytes whatever this says
    ASSERT_TRUE(load(bmp));
    EXPECT_EQ(str(m_image.getString()), "   1   4   7\n   7   4   1");
    bmp.offBits = 2;  // nonsense, but inside the file
    EXPECT_TRUE(load(bmp));
    bmp.offBits = 0xFFFFFFFF;
    EXPECT_FALSE(load(bmp));
    EXPECT_EQ(m_messages, "");
}

TEST_F(PpBmpFile, RefusesWhatItCannotRead) {
    const Bmp good{.palette = greys(256), .pixels = Bytes(8)};
    ASSERT_TRUE(load(good));
    const auto with = [&]<class T>(T Bmp::*field, std::type_identity_t<T> value) {
        Bmp bmp = good;
        bmp.*field = value;
        return bmp;
    };
    const std::pair<Bmp, const char*> messages[] = {
        {with(&Bmp::magic, "PM"), "Bitmap files are valid only"},
        {with(&Bmp::compression, 1), "Compression is not valid"},
        {with(&Bmp::bits, 2), "Bitmap header is corrupted: biBitCount is invalid"}};
    for (const auto& [bmp, message] : messages) {
        EXPECT_FALSE(load(bmp)) << message;
        EXPECT_EQ(m_messages,
                  "--- Can't load file " + str(m_dir / "x.bmp") + ": " + message + "\n");
    }
    for (const Bmp& bmp :
         {with(&Bmp::bits, 5), with(&Bmp::bfSize, 0), with(&Bmp::biSize, 0), with(&Bmp::offBits, 0),
          with(&Bmp::planes, 3), with(&Bmp::width, 0), with(&Bmp::height, 0),
          with(&Bmp::height, -2), with(&Bmp::xPels, -1), with(&Bmp::cut, 54 + 1024 + 7),
          with(&Bmp::cut, 54 + 1000), with(&Bmp::cut, 13)}) {
        EXPECT_FALSE(load(bmp)) << bmp.bits << " " << bmp.cut;
        EXPECT_EQ(m_messages, "");
    }
    EXPECT_FALSE(load(m_dir / "")) << "a directory";
    EXPECT_FALSE(load(psString("/nonexistent/x.bmp")));
    EXPECT_EQ(m_messages,
              "--- Can't load file /nonexistent/x.bmp: Open fail: No such file or directory\n");
}

TEST_F(PpBmpFile, AllocatesNoMoreThanTheFileIsWorth) {
    // Direct colour loads however little the file holds, up to 64 MiB.
    const std::tuple<int, std::int64_t, std::int64_t, bool> cases[] = {
        {24, 1000, 400, true},         {32, 1 << 14, 1 << 10, true}, {32, 1 << 14, 1025, false},
        {32, INT_MAX, INT_MAX, false}, {16, 1, INT_MAX, false},      {24, 715827882, 1, false},
        {1, 512, 512, false},          {8, INT_MAX, INT_MAX, false}};
    for (const auto& [bits, width, height, loads] : cases) {
        const auto colours = bits <= 8 ? std::size_t{1} << bits : 0;
        const Bmp bmp{.bits = bits,
                      .width = width,
                      .height = height,
                      .palette = greys(colours),
                      .pixels = Bytes(8)};
        EXPECT_EQ(load(bmp), loads) << width << "x" << height << m_messages;
        EXPECT_EQ(m_messages.empty(), bits == 1) << m_messages;
        EXPECT_LE(psMallocTotal(), (64 << 20) + 128);
    }
    // Whatever a pixel takes in the image, a whole palette file is worth it: 64 bytes a row of one
    // pixel for 4 in the file, three bytes a pixel for one bit.
    Bmp whole{.width = 1, .height = 20000, .palette = greys(256), .pixels = Bytes(80000)};
    EXPECT_TRUE(load(whole));
    whole = {.bits = 1, .width = 1024, .height = 1024, .palette = {0, 0xFF0000}};
    whole.pixels = Bytes(1024 * 1024 / 8, 0xFF);
    ASSERT_TRUE(load(whole));
    EXPECT_EQ(m_image.getImageAt(1023, 1023, 2), 255);
    whole.pixels.pop_back();
    EXPECT_FALSE(load(whole));
}

}  // namespace
