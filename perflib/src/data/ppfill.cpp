#include "ppfill.h"

#include <cmath>

namespace {

using Byte = unsigned char;

constexpr double halfPi = 1.5707963267948966;

// A value that is no number takes the limit.
double atLeast(double value, double limit) {
    return value > limit ? value : limit;
}

double atMost(double value, double limit) {
    return value < limit ? value : limit;
}

constexpr int partsOf(ppType type) {
    return ppIsComplex(type) ? 2 : 1;
}

template <class T>
void fillConst(Byte* out, int n, T value) {
    for (int i = 0; i < n; ++i, out += sizeof value) ppStore(out, value);
}

template <class T>
void fillConst(Byte* out, int n, int parts, T re, T im) {
    if (parts == 2) {
        fillConst(out, n, ppComplex<T>{re, im});
    } else {
        fillConst(out, n, re);
    }
}

// Stores one value in all parts of an element and steps to the next element.
template <int parts, class T>
Byte* storeElement(Byte* out, T value) {
    ppStore(out, value);
    if constexpr (parts == 2) ppStore(out + sizeof(T), value);
    return out + sizeof(T) * parts;
}

// A subtract-with-borrow generator added to a congruential one. Each value
// depends on the one before, so the loop does not vectorise; keep the state in
// locals.
struct RandomState {
    explicit RandomState(unsigned seed)
        : w0(seed), w1(seed * 69069U + 1013904243U), w2(seed * 475559465U + 924302730U) {}

    std::int32_t next() {
        const std::uint32_t t = carry - w2 + w1;
        const bool borrow = (t >> 31) != 0;
        const std::uint32_t x = t - (borrow ? 18U : 0U);
        congruential = congruential * 69069U + 1013904243U;
        w2 = w1;
        w1 = w0;
        w0 = x;
        carry = borrow ? 0xFFFFFFFFU : 0U;
        return static_cast<std::int32_t>(x + congruential);
    }

    std::uint32_t w0, w1, w2;
    std::uint32_t carry = 0xFFFFFFFFU;
    std::uint32_t congruential = 1131199209U;
};

template <class T, class Convert>
unsigned drawAll(Byte* out, std::ptrdiff_t count, double scale, double centre, unsigned seed,
                 Convert convert) {
    RandomState state(seed);
    for (const Byte* end = out + count * static_cast<std::ptrdiff_t>(sizeof(T)); out != end;
         out += sizeof(T)) {
        ppStore<T>(out, convert(state.next() * scale + centre));
    }
    return state.w0;
}

template <class T, int parts, class Convert>
void sequence(Byte* out, int n, double start, double hi, double step, double reset,
              Convert convert) {
    double x = start;
    for (int i = 0; i < n; ++i) {
        out = storeElement<parts, T>(out, convert(x));
        x += step;
        if (x > hi) x = reset;
    }
}

template <class T, int parts, class Convert>
void chirp(Byte* out, int n, double magnitude, double offset, Convert convert) {
    const double perLength = 1.0 / n;
    for (int k = 0; k < n; ++k) {
        const double i = k;  // i * i leaves the range of int
        const double value = std::sin(i * i * halfPi * perLength) * magnitude + offset;
        out = storeElement<parts, T>(out, convert(value));
    }
}

// One row of the round chirp, at the squared distance dy2 from the centre.
template <class T, int parts, class Convert>
void roundChirp(Byte* out, int width, std::ptrdiff_t pixelStep, double dy2, double perHeight,
                double magnitude, double offset, Convert convert) {
    const double centreX = (width - 1) * 0.5;
    for (int x = 0; x < width; ++x, out += pixelStep) {
        const double dx = x - centreX;
        const double wave = std::sin((dx * dx + dy2) * halfPi * perHeight) + 1.0;
        storeElement<parts, T>(out, convert(wave * magnitude + offset));
    }
}

// True when everything between the two values (and at `step` beyond them) is
// inside 64 bits, so that a plain conversion will do.
bool fits64(double a, double b, double step = 0) {
    constexpr double limit = pp2to63 / 4;
    return std::fabs(a) < limit && std::fabs(b) < limit && std::fabs(step) < limit;
}

// Calls run(convert) with the cheapest conversion that is right for the values.
template <class T, class Run>
void withConversion(bool fits, Run run) {
    if constexpr (std::integral<T>) {
        if (fits) {
            run([](double value) { return static_cast<T>(static_cast<std::int64_t>(value)); });
            return;
        }
    }
    run([](double value) { return ppConvert<T>(value); });
}

// Calls run.operator()<T, parts>(convert) for the components of the type.
template <class Run>
bool withElements(ppType type, bool fits, Run run) {
    return ppVisitType(type, [&]<class T>(T) {
        withConversion<T>(fits, [&](auto convert) {
            if (ppIsComplex(type)) {
                run.template operator()<T, 2>(convert);
            } else {
                run.template operator()<T, 1>(convert);
            }
        });
    });
}

}  // namespace

bool ppFillConst(ppType type, void* p, int n, double re, double im) {
    return ppVisitType(type, [=]<class T>(T) {
        fillConst(static_cast<Byte*>(p), n, partsOf(type), ppConvert<T>(re), ppConvert<T>(im));
    });
}

bool ppFillConst64(ppType type, void* p, int n, long long re, long long im) {
    return ppVisitType(type, [=]<class T>(T) {
        fillConst(static_cast<Byte*>(p), n, partsOf(type), static_cast<T>(re), static_cast<T>(im));
    });
}

bool ppFillRandom(ppType type, void* p, int n, double lo, double hi, unsigned& seed) {
    const ppTypeInfo info = ppInfo(type);
    lo = atLeast(lo, info.min);
    hi = atMost(hi, info.max);
    const double scale = (hi - lo) * 2.3283064365386963e-10;  // 2^-32
    const double centre = (hi + lo) * 0.5;
    return ppVisitType(type, [&]<class T>(T) {
        if (n < 1) return;
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(n) * partsOf(type);
        withConversion<T>(fits64(lo, hi), [&](auto convert) {
            seed = drawAll<T>(static_cast<Byte*>(p), count, scale, centre, seed, convert);
        });
    });
}

bool ppFillSequence(ppType type, void* p, int n, double start, double hi, double step, bool wrap) {
    const ppTypeInfo info = ppInfo(type);
    start = atLeast(start, info.min);
    hi = atMost(hi, info.max);
    const double reset = wrap ? start : hi;
    // A negative step has no lower end.
    const bool fits = step >= 0 && fits64(start, hi, step);
    return withElements(type, fits, [&]<class T, int parts>(auto convert) {
        sequence<T, parts>(static_cast<Byte*>(p), n, start, hi, step, reset, convert);
    });
}

bool ppJaehneMagnitude(ppType type, double& magnitude, double& offset) {
    if (!(magnitude >= 0)) return false;
    const ppTypeInfo info = ppInfo(type);
    magnitude = atMost(magnitude, info.max / 2 - info.min / 2);  // max - min may overflow
    offset = ppIsFloat(type) || ppIsSigned(type) ? 0 : (info.max + info.min) / 2;
    return true;
}

bool ppFillJaehne(ppType type, void* p, int n, double magnitude) {
    double offset = 0;
    if (!ppJaehneMagnitude(type, magnitude, offset)) return false;
    return withElements(type, fits64(magnitude, offset), [&]<class T, int parts>(auto convert) {
        chirp<T, parts>(static_cast<Byte*>(p), n, magnitude, offset, convert);
    });
}

bool ppFillPlaneJaehne(ppType type, void* p, int width, int height, int pixelStride, int rowStep,
                       double magnitude) {
    double offset = 0;
    if (!ppJaehneMagnitude(type, magnitude, offset)) return false;
    const double centreY = (height - 1) * 0.5, perHeight = 1.0 / height;
    return withElements(type, fits64(magnitude, offset), [&]<class T, int parts>(auto convert) {
        for (int y = 0; y < height; ++y) {
            auto* row = static_cast<Byte*>(p) + static_cast<std::ptrdiff_t>(rowStep) * y;
            const double dy = y - centreY;
            roundChirp<T, parts>(row, width, static_cast<std::ptrdiff_t>(sizeof(T)) * pixelStride,
                                 dy * dy, perHeight, magnitude, offset, convert);
        }
    });
}
