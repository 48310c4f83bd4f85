#include "ppimage.h"

#include <algorithm>
#include <climits>

#include "ppbmpfile.h"
#include "ppfill.h"
#include "psdata.h"

ppImage::~ppImage() {
    ppImage::deleteVector();
}

psString ppImage::nameOf(ppType type, int channels, bool planar) {
    return nameOf(type) +
           psFormat("%s%s%d", channels == 4 ? "A" : "", planar ? "P" : "C", channels);
}

void ppImage::init(ppType type, int channels, bool planar) {
    deleteVector();
    setName(nameOf(type, channels, planar));
}

bool ppImage::isPlane(const ppFunc& func) {
    return func.descrName().contains("P");
}

int ppImage::numChannels(const ppFunc& func) {
    const psString descr = func.descrName();
    for (const char* digit : {"4", "3", "2"}) {
        if (descr.contains(digit)) return *digit - '0';
    }
    return 1;
}

int ppImage::numActualChannels(const ppFunc& func) {
    const int channels = numChannels(func);
    return channels == 4 && func.descrName().contains("A") ? 3 : channels;
}

int ppImage::pixel(const ppFunc& func) {
    return ppItem(func.type(1)) * numChannels(func);
}

long long ppImage::step(const ppFunc& func, int width) {
    const int column = isPlane(func) ? ppItem(func.type(1)) : pixel(func);
    return (static_cast<long long>(column) * width + PS_ALIGN_DEF - 1) & -PS_ALIGN_DEF;
}

long long ppImage::size(const ppFunc& func, int width, int height, long long rowStep) {
    if (rowStep == 0) rowStep = step(func, width);
    return blockSize(rowStep,
                     static_cast<long long>(height) * (isPlane(func) ? numChannels(func) : 1));
}

long long ppImage::size() const {
    return static_cast<long long>(m_step) * getNumRows();
}

bool ppImage::createImage(int width, int height, int rowStep, int misalign, int firstPlaneOnly) {
    deleteVector();
    const bool planar = isPlane();
    const int channels = numChannels();
    const int perPixel = planar ? 1 : channels;
    const long long chosen = rowStep < 1 ? step(name(), width) : rowStep;
    const bool possible = width > 0 && height > 0 && item() > 0;
    const long long bytes = possible ? size(name(), width, height, chosen) : 0;
    if (bytes < 1 || bytes > INT_MAX) return allocateVector(bytes);  // says so and fails
    const int fitting = static_cast<int>(chosen);
    if (!checkStep(fitting, static_cast<long long>(item()) * perPixel * width)) return false;
    const bool created =
        planar ? createPlanes(channels, fitting / item() * height, misalign, firstPlaneOnly != 0)
               : allocateVector(bytes, misalign);
    if (!created) return false;
    m_width = width;
    m_height = height;
    m_step = fitting;
    m_perPixel = perPixel;
    setLength(width * height * channels);
    return true;
}

bool ppImage::createPlanes(int channels, int elements, int misalign, bool firstOnly) {
    void* owner = static_cast<psObject*>(this);
    m_planes = channels;
    for (int c = 0; c < channels; ++c) {
        auto& plane = m_planeData[static_cast<std::size_t>(c)];
        plane = std::make_unique<ppVector>(type());
        if (!plane->createZeroed(elements, c > 0 && firstOnly ? 0 : misalign,
                                 psSubObjectOwner(owner))) {
            deleteVector();
            return false;
        }
    }
    const int bytes = channels * static_cast<int>(sizeof(void*));
    m_planePtrs = static_cast<void**>(psMalloc(bytes, 0, 0, owner));
    if (!m_planePtrs) {
        deleteVector();
        return false;
    }
    setPlanePtrs();
    return true;
}

void ppImage::setPlanePtrs() {
    for (int c = 0; c < m_planes; ++c)
        m_planePtrs[c] = m_planeData[static_cast<std::size_t>(c)]->data();
}

bool ppImage::createImage(int width, int height, SetMode mode, double a, double b) {
    return createImageExt(width, height, -1, mode, a, b);
}

bool ppImage::createImageExt(int width, int height, int misalign, SetMode mode, double a,
                             double b) {
    return createImage(width, height, 0, misalign) && setVector(mode, a, b);
}

void ppImage::deleteVector() {
    for (auto& plane : m_planeData) plane.reset();
    psFree(m_planePtrs);
    m_planePtrs = nullptr;
    m_width = m_height = m_step = m_perPixel = m_planes = 0;
    ppVector::deleteVector();
}

bool ppImage::loadImage(const psString& fileName, int firstPlaneOnly) {
    return ppBmpFile(*this).load(fileName, firstPlaneOnly);
}

psString ppImage::objectInfo() const {
    return psString("Image ") + name().substr(1) + " width=" + m_width + " height=" + m_height +
           " step=" + m_step;
}

int ppImage::reserveCopy() {
    if (m_planes == 0) return ppVector::reserveCopy();
    return std::ranges::all_of(m_planeData,
                               [](const auto& plane) { return !plane || plane->reserveCopy(); });
}

int ppImage::setReservedCopy() {
    if (m_planes == 0) return ppVector::setReservedCopy();
    return std::ranges::all_of(
        m_planeData, [](const auto& plane) { return !plane || plane->setReservedCopy(); });
}

void ppImage::deleteReservedCopy() {
    ppVector::deleteReservedCopy();
    for (auto& plane : m_planeData) {
        if (plane) plane->deleteReservedCopy();
    }
}

int ppImage::getNumRows() const {
    return m_height * std::max(m_planes, 1);
}

void* ppImage::getRowPointer(int row) const {
    if (row < 0 || row >= getNumRows()) return nullptr;
    void* first = m_planes > 0 ? m_planePtrs[row / m_height] : data();
    return static_cast<unsigned char*>(first) +
           static_cast<std::ptrdiff_t>(row % m_height) * m_step;
}

bool ppImage::setJaehne(double magnitude) {
    if (getNumRows() == 0) return false;
    const int pixelStride = m_perPixel * (ppIsComplex(type()) ? 2 : 1);
    bool done = true;
    for (int c = 0; c < numChannels(); ++c) {
        done = setPlaneJaehne(getPointerAt(0, 0, c), m_width, m_height, pixelStride, m_step,
                              magnitude) &&
               done;
    }
    return done;
}

bool ppImage::setPlaneJaehne(void* p, int width, int height, int pixelStride, int rowStep,
                             double magnitude) const {
    return ppFillPlaneJaehne(type(), p, width, height, pixelStride, rowStep, magnitude);
}

void* ppImage::getPointerAt(int i) const {
    if (i < 0 || i >= numItems()) return nullptr;
    return static_cast<unsigned char*>(getRowPointer(i / getRowLen())) +
           static_cast<std::ptrdiff_t>(i % getRowLen()) * item();
}

void* ppImage::getPointerAt(int x, int y, int c) const {
    if (x < 0 || x >= m_width || y < 0 || y >= m_height || c < 0 || c >= createdChannels())
        return nullptr;
    const int row = m_planes > 0 ? m_height * c + y : y;
    const int column = m_planes > 0 ? x : createdChannels() * x + c;
    return static_cast<unsigned char*>(getRowPointer(row)) +
           static_cast<std::ptrdiff_t>(column) * item();
}

double ppImage::getImageAt(int x, int y, int c) const {
    double re = 0, im = 0;
    getImageAt(x, y, c, re, im);
    return re;
}

bool ppImage::getImageAt(int x, int y, int c, double& re, double& im) const {
    return getElement(getPointerAt(x, y, c), re, im);
}

bool ppImage::setImageAt(int x, int y, int c, double re, double im) {
    return setElement(getPointerAt(x, y, c), re, im);
}
