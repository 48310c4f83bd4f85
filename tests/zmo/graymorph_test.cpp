#include <algorithm>

#include "kit.h"
#include "oracle/morph.h"
#include "zmocv.h"

namespace {

template <class T>
using Element = std::conditional_t<std::is_same_v<T, Zmo8u>, Zmo32s, Zmo32f>;

template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    T* pDst;
    int dstStep;
    ZmoiSize roi;
    ZmoiBorderType border;
    const T* pValue;
    const ZmoiGrayMorphState* pState;
    Zmo8u* pBuffer;
};

ZmoStatus call(bool dilates, const Args<Zmo8u>& a) {
    return (dilates ? zmoiGrayDilateBorder_8u_C1R : zmoiGrayErodeBorder_8u_C1R)(
        a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, a.border, a.pValue, a.pState, a.pBuffer);
}
ZmoStatus call(bool dilates, const Args<Zmo32f>& a) {
    return (dilates ? zmoiGrayDilateBorder_32f_C1R : zmoiGrayErodeBorder_32f_C1R)(
        a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, a.border, a.pValue, a.pState, a.pBuffer);
}
ZmoStatus init(const Zmo32s* g, ZmoiSize size, ZmoiPoint anchor, ZmoiGrayMorphState* state) {
    return zmoiGrayMorphInit_8u_C1R(g, size, anchor, state);
}
ZmoStatus init(const Zmo32f* g, ZmoiSize size, ZmoiPoint anchor, ZmoiGrayMorphState* state) {
    return zmoiGrayMorphInit_32f_C1R(g, size, anchor, state);
}

template <class T>
struct Case {
    static constexpr ZmoDataType type = std::is_same_v<T, Zmo8u> ? zmo8u : zmo32f;

    Case(ZmoiSize size, kit::Layout layout, ZmoiSize m, ZmoiPoint a, ZmoiBorderType b)
        : mask(m),
          anchor(a),
          border(b),
          src(size, layout, b == zmoiBorderInMem ? 8 : 0),
          dst(size, {layout.misalign * 3 % 64, layout.padding + 1}),
          state(told(0), 3),
          buffer(told(1), 1) {}

    ZmoiGrayMorphState* statePtr() { return reinterpret_cast<ZmoiGrayMorphState*>(state.ptr()); }
    Args<T> args() {
        return {src.ptr(),
                src.step(),
                dst.ptr(),
                dst.step(),
                src.size(),
                border,
                border == zmoiBorderConst ? &value : nullptr,
                statePtr(),
                buffer.ptr()};
    }
    int told(int which) const {
        int sizes[2] = {};
        EXPECT_EQ(zmoiGrayMorphGetSize(src.size(), type, 1, mask, &sizes[0], &sizes[1]),
                  zmoStsNoErr);
        return sizes[which];
    }

    ZmoiSize mask;
    ZmoiPoint anchor;
    ZmoiBorderType border;
    kit::Image<T> src;
    kit::Image<T> dst;
    T value = 77;
    kit::Buffer state;
    kit::Buffer buffer;
};

template <class T, class Pixel, class Value>
void expectOracle(Pixel drawPixel, Value drawValue) {
    using V = oracle::Value<T>;
    const auto sizes = kit::sizes();
    const auto layouts = kit::layouts();
    for (size_t turn = 0; turn < sizes.size() * 8; ++turn) {
        const ZmoiSize mask{1 + static_cast<int>(turn % 5), 1 + static_cast<int>(turn / 2 % 4)};
        const bool dilates = turn % 2 != 0;
        Case<T> c(
            sizes[turn % sizes.size()], layouts[turn / 4 % 4], mask,
            {static_cast<int>(turn / 3) % mask.width, static_cast<int>(turn / 7) % mask.height},
            static_cast<ZmoiBorderType>(turn / 2 % 4));
        SCOPED_TRACE(testing::Message() << c.src.size() << " mask " << mask << " border "
                                        << c.border << " dilates " << dilates);
        std::vector<Element<T>> g(static_cast<size_t>(mask.width * mask.height));
        for (auto& v : g) v = static_cast<Element<T>>(drawValue());
        EXPECT_EQ(init(g.data(), mask, c.anchor, c.statePtr()), zmoStsNoErr);
        c.src.fill(drawPixel);
        oracle::Plane<V> source(c.src.size(),
                                c.border == zmoiBorderInMem ? ZmoiSize{8, 8} : ZmoiSize{});
        for (int y = -source.margin.height; y < source.size.height + source.margin.height; ++y) {
            for (int x = -source.margin.width; x < source.size.width + source.margin.width; ++x)
                source.at(x, y) = c.src.get(x, y);
        }
        auto want = oracle::pass(
            source, dilates, mask, c.anchor, c.border, static_cast<V>(c.value), [&](V& v, int k) {
                const V sum = v + (dilates ? 1 : -1) * static_cast<V>(g[static_cast<size_t>(k)]);
                v = static_cast<V>(
                    std::is_integral_v<T>
                        ? static_cast<V>(std::clamp(static_cast<double>(sum), 0.0, 255.0))
                        : sum);
                return true;
            });
        kit::forEachLevel([&] {
            kit::succeed([&] { return call(dilates, c.args()); });
            c.dst.expectSurroundingsUntouched("destination");
            c.buffer.expectSurroundingsUntouched();
            kit::expectPixels(c.dst, [&](int x, int y) { return want.at(x, y); });
        });
        c.src.expectUntouched("source");
    }
}

TEST(GrayMorph, EightBitOracle) {
    kit::Random random(65);
    expectOracle<Zmo8u>([&] { return random.between(0, 255); },
                        [&] { return random.between(-40, 40); });
    expectOracle<Zmo8u>([&] { return random.between(0, 255); },
                        [&] { return random.between(0, 1) * 2000 - random.between(0, 1500); });
}

TEST(GrayMorph, FloatOracle) {
    kit::Random random(66);
    expectOracle<Zmo32f>([&] { return static_cast<float>(random.uniform(-1, 1)); },
                         [&] { return static_cast<float>(random.between(-8, 8)) / 8; });
}

TEST(GrayMorph, BadArguments) {
    Case<Zmo8u> c({9, 4}, {}, {3, 3}, {1, 1}, zmoiBorderConst);
    const Zmo32s g[9] = {};
    EXPECT_EQ(init(g, c.mask, c.anchor, c.statePtr()), zmoStsNoErr);
    c.dst.snapshot();
    using A = Args<Zmo8u>;
    std::vector<char> flat(256);
    const Zmo8u point = 1;
    auto* const foreign = reinterpret_cast<ZmoiMorphState*>(flat.data());
    EXPECT_EQ(zmoiMorphInit(zmo8u, 1, &point, {1, 1}, {0, 0}, foreign), zmoStsNoErr);
    for (const bool dilates : {false, true}) {
        kit::expectFaults(
            c.args(), [&](const A& a) { return call(dilates, a); },
            std::vector<kit::Fault<A>>{
                {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
                {"null destination", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
                {"null value", zmoStsNullPtrErr, [](A& a) { a.pValue = nullptr; }},
                {"null state", zmoStsNullPtrErr, [](A& a) { a.pState = nullptr; }},
                {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }},
                {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
                {"source step", zmoStsStepErr, [](A& a) { a.srcStep = 8; }},
                {"destination step", zmoStsStepErr, [](A& a) { a.dstStep = 0; }},
                {"foreign state", zmoStsStateErr,
                 [&](A& a) { a.pState = reinterpret_cast<const ZmoiGrayMorphState*>(foreign); }},
            },
            [&] { c.dst.expectUntouched("destination"); });
        A a = c.args();
        a.border = static_cast<ZmoiBorderType>(-1);
        EXPECT_EQ(call(dilates, a), zmoStsBorderErr);
        c.dst.snapshot();
    }
    int size = 0;
    EXPECT_EQ(zmoiGrayMorphGetSize({9, 9}, zmo16u, 1, {3, 3}, &size, &size), zmoStsDataTypeErr);
    EXPECT_EQ(zmoiGrayMorphGetSize({9, 9}, zmo8u, 3, {3, 3}, &size, &size), zmoStsChannelsErr);
    EXPECT_EQ(zmoiGrayMorphGetSize({9, 9}, zmo8u, 1, {3, 0}, &size, &size), zmoStsMaskSizeErr);
    EXPECT_EQ(zmoiGrayMorphInit_8u_C1R(g, {3, 3}, {3, 0}, c.statePtr()), zmoStsAnchorErr);
    EXPECT_EQ(zmoiGrayMorphInit_8u_C1R(nullptr, {3, 3}, {0, 0}, c.statePtr()), zmoStsNullPtrErr);
}

}  // namespace
