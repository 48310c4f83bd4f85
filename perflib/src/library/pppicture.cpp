#include "pppicture.h"

#include <algorithm>
#include <array>

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
constexpr Byte opaque = 255;

// Blue, green and red, in the file's order.
using Colour = std::array<Byte, 3>;

Colour colourOf(const Byte* pixel, int channels) {
    if (channels == 1) return {*pixel, *pixel, *pixel};
    if (channels > 2) return {pixel[0], pixel[1], pixel[2]};
    // 16 bits: five each of red, green and blue.
    const unsigned packed = pixel[0] | static_cast<unsigned>(pixel[1]) << 8;
    const auto wide = [=](int shift) {
        return static_cast<Byte>(((packed >> shift) & 31) * 255 / 31);
    };
    return {wide(0), wide(5), wide(10)};
}

// ITU-R BT.601 luma in 16-bit fixed point.
Byte luma(Colour c) {
    return static_cast<Byte>((c[0] * 7471U + c[1] * 38470U + c[2] * 19595U + 32768) >> 16);
}

void putColour(const Colour& colour, Byte* to, int channels) {
    if (channels == 1) {
        *to = luma(colour);
    } else {
        Byte* rest = std::copy_n(colour.begin(), std::min(channels, 3), to);
        std::fill(rest, to + channels, opaque);
    }
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

bool ppDrawPicture(ppImage& image, int shift) {
    const ppImage* source = loadPicture();
    if (!source) return false;
    const int fromChannels = source->numChannels();
    const int channels = image.numChannels();
    for (int y = 0; y < image.height(); ++y) {
        const auto* from =
            static_cast<const Byte*>(source->getRowPointer((y + shift) % source->height()));
        auto* to = static_cast<Byte*>(image.getRowPointer(y));
        for (int x = 0; x < image.width(); ++x, to += channels) {
            const int column = (x + shift) % source->width();
            const Colour colour = colourOf(from + fromChannels * column, fromChannels);
            putColour(colour, to, channels);
        }
    }
    return true;
}
