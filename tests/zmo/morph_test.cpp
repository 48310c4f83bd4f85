// Flat and grey-level morphology.
#include <algorithm>
#include <cmath>
#include <memory>

#include "call.h"
#include "oracle/morph.h"
#include "zmocv.h"

namespace {

using oracle::MorphOp;

struct Mask {
    const char* name;
    ZmoiSize size;
    ZmoiPoint anchor;
    std::vector<Zmo8u> points;
};

Mask rectangle(const char* name, ZmoiSize size, ZmoiPoint anchor) {
    return {name, size, anchor,
            std::vector<Zmo8u>(static_cast<size_t>(size.width * size.height), 7)};
}

const std::vector<Mask>& masks() {
    static const std::vector<Mask> all = {
        rectangle("1x1", {1, 1}, {0, 0}),
        rectangle("3x3", {3, 3}, {1, 1}),
        rectangle("1x4", {1, 4}, {0, 3}),
        rectangle("7x1", {7, 1}, {2, 0}),
        rectangle("8x5 at a corner", {8, 5}, {7, 0}),
        rectangle("2x2", {2, 2}, {0, 1}),
        rectangle("66x2", {66, 2}, {31, 1}),
        {"cross", {3, 3}, {1, 1}, {0, 1, 0, 1, 1, 1, 0, 1, 0}},
        {"without its anchor", {4, 2}, {3, 1}, {1, 0, 1, 0, 0, 0, 255, 0}},
        {"one point", {2, 3}, {1, 1}, {0, 0, 0, 0, 0, 1}},
    };
    return all;
}

// 1u is stored in bytes, and T is bool.
template <class T>
using Stored = std::conditional_t<std::is_same_v<T, bool>, Zmo8u, T>;

// What a function takes stands in its prototype alone.
struct Function {
    template <class... P>
    Function(const char* title, MorphOp operation, ZmoDataType element, int count,
             ZmoStatus (*function)(P...))
        : name(title),
          op(operation),
          type(element),
          channels(count),
          isGray((std::is_same_v<P, const ZmoiGrayMorphState*> || ...)),
          isLarge((std::is_same_v<P, ZmoiSizeL> || ...)),
          parameters{kit::parameterOf<P>()...},
          run(kit::withArguments(function)) {}

    const char* name;
    MorphOp op;
    ZmoDataType type;
    int channels;
    bool isGray;
    bool isLarge;
    std::vector<kit::Parameter> parameters;
    std::function<ZmoStatus(const kit::Arguments&)> run;
};

#define MORPH(fn, op, type, channels) Function(#fn, MorphOp::op, zmo##type, channels, fn)
#define MORPH_FORMS(base, op, type, channels)                              \
    MORPH(zmoi##base##Border_##type##_C##channels##R, op, type, channels), \
        MORPH(zmoi##base##_##type##_C##channels##R_L, op, type, channels)
#define MORPH_OPS(type, channels)                                                           \
    MORPH_FORMS(Erode, erode, type, channels), MORPH_FORMS(Dilate, dilate, type, channels), \
        MORPH_FORMS(MorphOpen, open, type, channels),                                       \
        MORPH_FORMS(MorphClose, close, type, channels),                                     \
        MORPH_FORMS(MorphGradient, gradient, type, channels),                               \
        MORPH_FORMS(MorphTophat, tophat, type, channels),                                   \
        MORPH_FORMS(MorphBlackhat, blackhat, type, channels)
#define GRAY_OPS(type)                                       \
    MORPH(zmoiGrayErodeBorder_##type##_C1R, erode, type, 1), \
        MORPH(zmoiGrayDilateBorder_##type##_C1R, dilate, type, 1)

template <class T>
const std::vector<Function>& functions() {
    static const std::vector<Function> all = []() -> std::vector<Function> {
        if constexpr (std::is_same_v<T, bool>) return {MORPH_OPS(1u, 1)};
        if constexpr (std::is_same_v<T, Zmo8u>)
            return {MORPH_OPS(8u, 1), MORPH_OPS(8u, 3), MORPH_OPS(8u, 4), GRAY_OPS(8u)};
        if constexpr (std::is_same_v<T, Zmo16u>) return {MORPH_OPS(16u, 1)};
        if constexpr (std::is_same_v<T, Zmo16s>) return {MORPH_OPS(16s, 1)};
        if constexpr (std::is_same_v<T, Zmo32f>)
            return {MORPH_OPS(32f, 1), MORPH_OPS(32f, 3), MORPH_OPS(32f, 4), GRAY_OPS(32f)};
    }();
    return all;
}

// The grey level of a point: where integers are added, also such that the result saturates.
template <class T>
int grayValue(const Mask& mask, size_t point) {
    const int value = static_cast<int>(point * 37 % 97) - 40 + mask.points[point];
    return std::is_same_v<T, Zmo8u> && point % 5 == 3 ? value * 2000 : value;
}

// Pixels of T, or bits from the bit offset of the first byte on.
template <class T>
class Picture : public kit::Image<Stored<T>> {
  public:
    static constexpr bool isBits = std::is_same_v<T, bool>;

    Picture(ZmoiSize size, kit::Layout layout, int margin, int channels)
        : kit::Image<Stored<T>>(
              {isBits ? (offsetIn(layout) + size.width + 7) / 8 : size.width, size.height}, layout,
              margin, channels),
          m_offset(offsetIn(layout)) {}
    T at(int x, int y, int c) const {
        if constexpr (isBits) {
            const int bit = m_offset + x + 8 * far;
            return ((this->get(bit / 8 - far, y) >> (7 - bit % 8)) & 1) != 0;
        } else {
            return this->get(x, y, c);
        }
    }
    int bitOffset() const { return m_offset; }

  private:
    static constexpr int far = 1000;
    static int offsetIn(kit::Layout layout) {
        return isBits ? (layout.misalign + layout.padding) % 8 : 0;
    }
    int m_offset;
};

// What `dst` holds before a call, for the bits beside the region.
constexpr Zmo8u background = 0x4d;

template <class T>
struct Case {
    Case(const Function& f, const Mask& m, ZmoiSize size, kit::Layout layout, ZmoiBorderType type)
        : function(f),
          mask(m),
          roi(size),
          border(type),
          margin(type == zmoiBorderInMem ? 2 * std::max(m.size.width, m.size.height) : 0),
          src(size, layout, margin, f.channels),
          dst(size, {layout.misalign * 5 % 64, layout.padding + 2}, 0, f.channels),
          state(told(0), 3),
          buffer(told(1), 1) {
        EXPECT_EQ(initState(), zmoStsNoErr);
        dst.fill([] { return background; });
        state.snapshot();
        buffer.snapshot();
    }

    template <class Draw>
    void fill(Draw draw) {
        src.fill(draw);
        for (auto& v : value) v = static_cast<Stored<T>>(draw());
    }
    // How far two passes look around the region.
    ZmoiSize reach() const {
        return margin == 0 ? ZmoiSize{} : ZmoiSize{2 * mask.size.width, 2 * mask.size.height};
    }
    // Rows of other memory may stand for the images.
    kit::Arguments arguments(const void* pSrc, int64_t srcStep, void* pDst, int64_t dstStep) {
        using Values = std::vector<kit::Value>;
        const kit::Value size =
            function.isLarge ? kit::Value(ZmoiSizeL{roi.width, roi.height}) : kit::Value(roi);
        const Values given =
            Picture<T>::isBits
                ? Values{pSrc, srcStep, src.bitOffset(), pDst,        dstStep,     dst.bitOffset(),
                         size, border,  value,           state.ptr(), buffer.ptr()}
                : Values{pSrc,   srcStep, pDst,        dstStep,     size,
                         border, value,   state.ptr(), buffer.ptr()};
        kit::Arguments all;
        for (size_t i = 0; i < given.size(); ++i) {
            all.push_back(given[i].as(function.parameters[i]));
        }
        return all;
    }
    kit::Arguments arguments() { return arguments(src.ptr(), src.step(), dst.ptr(), dst.step()); }
    ZmoStatus call() { return function.run(arguments()); }

    const Function& function;
    const Mask& mask;
    ZmoiSize roi;
    ZmoiBorderType border;
    int margin;
    Picture<T> src;
    Picture<T> dst;
    Stored<T> value[4] = {};
    kit::Buffer state;
    kit::Buffer buffer;
    std::vector<std::vector<T>> want;

    void takeOracle() {
        for (int c = 0; c < function.channels; ++c) {
            using V = oracle::MorphValue<T>;
            const auto count = [&](V& pixel, int k) {
                const auto point = static_cast<size_t>(k);
                if (!function.isGray) return mask.points[point] != 0;
                const V gray = static_cast<V>(grayValue<T>(mask, point));
                pixel += function.op == MorphOp::dilate ? gray : -gray;
                if (std::is_integral_v<T>) pixel = std::clamp(pixel, V{0}, V{255});
                return true;
            };
            want.push_back(oracle::morph<T>(
                function.op, roi, reach(), mask.size, mask.anchor, border, static_cast<T>(value[c]),
                [&](int x, int y) { return src.at(x, y, c); }, count));
        }
    }

    void expectOracle() {
        SCOPED_TRACE(testing::Message()
                     << function.name << " mask " << mask.name << " border " << border << " " << roi
                     << "; ZMO_TEST_SEED=" << kit::runSeed());
        dst.fill([] { return background; });
        kit::succeed([&] { return call(); });
        dst.expectSurroundingsUntouched("destination");
        buffer.expectSurroundingsUntouched();
        const int width = Picture<T>::isBits ? dst.size().width * 8 - dst.bitOffset() : roi.width;
        for (int y = 0; y < roi.height; ++y) {
            for (int x = -dst.bitOffset(); x < width; ++x) {
                for (int c = 0; c < function.channels; ++c) {
                    const bool inside = x >= 0 && x < roi.width;
                    const T expected =
                        inside ? want[static_cast<size_t>(c)]
                                     [static_cast<size_t>(y) * static_cast<size_t>(roi.width) +
                                      static_cast<size_t>(x)]
                               : T((background >> (7 - (x + dst.bitOffset()) % 8)) & 1);
                    ASSERT_EQ(dst.at(x, y, c), expected)
                        << "pixel (" << x << ", " << y << ") channel " << c;
                }
            }
        }
        src.expectUntouched("source");
        state.expectUntouched();
    }

  private:
    int told(int which) const {
        int sizes[2] = {};
        if (function.isGray) {
            EXPECT_EQ(zmoiGrayMorphGetSize(roi, function.type, 1, mask.size, &sizes[0], &sizes[1]),
                      zmoStsNoErr);
            return sizes[which];
        }
        EXPECT_EQ(zmoiMorphGetSize(roi, function.type, function.channels, mask.size, &sizes[0],
                                   &sizes[1]),
                  zmoStsNoErr);
        int64_t wide[2] = {};
        EXPECT_EQ(zmoiMorphGetSize_L({roi.width, roi.height}, function.type, function.channels,
                                     {mask.size.width, mask.size.height}, &wide[0], &wide[1]),
                  zmoStsNoErr);
        EXPECT_EQ(sizes[which], wide[which]);
        return sizes[which];
    }

    ZmoStatus initState() {
        if (!function.isGray) {
            return zmoiMorphInit(function.type, function.channels, mask.points.data(), mask.size,
                                 mask.anchor, reinterpret_cast<ZmoiMorphState*>(state.ptr()));
        }
        std::vector<Zmo32s> values;
        for (size_t k = 0; k < mask.points.size(); ++k) values.push_back(grayValue<T>(mask, k));
        auto* const pState = reinterpret_cast<ZmoiGrayMorphState*>(state.ptr());
        if (function.type == zmo8u)
            return zmoiGrayMorphInit_8u_C1R(values.data(), mask.size, mask.anchor, pState);
        const std::vector<Zmo32f> floats(values.begin(), values.end());
        return zmoiGrayMorphInit_32f_C1R(floats.data(), mask.size, mask.anchor, pState);
    }
};

// Switching levels takes longer than a small call, so all cases run at one level before the next.
template <class T>
void expectOracle(std::vector<std::unique_ptr<Case<T>>>& cases) {
    kit::forEachLevel([&] {
        for (const auto& c : cases) {
            c->expectOracle();
            if (testing::Test::HasFailure()) return;
        }
    });
}

// Every function with every mask and border; sizes and layouts take turns.
template <class T, class Draw>
void expectOracleEverywhere(Draw draw) {
    const auto sizes = kit::sizes();
    const auto layouts = kit::layouts();
    size_t turn = 0;
    for (const auto& function : functions<T>()) {
        std::vector<std::unique_ptr<Case<T>>> cases;
        for (const Mask& mask : masks()) {
            for (int border = zmoiBorderReplicate; border <= zmoiBorderInMem; ++border) {
                ++turn;
                cases.push_back(std::make_unique<Case<T>>(
                    function, mask, sizes[turn * 5 % sizes.size()], layouts[turn % layouts.size()],
                    static_cast<ZmoiBorderType>(border)));
                cases.back()->fill(draw);
                cases.back()->takeOracle();
            }
        }
        expectOracle(cases);
        if (testing::Test::HasFailure()) return;
    }
}

// Masks around the width from which on windows are joined of parts. Pixels that decide are so rare
// that most windows have few of them.
template <class T>
void expectWideMasks() {
    static const Mask wide[] = {rectangle("1024x1", {1024, 1}, {1000, 0}),
                                rectangle("1025x1", {1025, 1}, {3, 0}),
                                rectangle("1151x2", {1151, 2}, {575, 1})};
    kit::Random random(67);
    std::vector<std::unique_ptr<Case<T>>> cases;
    for (const auto& function : functions<T>()) {
        if (function.op > MorphOp::dilate || function.isGray || function.isLarge) continue;
        const int usual = !Picture<T>::isBits ? 100 : function.op == MorphOp::erode ? 0xff : 0;
        for (const Mask& mask : wide) {
            cases.push_back(std::make_unique<Case<T>>(function, mask, ZmoiSize{1300, 1},
                                                      kit::Layout{1, 3}, zmoiBorderReplicate));
            cases.back()->fill(
                [&] { return random.between(0, 299) == 0 ? random.between(0, 255) : usual; });
            cases.back()->takeOracle();
        }
    }
    expectOracle(cases);
}

TEST(Morph, BitsOracle) {
    kit::Random random(61);
    for (const int ones : {1, 9}) {
        expectOracleEverywhere<bool>([&] {
            int byte = 0;
            for (int i = 0; i < 8; ++i) byte = byte * 2 + (random.between(0, ones) != 0);
            return byte;
        });
    }
    expectWideMasks<bool>();
}

TEST(Morph, IntegerOracle) {
    kit::Random random(62);
    const auto bits = [&] { return static_cast<uint16_t>(random.bits()); };
    expectOracleEverywhere<Zmo8u>(bits);
    expectOracleEverywhere<Zmo16u>(bits);
    expectOracleEverywhere<Zmo16s>(bits);
    expectWideMasks<Zmo8u>();
    expectWideMasks<Zmo16u>();
}

TEST(Morph, FloatOracle) {
    kit::Random random(63);
    const auto draw = [&] { return static_cast<Zmo32f>(random.between(-800, 800)) / 8; };
    expectOracleEverywhere<Zmo32f>(draw);
    expectWideMasks<Zmo32f>();
}

// Infinities follow the formula; not-a-numbers give the same bits at all levels.
TEST(Morph, InfiniteAndNotANumber) {
    const Mask mask = rectangle("5x4", {5, 4}, {1, 2});
    kit::Random random(64);
    std::vector<std::unique_ptr<Case<Zmo32f>>> cases;
    const auto draw = [&](double rare) {
        return random.between(0, 60) == 0 ? rare : random.uniform(0, 1);
    };
    for (const auto& function : functions<Zmo32f>()) {
        cases.push_back(std::make_unique<Case<Zmo32f>>(function, mask, ZmoiSize{75, 9},
                                                       kit::Layout{1, 3}, zmoiBorderReplicate));
        cases.back()->fill([&] { return draw(function.op >= MorphOp::gradient ? 2 : HUGE_VAL); });
        if (!function.isGray) cases.back()->takeOracle();
    }
    std::erase_if(cases, [](const auto& c) { return c->want.empty(); });
    expectOracle(cases);
    std::vector<kit::Image<Zmo32f>> first;
    for (const auto& c : cases) c->fill([&] { return draw(NAN); });
    kit::forEachLevel([&] {
        for (size_t i = 0; i < cases.size(); ++i) {
            EXPECT_EQ(cases[i]->call(), zmoStsNoErr);
            if (first.size() == i) first.push_back(cases[i]->dst);
            kit::expectPixels(cases[i]->dst,
                              [&](int x, int y, int c) { return first[i].get(x, y, c); });
        }
    });
}

template <class T>
void expectLargeImages() {
    kit::Random random(66);
    kit::FarRows src;
    kit::FarRows dst;
    if (!src || !dst) GTEST_SKIP() << kit::FarRows::whyNot;
    for (const auto& function : functions<T>()) {
        if (!function.isLarge) continue;
        SCOPED_TRACE(function.name);
        Case<T> c(function, masks()[4], {37, kit::FarRows::count}, {0, 0}, zmoiBorderMirror);
        c.fill([&] { return random.between(0, 127); });
        src.take(c.src);
        dst.take(c.dst);
        kit::succeed([&] { return c.call(); });
        constexpr int64_t step = kit::FarRows::step;
        const kit::Arguments far =
            c.arguments(src.first<Stored<T>>(), step, dst.first<Stored<T>>(), step);
        kit::succeed([&] { return function.run(far); });
        dst.expect(c.dst);
    }
}

TEST(Morph, ImagesBeyondTwoGigabytes) {
    expectLargeImages<bool>();
    expectLargeImages<Zmo8u>();
    expectLargeImages<Zmo16s>();
    expectLargeImages<Zmo32f>();
}

template <class T>
void expectEmptyMaskClears() {
    for (const auto& function : functions<T>()) {
        if (function.isGray) continue;
        SCOPED_TRACE(function.name);
        const Mask mask = rectangle("3x2", {3, 2}, {1, 1});
        Case<T> c(function, mask, {141, 3}, {1, 3}, zmoiBorderReplicate);
        c.fill([] { return 0xff; });
        const Zmo8u none[6] = {};
        EXPECT_EQ(zmoiMorphInit(function.type, function.channels, none, {3, 2}, {1, 1},
                                reinterpret_cast<ZmoiMorphState*>(c.state.ptr())),
                  zmoStsEmptyMask);
        EXPECT_EQ(c.call(), zmoStsEmptyMask);
        c.dst.expectSurroundingsUntouched("destination");
        for (int x = 0; x < 141; ++x) ASSERT_EQ(c.dst.at(x, 2, function.channels - 1), T(0));
    }
}

TEST(Morph, EmptyMaskClears) {
    expectEmptyMaskClears<bool>();
    expectEmptyMaskClears<Zmo32f>();
}

template <class T>
void expectBadArguments() {
    constexpr bool isBits = Picture<T>::isBits;
    kit::Buffer foreign(4096);
    const Zmo8u point = 1;
    EXPECT_EQ(zmoiMorphInit(isBits ? zmo8u : zmo1u, 1, &point, {1, 1}, {0, 0},
                            foreign.as<ZmoiMorphState>()),
              zmoStsNoErr);
    constexpr size_t pDst = isBits ? 3 : 2;
    constexpr size_t border = isBits ? 7 : 5;
    constexpr size_t pValue = border + 1;
    constexpr size_t pState = border + 2;
    for (const auto& function : functions<T>()) {
        SCOPED_TRACE(function.name);
        // A row of 30 bits has four bytes at any of the bit offsets.
        Case<T> c(function, masks()[1], {30, 4}, {0, 0}, zmoiBorderMirror);
        c.fill([] { return 1; });
        std::vector<kit::Wrong> wrong = {
            {{{border, zmoiBorderConst}, {pValue, nullptr}}, zmoStsNullPtrErr},
            {border, 4, zmoStsBorderErr},
            {pState, foreign.ptr(), zmoStsStateErr}};
        if (isBits) wrong.insert(wrong.begin(), {{2, 8, zmoStsRangeErr}, {5, -1, zmoStsRangeErr}});
        kit::expectBadArguments({function.parameters,
                                 {pValue},
                                 {{&c.src, 0, c.src.rowBytes()},
                                  {&c.dst, pDst, c.dst.rowBytes()},
                                  {&c.state, pState, 0},
                                  {&c.buffer, pState + 1, 0}},
                                 c.arguments(),
                                 function.run},
                                wrong);
    }
}

TEST(Morph, BadArguments) {
    expectBadArguments<bool>();
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16s>();
    expectBadArguments<Zmo32f>();
}

TEST(Morph, BadMasks) {
    int sizes[2] = {};
    for (auto* const getSize : {zmoiMorphGetSize, zmoiGrayMorphGetSize}) {
        kit::expectBadArguments(
            getSize,
            {{1, zmo32s, zmoStsDataTypeErr},
             {2, 2, zmoStsChannelsErr},
             {3, ZmoiSize{0, 2}, zmoStsMaskSizeErr},
             {3, ZmoiSize{2, 8192}, zmoStsMaskSizeErr},
             {{{0, ZmoiSize{INT32_MAX, 9}}, {3, ZmoiSize{8000, 8000}}}, zmoStsTooLargeErr}},
            ZmoiSize{9, 9}, zmo8u, 1, kit::exempt(ZmoiSize{2, 2}), &sizes[0], &sizes[1]);
    }
    int64_t size = 0;
    EXPECT_EQ(zmoiMorphGetSize_L({INT64_MAX, 1}, zmo8u, 1, {8000, 8000}, &size, &size),
              zmoStsTooLargeErr);
    const Zmo8u points[4] = {1, 1, 1, 1};
    const Zmo32s values[4] = {};
    kit::Buffer state(1000);
    kit::expectBadArguments(zmoiMorphInit_L,
                            {{0, zmo32s, zmoStsDataTypeErr},
                             {1, 2, zmoStsChannelsErr},
                             {3, ZmoiSizeL{0, 2}, zmoStsMaskSizeErr},
                             {3, ZmoiSizeL{2, 8192}, zmoStsMaskSizeErr},
                             {4, ZmoiPoint{2, 1}, zmoStsAnchorErr},
                             {4, ZmoiPoint{1, -1}, zmoStsAnchorErr}},
                            zmo8u, 1, &points[0], kit::exempt(ZmoiSizeL{2, 2}), ZmoiPoint{1, 1},
                            state);
    kit::expectBadArguments(zmoiGrayMorphInit_8u_C1R,
                            {{1, ZmoiSize{0, 2}, zmoStsMaskSizeErr},
                             {1, ZmoiSize{2, 8192}, zmoStsMaskSizeErr},
                             {2, ZmoiPoint{2, 1}, zmoStsAnchorErr},
                             {2, ZmoiPoint{1, -1}, zmoStsAnchorErr}},
                            &values[0], kit::exempt(ZmoiSize{2, 2}), ZmoiPoint{1, 1}, state);
}

}  // namespace
