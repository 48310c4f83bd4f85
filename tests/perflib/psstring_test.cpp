#include "psstring.h"

#include <array>

#include "unit.h"

namespace {

// The contract of every operation: a NUL-terminated text, zeros up to the
// capacity, and the capacity that the length asks for (`atLeast`: or more).
void expectSound(const psString& s, bool atLeast = false) {
    const int capacity = (s.length() & 0x7FFFFFF0) + 16;
    if (atLeast)
        EXPECT_GE(s.capacity(), capacity);
    else
        EXPECT_EQ(s.capacity(), capacity);
    for (int i = s.length(); i < s.capacity(); ++i) EXPECT_EQ(s.c_str()[i], '\0') << i;
}

TEST(PsString, CapacityFollowsTheLength) {
    for (const int length : {0, 1, 15, 16, 17, 31, 32, 1000}) {
        const std::string text(static_cast<std::size_t>(length), 'x');
        psString s(text.c_str());
        EXPECT_EQ(s.length(), length);
        expectSound(s);
        s = "shorter";
        expectSound(s);
        s.assign(text.c_str());
        expectSound(s);
        s += "+more";
        EXPECT_EQ(str(s), text + "+more");
        expectSound(s);
        s.resize(length / 2);
        expectSound(s, true);
        s.growBy(2);
        EXPECT_EQ(s[length / 2], '\0') << "new bytes are zero";
    }
}

TEST(PsString, TakesPartsOfItself) {
    psString s("abcdefghijklmnopqrstuvwxyz");
    s += s;
    EXPECT_EQ(str(s), "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz");
    for (const int from : {50, 1, 0}) {
        s.assign(s.c_str() + from);
        EXPECT_EQ(str(s), from == 50 ? "yz" : "z");
        expectSound(s);
    }
    EXPECT_EQ(str(s = *&s), "z");
    s.assign(static_cast<const char*>(nullptr));
    EXPECT_TRUE(s.empty());
    s.resize(3, '.');
    s.resize(5);
    EXPECT_EQ(str(s), "...  ");
    s.resize(-1);
    EXPECT_TRUE(s.empty());
}

TEST(PsString, ComparesBytesAsSigned) {
    const std::tuple<const char*, const char*, int> cases[] = {
        {"ab", "abc", -1}, {"a", "abcd", -3}, {"abc", "ab", 1},  {"b", "abc", 1},
        {"", "", 0},       {"", "ab", -2},    {"\xe4", "a", -1}, {"a", "A", 1}};
    for (const auto& [a, b, result] : cases) EXPECT_EQ(psString(a).compare(b), result) << a << b;
    EXPECT_TRUE(psString("a") == "a");
    EXPECT_FALSE(psString("a") == psString("a "));
}

TEST(PsString, FindsAndCuts) {
    const psString s("abcabc");
    const std::tuple<const char*, int, int, int> cases[] = {
        {"abc", 0, 0, 3}, {"abc", 1, 3, 3},   {"abc", 4, -1, 3},
        {"c", 5, 5, 5},   {"", 6, 6, 6},      {"", 7, -1, 6},
        {"x", 0, -1, -1}, {"abc", -1, -1, 3}, {"abcabcabc", 0, -1, -1}};
    for (const auto& [what, from, first, last] : cases) {
        EXPECT_EQ(s.find(what, from), first) << what << from;
        EXPECT_EQ(s.rfind(what), last) << what;
    }
    const std::tuple<int, int, const char*> parts[] = {{4, 99, "bc"}, {1, 2, "bc"}, {1, 0, ""},
                                                       {1, -5, ""},   {6, 9, ""},   {99, 1, ""}};
    for (const auto& [from, length, part] : parts) EXPECT_EQ(str(s.substr(from, length)), part);
}

TEST(PsString, TrimLeavesLineFeeds) {
    const std::pair<const char*, const char*> cases[] = {
        {"\t word \r", "word"}, {"a b", "a b"},        {" \t\r", ""}, {"", ""},
        {" word\n", "word\n"},  {"\n word", "\n word"}};
    for (const auto& [text, trimmed] : cases) {
        psString s(text);
        EXPECT_EQ(str(s.trim()), trimmed);
        expectSound(s, true);
    }
    EXPECT_EQ(str(psString("AbC-\xc4").toLower()), "abc-\xc4");
}

TEST(PsString, PartsOfAPath) {
    const std::array<const char*, 4> cases[] = {
        {".rc", "", ".rc", ".rc"},  {"a\\b/c.x.y", "a\\b", "c.x.y", "c.x"}, {"c", "", "c", "c"},
        {"a.b/c", "a.b", "c", "c"}, {"a/b\\c.x", "a/b", "c.x", "c"},        {"a.b/", "a.b", "", ""},
        {"/c.", "", "c.", "c"}};
    for (const auto& [path, dir, name, title] : cases) {
        EXPECT_EQ(str(psString(path).getFileDir()), dir) << path;
        EXPECT_EQ(str(psString(path).getFileName()), name) << path;
        EXPECT_EQ(str(psString(path).getFileTitle()), title) << path;
    }
}

TEST(PsParse, SplitsAtSeparators) {
    const std::array<const char*, 3> cases[] = {{";;a;;b;;", ";", "<a><b>"},
                                                {";;;", ";", ""},
                                                {"a b", "", "<a b>"},
                                                {"a\tb;c", "\t;", "<a><b><c>"},
                                                {"a \"b c\" d", " ", "<a><\"b><c\"><d>"},
                                                {"a \"b c\" d", " \"", "<a><b c><d>"},
                                                {"\"a\"\"b\" c", "\" ", "<a\"b><c>"},
                                                {"\"\" a", " \"", "<a>"},
                                                {"\"open end ", " \"", "<open end >"},
                                                {"\"", " \"", ""},
                                                {"in\"side x", " \"", "<in\"side><x>"},
                                                {"\"\"\"\"", " \"", "<\">"}};
    for (const auto& [text, separators, expected] : cases) {
        psStringList words;
        const int count = psString(text).parse(words, separators);
        EXPECT_EQ(count, words.size());
        std::string all;
        for (const psString& word : words) all += "<" + str(word) + ">";
        EXPECT_EQ(all, expected) << text;
    }
    psString first = "x", second = "y", third = "z";
    EXPECT_EQ(psString("a;b;c;d").parse(first, second, third, ";"), 4);
    EXPECT_EQ(str(first + second + third), "abc");
    EXPECT_EQ(psString("q").parse(first, second, third, ";"), 1);
    EXPECT_EQ(str(first + "," + second + "," + third), "q,,");
    EXPECT_EQ(psString("").parse(first, second, ";"), 0);
    EXPECT_TRUE(first.empty() && second.empty());
}

TEST(PsNames, TablesOfNames) {
    const int values[] = {1, 2, 2, 4, 6};
    const char* const names[] = {"One", "Two", "Twice", "Four", "OneTwo"};
    const std::tuple<int, const char*, const char*> cases[] = {
        {-8, "-8", "-8"}, {2, "Two", "Two|Twice|OneTwo"},   {9, "9", "One"},
        {8, "8", "8"},    {3, "3", "One|Two|Twice|OneTwo"}, {0, "0", "0"}};
    for (const auto& [value, name, flagNames] : cases) {
        EXPECT_EQ(str(enumString(value, values, names, 5)), name);
        EXPECT_EQ(str(flagString(value, values, names, 5)), flagNames);
    }
    const int withZero[] = {0, 1};
    const char* const zeroNames[] = {"None", "One"};
    EXPECT_EQ(str(flagString(0, withZero, zeroNames, 2)), "None");
    EXPECT_EQ(str(flagString(1, withZero, zeroNames, 2)), "One");

    for (const auto& [text, value] :
         {std::pair{"t", 2}, {"ONETWO", 6}, {"one", 1}, {"", 1}, {"x", 0}})
        EXPECT_EQ(enumValue(text, values, names, 5), value) << text;
    EXPECT_EQ(enumValue("o", values, names, 5, 2), 0);
    EXPECT_EQ(flagValue("one|f,x;two", values, names, 5), 7);
    EXPECT_EQ(flagValue("", values, names, 5), 0);
}

TEST(PsNumbers, TextsAndBack) {
    EXPECT_EQ(psString("n") + -5 + " " + psText(LLONG_MIN), "n-5 -9223372036854775808");
    EXPECT_EQ(psText(0.1F) + " " + psText(true), "0.1 1");
    EXPECT_EQ(str(psFormat("%s-%d", std::string(3000, 'x').c_str(), 1)).size(), 3002U);

    long long wide = 0;
    EXPECT_TRUE(psFromText("9223372036854775807", wide));
    EXPECT_FALSE(psFromText("9223372036854775808", wide));
    EXPECT_EQ(wide, LLONG_MAX) << "kept";
    unsigned number = 0;
    EXPECT_TRUE(psFromText(" 4294967295\t", number) && number == UINT_MAX);
    bool flag = false;
    double real = 0;
    EXPECT_FALSE(psFromText("-1", number) || psFromText("2", flag) || psFromText("yes", flag));
    EXPECT_FALSE(psFromText("1e999", real) || psFromText("1e5 x", real));
    psString hole(std::string_view("1\0002", 3));
    int whole = 0;
    EXPECT_FALSE(psFromText(hole, whole)) << "a NUL byte ends no number";
    EXPECT_FALSE(psFromText("\v-6", whole)) << "a list 8;7;\\v-6 would read back as a range";
}

}  // namespace
