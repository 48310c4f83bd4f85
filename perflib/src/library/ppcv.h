// What the computer-vision modules share: parameters with the same names
// everywhere, source images and masks.
#pragma once

#include "ppdefault.h"
#include "ppimage.h"
#include "pppicture.h"

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

// The share of the pixels for whose first channel counts(value) holds.
template <class Counts>
double ppShareOf(const ppImage& image, Counts counts) {
    double n = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) n += counts(image.getImageAt(x, y, 0)) ? 1 : 0;
    }
    return n / image.width() / image.height();
}
// The mean of the first channel.
double ppMeanOf(const ppImage& image);
