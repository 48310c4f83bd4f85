#include "oracle/mask.h"
#include "kit.h"
#include "zmoi.h"

namespace {

constexpr ZmoiBorderType borders[] = {zmoiBorderReplicate, zmoiBorderConst, zmoiBorderMirror,
                                      zmoiBorderInMem};
constexpr ZmoiMaskSize masks[] = {zmoiMask3x3, zmoiMask5x5};

template <class T, class D>
struct MaskFunction {
    const char* name;
    oracle::Mask kind;
    ZmoStatus (*run)(const T*, int, D*, int, ZmoiSize, ZmoiMaskSize, ZmoiBorderType, const T*,
                     Zmo8u*);
    ZmoStatus (*bufferSize)(ZmoiSize, ZmoiMaskSize, ZmoDataType, int, int*);
    ZmoDataType type;
};

#define MASK(Base, types, kind, type)                                             \
    {                                                                             \
#Base #types, oracle::Mask::kind, zmoiFilter##Base##Border_##types##_C1R, \
            zmoiFilter##Base##BorderGetBufferSize, type                           \
    }
constexpr MaskFunction<Zmo8u, Zmo16s> functions8u[] = {MASK(SobelVert, 8u16s, vert, zmo8u),
                                                       MASK(SobelHoriz, 8u16s, horiz, zmo8u),
                                                       MASK(Laplacian, 8u16s, laplacian, zmo8u)};
constexpr MaskFunction<Zmo8u, Zmo8u> lowpass8u = MASK(Lowpass, 8u, lowpass, zmo8u);
constexpr MaskFunction<Zmo32f, Zmo32f> functions32f[] = {
    MASK(SobelVert, 32f, vert, zmo32f), MASK(SobelHoriz, 32f, horiz, zmo32f),
    MASK(SobelCross, 32f, cross, zmo32f), MASK(Laplacian, 32f, laplacian, zmo32f),
    MASK(Lowpass, 32f, lowpass, zmo32f)};

template <class T, class D>
void expectOracle(const MaskFunction<T, D>& function, const kit::Image<T>& src, kit::Layout layout,
                  ZmoiMaskSize mask, ZmoiBorderType border, T value) {
    int size = 0;
    ASSERT_EQ(function.bufferSize(src.size(), mask, function.type, 1, &size), zmoStsNoErr);
    ASSERT_GE(size, 64);
    const oracle::Extended<T> extended{src, border, value};
    kit::Image<D> expected(src.size());
    for (int y = 0; y < src.size().height; ++y) {
        for (int x = 0; x < src.size().width; ++x) {
            const auto pixel = oracle::mask(extended, x, y, mask / 2, function.kind);
            expected.set(x, y, static_cast<D>(pixel));
        }
    }
    kit::forEachLevel([&] {
        kit::Image<D> dst(src.size(), layout);
        kit::Buffer buffer(size);
        const T* const pValue = border == zmoiBorderConst ? &value : nullptr;
        kit::succeed([&] {
            return function.run(src.ptr(), src.step(), dst.ptr(), dst.step(), src.size(), mask,
                                border, pValue, buffer.ptr());
        });
        kit::expectPixels(dst, [&](int x, int y) { return expected.get(x, y); });
        dst.expectSurroundingsUntouched("destination");
        buffer.expectSurroundingsUntouched();
    });
}

template <class T, class D, class Draw>
void expectOracleEverywhere(const MaskFunction<T, D>& function, Draw draw) {
    SCOPED_TRACE(function.name);
    size_t turn = 0;
    for (const ZmoiSize size : kit::sizes()) {
        for (const ZmoiMaskSize mask : masks) {
            for (const ZmoiBorderType border : borders) {
                const auto layouts = kit::layouts();
                const kit::Layout layout = layouts[turn++ % layouts.size()];
                SCOPED_TRACE(testing::Message()
                             << size << " mask " << mask << " border " << border << " " << layout);
                kit::Image<T> src(size, layout, 2);
                src.fill(draw);
                expectOracle(function, src, layout, mask, border, static_cast<T>(draw()));
                src.expectUntouched("source");
            }
        }
    }
}

TEST(FixedMasks, EightBitOracle) {
    kit::Random random(1);
    for (const auto& function : functions8u) {
        expectOracleEverywhere(function, [&] { return random.between(0, 255); });
    }
    expectOracleEverywhere(lowpass8u, [&] { return random.between(0, 255); });
}

TEST(FixedMasks, EightBitExtremes) {
    kit::Random random(2);
    for (const auto& function : functions8u) {
        expectOracleEverywhere(function, [&] { return random.between(0, 1) * 255; });
    }
    expectOracleEverywhere(lowpass8u, [&] { return random.between(0, 1) * 255; });
}

TEST(FixedMasks, FloatOracle) {
    kit::Random random(3);
    for (const auto& function : functions32f) {
        expectOracleEverywhere(function, [&] { return random.uniform(-1000, 1000); });
    }
}

// A constant border differs with its value, and all four borders differ from each other.
TEST(FixedMasks, BorderAndValueMatter) {
    kit::Random random(4);
    kit::Image<Zmo8u> src({9, 7}, {}, 2);
    src.fill([&] { return random.between(1, 254); });
    for (const auto& function : functions8u) {
        for (const ZmoiMaskSize mask : masks) {
            const struct {
                ZmoiBorderType border;
                Zmo8u value;
            } cases[] = {{zmoiBorderReplicate, 0},
                         {zmoiBorderConst, 0},
                         {zmoiBorderConst, 255},
                         {zmoiBorderMirror, 0},
                         {zmoiBorderInMem, 0}};
            std::vector<kit::Image<Zmo16s>> results;
            for (const auto& c : cases) {
                kit::Image<Zmo16s> dst(src.size());
                int size = 0;
                ASSERT_EQ(function.bufferSize(src.size(), mask, zmo8u, 1, &size), zmoStsNoErr);
                kit::Buffer buffer(size);
                ASSERT_EQ(function.run(src.ptr(), src.step(), dst.ptr(), dst.step(), src.size(),
                                       mask, c.border, &c.value, buffer.ptr()),
                          zmoStsNoErr);
                for (const auto& earlier : results) {
                    EXPECT_FALSE(kit::samePixels(earlier, dst)) << function.name << mask;
                }
                results.push_back(dst);
            }
        }
    }
}

template <class T, class D>
struct MaskArgs {
    const T* pSrc;
    int srcStep;
    D* pDst;
    int dstStep;
    ZmoiSize roi;
    ZmoiMaskSize mask;
    ZmoiBorderType border;
    const T* pBorderValue;
    Zmo8u* pBuffer;
};

template <class T, class D>
void expectMaskFaults(const MaskFunction<T, D>& function) {
    SCOPED_TRACE(function.name);
    using Args = MaskArgs<T, D>;
    kit::Image<T> src({20, 6});
    kit::Image<D> dst({20, 6});
    src.fill([] { return 7; });
    int size = 0;
    ASSERT_EQ(function.bufferSize({20, 6}, zmoiMask5x5, function.type, 1, &size), zmoStsNoErr);
    kit::Buffer buffer(size);
    const T value = 3;
    const int element = sizeof(T);
    const int dstElement = sizeof(D);
    std::vector<kit::Fault<Args>> faults = {
        {"null source", zmoStsNullPtrErr, [](Args& a) { a.pSrc = nullptr; }},
        {"null destination", zmoStsNullPtrErr, [](Args& a) { a.pDst = nullptr; }},
        {"null buffer", zmoStsNullPtrErr, [](Args& a) { a.pBuffer = nullptr; }},
        {"null border value", zmoStsNullPtrErr,
         [](Args& a) { a.border = zmoiBorderConst, a.pBorderValue = nullptr; }},
        {"width 0", zmoStsSizeErr, [](Args& a) { a.roi.width = 0; }},
        {"height negative", zmoStsSizeErr, [](Args& a) { a.roi.height = -1; }},
        {"source step short", zmoStsStepErr, [=](Args& a) { a.srcStep = 20 * element - 1; }},
        {"source step negative", zmoStsStepErr, [](Args& a) { a.srcStep = -a.srcStep; }},
        {"destination step short", zmoStsStepErr, [=](Args& a) { a.dstStep = 19 * dstElement; }},
        {"destination step odd", zmoStsStepErr,
         [=](Args& a) { a.dstStep = dstElement > 1 ? 20 * dstElement + 1 : 19; }},
        {"destination step 0", zmoStsStepErr, [](Args& a) { a.dstStep = 0; }},
        {"mask 4", zmoStsMaskSizeErr, [](Args& a) { a.mask = static_cast<ZmoiMaskSize>(4); }},
        {"border 4", zmoStsBorderErr, [](Args& a) { a.border = static_cast<ZmoiBorderType>(4); }},
    };
    const Args good{src.ptr(),   src.step(),          dst.ptr(), dst.step(),  {20, 6},
                    zmoiMask5x5, zmoiBorderReplicate, &value,    buffer.ptr()};
    kit::expectFaults(
        good,
        [&](const Args& a) {
            return function.run(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, a.mask, a.border,
                                a.pBorderValue, a.pBuffer);
        },
        faults,
        [&] {
            dst.expectUntouched("destination");
            buffer.expectUntouched();
        });
}

TEST(FixedMasks, BadArguments) {
    for (const auto& function : functions8u) expectMaskFaults(function);
    for (const auto& function : functions32f) expectMaskFaults(function);
    expectMaskFaults(lowpass8u);
}

TEST(FixedMasks, BufferSizeQuery) {
    struct Args {
        ZmoiSize roi;
        ZmoiMaskSize mask;
        ZmoDataType type;
        int channels;
        int* pSize;
    };
    const std::vector<kit::Fault<Args>> faults = {
        {"null", zmoStsNullPtrErr, [](Args& a) { a.pSize = nullptr; }},
        {"width", zmoStsSizeErr, [](Args& a) { a.roi.width = 0; }},
        {"height", zmoStsSizeErr, [](Args& a) { a.roi.height = 0; }},
        {"mask", zmoStsMaskSizeErr, [](Args& a) { a.mask = static_cast<ZmoiMaskSize>(7); }},
        {"type", zmoStsDataTypeErr, [](Args& a) { a.type = zmo16s; }},
        {"channels", zmoStsChannelsErr, [](Args& a) { a.channels = 3; }},
        {"large", zmoStsTooLargeErr, [](Args& a) { a.roi.width = 2147483647; }},
    };
    for (auto* const query :
         {zmoiFilterSobelVertBorderGetBufferSize, zmoiFilterSobelHorizBorderGetBufferSize,
          zmoiFilterLaplacianBorderGetBufferSize, zmoiFilterLowpassBorderGetBufferSize}) {
        int size = -5;
        kit::expectFaults(
            Args{{640, 480}, zmoiMask3x3, zmo8u, 1, &size},
            [&](const Args& a) { return query(a.roi, a.mask, a.type, a.channels, a.pSize); },
            faults, [&] { EXPECT_EQ(size, -5); });
        const int wide = size;
        ASSERT_EQ(query({64, 48}, zmoiMask3x3, zmo8u, 1, &size), zmoStsNoErr);
        EXPECT_LT(size, wide);
    }
    int size = 0;
    EXPECT_EQ(zmoiFilterSobelCrossBorderGetBufferSize({5, 5}, zmoiMask3x3, zmo8u, 1, &size),
              zmoStsDataTypeErr);
}

}  // namespace
