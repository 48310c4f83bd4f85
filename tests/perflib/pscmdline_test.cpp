#include "pscmdline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "capture.h"

namespace {

// "key[argument]" of every key in order.
std::string keysOf(const psCommandList& list) {
    std::string text;
    for (const psCommandKey& entry : list) {
        if (entry.key() == ' ') continue;
        text += entry.key();
        text += "[" + std::string(entry.arg().c_str()) + "]";
    }
    return text;
}

struct WordsCase {
    const char* name;
    std::vector<const char*> words;
    const char* keys;
};

void PrintTo(const WordsCase& c, std::ostream* stream) {
    *stream << c.name;
}

class CommandWords : public testing::TestWithParam<WordsCase> {};

TEST_P(CommandWords, ArePairedIntoKeysAndArguments) {
    psCommandList list;
    std::vector<char*> argv;
    for (const char* word : GetParam().words) argv.push_back(const_cast<char*>(word));
    list.setArgs(static_cast<int>(argv.size()), argv.data());
    EXPECT_EQ(keysOf(list), GetParam().keys);
    EXPECT_EQ((--list.end())->key(), ' ');
}

const WordsCase wordsCases[] = {
    {"none", {}, ""},
    {"glued", {"-ifile.ini", "-B"}, "i[file.ini]B[]"},
    {"separate", {"-i", "file.ini", "-B"}, "i[file.ini]B[]"},
    {"slash", {"/h"}, "h[]"},
    {"signTakesTheWord", {"-f+", "Canny"}, "f[+Canny]"},
    {"signAlone", {"-s-"}, "s[-]"},
    {"signAndRest", {"-f-32f", "lost"}, "f[-32f]"},
    {"signTwice", {"-f==x"}, "f[==x]"},
    {"signBeforeWord", {"-s-", "x", "-f=", "y"}, "s[-x]f[=y]"},
    {"extraWordIsLost", {"-fCanny", "extra", "-B"}, "f[Canny]B[]"},
    {"strayWords", {"foo", "bar", "baz", "-B", "x"}, "B[x]"},
    {"strayWordTakesItsNeighbour", {"foo", "bar", "-B"}, "B[]"},
    {"loneDashIsAnArgument", {"-h", "-"}, "h[-]"},
    {"numberIsAKey", {"-d", "X", "-5"}, "d[X]5[]"},
    {"absolutePathIsAKey", {"-o", "/data/x"}, "o[]d[ata/x]"},
    {"gluedPath", {"-o/data/x"}, "o[/data/x]"},
    {"valueWithBlank", {"-d", "Accuracy, %=5"}, "d[Accuracy, %=5]"},
    {"helpWord", {"--help"}, "h[]"},
    {"versionWord", {"--version"}, "v[]"},
    {"helpWordTakesAKey", {"--help", "f"}, "h[f]"},
    {"doubleDash", {"--foo"}, "-[foo]"},
    {"emptyWord", {"", "-B"}, "B[]"},
    {"emptySeparateArgument", {"-n", "", "-B"}, "n[]B[]"},
};

INSTANTIATE_TEST_SUITE_P(All, CommandWords, testing::ValuesIn(wordsCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(CommandText, IsCutAtBlanksQuotesAndSemicolons) {
    const struct {
        const char* text;
        const char* keys;
    } cases[] = {
        {"", ""},
        {" \t\r\n", ""},
        {"-B -fCanny", "B[]f[Canny]"},
        {"-o \"my file.txt\" -B", "o[my]B[]"},
        {"-dsize=1;2;4 -B", "d[size=1]B[]"},
        {"-i\tx.ini\r\n-B\n", "i[x.ini]B[]"},
    };
    for (const auto& c : cases) {
        psCommandList list;
        list.setArgs(c.text);
        EXPECT_EQ(keysOf(list), c.keys) << c.text;
    }
}

class OptionFile : public testing::Test {
  protected:
    OptionFile() { std::filesystem::create_directories(m_dir); }
    ~OptionFile() override { std::filesystem::remove_all(m_dir); }

    std::string file(const char* name, const std::string& content) {
        std::ofstream(m_dir + "/" + name, std::ios::binary) << content;
        return m_dir + "/" + name;
    }

    Capture m_messages{static_cast<int>(MessageLevel::ERR)};
    std::string m_dir = testing::TempDir() + "pscmdline_test_" + std::to_string(getpid());
};

TEST_F(OptionFile, IsExpandedWhereItStands) {
    const std::string two = "-@" + file("two", "-B\n-fCanny");
    const std::string crlf = "-@" + file("crlf", "-i a.ini\r\n\r\n  -f+\r\n8u\r\n");
    const std::string open = "-@" + file("open", "-o");
    const std::string nested = "-@" + file("nested", "-v " + two);
    const std::string empty = "-@" + file("empty", "");
    const struct {
        std::string line;
        std::string keys;
    } cases[] = {
        {"-e " + two + " -s-", "e[]B[]f[Canny]s[-]"},
        {two + " " + two, "B[]f[Canny]B[]f[Canny]"},
        {crlf, "i[a.ini]f[+8u]"},
        {open + " name -B", "o[]B[]"},
        {empty + " -B", "B[]"},
        {nested + " -B", "v[]@[" + two.substr(2) + "]B[]"},
    };
    for (const auto& c : cases) {
        psCommandList list;
        list.setArgs(c.line.c_str());
        EXPECT_TRUE(list.expandFiles()) << c.line;
        EXPECT_EQ(keysOf(list), c.keys) << c.line;
    }
    EXPECT_EQ(m_messages.take(), "");
}

TEST_F(OptionFile, ThatCannotBeReadIsNamedAndTheOthersAreExpanded) {
    psCommandList list;
    list.setArgs(("-@" + m_dir + "/none -@" + m_dir + " -@" + file("good", "-B")).c_str());
    EXPECT_FALSE(list.expandFiles());
    EXPECT_EQ(keysOf(list), "B[]");
    EXPECT_EQ(m_messages.take(), "-- Can't open file " + m_dir +
                                     "/none to read: \n-- Can't open file " + m_dir +
                                     " to read: \n");
}

TEST_F(OptionFile, OfBinaryJunkYieldsNoKeysThatWereNotThere) {
    std::string junk("-B\0\0-x", 6);
    for (int i = 1; i < 256; ++i) junk += static_cast<char>(i);
    psCommandList list;
    EXPECT_TRUE(list.insertFromFile(file("junk", junk).c_str(), list.begin()));
    psString arg;
    EXPECT_TRUE(list.getArg('B', arg));
    EXPECT_FALSE(list.isKey('x'));
}

}  // namespace
