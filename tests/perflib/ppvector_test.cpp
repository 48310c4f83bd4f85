#include "ppvector.h"

#include <array>

#include "ppfill.h"
#include "ppimage.h"
#include "pprmatr.h"
#include "psdata.h"
#include "unit.h"

namespace {

constexpr double two63 = 9223372036854775808.0;

// The definition of the random values, one at a time.
std::vector<double> plainRandom(int count, double lo, double hi, std::uint32_t& seed) {
    std::uint32_t x[] = {seed, seed * 69069 + 1013904243, seed * 475559465 + 924302730};
    std::uint32_t g = 1131199209, carry = UINT_MAX;
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t t = carry - x[2] + x[1];
        carry = t >> 31 ? UINT_MAX : 0;
        g = g * 69069 + 1013904243;
        x[2] = x[1];
        x[1] = x[0];
        x[0] = carry ? t - 18 : t;
        const double r = static_cast<std::int32_t>(x[0] + g);
        values.push_back(r * ((hi - lo) * 2.3283064365386963e-10) + (hi + lo) * 0.5);
    }
    if (count > 0) seed = x[0];
    return values;
}

std::vector<double> contents(const ppVector& v) {
    std::vector<double> values;
    for (int i = 0; i < v.length(); ++i) values.push_back(v.getIndex(i));
    return values;
}

class PpVector : public testing::Test {
  protected:
    void SetUp() override { ppVector::m_seed = 7; }
    void TearDown() override {
        EXPECT_EQ(psMallocFirst(nullptr, nullptr), nullptr) << "a block is left";
        psSetVectorAlign(0);
        psSetAlignSrc(true);
        psSetAlignByByte(true);
    }
};

TEST_F(PpVector, ConvertsByTruncationAndKeepsTheLowBits) {
    const std::pair<double, unsigned char> bytes[] = {{300.9, 44}, {-1.5, 255}, {1e300, 255}};
    for (const auto& [value, byte] : bytes) EXPECT_EQ(ppConvert<unsigned char>(value), byte);
    EXPECT_EQ(ppConvert<int>(4294967296.0 * 3 + 5), 5);
    EXPECT_EQ(ppConvert<int>(std::nan("")), 0);
    EXPECT_EQ(ppConvert<long long>(two63), LLONG_MAX);
    const std::pair<double, unsigned long long> wide[] = {
        {two63 * 1.5, 3ULL << 62}, {two63 * 2, ULLONG_MAX}, {-1.0, ULLONG_MAX}};
    for (const auto& [value, number] : wide)
        EXPECT_EQ(ppConvert<unsigned long long>(value), number);
}

TEST_F(PpVector, RandomFollowsTheDefinitionInEveryTypeAndOnEveryByte) {
    constexpr int n = 257;
    const std::pair<double, double> ranges[] = {
        {-1, 1}, {0.1, 0.7}, {-1e30, 1e30}, {300, 10}, {5, 5}};
    for (const ppTypeInfo& info : ppTypes) {
        const int parts = ppIsComplex(info.code) ? 2 : 1;
        const int item = ppItem(info.code);
        for (const auto& [lo, hi] : ranges) {
            unsigned seed = 12345;
            std::uint32_t plainSeed = seed;
            std::vector<unsigned char> bytes(static_cast<std::size_t>(n * item + 9), 0xEE);
            unsigned char* p = bytes.data() + 3;
            ASSERT_TRUE(ppFillRandom(info.code, p, n, lo, hi, seed));
            const std::vector<double> expected =
                plainRandom(n * parts, std::max(lo, info.min), std::min(hi, info.max), plainSeed);
            EXPECT_EQ(seed, plainSeed);
            ppVisitType(info.code, [&]<class T>(T) {
                for (std::size_t i = 0; i < expected.size(); ++i) {
                    const T got = ppLoad<T>(p + i * sizeof(T));
                    ASSERT_EQ(got, ppConvert<T>(expected[i])) << info.name << " " << i;
                }
            });
            EXPECT_TRUE(bytes[2] == 0xEE && p[n * item] == 0xEE) << info.name;
        }
    }
}

TEST_F(PpVector, TheSeedMovesOnAndEqualValuesAskForTheDefaultRange) {
    ppVector a(pp8u), b(pp8u);
    ASSERT_TRUE(a.createVector(1000, SET_RANDOM, 10, 20));
    ASSERT_TRUE(b.createVector(1000, SET_RANDOM, 10, 20));
    EXPECT_NE(contents(a), contents(b));
    ASSERT_TRUE(b.setRandom(10, 20, 7));
    EXPECT_EQ(contents(b), contents(a));
    ASSERT_TRUE(b.setVector(SET_RANDOM, 0, 0));
    const auto [low, high] = std::ranges::minmax(contents(b));
    EXPECT_TRUE(low < 10 && high > 245) << low << " " << high;
}

TEST_F(PpVector, SequencesAccumulateAndWrap) {
    const std::tuple<ppType, double, double, double, bool, std::vector<double>> cases[] = {
        {pp8u, 0, 10, 3, false, {0, 3, 6, 9, 10, 10}},
        {pp8u, 0, 10, 3, true, {0, 3, 6, 9, 0, 3}},
        {pp8u, 300, 400, 1, true, {44, 44, 44}},      // the limit meets only the next values
        {pp8u, -5, 4, 2, true, {0, 2, 4, 0}},         // the start is brought into the range
        {pp8s, 127, 1e9, 1, false, {127, 127, 127}},  // and so is the upper limit
        {pp16s, 5, 100, -3, true, {5, 2, -1, -4}},
        {pp64s, two63, two63, 1, false, {two63, two63}},
        {pp32fc, 1, 2, 0.5, true, {1, 1.5, 2, 1}}};
    for (const auto& [type, start, hi, step, wrap, expected] : cases) {
        ppVector v(type);
        ASSERT_TRUE(v.createVector(static_cast<int>(expected.size())));
        ASSERT_TRUE(v.setSequence(start, hi, step, wrap));
        EXPECT_EQ(contents(v), expected) << type << " " << start;
        double re, im;
        EXPECT_TRUE(v.getIndex(1, re, im) && im == (ppIsComplex(type) ? re : 0)) << type;
    }

    ppVector v(pp64f);
    ASSERT_TRUE(v.createVector(10));
    ASSERT_TRUE(v.setSequence(0, 1));
    EXPECT_EQ(v.getIndex(1), 1.0 / 9);
    EXPECT_EQ(v.getIndex(9), 0) << "nine additions of 1/9 pass 1";
    ppVector one(pp16u);
    ASSERT_TRUE(one.createVector(10, SET_SEQUENCE, 0, 5));
    EXPECT_EQ(one.getIndex(1), 1) << "whole numbers go on by 1 at least";
    ASSERT_TRUE(one.createVector(1) && one.setSequence(9, 1));
    EXPECT_EQ(one.getIndex(0), 9);
}

TEST_F(PpVector, JaehneIsAChirp) {
    ppVector v(pp8u);
    ASSERT_TRUE(v.createVector(1) && v.setJaehne());
    EXPECT_EQ(v.getIndex(0), 127);

    constexpr int n = 100000;  // i * i leaves the range of int
    ppVector f(pp64f), wide(pp16sc);
    ASSERT_TRUE(f.createVector(n) && f.setJaehne(3.0));
    ASSERT_TRUE(wide.createVector(n) && wide.setJaehne(1e9));  // limited to half the range
    for (int i : {0, 1, 777, 46341, 65536, n - 1}) {
        const double wave = std::sin(double(i) * i * 1.5707963267948966 * (1.0 / n));
        EXPECT_EQ(f.getIndex(i), wave * 3.0) << i;
        double re, im;
        ASSERT_TRUE(wide.getIndex(i, re, im));
        EXPECT_TRUE(re == std::trunc(wave * 32767.5) && im == re) << i;
    }
    EXPECT_FALSE(f.setJaehne(-1));
}

TEST_F(PpVector, ConstantsAndLimits) {
    const std::tuple<ppType, double, double, double> cases[] = {
        {pp8u, 2, 255, 0},
        {pp64u, 2, two63, 0},
        {pp64s, 2, two63 /* 2^63 - 1 as a double */, -two63},
        {pp64f, 1.00001, 1.7976931348623157e308, -1.7976931348623157e308},
        {pp32fc, 1.00001F, 3.4028234663852886e38, -3.4028234663852886e38},
        {pp16sc, 2, 32767, -32768}};
    for (const auto& [type, standard, max, min] : cases) {
        ppVector v(type);
        ASSERT_TRUE(v.createVector(3));
        EXPECT_EQ(v.getIndex(2), standard) << type;
        const auto filled = [&](SetMode mode, double a = 0, double b = 0) {
            double re = 0, im = 0;
            v.setVector(mode, a, b);
            EXPECT_TRUE(v.getIndex(2, re, im));
            return std::pair(re, im);
        };
        const auto both = [complex = ppIsComplex(type)](double re, double im) {
            return std::pair(re, complex ? im : 0);
        };
        const auto constant = ppIsFloat(type) ? both(5.5, 6.9F) : both(5, 6);
        EXPECT_EQ(filled(SET_DEFAULT), both(standard, standard)) << type;
        EXPECT_EQ(filled(SET_ONE), both(1, 0)) << type;
        EXPECT_EQ(filled(SET_MAX), both(max, max)) << type;
        EXPECT_EQ(filled(SET_MIN), both(min, min)) << type;
        EXPECT_EQ(filled(SET_CONST, 5.5, 6.9), constant) << type;
        EXPECT_EQ(filled(static_cast<SetMode>(8)), constant) << "unknown: nothing changes";
    }
    ppVector v(pp64s);
    ASSERT_TRUE(v.createVector(1, SET_MAX));
    EXPECT_EQ(*v.ptr64s(), LLONG_MAX);
    EXPECT_TRUE(v.setConst_64s(LLONG_MAX - 1, 0) && *v.ptr64s() == LLONG_MAX - 1);
}

TEST_F(PpVector, EmptyOrRefusedVectorsDoNothing) {
    ppVector v(pp8u), wide(pp64fc), undefined;
    EXPECT_FALSE(v.setConst() || v.setRandom() || v.setIndex(0, SET_ONE, 0, 0));
    EXPECT_FALSE(v.reserveCopy() || v.setReservedCopy());
    EXPECT_TRUE(v.getString().empty() && v.getPointerAt(3) == nullptr);
    MessageCapture messages(showErrors);
    const std::tuple<ppVector&, int, const char*> cases[] = {
        {v, 0, "0"}, {v, -3, "-3"}, {wide, INT_MAX, "34359738352"}};
    for (const auto& [vector, length, bytes] : cases) {
        EXPECT_FALSE(vector.createVector(length));
        EXPECT_EQ(messages.take(),
                  std::string("-- Memory fail: can't allocate ") + bytes + " bytes\n");
    }
    EXPECT_FALSE(undefined.createVector(10));
    EXPECT_NE(messages.take(), "");
}

TEST_F(PpVector, LiesWhereItIsPut) {
    const auto low = [](const ppVector& v) {
        return reinterpret_cast<std::uintptr_t>(v.data()) % 64;
    };
    ppVector a(pp32f), b(pp32f);
    for (int misalign : {0, 512, 3, 515, 63}) {
        ASSERT_TRUE(a.createVector(16, misalign));
        EXPECT_EQ(low(a), static_cast<unsigned>(misalign % 64));
    }
    a.deleteVector();

    const std::tuple<int, bool, bool, unsigned, unsigned, int, int> cases[] = {
        // VectorAlign, by bytes, first only; places of both vectors; bytes of ppMisalign(0), (2)
        {0, true, true, 0, 0, 0, 1024},
        {5, true, true, 5, 0, 5, 1024},
        {5, true, false, 5, 5, 5, 1029},
        {3, false, true, 12, 0, 12, 1024},
        {3, false, false, 12, 12, 12, 1036}};
    void* buffer = psMalloc(8, 0, 0, nullptr);  // is no data: the vector behind it is the first
    for (const auto& [align, byByte, firstOnly, first, second, misalign0, misalign2] : cases) {
        psSetVectorAlign(align);
        psSetAlignByByte(byByte);
        psSetAlignSrc(firstOnly);
        ASSERT_TRUE(a.createVector(16));
        ASSERT_TRUE(b.createVectorExt(16, 7, SET_ONE));  // the 7 is not used
        EXPECT_TRUE(low(a) == first && low(b) == second) << low(a) << " " << low(b);
        EXPECT_EQ(ppMisalign(0).bytes(4), misalign0);
        EXPECT_EQ(ppMisalign(2).bytes(4), misalign2);
        EXPECT_EQ(b.getIndex(15), 1);
        a.deleteVector();
        b.deleteVector();
        // By their index, as the modules place them.
        ppImage image(pp32f, 1, false);
        ASSERT_TRUE(a.createZeroed(16, ppMisalign(0)) && image.createImage(4, 4, 0, ppMisalign(2)));
        EXPECT_TRUE(low(a) == first && low(image) == second) << low(a) << " " << low(image);
        a.deleteVector();
    }
    psFree(buffer);
    EXPECT_EQ(ppMisalign(INT_MAX).bytes(1), INT_MAX);
}

TEST_F(PpVector, ReservedCopiesPutTheDataBack) {
    ppVector v(pp16s);
    ppImage image(pp16u, 3, true);
    pprMatrice matrix(pp16s);
    ASSERT_TRUE(v.createVector(100, SET_RANDOM, 0, 1000) && image.createImage(9, 9, SET_RANDOM) &&
                matrix.createMatrice(3, 3, SET_RANDOM));
    const auto texts = [&] {
        return std::array{str(v.getString()), str(image.getString()), str(matrix.getString())};
    };
    const auto before = texts();
    psReserveAllVectors();
    ASSERT_TRUE(v.setConst(0, 0) && image.setConst() && matrix.setConst());
    psResetAllVectors();
    EXPECT_EQ(texts(), before);
    ASSERT_TRUE(v.createVector(4));
    EXPECT_FALSE(v.setReservedCopy()) << "the copy of the old block must not be put back";
    ASSERT_TRUE(v.reserveCopy());
    for (ppVector* data : {&v, static_cast<ppVector*>(&image)}) {
        data->deleteReservedCopy();
        EXPECT_FALSE(data->setReservedCopy());
    }
}

TEST_F(PpVector, PrintsItsElements) {
    const std::pair<ppType, const char*> cases[] = {{pp8u, " 254"},
                                                    {pp64u, "    18446744073709551614"},
                                                    {pp32f, "            -2"},
                                                    {pp8sc, " (   -2,   -2)"}};
    for (const auto& [type, text] : cases) {
        ppVector v(type);
        ASSERT_TRUE(v.createVector(2, SET_CONST, -2, -2));
        EXPECT_EQ(str(v.getString()), std::string(text) + text) << type;
    }
}

}  // namespace
