#include "ppimagetest.h"

using namespace images;

bool ppImageTest::canStart() {
    regParm(ImageSize);
    regOwnParms();
    if (hasPicture()) regParm(Picture);
    regCacheParm(ImageSize, pDst);
    return true;
}

bool ppImageTest::initData() {
    setRoi(ImageSize.value());
    if (hasPicture() && ppPictureGiven()) setDataComment(ppPictureTitle());
    return createImages() && prepare();
}

bool ppImageTest::createImages() {
    return createSource() && create(pDst, ppArgDst, 1);
}

void ppImageTest::flushData() {
    for (ppImage* image : {&pSrc, &pSrc2, &pMask, &pDst, &pDst2}) image->deleteVector();
    pState.release();
    pBuffer.release();
}

void ppImageTest::regArguments() {
    regInput("pSrc", pSrc);
    regInput("pSrc2", pSrc2);
    regInput("pMask", pMask);
    if (func().inplace() && !func().contains("_Copy"))
        regInOut("pDst", pDst);
    else
        regOutput("pDst", pDst);
    regOutput("pDst2", pDst2);
    regScratch("pState", pState);
    regScratch("pBuffer", pBuffer);
}

double ppImageTest::getDivisor() {
    const int channels = pDst.width() > 0 ? pDst.numActualChannels() : 1;
    return static_cast<double>(roi.width) * roi.height * channels;
}

double ppImageTest::getFlops() {
    const bool isFloat = func().dstType() == pp32f || func().dstType() == pp64f;
    return isFloat ? getDivisor() * flopsOfElement() * selectedShare() : 0.0;
}

bool ppImageTest::create(ppImage& image, ppArg arg, int index, const ZmoiSize& size) const {
    image.init(func(), arg);
    return place(image, index, size);
}

bool ppImageTest::create(ppImage& image, ppType type, int index, const ZmoiSize& size) {
    image.init(type, 1, false);
    return place(image, index, size);
}

bool ppImageTest::place(ppImage& image, int index, const ZmoiSize& size) {
    return image.createImage(size.width, size.height, 0, ppMisalign(index));
}

bool ppImageTest::createSource(ppImage& image, int index) const {
    return create(image, ppArgSrc, index) && ppDrawSource(image, index);
}

bool ppImageTest::createMask(int index) {
    return create(pMask, pp8u, index) && ppDrawMask(pMask);
}

double ppImageTest::selectedShare() {
    return pMask.width() > 0 ? ppSelectedShare(pMask) : 1;
}
