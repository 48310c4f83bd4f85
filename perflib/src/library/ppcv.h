// What the computer-vision modules share: parameters with the same names
// everywhere, source images and masks.
#pragma once

#include <type_traits>

#include "ppdefault.h"
#include "ppimage.h"
#include "pppicture.h"
#include "zmotypes.h"

extern psIterator<ZmoiSize> ImageSize;
extern psIterator<ZmoiSize> MaskSize;  // of a filter's kernel or a structuring element
extern psMapIterator<_ZmoiBorderType> Border;
extern psIterator<int> Density;       // percent of the pixels that a mask selects
extern psIterator<int> Channel;       // channel of interest, from 1
extern psIterator<int> Connectivity;  // 4 or 8 neighbours
extern psMapIterator<_ZmoNormType> Norm;
extern ppScaleIterator ScaleFactor;

// Fills a source image: with the given picture, or with noise over the range of an
// integer type and over 0 to 255 for 32f. The picture moves from frame to frame;
// noise is never the same.
bool ppDrawSource(ppImage& image, int frame = 0);
// Whether the parameter's value lies in the range; if not, after a message.
bool ppInRange(const psIterator<int>& parm, int low, int high);
// Fills an 8u image with 255 inside a few round objects, which cover Density
// percent of the pixels and at least one, and 0 around them.
bool ppDrawMask(ppImage& mask);
// The share of the pixels that such a mask selects.
double ppSelectedShare(const ppImage& mask);

// Calls body(x, y) for each pixel, row by row.
template <class Body>
void ppForEachPixel(const ZmoiSize& size, Body body) {
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) body(x, y);
    }
}

// Sets all channels of each pixel to value(x, y), or each one to value(x, y, channel).
template <class Value>
void ppDrawBy(ppImage& image, Value value) {
    ppForEachPixel({image.width(), image.height()}, [&](int x, int y) {
        for (int c = 0; c < image.numChannels(); ++c) {
            if constexpr (std::is_invocable_v<Value, int, int, int>)
                image.setImageAt(x, y, c, value(x, y, c));
            else
                image.setImageAt(x, y, c, value(x, y));
        }
    });
}

// The share of the pixels for whose first channel counts(value) holds.
template <class Counts>
double ppShareOf(const ppImage& image, Counts counts) {
    double n = 0;
    ppForEachPixel({image.width(), image.height()},
                   [&](int x, int y) { n += counts(image.getImageAt(x, y, 0)) ? 1 : 0; });
    return n / image.width() / image.height();
}
// The mean of the first channel.
double ppMeanOf(const ppImage& image);
