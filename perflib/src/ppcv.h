// What the computer-vision modules share: parameters with the same names
// everywhere, and the source picture.
#pragma once

#include "ppdefault.h"
#include "pppicture.h"

extern psIterator<ZmoiSize> ImageSize;
