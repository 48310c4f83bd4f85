// Test images: pictures in pixel order or as planes.
#pragma once

#include <array>
#include <memory>

#include "ppvector.h"

// The name gives the layout: "_8u_C3" has three channels side by side, "_8u_P3"
// three planes. The fills of ppVector go row by row, in a planar image plane
// after plane; the bytes between the rows stay zero.
//
// A planar image has no data block of its own: its planes are registered with
// the allocator as its sub-objects, the array of plane pointers as the image's.
class ppImage : public ppVector {
  public:
    ppImage() = default;
    explicit ppImage(ppType type) : ppVector(type) {}
    ppImage(const ppFunc& f, int argIndex) : ppVector(f, argIndex) {}
    ppImage(const ppFunc& f, ppArg arg) : ppVector(f, arg) {}
    ppImage(ppType type, int channels, bool planar) { setName(nameOf(type, channels, planar)); }
    ~ppImage() override;

    using ppVector::init;
    // Four channels made this way have an alpha channel: "AC4" or "AP4".
    void init(ppType type, int channels, bool planar);

    // What a function descriptor, or the image's own name, says of the layout.
    static bool isPlane(const ppFunc& func);
    static int numChannels(const ppFunc& func);
    static int numActualChannels(const ppFunc& func);  // without the alpha channel
    static int pixel(const ppFunc& func);              // bytes from pixel to pixel
    static long long step(const ppFunc& func, int width);
    static long long size(const ppFunc& func, int width, int height, long long step = 0);
    bool isPlane() const { return isPlane(name()); }
    // Once created, without a look at the name: loops over pixels ask.
    int numChannels() const { return m_perPixel > 0 ? createdChannels() : numChannels(name()); }
    int numActualChannels() const { return numActualChannels(name()); }
    int pixel() const { return pixel(name()); }

    int width() const { return m_width; }
    int height() const { return m_height; }
    int step() const { return m_step; }              // bytes from row to row
    int plane() const { return m_step * m_height; }  // bytes of one plane
    int numItems() const { return length(); }
    long long size() const override;

    // Zeroed. A step below 1 is chosen by step(). The misalignment is that of
    // allocateVector, for all planes or for the first one only.
    bool createImage(int width, int height, int step = 0, int misalign = -1,
                     int firstPlaneOnly = 0);
    bool createImage(int width, int height, int rowStep, ppMisalign place) {
        return createImage(width, height, rowStep, place.bytes(item()));
    }
    bool createImage(int width, int height, SetMode mode, double a = 0, double b = 0);
    bool createImageExt(int width, int height, int misalign, SetMode mode, double a = 0,
                        double b = 0);
    bool createVector(int width, int height, SetMode mode, double a = 0, double b = 0) {
        return createImage(width, height, mode, a, b);
    }
    bool createVectorExt(int width, int height, int misalign, SetMode mode, double a = 0,
                         double b = 0) {
        return createImageExt(width, height, misalign, mode, a, b);
    }
    void deleteVector() override;

    bool canLoadImage() const { return true; }
    // From a BMP file; the type and the channels become the file's.
    bool loadImage(const psString& fileName, int firstPlaneOnly = 0);

    psString objectInfo() const override;
    int reserveCopy() override;
    int setReservedCopy() override;
    void deleteReservedCopy() override;

    // Rows are numbered through all planes.
    int getNumRows() const override;
    int getRowLen() const override { return m_width * m_perPixel; }
    void* getRowPointer(int row) const override;
    void* const* planePtrs() const { return m_planePtrs; }  // null unless planar

    using ppVector::setJaehne;
    bool setJaehne(double magnitude) override;
    bool setPlaneJaehne(void* p, int width, int height, int pixelStride, int rowStep,
                        double magnitude) const;

    // Null, 0 or false for a place that is not in the image.
    void* getPointerAt(int i) const override;
    void* getPointerAt(int x, int y, int c) const;
    double getImageAt(int x, int y, int c) const;
    bool getImageAt(int x, int y, int c, double& re, double& im) const;
    bool setImageAt(int x, int y, int c, double re, double im = 0);

  protected:
    int planeRows() const override { return m_height; }

  private:
    using ppVector::nameOf;
    static psString nameOf(ppType type, int channels, bool planar);
    bool createPlanes(int channels, int elements, int misalign, bool firstOnly);
    void setPlanePtrs();
    int createdChannels() const { return m_planes > 0 ? m_planes : m_perPixel; }

    int m_width = 0;
    int m_height = 0;
    int m_step = 0;
    int m_perPixel = 0;  // elements side by side: the channels, or 1 in a plane
    int m_planes = 0;    // 0 in pixel order
    std::array<std::unique_ptr<ppVector>, 4> m_planeData;
    void** m_planePtrs = nullptr;
};
