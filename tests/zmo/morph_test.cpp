// Flat and grey-level morphology.
#include <cmath>

#include "case.h"
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

// The grey level of a point: where integers are added, also such that the result saturates.
int grayValue(const Row& row, const Mask& mask, size_t point) {
    const int value = static_cast<int>(point * 37 % 97) - 40 + mask.points[point];
    return !row.isFloat() && point % 5 == 3 ? value * 2000 : value;
}

// Pixels, or bits from the bit offset of the first byte on.
int bitOffset(const Row& row, kit::Layout layout) {
    return row.isBits() ? (layout.misalign + layout.padding) % 8 : 0;
}
double pixelAt(const kit::AnyImage& image, int offset, bool isBits, int x, int y, int c) {
    if (!isBits) return image.get(x, y, c);
    constexpr int far = 1000;
    const int bit = offset + x + 8 * far;
    return (static_cast<int>(image.get(bit / 8 - far, y)) >> (7 - bit % 8)) & 1;
}

// A function with a state for a mask; the mask must outlive it.
struct MorphCase {
    MorphCase(const Row& r, const Mask& m, ZmoiSize roi, kit::Layout layout, ZmoiBorderType type)
        : row(r),
          mask(m),
          border(type),
          margin(type == zmoiBorderInMem ? 2 * std::max(m.size.width, m.size.height) : 0),
          srcOffset(bitOffset(r, layout)),
          dstOffset(bitOffset(r, {layout.misalign * 5 % 64, layout.padding + 2})),
          c(r.function, roi, layout,
            {{"pSrc", bytes(roi, srcOffset), margin}, {"pDst", bytes(roi, dstOffset)}}) {
        c.with({{"border", border},
                {"srcBitOffset", srcOffset},
                {"dstBitOffset", dstOffset},
                {"maskSize", mask.size},
                {"anchor", mask.anchor}});
        // Other than the type of the bytes that hold bits.
        if (row.isBits()) c.with("type", zmo1u);
        if (row.isGray()) {
            makeGray();
            return;
        }
        c.with("pMask", mask.points.data());
        c.sized(ZMO(zmoiMorphGetSize_L));
        const int told[] = {c.memory("pState").size(), c.memory("pBuffer").size()};
        c.sized(ZMO(zmoiMorphGetSize)).prepared(ZMO(zmoiMorphInit));
        EXPECT_EQ(c.memory("pState").size(), told[0]);
        EXPECT_EQ(c.memory("pBuffer").size(), told[1]);
    }

    template <class Draw>
    MorphCase& fill(Draw draw) {
        c.src().fill(draw);
        c.borderValue().fill(draw);
        return *this;
    }

    kit::Case& wantOracle() {
        std::vector<std::vector<double>> channels;
        for (int k = 0; k < c.src().channels(); ++k) channels.push_back(channelOf(k));
        return c.want("pDst", [&](int x, int y, int k) -> double {
            if (!row.isBits()) return c.dst().stored(at(channels, x, y, k));
            int byte = 0;
            for (int i = 8 * x - dstOffset; i < 8 * x - dstOffset + 8; ++i) {
                const bool inside = i >= 0 && i < c.roi().width;
                const double bit = inside ? std::max(at(channels, i, y, 0), 0.0)
                                          : pixelAt(c.dst(), dstOffset, true, i, y, 0);
                byte = 2 * byte + static_cast<int>(bit);
            }
            return byte;
        });
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
    double at(const std::vector<std::vector<double>>& channels, int x, int y, int k) const {
        return channels[static_cast<size_t>(k)][kit::indexIn(c.roi(), x, y)];
    }
    void makeGray() {
        c.sized(ZMO(zmoiGrayMorphGetSize));
        std::vector<Zmo32s> values;
        for (size_t k = 0; k < mask.points.size(); ++k) values.push_back(grayValue(row, mask, k));
        const std::vector<Zmo32f> real(values.begin(), values.end());
        c.with("pValues", row.isFloat() ? static_cast<const void*>(real.data()) : values.data());
        c.prepared(row.isFloat() ? ZMO(zmoiGrayMorphInit_32f_C1R) : ZMO(zmoiGrayMorphInit_8u_C1R));
    }
    std::vector<double> channelOf(int k) {
        // How far two passes look around the region.
        const ZmoiSize reach{margin == 0 ? 0 : 2 * mask.size.width,
                             margin == 0 ? 0 : 2 * mask.size.height};
        oracle::Plane source(c.roi(), reach);
        source.forEach([&](int x, int y) {
            source.at(x, y) = pixelAt(c.src(), srcOffset, row.isBits(), x, y, k);
        });
        const auto counts = [&](double& pixel, size_t point, bool dilates) {
            if (!row.isGray()) return mask.points[point] != 0;
            pixel = c.src().stored(pixel + (dilates ? 1 : -1) * grayValue(row, mask, point));
            return true;
        };
        const double outside = c.borderValue().get(0, 0, k);
        return oracle::morph(
            row.op, source,
            {mask.size, mask.anchor, counts, border, row.isBits() ? outside != 0 : outside});
    }
};

// Every function with every mask and border; sizes and layouts take turns.
template <class Draw>
void expectOracleEverywhere(const std::vector<Row>& rows, Draw draw) {
    const auto sizes = kit::sizes();
    size_t turn = 0;
    for (const Row& row : rows) {
        std::vector<kit::Case> cases;
        for (const Mask& mask : masks()) {
            for (int border = zmoiBorderReplicate; border <= zmoiBorderInMem; ++border) {
                ++turn;
                // Under the sanitizers the borders take turns, too.
                if (kit::sanitized && turn % 4 != turn / 40 % 4) continue;
                MorphCase made(row, mask, sizes[turn * 5 % sizes.size()], kit::layouts()[turn % 4],
                               static_cast<ZmoiBorderType>(border));
                cases.push_back(made.fill(draw).wantOracle());
            }
        }
        kit::expectAtAllLevels(cases);
    }
}

// Masks around the width from which on windows are joined of parts. Pixels that decide are so rare
// that most windows have few of them.
void expectWideMasks(const std::vector<Row>& rows, kit::Random& random) {
    static const Mask wide[] = {rectangle("1024x1", {1024, 1}, {1000, 0}),
                                rectangle("1025x1", {1025, 1}, {3, 0}),
                                rectangle("1151x2", {1151, 2}, {575, 1})};
    std::vector<kit::Case> cases;
    size_t turn = 0;
    for (const Row& row : rows) {
        if (row.op > MorphOp::dilate || row.isGray() || row.function.large()) continue;
        if (row.function.isNamed("_16s_")) continue;
        const int usual = !row.isBits() ? 100 : row.op == MorphOp::erode ? 0xff : 0;
        for (const Mask& mask : wide) {
            // Under the sanitizers the masks take turns.
            if (++turn; kit::sanitized && turn % 4 != 0) continue;
            MorphCase made(row, mask, {1300, 1}, {1, 3}, zmoiBorderReplicate);
            made.fill([&] { return random.between(0, 299) == 0 ? random.between(0, 255) : usual; });
            cases.push_back(made.wantOracle());
        }
    }
    kit::expectAtAllLevels(cases);
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
    expectOracleEverywhere(integers, [&] { return static_cast<uint16_t>(random.bits()); });
}

TEST(Morph, FloatOracle) {
    kit::Random random(63);
    expectOracleEverywhere(floats,
                           [&] { return static_cast<double>(random.between(-800, 800)) / 8; });
}

TEST(Morph, WideMasks) {
    kit::Random random(65);
    for (const auto& rows : {bits, integers, floats}) expectWideMasks(rows, random);
}

// Infinities follow the formula; not-a-numbers give the same bits at all levels.
TEST(Morph, InfiniteAndNotANumber) {
    const Mask mask = rectangle("5x4", {5, 4}, {1, 2});
    kit::Random random(64);
    const auto draw = [&](double rare) {
        return random.between(0, 60) == 0 ? rare : random.uniform(0, 1);
    };
    for (const Row& row : floats) {
        if (row.isGray()) continue;
        MorphCase made(row, mask, {75, 9}, {1, 3}, zmoiBorderReplicate);
        made.fill([&] { return draw(row.op >= MorphOp::gradient ? 2 : HUGE_VAL); });
        kit::Case odd = made.c;
        kit::expectAtAllLevels(made.wantOracle());
        odd.src().fill([&] { return draw(NAN); });
        kit::expectSameAtAllLevels(odd);
    }
}

TEST(Morph, ImagesBeyondTwoGigabytes) {
    kit::Random random(66);
    for (const auto& rows : {bits, integers, floats}) {
        for (const Row& row : rows) {
            if (!row.function.large()) continue;
            MorphCase made(row, masks()[4], {37, 6}, {}, zmoiBorderMirror);
            made.fill([&] { return random.between(0, 127); }).c.expectWithFarRows();
        }
    }
}

TEST(Morph, EmptyMaskClears) {
    const Mask full = rectangle("3x2", {3, 2}, {1, 1});
    const Zmo8u none[6] = {};
    for (const auto& rows : {bits, floats}) {
        for (const Row& row : rows) {
            if (row.isGray()) continue;
            MorphCase made(row, full, {141, 3}, {1, 3}, zmoiBorderReplicate);
            made.fill([] { return 0xff; });
            made.c.with("pMask", &none[0]).prepared(ZMO(zmoiMorphInit), zmoStsEmptyMask);
            const kit::AnyImage before = made.c.dst();
            made.c.wantStatus(zmoStsEmptyMask).want("pDst", [&](int x, int y) -> double {
                if (!row.isBits()) return 0;
                // Bits beside the region stay.
                const int old = static_cast<int>(before.get(x, y));
                int byte = 0;
                for (int i = 0; i < 8; ++i) {
                    const int at = 8 * x + i - made.dstOffset;
                    const bool inside = at >= 0 && at < 141;
                    byte = 2 * byte + (inside ? 0 : old >> (7 - i) & 1);
                }
                return byte;
            });
            kit::expectAtAllLevels(made.c);
        }
    }
}

TEST(Morph, BadArguments) {
    const Mask& mask = masks()[1];
    // A state of bytes for bits, and of bits for all else.
    MorphCase ofBytes(integers[0], mask, {30, 4}, {}, zmoiBorderMirror);
    MorphCase ofBits(bits[0], mask, {30, 4}, {}, zmoiBorderMirror);
    for (const auto& rows : {bits, integers, floats}) {
        for (const Row& row : rows) {
            // A row of 30 bits has four bytes at any of the bit offsets.
            MorphCase made(row, mask, {30, 4}, {}, zmoiBorderMirror);
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
    const kit::Named good = {{"type", zmo8u},
                             {"channels", 1},
                             {"maskSize", ZmoiSize{2, 2}},
                             {"anchor", ZmoiPoint{1, 1}}};
    const kit::Wrong type{"type", zmo32s, zmoStsDataTypeErr};
    const kit::Wrong mask{"maskSize", {ZmoiSize{0, 2}, ZmoiSize{2, 8192}}, zmoStsMaskSizeErr};
    const kit::Wrong anchor{"anchor", {ZmoiPoint{2, 1}, ZmoiPoint{1, -1}}, zmoStsAnchorErr};
    for (const auto& query : {ZMO(zmoiMorphGetSize), ZMO(zmoiGrayMorphGetSize)}) {
        const ZmoiSize wide{INT32_MAX, 9};
        kit::Case(query).with(good).expectBadArguments(
            {type, mask, {{{"roi", wide}, {"maskSize", ZmoiSize{8000, 8000}}}, zmoStsTooLargeErr}});
    }
    kit::Case(ZMO(zmoiMorphGetSize_L))
        .with(good)
        .expectBadArguments(
            {type,
             mask,
             {{{"roi", ZmoiSizeL{INT64_MAX, 1}}, {"maskSize", ZmoiSize{8000, 8000}}},
              zmoStsTooLargeErr}});
    const Zmo8u points[4] = {1, 1, 1, 1};
    const Zmo32s values[4] = {};
    const kit::Buffer state(1000);
    kit::Case(ZMO(zmoiMorphInit_L))
        .with(good)
        .with("pMask", &points[0])
        .give("pState", state)
        .expectBadArguments({type, mask, anchor});
    kit::Case(ZMO(zmoiGrayMorphInit_8u_C1R))
        .with(good)
        .with("pValues", &values[0])
        .give("pState", state)
        .expectBadArguments({mask, anchor});
}

}  // namespace
