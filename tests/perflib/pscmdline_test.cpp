#include "pscmdline.h"

#include <cerrno>
#include <cstring>

#include "unit.h"

namespace {

// "key[argument]" of every key in order, then the words that came to nothing in quotes.
std::string textOf(const psCommandList& list) {
    std::string text;
    for (const psCommandKey& entry : list)
        if (entry.key() != ' ') text += entry.key() + ("[" + str(entry.arg()) + "]");
    for (const psString& line : list.remarks())
        text += " " + str(line).substr(0, str(line).find(" is no key"));
    return text;
}

TEST(CommandWords, ArePairedIntoKeysAndArguments) {
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{}, ""},
        {{"-ifile.ini", "-B"}, "i[file.ini]B[]"},
        {{"-i", "file.ini", "/B"}, "i[file.ini]B[]"},
        {{"-f+", "Canny"}, "f[+Canny]"},
        {{"-f-32f", "lost"}, "f[-32f] 'lost' behind -f-32f"},
        {{"-s-", "x", "-f=", "y", "-f==x", ""}, "s[-x]f[=y]f[==x]"},
        {{"foo", "bar", "baz", "-B", "x", "-"}, "B[x] 'foo' 'bar' 'baz' '-'"},
        {{"-h", "-"}, "h[-]"},
        {{"-d", "X", "-5"}, "d[X]5[]"},
        {{"-o", "/data/x"}, "o[]d[ata/x]"},
        {{"-o/data/x"}, "o[/data/x]"},
        {{"-d", "Accuracy, %=5"}, "d[Accuracy, %=5]"},
        {{"--foo", "--x=a=b c", "lost", "--y=", "--help", "f", "--"},
         "-[foo]-[x=a=b c]-[y=]-[help f]-[] 'lost' behind --x=a=b c"},
        {{"-n", "", "-B"}, "n[]B[]"}};
    for (const auto& [words, keys] : cases) {
        psCommandList list;
        std::vector<char*> argv;
        for (const char* word : words) argv.push_back(const_cast<char*>(word));
        list.setArgs(static_cast<int>(argv.size()), argv.data());
        EXPECT_EQ(textOf(list), keys);
        EXPECT_EQ((--list.end())->key(), ' ');
    }
}

TEST(OptionFile, IsExpandedWhereItStands) {
    MessageCapture messages(showErrors);
    const TempDir dir;
    const auto key = [&](const char* name, const std::string& content) {
        return "-@" + str(dir.write(name, content));
    };
    const std::string two = key("two", "-B\n-fCanny"), empty = key("empty", ""),
                      crlf = key("crlf", "-i a.ini\r\n\r\n  -f+\r\n8u\r\n"),
                      open = key("open", "-o \"my file\"  -dn=1;2\t-o"),
                      nested = key("nested", "-v " + two),
                      nul = key("nul", std::string("\xef\xbb\xbf-B\0 -x\n-s", 12));
    const std::pair<std::string, std::string> cases[] = {
        {"-e " + two + " " + two + " -s-", "e[]B[]f[Canny]B[]f[Canny]s[-]"},
        {crlf, "i[a.ini]f[+8u]"},
        {open + " name -B", "o[my]d[n=1]o[]B[] 'name' behind " + open + " 'file' '2' behind -dn=1"},
        {empty + " -B", "B[]"},
        {nested + " -B", "v[]@[" + two.substr(2) + "]B[]"},
        {nul + " -e", "B[]s[]e[] " + nul.substr(2) + ", line 1 was cut at a NUL byte"}};
    for (const auto& [line, keys] : cases) {
        psCommandList list;
        list.setArgs(line.c_str());
        EXPECT_TRUE(list.expandFiles()) << line;
        EXPECT_EQ(textOf(list), keys) << line;
    }
    EXPECT_EQ(messages.take(), "");

    std::string junk("-B\0\0-x", 6);
    for (int i = 1; i < 256; ++i) junk += static_cast<char>(i);
    psCommandList list;
    list.setArgs(("-@" + dir.path() + "/none " + key("junk", junk) + " -e").c_str());
    EXPECT_FALSE(list.expandFiles());
    EXPECT_EQ(messages.take(), "-- Can't open file " + dir.path() +
                                   "/none to read: " + std::strerror(ENOENT) + "\n");
    EXPECT_TRUE(list.isKey('B') && list.isKey('e') && !list.isKey('x'));
}

}  // namespace
