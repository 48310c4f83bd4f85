#include "pppicture.h"

#include "ppbmpfile.h"
#include "ppimage.h"
#include "psstream.h"

using enum MessageLevel;

ppPictureParameter Picture(psString(), "Picture", "Picture (BMP file, empty: generated)");

namespace {

// The file as loaded, for as long as the parameter names it.
struct LoadedPicture {
    psString name;
    bool valid = false;
    ppImage image;
};

LoadedPicture& loaded() {
    static LoadedPicture picture;
    return picture;
}

const ppImage* loadPicture() {
    LoadedPicture& picture = loaded();
    const psString& name = Picture.value();
    if (picture.name != name) {
        picture.name = name;
        picture.valid = picture.image.loadImage(name, 0);
    }
    if (picture.valid) return &picture.image;
    g_ostrm << ERR << "-- Picture " << name << " was not loaded\n" << END;
    return nullptr;
}

using Byte = unsigned char;

// ITU-R BT.601 luma in 16-bit fixed point; the file's order is blue, green, red.
Byte luma(unsigned blue, unsigned green, unsigned red) {
    return static_cast<Byte>((blue * 7471 + green * 38470 + red * 19595 + 32768) >> 16);
}

Byte greyOf(const Byte* pixel, int channels) {
    if (channels == 1) return *pixel;
    if (channels > 2) return luma(pixel[0], pixel[1], pixel[2]);
    // 16 bits: five each of red, green and blue.
    const unsigned packed = pixel[0] | static_cast<unsigned>(pixel[1]) << 8;
    const auto wide = [=](int shift) { return ((packed >> shift) & 31) * 255 / 31; };
    return luma(wide(0), wide(5), wide(10));
}

}  // namespace

void ppPictureParameter::toOStream(psOStream& stream) const {
    if (!value().empty()) psDefault<psString>::toOStream(stream);
}

bool ppPictureGiven() {
    return !Picture.value().empty();
}

psString ppPictureTitle() {
    return Picture.value().getFileTitle();
}

bool ppDrawPicture(ppImage& image) {
    const ppImage* source = loadPicture();
    if (!source) return false;
    const int channels = source->numChannels();
    for (int y = 0; y < image.height(); ++y) {
        const auto* from = static_cast<const Byte*>(source->getRowPointer(y % source->height()));
        auto* to = static_cast<Byte*>(image.getRowPointer(y));
        for (int x = 0; x < image.width(); ++x)
            to[x] = greyOf(from + channels * (x % source->width()), channels);
    }
    return true;
}
