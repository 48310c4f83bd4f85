// Flat and grey-level morphology.
#include <cmath>

#include "case.h"
#include "oracle/morph.h"
#include "zmocv.h"

namespace {

using oracle::MorphOp;

struct Mask {
    ZmoiSize size;
    ZmoiPoint anchor;
    std::vector<double> points;
};

Mask rectangle(ZmoiSize size, ZmoiPoint anchor) {
    return {size, anchor, std::vector<double>(kit::indexIn(size, 0, size.height), 7)};
}

// Rectangles, a cross, one without its anchor, one point, and none.
const std::vector<Mask> masks = {rectangle({1, 1}, {0, 0}),
                                 rectangle({3, 3}, {1, 1}),
                                 rectangle({1, 4}, {0, 3}),
                                 rectangle({7, 1}, {2, 0}),
                                 rectangle({8, 5}, {7, 0}),
                                 rectangle({2, 2}, {0, 1}),
                                 rectangle({66, 2}, {31, 1}),
                                 {{3, 3}, {1, 1}, {0, 1, 0, 1, 1, 1, 0, 1, 0}},
                                 {{4, 2}, {3, 1}, {1, 0, 1, 0, 0, 0, 255, 0}},
                                 {{2, 3}, {1, 1}, {0, 0, 0, 0, 0, 1}},
                                 {{3, 2}, {1, 1}, {0, 0, 0, 0, 0, 0}}};

struct Row {
    kit::Function function;
    MorphOp op;

    bool isGray() const { return function.isNamed("Gray"); }
    bool isBits() const { return function.isNamed("_1u_"); }
    bool isFloat() const { return function.isNamed("_32f_"); }
};

#define FORMS(base, op, type, channels)                               \
    {ZMO(zmoi##base##Border_##type##_C##channels##R), MorphOp::op}, { \
        ZMO(zmoi##base##_##type##_C##channels##R_L), MorphOp::op      \
    }
#define OPERATIONS(type, channels)                                                        \
    FORMS(Erode, erode, type, channels), FORMS(Dilate, dilate, type, channels),           \
        FORMS(MorphOpen, open, type, channels), FORMS(MorphClose, close, type, channels), \
        FORMS(MorphGradient, gradient, type, channels),                                   \
        FORMS(MorphTophat, tophat, type, channels), FORMS(MorphBlackhat, blackhat, type, channels)
#define GRAY(type)                                              \
    {ZMO(zmoiGrayErodeBorder_##type##_C1R), MorphOp::erode}, {  \
        ZMO(zmoiGrayDilateBorder_##type##_C1R), MorphOp::dilate \
    }

const std::vector<Row> bits = {OPERATIONS(1u, 1)};
const std::vector<Row> integers = {OPERATIONS(8u, 1), OPERATIONS(8u, 3),  OPERATIONS(8u, 4),
                                   GRAY(8u),          OPERATIONS(16u, 1), OPERATIONS(16s, 1)};
const std::vector<Row> floats = {OPERATIONS(32f, 1), OPERATIONS(32f, 3), OPERATIONS(32f, 4),
                                 GRAY(32f)};

// The grey levels of all points: where integers are added, also such that the result saturates.
std::vector<double> grayValues(const Row& row, const Mask& mask) {
    std::vector<double> values;
    for (const double point : mask.points) {
        const int i = static_cast<int>(values.size());
        const double value = i * 37 % 97 - 40 + point;
        values.push_back(!row.isFloat() && i % 5 == 3 ? value * 2000 : value);
    }
    return values;
}

// Pixels, or bits from the bit offset of the first byte on.
int bitOffset(const Row& row, kit::Layout layout) {
    return row.isBits() ? (layout.misalign + layout.padding) % 8 : 0;
}
double pixelAt(const kit::Image& image, int offset, bool isBits, int x, int y, int c) {
    if (!isBits) return image(x, y, c);
    constexpr int far = 1000;
    const int bit = offset + x + 8 * far;
    return (static_cast<int>(image(bit / 8 - far, y)) >> (7 - bit % 8)) & 1;
}

// A function with a state for a mask; both must outlive it.
struct MorphCase {
    MorphCase(const Row& r, const Mask& m, const kit::Turn& t, ZmoiBorderType type)
        : row(r),
          mask(m),
          border(type),
          margin(type == zmoiBorderInMem ? 2 * std::max(m.size.width, m.size.height) : 0),
          srcOffset(bitOffset(r, t.layout)),
          dstOffset(bitOffset(r, {t.layout.misalign * 5 % 64, t.layout.padding + 2})),
          c(r.function, t,
            {{"pSrc", bytes(t.size, srcOffset), margin}, {"pDst", bytes(t.size, dstOffset)}}) {
        c.with({{"border", border},
                {"srcBitOffset", srcOffset},
                {"dstBitOffset", dstOffset},
                {"maskSize", mask.size},
                {"anchor", mask.anchor},
                {"pMask", mask.points},
                {"pValues", grayValues(row, mask)}});
        // Other than the type of the bytes that hold bits.
        if (row.isBits()) c.with("type", zmo1u);
        if (row.isGray()) {
            c.sized(ZMO(zmoiGrayMorphGetSize))
                .prepared(row.isFloat() ? ZMO(zmoiGrayMorphInit_32f_C1R)
                                        : ZMO(zmoiGrayMorphInit_8u_C1R));
            return;
        }
        c.sized(ZMO(zmoiMorphGetSize_L));
        const int large[] = {c.memory("pState").size(), c.memory("pBuffer").size()};
        c.sized(ZMO(zmoiMorphGetSize)).prepared(ZMO(zmoiMorphInit), status());
        EXPECT_EQ(c.memory("pState").size(), large[0]);
        EXPECT_EQ(c.memory("pBuffer").size(), large[1]);
    }

    MorphCase& fill(const kit::Pixels& pixels) {
        c.src().fill(pixels);
        c.borderValue().fill(pixels);
        return *this;
    }

    // Bits beside the region stay.
    kit::Case& want(const kit::Pixels& pixels) {
        return c.want([&](int x, int y, int k) {
            if (!row.isBits()) return c.dst().stored(pixels(x, y, k));
            double byte = 0;
            for (int i = 8 * x - dstOffset; i < 8 * x - dstOffset + 8; ++i) {
                const bool inside = i >= 0 && i < c.roi().width;
                byte = 2 * byte + (inside ? std::max(pixels(i, y, 0), 0.0)
                                          : pixelAt(c.dst(), dstOffset, true, i, y, 0));
            }
            return byte;
        });
    }
    // A mask without points clears.
    ZmoStatus status() const {
        const bool any = std::ranges::any_of(mask.points, [](double point) { return point != 0; });
        return any || row.isGray() ? zmoStsNoErr : zmoStsEmptyMask;
    }
    kit::Case& wantOracle() {
        if (status() != zmoStsNoErr) return want(0).wantStatus(status());
        std::vector<oracle::Plane> channels;
        for (int k = 0; k < c.src().channels(); ++k) channels.push_back(channelOf(k));
        return want([&](int x, int y, int k) { return channels[static_cast<size_t>(k)].at(x, y); });
    }

    const Row& row;
    const Mask& mask;
    ZmoiBorderType border;
    int margin;
    int srcOffset;
    int dstOffset;
    kit::Case c;

  private:
    ZmoiSize bytes(ZmoiSize roi, int offset) const {
        return {row.isBits() ? (offset + roi.width + 7) / 8 : roi.width, roi.height};
    }
    oracle::Plane channelOf(int k) const {
        // How far two passes look around the region.
        const int passes = margin == 0 ? 0 : 2;
        oracle::Plane source(c.roi(), {passes * mask.size.width, passes * mask.size.height});
        source.forEach([&](int x, int y) {
            source.at(x, y) = pixelAt(c.src(), srcOffset, row.isBits(), x, y, k);
        });
        const auto grays = grayValues(row, mask);
        const auto counts = [&](double& pixel, size_t point, bool dilates) {
            if (!row.isGray()) return mask.points[point] != 0;
            pixel = c.src().stored(pixel + (dilates ? 1 : -1) * grays[point]);
            return true;
        };
        const double outside = c.outside(k);
        return oracle::morph(
            row.op, source,
            {mask.size, mask.anchor, counts, border, row.isBits() ? outside != 0 : outside});
    }
};

// Every function with every mask and border; sizes and layouts take turns.
void expectOracleEverywhere(const std::vector<Row>& rows, const kit::Pixels& pixels) {
    const auto sizes = kit::sizes();
    size_t turn = 0;
    for (const Row& row : rows) {
        std::vector<kit::Case> cases;
        for (const Mask& mask : masks) {
            for (int border = zmoiBorderReplicate; border <= zmoiBorderInMem; ++border) {
                ++turn;
                // Under the sanitizers the borders take turns, too.
                if (kit::sanitized && turn % 4 != turn / 44 % 4) continue;
                const kit::Turn t(60, sizes[turn * 5 % sizes.size()], kit::layouts()[turn % 4]);
                MorphCase made(row, mask, t, static_cast<ZmoiBorderType>(border));
                cases.push_back(made.fill(pixels).wantOracle());
            }
        }
        kit::expectAtAllLevels(cases);
    }
}

TEST(Morph, BitsOracle) {
    kit::Random random(61);
    for (const int ones : {1, 9}) {
        expectOracleEverywhere(bits, [&] {
            int byte = 0;
            for (int i = 0; i < 8; ++i) byte = byte * 2 + (random.between(0, ones) != 0);
            return byte;
        });
    }
}

TEST(Morph, IntegerOracle) {
    kit::Random random(62);
    expectOracleEverywhere(integers, [&] { return random.between(0, 65535); });
}

TEST(Morph, FloatOracle) {
    kit::Random random(63);
    expectOracleEverywhere(floats, [&] { return random.between(-800, 800) / 8.0; });
}

// Masks around the width from which on windows are joined of parts. Pixels that decide are so rare
// that most windows have few of them.
TEST(Morph, WideMasks) {
    const Mask wide[] = {rectangle({1024, 1}, {1000, 0}), rectangle({1025, 1}, {3, 0}),
                         rectangle({1151, 2}, {575, 1})};
    kit::Turn t(65, {1300, 1}, {1, 3});
    std::vector<kit::Case> cases;
    for (const auto& rows : {bits, integers, floats}) {
        for (const Row& row : rows) {
            if (row.op > MorphOp::dilate || row.isGray() || row.function.large()) continue;
            if (row.function.isNamed("_16s_")) continue;
            const int usual = !row.isBits() ? 100 : row.op == MorphOp::erode ? 0xff : 0;
            for (const Mask& mask : wide) {
                // Under the sanitizers the masks take turns.
                if (++t.number; kit::sanitized && t.number % 4 != 0) continue;
                MorphCase made(row, mask, t, zmoiBorderReplicate);
                made.fill([&] { return t.between(0, 299) == 0 ? t.between(0, 255) : usual; });
                cases.push_back(made.wantOracle());
            }
        }
    }
    kit::expectAtAllLevels(cases);
}

// Infinities follow the formula; not-a-numbers give the same bits at all levels.
TEST(Morph, InfiniteAndNotANumber) {
    const Mask mask = rectangle({5, 4}, {1, 2});
    kit::Turn t(64, {75, 9}, {1, 3});
    const auto draw = [&](double rare) { return t.between(0, 60) == 0 ? rare : t.uniform(0, 1); };
    for (const Row& row : floats) {
        if (row.isGray()) continue;
        MorphCase made(row, mask, t, zmoiBorderReplicate);
        made.fill([&] { return draw(row.op >= MorphOp::gradient ? 2 : HUGE_VAL); });
        kit::Case odd = made.c;
        kit::expectAtAllLevels(made.wantOracle());
        odd.src().fill([&] { return draw(NAN); });
        kit::expectSameAtAllLevels(odd);
    }
}

TEST(Morph, BadArguments) {
    const kit::Turn t(68, {30, 4});
    // A state of bytes for bits, and of bits for all else.
    MorphCase ofBytes(integers[0], masks[1], t, zmoiBorderMirror);
    MorphCase ofBits(bits[0], masks[1], t, zmoiBorderMirror);
    for (const auto& rows : {bits, integers, floats}) {
        for (const Row& row : rows) {
            // A row of 30 bits has four bytes at any of the bit offsets.
            MorphCase made(row, masks[1], t, zmoiBorderMirror);
            kit::Case& foreign = row.isBits() ? ofBytes.c : ofBits.c;
            std::vector<kit::Wrong> wrong = {
                {"pState", foreign.memory("pState").ptr(), zmoStsStateErr}};
            if (row.isBits()) {
                wrong.push_back({"srcBitOffset", 8, zmoStsRangeErr});
                wrong.push_back({"dstBitOffset", -1, zmoStsRangeErr});
            }
            made.c.expectBadArguments(wrong);
        }
    }
}

TEST(Morph, BadMasks) {
    const kit::Wrong type{"type", zmo32s, zmoStsDataTypeErr};
    const kit::Wrong mask{"maskSize", {ZmoiSize{0, 2}, ZmoiSize{2, 8192}}, zmoStsMaskSizeErr};
    const kit::Wrong anchor{"anchor", {ZmoiPoint{2, 1}, ZmoiPoint{1, -1}}, zmoStsAnchorErr};
    const auto wide = [](int64_t width, int height) {
        const ZmoiSize largest{8000, 8000};
        return kit::Wrong({{"roi", ZmoiSizeL{width, height}}, {"maskSize", largest}},
                          zmoStsTooLargeErr);
    };
    const std::pair<kit::Function, std::vector<kit::Wrong>> services[] = {
        {ZMO(zmoiMorphGetSize), {type, mask, wide(INT32_MAX, 9)}},
        {ZMO(zmoiGrayMorphGetSize), {type, mask, wide(INT32_MAX, 9)}},
        {ZMO(zmoiMorphGetSize_L), {type, mask, wide(INT64_MAX, 1)}},
        {ZMO(zmoiMorphInit_L), {type, mask, anchor}},
        {ZMO(zmoiGrayMorphInit_8u_C1R), {mask, anchor}}};
    for (const auto& [service, wrong] : services) {
        kit::Case(service)
            .with({{"type", zmo8u},
                   {"channels", 1},
                   {"maskSize", ZmoiSize{2, 2}},
                   {"anchor", ZmoiPoint{1, 1}},
                   {"pMask", std::vector<double>(4, 1)},
                   {"pValues", std::vector<double>(4)}})
            .give("pState", kit::Buffer(1000))
            .expectBadArguments(wrong);
    }
}

}  // namespace
