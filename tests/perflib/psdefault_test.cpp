#include "psdefault.h"

#include <cfloat>

#include "psctable.h"
#include "psiterator.h"
#include "unit.h"

namespace {

template <class T>
void expectRoundTrip(const T& value) {
    psDefault<T> source(value, "p");
    psDefault<T> target(T{}, "p");
    target.translate(source.defaultString());
    EXPECT_TRUE(target.value() == value) << str(source.defaultString());
}

TEST(PsDefault, DefaultsReadBackAsTheSameValue) {
    for (const int value : {0, -1, INT_MAX, INT_MIN}) expectRoundTrip(value);
    expectRoundTrip(UINT_MAX);
    for (const float value : {0.0F, 0.1F, 16777215.0F, -1.00000012F, FLT_MAX, FLT_MIN})
        expectRoundTrip(value);
    for (const double value : {0.1, 1.0 / 3, DBL_MAX, DBL_MIN}) expectRoundTrip(value);
    for (const bool value : {false, true}) expectRoundTrip(value);
    int target = 0;
    for (void* value : {static_cast<void*>(nullptr), static_cast<void*>(&target)})
        expectRoundTrip(value);
    expectRoundTrip(psString("any text"));
    expectRoundTrip(ZmoiSize{640, 480});
    EXPECT_EQ(str(psValueText(0.1F)), "0.1");
    EXPECT_EQ(str(psValueText(100000.0)), "100000");
}

TEST(PsDefault, ReadsTextsWholeOrNotAtAll) {
    psDefault<int> number(7, "n");
    psAtLeast<int> count(2, 7, "n");
    psDefault<float> real(7, "n");
    psDefault<ZmoiSize> size({1, 2}, "n");
    const struct {
        psParameter& parm;
        std::vector<const char*> refused, taken;
        const char *before, *after;
    } cases[] = {
        {number, {"", " ", "1x", "0x10", "1.5", "2147483648", "1 2", "--1"}, {" -12 "}, "7", "-12"},
        {count, {"1"}, {"2"}, "7", "2"},
        {real, {"1e99", "nan", "inf", "1,5"}, {"1e3"}, "7", "1000"},
        {size,
         {"", "64", "x", "64x", "x64", "64x64x2", "3000000000x1", "a x b"},
         {"64X48", "64*48", " 64 x 48 "},
         "1x2",
         "64x48"}};
    for (const auto& [parm, refused, taken, before, after] : cases) {
        for (const char* text : refused)
            EXPECT_EQ(failure(parm, text), std::string("Invalid value of n = ") + text);
        EXPECT_EQ(str(parm.valueString()), before);
        for (const char* text : taken) {
            EXPECT_EQ(failure(parm, text), "");
            EXPECT_EQ(str(parm.valueString()), after);
            parm.translate(before);
        }
    }
    EXPECT_EQ(str(count.form()), "a value is a whole number from 2 to 2147483647");
}

TEST(PsMapDefault, TheFirstNameThatBeginsWithTheTextWins) {
    psMapDefault<int> map("Border", "Border type",
                          {{1, "replicate"}, {2, "const"}, {3, "consts"}, {4, "const"}}, 2);
    for (const auto& [text, key] : {std::pair{"C", 2}, {"consts", 3}, {"CONST", 2}, {"", 1}}) {
        map.translate(text);
        EXPECT_EQ(map.value(), key) << text;
    }
    EXPECT_EQ(failure(map, "replicated"), "Invalid value of Border = replicated");
    EXPECT_EQ(str(map.prompt()), "Border type {replicate|const|consts|const}");
    map.setValue(9);
    EXPECT_EQ(str(map.description()), "Border = ");
}

struct Column3 : psDefault<int> {
    using psDefault<int>::psDefault;
    int colmIndex() const override { return 3; }
};

TEST(PsParameter, CellsShowNameValueQuotesOrTheOldText) {
    const TempDir dir;
    psCStream table;
    table.addStream(dir / "t.csv", false);
    psDefault<int> number(5, "n"), nameless(5, ""), old(5, "old");
    const Column3 fixed(8, "f");
    old.addDeprecated(5, "five");
    EXPECT_TRUE(old.setDeprecatedFlag(true));
    number.toCStream(table);
    number.setDisplayFlags(psParameter::QUOTED);
    for (const psParameter* parm : std::initializer_list<const psParameter*>{&number, &old, &fixed})
        parm->toCStream(table);
    table << "\n";
    nameless.toCStream(table);
    number.nameToCStream(table);
    fixed.nameToCStream(table);
    table << "\n";
    EXPECT_EQ(dir.read("t.csv"), "5, \"5\",five,8\n-,n,-,f\n");
    EXPECT_FALSE(old.setDeprecatedFlag(false));
    old.setValue(6);
    EXPECT_FALSE(old.setDeprecatedFlag(true));
}

}  // namespace
