#include <algorithm>
#include <cmath>

#include "kit.h"
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

std::vector<Mask> masks() {
    return {
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
}

// One image of one call: pixels of T, or bits (T is bool) packed with an offset.
template <class T>
class Picture {
  public:
    using Stored = T;
    Picture(ZmoiSize size, kit::Layout layout, int margin, int channels)
        : m_image(size, layout, margin, channels) {}
    T get(int x, int y, int c) const { return m_image.get(x, y, c); }
    template <class Draw>
    void fill(Draw draw) {
        m_image.fill(draw);
    }
    T* ptr() { return m_image.ptr(); }
    int step() const { return m_image.step(); }
    int bitOffset() const { return 0; }
    void expectSurroundingsUntouched() const { m_image.expectSurroundingsUntouched("destination"); }
    void expectUntouched() const { m_image.expectUntouched("image"); }

  private:
    kit::Image<T> m_image;
};

template <>
class Picture<bool> {
  public:
    using Stored = Zmo8u;
    Picture(ZmoiSize size, kit::Layout layout, int margin, int)
        : m_size(size),
          m_margin(margin),
          m_offset((layout.misalign + layout.padding) % 8),
          m_bytes({(size.width + 2 * margin + 14) / 8 + layout.padding, size.height + 2 * margin},
                  layout),
          m_firstBit(m_margin + m_offset) {}
    bool get(int x, int y, int) const {
        const int bit = m_firstBit + x;
        return ((m_bytes.get(bit / 8, y + m_margin) >> (7 - bit % 8)) & 1) != 0;
    }
    template <class Draw>
    void fill(Draw draw) {
        m_bytes.fill([&] {
            int byte = 0;
            for (int i = 0; i < 8; ++i) byte = byte * 2 + (draw() ? 1 : 0);
            return byte;
        });
        m_before.assign(1, m_bytes);
    }
    Zmo8u* ptr() { return m_bytes.ptr() + m_margin * m_bytes.step() + m_firstBit / 8; }
    int step() const { return m_bytes.step(); }
    int bitOffset() const { return m_firstBit % 8; }
    void expectSurroundingsUntouched() const {
        m_bytes.expectSurroundingsUntouched("destination");
        for (int y = 0; y < m_bytes.size().height; ++y) {
            for (int bit = 0; bit < m_bytes.size().width * 8; ++bit) {
                const int x = bit - m_firstBit;
                const bool mine =
                    x >= 0 && x < m_size.width && y >= m_margin && y < m_margin + m_size.height;
                const int changed = m_bytes.get(bit / 8, y) ^ m_before[0].get(bit / 8, y);
                ASSERT_TRUE(mine || ((changed >> (7 - bit % 8)) & 1) == 0)
                    << "bit " << x << " of row " << y - m_margin;
            }
        }
    }
    void expectUntouched() const { m_bytes.expectUntouched("image"); }

  private:
    ZmoiSize m_size;
    int m_margin;
    int m_offset;
    kit::Image<Zmo8u> m_bytes;
    int m_firstBit;
    std::vector<kit::Image<Zmo8u>> m_before;
};

template <class T>
struct Args {
    using Stored = typename Picture<T>::Stored;
    const Stored* pSrc;
    int64_t srcStep;
    int srcBitOffset;
    Stored* pDst;
    int64_t dstStep;
    int dstBitOffset;
    ZmoiSize roi;
    ZmoiBorderType border;
    const Stored* pValue;
    const ZmoiMorphState* pState;
    Zmo8u* pBuffer;
};

// The four shapes of the functions, as one.
template <class T, class S, class Step, class Size>
ZmoStatus call(ZmoStatus (*run)(const S*, Step, S*, Step, Size, ZmoiBorderType, const S*,
                                const ZmoiMorphState*, Zmo8u*),
               const Args<T>& a) {
    return run(a.pSrc, static_cast<Step>(a.srcStep), a.pDst, static_cast<Step>(a.dstStep),
               Size{a.roi.width, a.roi.height}, a.border, a.pValue, a.pState, a.pBuffer);
}
template <class T, class S, class Step, class Size>
ZmoStatus call(ZmoStatus (*run)(const S*, Step, int, S*, Step, int, Size, ZmoiBorderType, const S*,
                                const ZmoiMorphState*, Zmo8u*),
               const Args<T>& a) {
    return run(a.pSrc, static_cast<Step>(a.srcStep), a.srcBitOffset, a.pDst,
               static_cast<Step>(a.dstStep), a.dstBitOffset, Size{a.roi.width, a.roi.height},
               a.border, a.pValue, a.pState, a.pBuffer);
}

template <class T>
struct Function {
    const char* name;
    MorphOp op;
    ZmoDataType type;
    int channels;
    std::function<ZmoStatus(const Args<T>&)> run;
};

#define MORPH(fn, op, type, channels)                                                    \
    {                                                                                    \
#fn, MorphOp::op, zmo##type, channels, [](const auto& a) { return call(fn, a); } \
    }
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

std::vector<Function<bool>> functions(bool) {
    return {MORPH_OPS(1u, 1)};
}
std::vector<Function<Zmo8u>> functions(Zmo8u) {
    return {MORPH_OPS(8u, 1), MORPH_OPS(8u, 3), MORPH_OPS(8u, 4)};
}
std::vector<Function<Zmo16u>> functions(Zmo16u) {
    return {MORPH_OPS(16u, 1)};
}
std::vector<Function<Zmo16s>> functions(Zmo16s) {
    return {MORPH_OPS(16s, 1)};
}
std::vector<Function<Zmo32f>> functions(Zmo32f) {
    return {MORPH_OPS(32f, 1), MORPH_OPS(32f, 3), MORPH_OPS(32f, 4)};
}

template <class T>
struct Case {
    Case(const Function<T>& f, const Mask& m, ZmoiSize size, kit::Layout layout,
         ZmoiBorderType type)
        : function(f),
          mask(m),
          roi(size),
          border(type),
          margin(type == zmoiBorderInMem ? 2 * std::max(m.size.width, m.size.height) : 0),
          src(size, layout, margin, f.channels),
          dst(size, {layout.misalign * 5 % 64, layout.padding + 2}, 0, f.channels),
          state(sizes(0), 3),
          buffer(sizes(1), 1) {
        EXPECT_EQ(zmoiMorphInit(f.type, f.channels, m.points.data(), m.size, m.anchor, statePtr()),
                  zmoStsNoErr);
        state.expectSurroundingsUntouched();
    }

    template <class Draw>
    void fill(Draw draw) {
        src.fill(draw);
        for (auto& v : value) v = static_cast<typename Args<T>::Stored>(draw());
    }
    // How far two passes look around the region.
    ZmoiSize reach() const {
        return margin == 0 ? ZmoiSize{} : ZmoiSize{2 * mask.size.width, 2 * mask.size.height};
    }
    ZmoiMorphState* statePtr() { return reinterpret_cast<ZmoiMorphState*>(state.ptr()); }
    Args<T> args() {
        return {src.ptr(),  src.step(),  src.bitOffset(),
                dst.ptr(),  dst.step(),  dst.bitOffset(),
                roi,        border,      border == zmoiBorderConst ? value : nullptr,
                statePtr(), buffer.ptr()};
    }

    const Function<T>& function;
    const Mask& mask;
    ZmoiSize roi;
    ZmoiBorderType border;
    int margin;
    Picture<T> src;
    Picture<T> dst;
    typename Args<T>::Stored value[4] = {};
    kit::Buffer state;
    kit::Buffer buffer;

  private:
    int sizes(int which) const {
        int told[2] = {};
        EXPECT_EQ(
            zmoiMorphGetSize(roi, function.type, function.channels, mask.size, &told[0], &told[1]),
            zmoStsNoErr);
        int64_t wide[2] = {};
        EXPECT_EQ(zmoiMorphGetSize_L({roi.width, roi.height}, function.type, function.channels,
                                     {mask.size.width, mask.size.height}, &wide[0], &wide[1]),
                  zmoStsNoErr);
        EXPECT_EQ(told[which], wide[which]);
        return told[which];
    }
};

template <class T>
void expectOracle(Case<T>& c) {
    std::vector<std::vector<T>> want;
    for (int channel = 0; channel < c.function.channels; ++channel) {
        want.push_back(oracle::morph<T>(c.function.op, c.roi, c.reach(), c.mask.size, c.mask.anchor,
                                        c.mask.points, c.border, static_cast<T>(c.value[channel]),
                                        [&](int x, int y) { return c.src.get(x, y, channel); }));
    }
    kit::forEachLevel([&] {
        c.dst.fill([n = 0]() mutable { return static_cast<T>(++n % 7); });
        EXPECT_EQ(kit::watched([&] { return c.function.run(c.args()); }), zmoStsNoErr);
        c.dst.expectSurroundingsUntouched();
        c.buffer.expectSurroundingsUntouched();
        for (int y = 0; y < c.roi.height; ++y) {
            for (int x = 0; x < c.roi.width; ++x) {
                for (int channel = 0; channel < c.function.channels; ++channel) {
                    ASSERT_EQ(c.dst.get(x, y, channel),
                              want[static_cast<size_t>(channel)]
                                  [static_cast<size_t>(y * c.roi.width + x)])
                        << "pixel (" << x << ", " << y << ") channel " << channel
                        << "; ZMO_TEST_SEED=" << kit::runSeed();
                }
            }
        }
    });
    c.src.expectUntouched();
}

// Every function with every mask and border; sizes and layouts take turns.
template <class T, class Draw>
void expectOracleEverywhere(Draw draw) {
    const auto all = masks();
    const auto sizes = kit::sizes();
    const auto layouts = kit::layouts();
    size_t turn = 0;
    for (const auto& function : functions(T())) {
        for (const Mask& mask : all) {
            for (int border = zmoiBorderReplicate; border <= zmoiBorderInMem; ++border) {
                ++turn;
                const kit::Layout layout = layouts[turn % layouts.size()];
                const ZmoiSize size = sizes[turn * 5 % sizes.size()];
                SCOPED_TRACE(testing::Message()
                             << function.name << " mask " << mask.name << " border " << border
                             << " " << size << " " << layout);
                Case<T> c(function, mask, size, layout, static_cast<ZmoiBorderType>(border));
                c.fill(draw);
                expectOracle(c);
                if (testing::Test::HasFailure()) return;
            }
        }
    }
}

TEST(Morph, BitsOracle) {
    kit::Random random(61);
    expectOracleEverywhere<bool>([&] { return random.between(0, 1) != 0; });
    expectOracleEverywhere<bool>([&] { return random.between(0, 9) != 0; });
}

TEST(Morph, IntegerOracle) {
    kit::Random random(62);
    expectOracleEverywhere<Zmo8u>([&] { return static_cast<Zmo8u>(random.between(0, 255)); });
    expectOracleEverywhere<Zmo16u>([&] { return static_cast<Zmo16u>(random.between(0, 65535)); });
    expectOracleEverywhere<Zmo16s>(
        [&] { return static_cast<Zmo16s>(random.between(-32768, 32767)); });
}

TEST(Morph, FloatOracle) {
    kit::Random random(63);
    expectOracleEverywhere<Zmo32f>([&] { return static_cast<Zmo32f>(random.uniform(-1, 1)); });
}

// Infinities follow the formula; not-a-numbers give the same bits at all levels.
TEST(Morph, InfiniteAndNotANumber) {
    const Mask mask = rectangle("5x4", {5, 4}, {1, 2});
    kit::Random random(64);
    for (const auto& function : functions(Zmo32f())) {
        SCOPED_TRACE(function.name);
        Case<Zmo32f> c(function, mask, {75, 9}, {1, 3}, zmoiBorderReplicate);
        const bool subtracts = function.op >= MorphOp::gradient;
        c.fill([&] {
            return random.between(0, 60) == 0 && !subtracts ? HUGE_VALF : random.uniform(0, 1);
        });
        expectOracle(c);
        c.fill([&] { return random.between(0, 30) == 0 ? NAN : random.uniform(0, 1); });
        std::vector<std::vector<uint32_t>> bits;
        kit::forEachLevel([&] {
            EXPECT_EQ(function.run(c.args()), zmoStsNoErr);
            bits.emplace_back();
            for (int i = 0; i < 75 * 9; ++i)
                bits.back().push_back(std::bit_cast<uint32_t>(c.dst.get(i % 75, i / 75, 0)));
        });
        for (const auto& other : bits) EXPECT_EQ(other, bits[0]);
    }
}

template <class T>
void expectEmptyMaskClears() {
    const Zmo8u none[6] = {};
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        const Mask mask = rectangle("3x2", {3, 2}, {1, 1});
        Case<T> c(function, mask, {141, 3}, {1, 3}, zmoiBorderReplicate);
        c.fill([] { return static_cast<T>(1); });
        c.dst.fill([] { return static_cast<T>(1); });
        EXPECT_EQ(
            zmoiMorphInit(function.type, function.channels, none, {3, 2}, {1, 1}, c.statePtr()),
            zmoStsEmptyMask);
        EXPECT_EQ(function.run(c.args()), zmoStsEmptyMask);
        c.dst.expectSurroundingsUntouched();
        for (int x = 0; x < 141; ++x) ASSERT_EQ(c.dst.get(x, 2, function.channels - 1), T(0));
    }
}

TEST(Morph, EmptyMaskClears) {
    expectEmptyMaskClears<bool>();
    expectEmptyMaskClears<Zmo16s>();
    expectEmptyMaskClears<Zmo32f>();
}

template <class T>
void expectBadArguments() {
    const Mask mask = rectangle("3x3", {3, 3}, {1, 1});
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        Case<T> c(function, mask, {24, 4}, {0, 0}, zmoiBorderConst);
        c.fill([] { return static_cast<T>(1); });
        c.dst.fill([] { return static_cast<T>(0); });
        std::vector<char> foreign(4096);
        auto* const other = reinterpret_cast<ZmoiMorphState*>(foreign.data());
        const bool bits = std::is_same_v<T, bool>;
        EXPECT_EQ(zmoiMorphInit(bits ? zmo8u : zmo1u, 1, mask.points.data(), {3, 3}, {1, 1}, other),
                  zmoStsNoErr);
        using A = Args<T>;
        const int row = bits ? 3 : 24 * function.channels * static_cast<int>(sizeof(T));
        std::vector<kit::Fault<A>> faults = {
            {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
            {"null destination", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
            {"null border value", zmoStsNullPtrErr, [](A& a) { a.pValue = nullptr; }},
            {"null state", zmoStsNullPtrErr, [](A& a) { a.pState = nullptr; }},
            {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }},
            {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
            {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
            {"source step short", zmoStsStepErr, [=](A& a) { a.srcStep = row - 1; }},
            {"destination step short", zmoStsStepErr, [=](A& a) { a.dstStep = row - 1; }},
            {"destination step 0", zmoStsStepErr, [](A& a) { a.dstStep = 0; }},
        };
        if (bits) {
            faults.push_back({"source bit 8", zmoStsRangeErr, [](A& a) { a.srcBitOffset = 8; }});
            faults.push_back(
                {"destination bit -1", zmoStsRangeErr, [](A& a) { a.dstBitOffset = -1; }});
        }
        if (sizeof(T) > 1)
            faults.push_back(
                {"source step odd", zmoStsStepErr, [=](A& a) { a.srcStep = row + 1; }});
        std::ranges::stable_sort(faults,
                                 [](const auto& a, const auto& b) { return a.status > b.status; });
        faults.push_back({"border unknown", zmoStsBorderErr,
                          [](A& a) { a.border = static_cast<ZmoiBorderType>(4); }});
        faults.push_back({"foreign state", zmoStsStateErr, [other](A& a) { a.pState = other; }});
        // An unknown border needs no value, so the two faults do not meet.
        std::erase_if(faults,
                      [](const auto& f) { return f.name == std::string("null border value"); });
        kit::expectFaults(c.args(), function.run, faults, [&] { c.dst.expectUntouched(); });
        A a = c.args();
        a.pValue = nullptr;
        EXPECT_EQ(function.run(a), zmoStsNullPtrErr);
    }
}

TEST(Morph, BadArguments) {
    expectBadArguments<bool>();
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16s>();
    expectBadArguments<Zmo32f>();
}

TEST(Morph, BadMasks) {
    struct A {
        ZmoiSizeL roi;
        ZmoDataType type;
        int channels;
        ZmoiSizeL mask;
        ZmoiPoint anchor;
        int64_t* pSize;
    };
    int64_t stateSize = -1;
    int64_t bufferSize = -1;
    std::vector<kit::Fault<A>> faults = {
        {"null", zmoStsNullPtrErr, [](A& a) { a.pSize = nullptr; }},
        {"height 0", zmoStsSizeErr, [](A& a) { a.roi.height = 0; }},
        {"type", zmoStsDataTypeErr, [](A& a) { a.type = zmo32s; }},
        {"channels 2", zmoStsChannelsErr, [](A& a) { a.channels = 2; }},
        {"mask 0", zmoStsMaskSizeErr, [](A& a) { a.mask.width = 0; }},
        {"mask too high", zmoStsMaskSizeErr, [](A& a) { a.mask.height = 8192; }},
        {"too large", zmoStsTooLargeErr, [](A& a) { a.roi.width = INT64_MAX; }},
    };
    const A good{{9, 9}, zmo8u, 3, {2, 2}, {1, 1}, &stateSize};
    const auto getSize = [&](const A& a) {
        return zmoiMorphGetSize_L(a.roi, a.type, a.channels, a.mask, a.pSize, &bufferSize);
    };
    faults.pop_back();
    kit::expectFaults(good, getSize, faults, [&] { EXPECT_EQ(bufferSize, -1); });
    A huge = good;
    huge.roi.width = INT64_MAX;
    huge.mask = {8000, 8000};
    EXPECT_EQ(getSize(huge), zmoStsTooLargeErr);
    int size = 0;
    EXPECT_EQ(zmoiMorphGetSize({1 << 30, 1}, zmo32f, 4, {3, 3}, &size, &size), zmoStsTooLargeErr);

    const Zmo8u points[4] = {1, 1, 1, 1};
    kit::Buffer state(1000);
    faults.erase(faults.begin() + 1);
    faults.push_back({"anchor outside", zmoStsAnchorErr, [](A& a) { a.anchor.x = 2; }});
    faults.push_back({"anchor negative", zmoStsAnchorErr, [](A& a) { a.anchor.y = -1; }});
    const auto init = [&](const A& a) {
        return zmoiMorphInit_L(
            a.type, a.channels, points, a.mask, a.anchor,
            a.pSize == nullptr ? nullptr : reinterpret_cast<ZmoiMorphState*>(state.ptr()));
    };
    kit::expectFaults(good, init, faults, [&] { state.expectUntouched(); });
}

}  // namespace
