#include <cmath>

#include "kit.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

// The arguments of both functions. CopySubpix takes its place from dx and dy, the other one the size
// of the image and the corner.
template <class S, class D>
struct Args {
    const S* pSrc;
    int srcStep;
    ZmoiSize srcRoi;
    D* pDst;
    int dstStep;
    ZmoiSize roi;
    float dx;
    float dy;
    ZmoiPoint32f corner;
    ZmoiPoint* pFirst;
    ZmoiPoint* pLast;
    int scaleFactor;
};

template <class S, class D>
using Call = ZmoStatus (*)(const Args<S, D>&);

template <class S, class D>
struct Functions {
    const char* name;
    bool scaled;
    Call<S, D> copy;
    Call<S, D> intersect;
};

#define COPY_SUBPIX_SHAPE(S, D, name, scaled, ...)                                  \
    Functions<S, D> {                                                               \
#name, scaled,                                                                    \
        [](const Args<S, D>& a) {                                                         \
            return zmoiCopySubpix_##name(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, a.dx, \
                                         a.dy __VA_ARGS__);                               \
        },                                                                                \
        [](const Args<S, D>& a) {                                                         \
            return zmoiCopySubpixIntersect_##name(a.pSrc, a.srcStep, a.srcRoi, a.pDst,    \
                                                  a.dstStep, a.roi, a.corner, a.pFirst,   \
                                                  a.pLast __VA_ARGS__);                   \
        } \
    }
#define COPY_SUBPIX(S, D, types) COPY_SUBPIX_SHAPE(S, D, types##_C1R, false)

// Calls body with the functions of each pair of types.
template <class Body>
void forEachTypes(Body body) {
    const auto traced = [&](const auto& functions) {
        SCOPED_TRACE(functions.name);
        body(functions);
    };
    traced(COPY_SUBPIX(Zmo8u, Zmo8u, 8u));
    traced(COPY_SUBPIX(Zmo16u, Zmo16u, 16u));
    traced(COPY_SUBPIX_SHAPE(Zmo8u, Zmo16u, 8u16u_C1R_Sfs, true, , a.scaleFactor));
    traced(COPY_SUBPIX(Zmo8u, Zmo32f, 8u32f));
    traced(COPY_SUBPIX(Zmo16u, Zmo32f, 16u32f));
    traced(COPY_SUBPIX(Zmo32f, Zmo32f, 32f));
}

template <class T>
T drawn(kit::Random& random, bool extreme) {
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(extreme ? std::copysign(3e38, random.uniform(-1, 1))
                                          : random.uniform(-1000, 1000));
    } else {
        constexpr int most = std::numeric_limits<T>::max();
        return static_cast<T>(extreme ? random.between(0, 1) * most : random.between(0, most));
    }
}

struct Valid {
    ZmoiPoint first{0, 0};
    ZmoiPoint last{-1, -1};
};
bool operator==(Valid a, Valid b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}
std::ostream& operator<<(std::ostream& out, Valid v) {
    return out << "(" << v.first.x << ", " << v.first.y << ") to (" << v.last.x << ", " << v.last.y
               << ")";
}

Valid validPart(oracle::Coordinate left, oracle::Coordinate top, ZmoiSize image, ZmoiSize window) {
    Valid part;
    bool any = false;
    for (int y = 0; y < window.height; ++y) {
        for (int x = 0; x < window.width; ++x) {
            if (!left.valid(x, image.width) || !top.valid(y, image.height)) continue;
            if (!any) part.first = {x, y};
            part.last = {x, y};
            any = true;
        }
    }
    return part;
}

template <class S, class D>
void expectWindow(const kit::Image<S>& src, const kit::Image<D>& dst, oracle::Coordinate left,
                  oracle::Coordinate top, int scaleFactor) {
    kit::expectPixels(dst, [&](int x, int y) {
        return oracle::stored<D>(oracle::subpixel(src, left, top, x, y), scaleFactor);
    });
    dst.expectSurroundingsUntouched("window");
}

template <class S, class D>
void expectCopy(const Functions<S, D>& functions, kit::Random& random, ZmoiSize size,
                kit::Layout layout, ZmoiPoint32f shift, bool extreme, int scaleFactor) {
    SCOPED_TRACE(testing::Message() << size << " " << layout << " by " << shift.x << ", " << shift.y
                                    << " scale " << scaleFactor);
    // Just what may be read: the step ends with the row, and guards follow the last one.
    kit::Image<S> src({size.width + (shift.x > 0), size.height + (shift.y > 0)}, layout);
    src.fill([&] { return drawn<S>(random, extreme); });
    kit::Image<D> dst(size, {layout.misalign * 5 % 64, layout.padding});
    dst.fill([] { return 77; });
    kit::succeed([&] {
        return functions.copy({src.ptr(),
                               src.step(),
                               {},
                               dst.ptr(),
                               dst.step(),
                               size,
                               shift.x,
                               shift.y,
                               {},
                               nullptr,
                               nullptr,
                               scaleFactor});
    });
    expectWindow(src, dst, oracle::Coordinate(shift.x), oracle::Coordinate(shift.y), scaleFactor);
    src.expectUntouched("image");
}

constexpr float lastFraction = 0x1.fffffep-1F;
const int scaleFactors[] = {0, 1, -3, 5, -31, 31};

TEST(CopySubpix, Oracle) {
    kit::Random random(71);
    auto sizes = kit::sizes();
    sizes.insert(sizes.end(), {{513, 3}, {1030, 2}});
    const auto layouts = kit::layouts();
    const float some = 0.3F;
    const ZmoiPoint32f shifts[] = {{0, 0},       {0.25F, 0}, {0, 0.75F},          {0.5F, 0.5F},
                                   {some, 0.1F}, {some, 0},  {lastFraction, some}};
    kit::forEachLevel([&] {
        forEachTypes([&](const auto& functions) {
            size_t turn = 0;
            for (const ZmoiSize size : sizes) {
                for (const ZmoiPoint32f shift : shifts) {
                    const int scaleFactor = functions.scaled ? scaleFactors[turn % 6] : 0;
                    expectCopy(functions, random, size, layouts[turn % layouts.size()], shift,
                               turn % 5 == 4, scaleFactor);
                    ++turn;
                }
            }
        });
    });
}

template <class S, class D>
void expectIntersect(const Functions<S, D>& functions, kit::Random& random, ZmoiSize image,
                     ZmoiSize window, kit::Layout layout, ZmoiPoint32f corner, int scaleFactor) {
    SCOPED_TRACE(testing::Message() << window << " at " << corner.x << ", " << corner.y << " of "
                                    << image << " scale " << scaleFactor);
    kit::Image<S> src(image, layout);
    src.fill([&] { return drawn<S>(random, false); });
    kit::Image<D> dst(window, {layout.misalign * 3 % 64, layout.padding + 1});
    const oracle::Coordinate left(corner.x);
    const oracle::Coordinate top(corner.y);
    dst.fill([] { return 77; });
    Valid have{{-7, -7}, {-7, -7}};
    kit::succeed([&] {
        return functions.intersect({src.ptr(), src.step(), image, dst.ptr(), dst.step(), window, 0,
                                    0, corner, &have.first, &have.last, scaleFactor});
    });
    EXPECT_EQ(have, validPart(left, top, image, window));
    expectWindow(src, dst, left, top, scaleFactor);
    src.expectUntouched("image");
}

TEST(CopySubpixIntersect, Oracle) {
    kit::Random random(72);
    const auto layouts = kit::layouts();
    const ZmoiSize images[] = {{1, 1}, {1, 9}, {40, 1}, {33, 7}, {70, 30}};
    const ZmoiSize windows[] = {{1, 1}, {9, 5}, {16, 3}, {67, 9}, {530, 2}};
    kit::forEachLevel([&] {
        forEachTypes([&](const auto& functions) {
            size_t turn = 0;
            for (const ZmoiSize image : images) {
                for (const ZmoiSize window : windows) {
                    const auto right = static_cast<float>(image.width);
                    const auto below = static_cast<float>(image.height);
                    const auto anywhere = [&](int length, int own) {
                        return static_cast<float>(random.uniform(-own - 1, length + 1));
                    };
                    // Inside, over each side, touching from outside, and far away.
                    const ZmoiPoint32f corners[] = {{0, 0},
                                                    {0.5F, 0.25F},
                                                    {-0.5F, -0.75F},
                                                    {-1, -1},
                                                    {right - 1, below - 1},
                                                    {right - 1.25F, below - 1.5F},
                                                    {right, 0.5F},
                                                    {-1e-9F, -1e-30F},
                                                    {anywhere(image.width, window.width),
                                                     anywhere(image.height, window.height)},
                                                    {anywhere(image.width, window.width),
                                                     anywhere(image.height, window.height)},
                                                    {3e38F, -3e38F},
                                                    {-4e9F, 5e9F}};
                    for (const ZmoiPoint32f corner : corners) {
                        const int scaleFactor = functions.scaled ? scaleFactors[turn % 6] : 0;
                        expectIntersect(functions, random, image, window,
                                        layouts[turn % layouts.size()], corner, scaleFactor);
                        ++turn;
                    }
                }
            }
        });
    });
}

// Halves go to the even neighbour.
TEST(CopySubpix, RoundsHalfToEven) {
    kit::Image<Zmo8u> src({9, 1});
    Zmo8u next = 247;
    src.fill([&] { return next++; });
    kit::Image<Zmo8u> dst({8, 1});
    kit::forEachLevel([&] {
        kit::succeed([&] {
            return zmoiCopySubpix_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), dst.size(),
                                         0.5F, 0);
        });
        kit::expectPixels(dst, [](int x, int) { return (248 + x) / 2 * 2; });
    });
}

// A NaN and an infinity reach the pixels that they contribute to, and no other.
TEST(CopySubpix, OddFloatsStayWhereTheyAre) {
    kit::Image<Zmo32f> src({41, 6});
    src.fill([] { return 1; });
    src.set(20, 3, std::numeric_limits<float>::quiet_NaN());
    src.set(30, 3, HUGE_VALF);
    kit::Image<Zmo32f> dst({40, 5});
    for (const float shift : {0.0F, 0.25F}) {
        kit::forEachLevel([&] {
            kit::succeed([&] {
                return zmoiCopySubpix_32f_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(),
                                              dst.size(), shift, shift);
            });
            const int reach = shift > 0 ? 1 : 0;
            for (int y = 0; y < 5; ++y) {
                for (int x = 0; x < 40; ++x) {
                    const bool near = y <= 3 && y >= 3 - reach;
                    const float value = dst.get(x, y);
                    if (near && x <= 20 && x >= 20 - reach) {
                        EXPECT_TRUE(std::isnan(value)) << x << ", " << y;
                    } else {
                        EXPECT_EQ(value, near && x <= 30 && x >= 30 - reach ? HUGE_VALF : 1)
                            << x << ", " << y;
                    }
                }
            }
        });
    }
}

template <class S, class D>
void expectBadArguments(const Functions<S, D>& functions, bool intersect) {
    using A = Args<S, D>;
    constexpr int source = sizeof(S);
    constexpr int target = sizeof(D);
    kit::Image<S> src({13, 5});
    kit::Image<D> dst({12, 4});
    src.fill([] { return 9; });
    Valid valid{{-7, -7}, {-7, -7}};
    const Valid before = valid;
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();

    std::vector<kit::Fault<A>> faults = {
        {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
        {"null window", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
    };
    const auto add = [&](const char* name, ZmoStatus status, std::function<void(A&)> apply) {
        faults.push_back({name, status, std::move(apply)});
    };
    if (intersect) {
        add("null first", zmoStsNullPtrErr, [](A& a) { a.pFirst = nullptr; });
        add("null last", zmoStsNullPtrErr, [](A& a) { a.pLast = nullptr; });
        add("image width 0", zmoStsSizeErr, [](A& a) { a.srcRoi.width = 0; });
        add("image height 0", zmoStsSizeErr, [](A& a) { a.srcRoi.height = 0; });
    }
    add("width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; });
    add("height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; });
    // 12 pixels are a row of the region, but dx needs a thirteenth.
    add("source step short", zmoStsStepErr, [](A& a) { a.srcStep = 12 * source; });
    add("window step short", zmoStsStepErr, [](A& a) { a.dstStep = 11 * target; });
    if (source > 1) add("source step odd", zmoStsStepErr, [](A& a) { ++a.srcStep; });
    if (target > 1) add("window step odd", zmoStsStepErr, [](A& a) { ++a.dstStep; });
    if (intersect) {
        add("corner NaN", zmoStsRangeErr, [=](A& a) { a.corner.x = nan; });
        add("corner infinite", zmoStsRangeErr, [](A& a) { a.corner.y = -HUGE_VALF; });
    } else {
        add("dx 1", zmoStsRangeErr, [](A& a) { a.dx = 1; });
        add("dy negative", zmoStsRangeErr, [](A& a) { a.dy = -0x1p-30F; });
        add("dy NaN", zmoStsRangeErr, [=](A& a) { a.dy = nan; });
    }
    if (functions.scaled) {
        add("scale -32", zmoStsScaleErr, [](A& a) { a.scaleFactor = -32; });
        add("scale 32", zmoStsScaleErr, [](A& a) { a.scaleFactor = 32; });
    }
    const A good{src.ptr(), src.step(), src.size(), dst.ptr(),    dst.step(),  dst.size(),
                 0.5F,      0.5F,       {1, 1},     &valid.first, &valid.last, 0};
    dst.snapshot();
    kit::expectFaults(good, intersect ? functions.intersect : functions.copy, faults, [&] {
        dst.expectUntouched("window");
        EXPECT_EQ(valid, before);
    });
}

TEST(CopySubpix, BadArguments) {
    forEachTypes([](const auto& functions) { expectBadArguments(functions, false); });
}

TEST(CopySubpixIntersect, BadArguments) {
    forEachTypes([](const auto& functions) { expectBadArguments(functions, true); });
}

}  // namespace
