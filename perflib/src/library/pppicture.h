// The source picture of a run: a BMP file instead of a generated pattern.
#pragma once

#include "psdefault.h"

class ppImage;

// Names the BMP file, empty for the generated pictures. It has no column of its
// own in the table: the Comment cell carries the file's title.
class ppPictureParameter : public psDefault<psString> {
  public:
    using psDefault<psString>::psDefault;

    void toOStream(psOStream& stream) const override;
    void toCStream(psCStream&) const override {}
    void nameToCStream(psCStream&) const override {}
};

extern ppPictureParameter Picture;

// True when the run measures on a picture file.
bool ppPictureGiven();
// The title of that file.
psString ppPictureTitle();
// Fills an 8u image with the picture, cropped or tiled to the image's size: in
// grey if it has one channel, else blue, green, red and, as a fourth, opaque. The
// picture begins at pixel (shift, shift). False, after a message that names the
// file, when it cannot be loaded.
bool ppDrawPicture(ppImage& image, int shift = 0);
