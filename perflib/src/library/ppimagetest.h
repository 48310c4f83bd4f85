// Base of the tests of functions on images: slots for the images, the state and the work buffer of
// a call, and the steps of a run that are the same for most of these functions.
#pragma once

#include "ppbuffer.h"
#include "ppcv.h"
#include "ppimage.h"
#include "pptest.h"

// The slots of the test that runs, from which the wrappers take the arguments of each call. A test
// fills those that its function has.
namespace images {

inline ppImage pSrc;
inline ppImage pSrc2;
inline ppImage pMask;
inline ppImage pDst;  // of a function in place, what it changes
inline ppImage pDst2;
inline ppBuffer pState;
inline ppBuffer pBuffer;
inline ZmoiSize roi;
inline ZmoiSizeL roiL;  // the same

inline void setRoi(const ZmoiSize& size) {
    roi = size;
    roiL = {size.width, size.height};
}

// The init expression of a function in place: the bytes that pDst.reserveCopy() has kept.
inline int restoreDst() {
    return pDst.setReservedCopy();
}

// The state as the type of a function's family.
template <class State>
State* state() {
    return reinterpret_cast<State*>(pState.get());
}

}  // namespace images

// Two arguments of a call: an image's data as elements of the type, and its step.
#define PP_IMAGE(image, type) (image).ptr##type(), (image).step()

class ppImageTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    // Registers what varies besides ImageSize, the first parameter, and Picture, the last.
    virtual void regOwnParms() {}
    // False of functions whose data are no picture.
    virtual bool hasPicture() const { return true; }
    // Makes and fills the images, of `roi`: a source and a result unless overridden.
    virtual bool createImages();
    // Sets the other arguments of a call, the state and the work buffer among them.
    virtual bool prepare() { return true; }
    // Floating-point operations that a function of floats needs for an element of its result.
    virtual double flopsOfElement() const { return 0; }

    bool canStart() override;
    bool initData() override;
    void flushData() override;
    // The slots: sources and a mask are read, results are written, and a function in place does
    // both; a state and a work buffer are scratch.
    void regArguments() override;
    // The elements of the result, or the pixels where that is no image.
    double getDivisor() override;
    psString getUnit() override { return "pxch"; }
    double getFlops() override;

    // Makes an image of the type that an argument of the function has, or of one channel of the
    // type. It is the index-th vector of the test, from 0, which says where its data lie.
    bool create(ppImage& image, ppArg arg, int index, const ZmoiSize& size = images::roi) const;
    static bool create(ppImage& image, ppType type, int index, const ZmoiSize& size = images::roi);
    // The same of an image that has its type.
    static bool place(ppImage& image, int index, const ZmoiSize& size = images::roi);
    // Makes a source that shows the picture, or noise.
    bool createSource(ppImage& image = images::pSrc, int index = 0) const;
    // Makes a mask that selects as many pixels as Density says.
    static bool createMask(int index);

    // Whether the part occurs in the function's base name.
    bool named(const char* part) const { return func().baseName().contains(part); }
    ZmoDataType srcType() const { return libraryType(func().srcType()); }
    ZmoDataType dstType() const { return libraryType(func().dstType()); }
    // The share of the pixels that the mask selects, all of them where there is none.
    static double selectedShare();
};
