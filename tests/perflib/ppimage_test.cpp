#include "ppimage.h"

#include <array>
#include <cstring>

#include "psdata.h"
#include "psstream.h"
#include "unit.h"

namespace {

class PpImage : public testing::Test {
  protected:
    PpImage() { ppVector::m_seed = 7; }
    ~PpImage() override {
        EXPECT_EQ(psMallocFirst(nullptr, nullptr), nullptr) << "a block is left";
    }
    const psOutLevelGuard m_quiet{0};
};

// Where p lies between two boundaries.
unsigned low(const void* p) {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(p) % 64);
}

TEST_F(PpImage, LayoutComesFromTheDescriptor) {
    const std::tuple<const char*, bool, int, int, int, long long, long long> cases[] = {
        {"_8u_C1", false, 1, 1, 1, 64, 640},    {"_32f_C3", false, 3, 3, 12, 128, 1280},
        {"_8u_P3", true, 3, 3, 3, 64, 1920},    {"_16s_AC4", false, 4, 3, 8, 128, 1280},
        {"_16s_C4", false, 4, 4, 8, 128, 1280}, {"_64fc_AP4", true, 4, 3, 64, 192, 7680},
        {"zmoiX_8u_", false, 1, 1, 1, 64, 640}, {"_8u_C2", false, 2, 2, 2, 64, 640}};
    for (const auto& c : cases) {
        const char* const name = std::get<0>(c);
        const ppFunc f(name);
        EXPECT_EQ(std::tuple(name, ppImage::isPlane(f), ppImage::numChannels(f),
                             ppImage::numActualChannels(f), ppImage::pixel(f),
                             static_cast<long long>(ppImage::step(f, 10)),
                             static_cast<long long>(ppImage::size(f, 10, 10))),
                  c)
            << name;
    }
    EXPECT_EQ(ppImage::step("_8u_C1", 65), 128);
    EXPECT_EQ(ppImage::size("_8u_P3", 10, 10, 100), 3000);
    EXPECT_STREQ(ppImage("zmoiX_8u_C4R", ppArgSrc).name().c_str(), "_8u_C4");
    EXPECT_EQ(ppImage("zmoiX_8u_C3P3R", ppArgDst).isPlane(), true);
}

TEST_F(PpImage, PlacesPixelsInBothLayouts) {
    ppImage pixels(pp8u, 3, false), planes(pp8u, 3, true);
    ASSERT_TRUE(pixels.createImage(70, 10, 0, 3) && planes.createImage(70, 10, 0, 3));
    const auto* base = pixels.ptr8u();
    EXPECT_EQ(low(base), 3u);
    EXPECT_EQ(pixels.step(), 256);
    EXPECT_EQ(pixels.getPointerAt(2, 1, 1), base + 256 + 7);
    EXPECT_TRUE(!planes.data() && !planes.ptr8u());
    EXPECT_TRUE(planes.step() == 128 && planes.plane() == 1280 && planes.size() == 3840);
    EXPECT_TRUE(planes.getNumRows() == 30 && planes.getRowLen() == 70);
    EXPECT_EQ(planes.getPointerAt(2, 1, 1), static_cast<char*>(planes.planePtrs()[1]) + 128 + 2);
    EXPECT_EQ(planes.getPointerAt(2, 1, 1), static_cast<char*>(planes.getRowPointer(11)) + 2);
    for (const bool firstOnly : {true, false}) {
        ASSERT_TRUE(planes.createImage(70, 10, 0, 3, firstOnly));
        EXPECT_EQ(low(planes.planePtrs()[0]), 3u);
        EXPECT_EQ(low(planes.planePtrs()[2]), firstOnly ? 0u : 3u);
    }
    for (ppImage* image : {&pixels, &planes}) {
        EXPECT_EQ(image->numItems(), 2100);
        EXPECT_TRUE(image->setImageAt(69, 9, 2, 77));
        EXPECT_TRUE(image->getImageAt(69, 9, 2) == 77 && image->getIndex(2099) == 77);
        for (const auto [x, y, c] : {std::array{70, 0, 0}, {0, 10, 0}, {0, 0, 3}, {-1, 0, 0}})
            EXPECT_EQ(image->getPointerAt(x, y, c), nullptr);
        EXPECT_EQ(image->getPointerAt(2100), nullptr);
        EXPECT_EQ(image->getRowPointer(image->getNumRows()), nullptr);
    }
}

TEST_F(PpImage, FillsRowByRowAndLeavesThePaddingZero) {
    for (bool planar : {false, true}) {
        ppImage image(pp8u, 3, planar);
        ASSERT_TRUE(image.createImage(7, 4, SET_ZERO));
        ASSERT_TRUE(image.setRandom(1, 255, 99));
        ppVector row(pp8u);
        ASSERT_TRUE(row.createVector(image.getRowLen()));
        ppVector::m_seed = 99;
        for (int r = 0; r < image.getNumRows(); ++r) {
            ASSERT_TRUE(row.setRandom(1, 255));
            const auto* p = static_cast<unsigned char*>(image.getRowPointer(r));
            EXPECT_EQ(std::memcmp(p, row.data(), static_cast<std::size_t>(row.length())), 0) << r;
            for (int i = row.length(); i < image.step(); ++i) EXPECT_EQ(p[i], 0) << r << " " << i;
        }
        ASSERT_TRUE(image.setVector(SET_SEQUENCE, 5, 100));
        EXPECT_EQ(image.getIndex(0), 5);
        EXPECT_EQ(image.getIndex(image.getRowLen()), 5) << "every row starts anew";
        ASSERT_TRUE(image.setMaxValue());
        EXPECT_EQ(image.getImageAt(6, 3, 2), 255);
    }
}

TEST_F(PpImage, JaehneIsARoundChirpThatWraps) {
    ppImage row(pp8u, 1, false);
    ASSERT_TRUE(row.createImage(5, 1));
    ASSERT_TRUE(row.setJaehne());
    EXPECT_STREQ(row.getString().c_str(), " 254 126 255 126 254");

    for (const ppType type : {pp8u, pp16s, pp32f, pp32fc, pp16sc}) {
        ppImage image(type, 3, type == pp16s || type == pp32fc);
        ASSERT_TRUE(image.createImage(31, 17, 0, 5) && image.setJaehne(100));
        const auto expected = [&](int x, int y) -> double {
            const double r2 = (x - 15.0) * (x - 15.0) + (y - 8.0) * (y - 8.0);
            const double wave = (std::sin(r2 * 1.5707963267948966 * (1.0 / 17)) + 1.0) * 100;
            if (ppIsFloat(type)) return static_cast<float>(wave);
            return type == pp8u ? static_cast<int>(wave + 127.5) & 255 : std::trunc(wave);
        };
        for (int i = 0; i < image.numItems(); ++i) {
            const int x = i / 3 % 31, y = i / 3 / 31;
            double re, im;
            ASSERT_TRUE(image.getImageAt(x, y, i % 3, re, im));
            ASSERT_EQ(re, expected(x, y)) << type << " " << x << " " << y;
            ASSERT_EQ(im, ppIsComplex(type) ? re : 0);
        }
    }
}

TEST_F(PpImage, RefusesWhatCannotBe) {
    const int cases[][3] = {
        {0, 5, 0},      {5, 0, 0},         {-100, -10, 0},        {INT_MAX, 1, 0},
        {100, 5, 99},   {46341, 46341, 0}, {INT_MAX, INT_MAX, 0}, {5, 5, 101},
        {1, INT_MAX, 2}};
    for (bool planar : {false, true}) {
        for (const auto& [width, height, step] : cases) {
            ppImage image(pp64fc, 4, planar);
            EXPECT_FALSE(image.createImage(width, height, step)) << width;
            EXPECT_EQ(image.getNumRows(), 0);
            EXPECT_FALSE(image.setRandom() || image.setJaehne());
        }
    }
    EXPECT_FALSE(ppImage().createImage(4, 4, 4));
}

TEST_F(PpImage, PrintsRowsAndPlanes) {
    ppImage image(pp8u, 2, true);
    ASSERT_TRUE(image.createImage(2, 2, SET_ONE));
    EXPECT_STREQ(image.getString().c_str(), "   1   1\n   1   1\n\n   1   1\n   1   1");
    EXPECT_STREQ(image.objectInfo().c_str(), "Image 8u_P2 width=2 height=2 step=64");
}

}  // namespace
