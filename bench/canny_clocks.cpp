// canny_clocks [width height [columns rows]]
//
// Clocks per pixel of both Canny functions, measured without the harness: the same shared objects
// (dlopen by plain name), data prepared in the same way, a timed loop of its own. The figures of
// the harness should agree within 5 %.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "figures.h"
#include "zmocore.h"
#include "zmocv.h"
#include "zmoi.h"

namespace {

struct Closer {
    void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, Closer>;

Library open(const char* name) {
    Library library(dlopen(name, RTLD_NOW));
    if (!library) throw std::runtime_error(dlerror());
    return library;
}

template <class Function>
Function* bind(const Library& library, const char* name) {
    void* const address = dlsym(library.get(), name);
    if (address == nullptr) throw std::runtime_error(std::string("no function ") + name);
    return reinterpret_cast<Function*>(address);
}

#define BIND(library, function) bind<decltype(::function)>(library, #function)

void require(ZmoStatus status, const char* what) {
    if (status != zmoStsNoErr) {
        throw std::runtime_error(std::string(what) + ": status " + std::to_string(status));
    }
}

// Rows of whole pixels, the first pixel `offset` bytes off a 64-byte boundary.
template <class T>
class Plane {
  public:
    Plane(ZmoiSize size, size_t offset)
        : m_step((size.width * static_cast<int>(sizeof(T)) + 63) / 64 * 64),
          m_memory(static_cast<size_t>(m_step) * static_cast<size_t>(size.height) + 64 + offset) {
        const size_t misalign = reinterpret_cast<uintptr_t>(m_memory.data()) % 64;
        m_first = reinterpret_cast<T*>(m_memory.data() + (64 - misalign) % 64 + offset);
    }
    T* ptr() { return m_first; }
    int step() const { return m_step; }

  private:
    int m_step;
    std::vector<unsigned char> m_memory;
    T* m_first;
};

struct Functions {
    Library core = open("libzmocore.so");
    Library images = open("libzmoi.so");
    Library vision = open("libzmocv.so");
};

constexpr float low = 500.0F;
constexpr float high = 1000.0F;

// The picture turned by 10 degrees about the image's centre.
Plane<Zmo8u> turnedPicture(const Functions& libraries, ZmoiSize size, ZmoiSize figures) {
    const std::vector<Zmo8u> picture = bench::rectangles(size, figures);
    Plane<Zmo8u> turned(size, 1024);
    double xShift = 0;
    double yShift = 0;
    require(BIND(libraries.images, zmoiRotateGetShift)(size.width / 2.0, size.height / 2.0, 10.0,
                                                       &xShift, &yShift),
            "zmoiRotateGetShift");
    require(
        BIND(libraries.images, zmoiRotate_8u_C1R)(picture.data(), size.width, size, turned.ptr(),
                                                  turned.step(), size, 10.0, xShift, yShift),
        "zmoiRotate_8u_C1R");
    return turned;
}

std::vector<Zmo8u> sobelBuffer(const Functions& libraries, ZmoiSize size, ZmoDataType type) {
    int vert = 0;
    int horiz = 0;
    require(BIND(libraries.images, zmoiFilterSobelVertBorderGetBufferSize)(size, zmoiMask3x3, type,
                                                                           1, &vert),
            "zmoiFilterSobelVertBorderGetBufferSize");
    require(BIND(libraries.images, zmoiFilterSobelHorizBorderGetBufferSize)(size, zmoiMask3x3, type,
                                                                            1, &horiz),
            "zmoiFilterSobelHorizBorderGetBufferSize");
    return std::vector<Zmo8u>(static_cast<size_t>(std::max(vert, horiz)));
}

template <class T, class Canny>
double clocksPerPixel(const Functions& libraries, Canny canny, Plane<T>& dx, Plane<T>& dy,
                      ZmoiSize size) {
    int bytes = 0;
    require(BIND(libraries.vision, zmoiCannyGetSize)(size, &bytes), "zmoiCannyGetSize");
    Plane<Zmo8u> buffer({bytes, 1}, 0);
    Plane<Zmo8u> edges(size, 1024);
    const auto call = [&] {
        return canny(dx.ptr(), dx.step(), dy.ptr(), dy.step(), edges.ptr(), edges.step(), size, low,
                     high, zmoiNormL2, buffer.ptr());
    };
    require(call(), "zmoiCanny");
    const int64_t clocks = bench::fewestClocks(call);
    return static_cast<double>(clocks) / size.width / size.height;
}

double measure16s(const Functions& libraries, ZmoiSize size, ZmoiSize figures) {
    Plane<Zmo8u> picture = turnedPicture(libraries, size, figures);
    Plane<Zmo16s> dx(size, 0);
    Plane<Zmo16s> dy(size, 512);
    std::vector<Zmo8u> buffer = sobelBuffer(libraries, size, zmo8u);
    require(BIND(libraries.images, zmoiFilterSobelVertBorder_8u16s_C1R)(
                picture.ptr(), picture.step(), dx.ptr(), dx.step(), size, zmoiMask3x3,
                zmoiBorderReplicate, nullptr, buffer.data()),
            "zmoiFilterSobelVertBorder_8u16s_C1R");
    require(BIND(libraries.images, zmoiFilterSobelHorizBorder_8u16s_C1R)(
                picture.ptr(), picture.step(), dy.ptr(), dy.step(), size, zmoiMask3x3,
                zmoiBorderReplicate, nullptr, buffer.data()),
            "zmoiFilterSobelHorizBorder_8u16s_C1R");
    return clocksPerPixel(libraries, BIND(libraries.vision, zmoiCanny_16s8u_C1R), dx, dy, size);
}

double measure32f(const Functions& libraries, ZmoiSize size, ZmoiSize figures) {
    Plane<Zmo8u> picture = turnedPicture(libraries, size, figures);
    Plane<Zmo32f> converted(size, 0);
    Plane<Zmo32f> dx(size, 0);
    Plane<Zmo32f> dy(size, 512);
    std::vector<Zmo8u> buffer = sobelBuffer(libraries, size, zmo32f);
    require(BIND(libraries.images, zmoiConvert_8u32f_C1R)(picture.ptr(), picture.step(),
                                                          converted.ptr(), converted.step(), size),
            "zmoiConvert_8u32f_C1R");
    require(BIND(libraries.images, zmoiFilterSobelVertBorder_32f_C1R)(
                converted.ptr(), converted.step(), dx.ptr(), dx.step(), size, zmoiMask3x3,
                zmoiBorderReplicate, nullptr, buffer.data()),
            "zmoiFilterSobelVertBorder_32f_C1R");
    require(BIND(libraries.images, zmoiFilterSobelHorizBorder_32f_C1R)(
                converted.ptr(), converted.step(), dy.ptr(), dy.step(), size, zmoiMask3x3,
                zmoiBorderReplicate, nullptr, buffer.data()),
            "zmoiFilterSobelHorizBorder_32f_C1R");
    return clocksPerPixel(libraries, BIND(libraries.vision, zmoiCanny_32f8u_C1R), dx, dy, size);
}

// The positive number in argument i, or the default when there are fewer arguments.
int argument(int argc, char** argv, int i, int byDefault) {
    if (i >= argc) return byDefault;
    char* end = nullptr;
    const long value = std::strtol(argv[i], &end, 10);
    if (*end != '\0' || value < 1 || value > 100000) {
        throw std::runtime_error(std::string("not a size: ") + argv[i]);
    }
    return static_cast<int>(value);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const ZmoiSize size{argument(argc, argv, 1, 640), argument(argc, argv, 2, 480)};
        const ZmoiSize figures{argument(argc, argv, 3, 2), argument(argc, argv, 4, 2)};
        const Functions libraries;
        require(BIND(libraries.core, zmoInit)(), "zmoInit");
        std::printf("%s, %dx%d, figures %dx%d\n",
                    BIND(libraries.vision, zmocvGetVersion)()->version, size.width, size.height,
                    figures.width, figures.height);
        std::printf("zmoiCanny_16s8u_C1R %8.3f clocks/pixel\n",
                    measure16s(libraries, size, figures));
        std::printf("zmoiCanny_32f8u_C1R %8.3f clocks/pixel\n",
                    measure32f(libraries, size, figures));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "canny_clocks: %s\n", error.what());
        return 1;
    }
    return 0;
}
