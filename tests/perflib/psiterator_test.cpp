#include "psiterator.h"

#include "psdata.h"
#include "unit.h"

namespace {

// Declared before main, as test modules do.
psIterator<ZmoiSize> imageSize("ImageSize", "Image size", {{64, 64}, {640, 480}});
psIterator<int> badText("bad", "", "1;x");
psStepIterator<int> length("Len", "Vector length", 64, 1024, 2, '*');
psStepIterator<int> badRange("Len", "", 1, 2, 0, '*');
psMapIterator<int> border("Border", {{1, "replicate"}, {2, "const"}, {3, "mirror"}}, {1, 3});
psEnumIterator<int> channels("Channels", "", {1, 3, 4}, {1, 3});
psIterator<psString> words("Words", "", {"a b", "c"});

// All values of one pass as texts; the pass is made twice to see that it starts anew.
std::string walk(psParameter& parm) {
    std::string passes[2];
    for (std::string& values : passes) {
        for (bool more = parm.firstValue(); more && values.size() < 400; more = parm.nextValue())
            values += (values.empty() ? "" : " ") + str(parm.valueString());
        EXPECT_FALSE(parm.nextValue()) << "after the end";
    }
    EXPECT_EQ(passes[0], passes[1]);
    return passes[0];
}

const std::string conflict = "Conflict between iterator limits and operation";

TEST(PsIterator, DeclarationsAtFileScope) {
    const std::tuple<psParameter*, const char*, const char*> cases[] = {
        {&channels, "1; 3", "1 3"}, {&length, "64;1024;*2", "64 128 256 512 1024"},
        {&badRange, "", ""},        {&imageSize, "64x64; 640x480", "64x64 640x480"},
        {&badText, "", ""},         {&border, "replicate; mirror", "replicate mirror"},
        {&words, "a b; c", "a b c"}};
    for (const auto& [parm, definition, values] : cases) {
        EXPECT_EQ(str(parm->defaultString()), definition);
        EXPECT_EQ(walk(*parm), values);
    }
    EXPECT_EQ(str(border.prompt()), "Border {replicate|const|mirror}");
    EXPECT_EQ(str(channels.prompt()), "Channels {1|3|4}");
    EXPECT_EQ(str(imageSize.prompt()), "Image size");
    EXPECT_EQ(str(imageSize.form()),
              "a size is WIDTHxHEIGHT, both at least 1; ';' divides several");
    EXPECT_EQ(str(channels.form()), "a value is one of 1|3|4; ';' divides several");
    EXPECT_TRUE(length.form().endsWith("; FIRST;LAST;*STEP, +STEP or -STEP is a range"));
}

// Reads a definition, walks it, and walks what it prints and gives back.
template <class T>
std::string expectWalk(const char* text, const char* values) {
    psStepIterator<T> parm("n"), again("n");
    EXPECT_EQ(failure(parm, text), "") << text;
    EXPECT_EQ(walk(parm), values) << text;
    again.translate(parm.defaultString());
    EXPECT_EQ(walk(again), values) << text;
    return str(parm.defaultString());
}

TEST(PsStepIterator, WalksAndPrintsItsDefinition) {
    const std::tuple<const char*, const char*, const char*> whole[] = {
        {"1;2;4", "1 2 4", "1; 2; 4"},
        {" 1 ;; 2 ;", "1 2", "1; 2"},
        {"64 ; 1024 ; * 2", "64 128 256 512 1024", "64;1024;*2"},
        {"100;10;-30", "100 70 40 10", "100;10;-30"},
        {"10;1;+-3", "10 7 4 1", "10;1;+-3"},
        {"1;10;--3", "1 4 7 10", "1;10;--3"},
        {"-1;-20;*3", "-1 -3 -9", "-1;-20;*3"},
        {"2147483640;2147483647;+5", "2147483640 2147483645", "2147483640;2147483647;+5"},
        {"-2147483640;-2147483648;-5", "-2147483640 -2147483645", "-2147483640;-2147483648;-5"},
        {"268435456;2147483647;*2", "268435456 536870912 1073741824", "268435456;2147483647;*2"},
        {"1;2147483647;*2147483647", "1 2147483647", "1;2147483647;*2147483647"}};
    for (const auto& [text, values, definition] : whole)
        EXPECT_EQ(expectWalk<int>(text, values), definition);
    const std::pair<const char*, const char*> real[] = {
        {"1.5;4.5;+1.5", "1.5 3 4.5"},
        {"1;10;*2.5", "1 2.5 6.25"},
        {"16777216;3e7;+1", "16777216"},  // too coarse for the step
        {"1e38;3.4028235e38;*2", "1e+38 2e+38"}};
    for (const auto& [text, values] : real) expectWalk<float>(text, values);
    psStepIterator<float> parm("f");
    for (const char* text : {"0;1;+0.25", "10;1;+0.5", "0.5;2;*2", "1;2;*0.5", "1;2;*1"})
        EXPECT_EQ(failure(parm, text), conflict) << text;
}

TEST(PsStepIterator, ABadDefinitionKeepsTheOneBefore) {
    const std::pair<std::vector<const char*>, std::string> cases[] = {
        {{"", " ;; "}, "Empty iterator definition"},
        {{"1;x"}, "Invalid value of n = x"},
        {{"1;2;3;*4"}, "Invalid value of n = *4"},
        {{"x;2;+1"}, "Invalid first value = x"},
        {{"1;x;+1"}, "Invalid last value = x"},
        {{"1;2;+x"}, "Invalid step = x"},
        {{"1;2;*"}, "Invalid step = "},
        {{"1;99999999999;*2"}, "Invalid last value = 99999999999"},
        {{"10;1;+1", "10;1;+0", "1;10;+0", "1;10;-1", "1;10;-0", "10;1;--1", "5;5;-1", "1;10;*1",
          "1;10;*0", "1;10;*-2", "0;10;*2", "-5;10;*2", "1024;64;*2", "-1024;-64;*2"},
         conflict}};
    for (const char* before : {"1;9;+4", "1; 5; 9"}) {
        psStepIterator<int> parm("n", "", before);
        for (const auto& [texts, message] : cases) {
            for (const char* text : texts) {
                EXPECT_EQ(failure(parm, text), message) << text;
                EXPECT_EQ(walk(parm), "1 5 9") << text;
            }
        }
        EXPECT_EQ(str(parm.defaultString()), before);
    }
}

TEST(PsMapIterator, TakesNamesByTheirBeginningsFromATableThatATestNarrows) {
    psMapIterator<int> map("m", "", {{1, "const"}, {2, "copy"}, {3, "mirror"}}, {1, 2, 3});
    map.saveDefinition();
    map.initValidation({2, 3});
    EXPECT_EQ(str(map.prompt()), "m {copy|mirror}");
    EXPECT_EQ(walk(map), "copy mirror");
    EXPECT_EQ(failure(map, "M ; co"), "");
    EXPECT_EQ(walk(map), "mirror copy");
    for (const std::string unknown : {"const", "mirrors"})
        EXPECT_EQ(failure(map, unknown.c_str()), "Invalid value of m = " + unknown);
    map.restoreDefinition();
    EXPECT_EQ(str(map.prompt()), "m {const|copy|mirror}");
    EXPECT_EQ(walk(map), "const copy mirror");

    map.initValidation({1});
    map.saveDefinition();
    map.initValidation({1, 3});
    EXPECT_EQ(walk(map), "const mirror") << "each narrowing starts from the whole list";
    map.restoreDefinition();
    EXPECT_EQ(walk(map), "const");
    map.add(3);
    EXPECT_EQ(str(map.defaultString()), "const; mirror");
}

TEST(PsShifted, StaysInTheRangeOrIsZero) {
    const int cases[][3] = {{1, 30, 1 << 30}, {1, 31, 0}, {3, 29, 1610612736}, {5, -2, 1},
                            {5, -3, 0},       {5, 0, 5},  {5, -99, 0},         {5, 99, 0},
                            {0, 3, 0},        {-5, 1, 0}, {INT_MAX, 1, 0}};
    for (const auto& [value, shift, result] : cases)
        EXPECT_EQ(psShifted(value, shift), result) << value;
}

// Test data of a size that follows a parameter.
class CacheIterator : public testing::Test, protected psObject {
  protected:
    CacheIterator() {
        psCacheIterator::maxCacheSize = [](int* bytes) { return *bytes = cacheSize, 0; };
        cacheSize = 1 << 20;
    }
    ~CacheIterator() override { psCacheIterator::maxCacheSize = nullptr; }
    int objectSize() const override { return size; }

    static inline int cacheSize = 0;
    int size = 0;
    MessageCapture messages{showResults};
};

TEST_F(CacheIterator, FindsSizesInsideAndOutsideTheCache) {
    for (const int start : {1, 100, 100'000, 50'000'000}) {
        psStepIterator<int> len("Len", "", {start});
        psCacheIteratorInt iterator(len, this, [&](int n) { return size = 4 * n, true; });
        std::string walked;
        for (bool more = iterator.firstValue(); more; more = iterator.nextValue()) {
            ASSERT_EQ(len.value(), start) << "every search starts at the parameter's own value";
            size = 4 * start;
            ASSERT_TRUE(iterator.validateSize()) << str(iterator.infoString());
            EXPECT_EQ(size, 4 * len.value());
            if (iterator.value() == psCacheIterator::IN_CACHE)
                EXPECT_TRUE(size >= 0.1 * cacheSize - 1 && size <= 0.9 * cacheSize) << size;
            else
                EXPECT_GE(size, 1.05 * cacheSize - 1);
            walked += str(iterator.comment()) + " ";
        }
        EXPECT_EQ(walked, "inCache outofCache ");
    }
}

TEST_F(CacheIterator, ChangesTheAreaOfASizeByPowersOfTwo) {
    psIterator<ZmoiSize> area("ImageSize", "", {{100, 50}});
    const auto resize = [&](const ZmoiSize& s) { return size = s.width * s.height, true; };
    psCacheIteratorSize iterator(area, this, resize);
    ASSERT_TRUE(iterator.firstValue() && resize(area.value()) && iterator.validateSize());
    EXPECT_EQ(str(area.valueString()), "800x200") << "5000 * 2^5 is the first above 104857";
    EXPECT_EQ(messages.text(), "       try: cacheParm=100x50 objectSize=5000 < 104857\n");
    ASSERT_TRUE(iterator.nextValue() && resize(area.value()) && iterator.validateSize());
    EXPECT_EQ(str(area.valueString()), "1600x800");
    EXPECT_FALSE(iterator.nextValue());
}

TEST_F(CacheIterator, CountsAllTestDataWithoutAnOwner) {
    psStepIterator<int> len("Len", "", {1000});
    void* block = psMalloc(1000, 0, 0, nullptr);
    psCacheIteratorInt iterator(len, nullptr, [&](int n) {
        psFree(block);
        return (block = psMalloc(n, 0, 0, nullptr)) != nullptr;
    });
    const psOutLevelGuard terse(1);
    ASSERT_TRUE(iterator.firstValue() && iterator.validateSize());
    EXPECT_EQ(messages.text(), "      inCache: cacheParm=128000 totalSize=128000\n")
        << "written where the level hides the set's own line";
    psFree(block);
}

TEST_F(CacheIterator, NamesACallOutsideThatWouldTakeTooLong) {
    psStepIterator<int> len("Len", "", {1000});
    psCacheIteratorInt iterator(len, this, [&](int n) { return size = 4 * n, true; });
    size = 4000;
    ASSERT_TRUE(iterator.firstValue() && iterator.validateSize());
    ASSERT_EQ(size, 128000);
    iterator.noteCall("short", 0.6);
    iterator.noteCall("long", 2);
    EXPECT_EQ(str(iterator.tooLong("long")), "") << "in the cache";
    size = 4000;
    ASSERT_TRUE(iterator.nextValue());
    EXPECT_EQ(str(iterator.tooLong("long")),
              "one call on 2048000 bytes would take about 32 s, more than 10");
    for (const char* set : {"short", "unknown"}) EXPECT_EQ(str(iterator.tooLong(set)), "") << set;
}

TEST_F(CacheIterator, EndsTheSearchForWhatIsOutOfReach) {
    // First value, size of the data (0: cannot be made), cache, most tries.
    const std::tuple<int, int (*)(int), int, int> cases[] = {
        {100, [](int) { return 0; }, 1 << 20, 0},       // no data
        {1, [](int) { return 90'000; }, 1 << 20, 10},   // does not follow
        {64, [](int) { return INT_MAX; }, 1 << 20, 6},  // too large whatever n
        {1 << 29, [](int) { return 1; }, 1 << 20, 0},   // n overflows
        {1 << 30, [](int) { return 1'500'000; }, 1 << 20, 10},
        {100, [](int n) { return n; }, 0, 0},  // no cache
        {1, [](int n) { return n > 1 ? 0 : 1; }, 1 << 20, 1}};
    for (const auto& [start, sizeOf, cache, mostTries] : cases) {
        cacheSize = cache;
        psStepIterator<int> len("Len", "", {start});
        int tries = 0;
        size = sizeOf(start);
        psCacheIteratorInt iterator(len, this, [&, sizeOf = sizeOf](int n) {
            ++tries;
            return (size = sizeOf(n)) > 0;
        });
        EXPECT_TRUE(iterator.firstValue() && !iterator.validateSize()) << start;
        EXPECT_LE(tries, mostTries) << start;
    }
}

}  // namespace
