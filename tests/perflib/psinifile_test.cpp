#include "psinifile.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "unit.h"

namespace {

std::string written(const std::string& text) {
    psIniFile ini;
    ini.readText(text.data(), text.size());
    return str(ini.writeText());
}

TEST(PsIniFile, NormalisesWhatItReads) {
    const std::string longLine(10'000, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"[Perf System]\nlen = 64 // comment\n", "\n[Perf System]\nlen=64\n"},
        {"[ a b ]\r\n\tkey\t=\t1 2 \r\n", "\n[a b]\nkey=1 2\n"},
        {"[s]\nflag\nempty=\n", "\n[s]\nflag\nempty=\n"},
        {"[s]\nk=1\nk=2", "\n[s]\nk=2\n"},  // the later value, no final line end
        {"[s]\na=1\n[t]\n[s]\nb=2\n", "\n[s]\na=1\nb=2\n\n[t]\n"},  // continued
        {"[s]\nk=v=w\n=5\n", "\n[s]\nk=v=w\n=5\n"},
        {"a=1\n[s]\n", "\n[]\na=1\n\n[s]\n"},
        {"[s]\nurl=http://x\n// all\n;k=1\n#\n", "\n[s]\nurl=http:\n;k=1\n#\n"},
        {"x[s]y=3\nk]1[=2\n[open\n", "\n[s]\nk]1[=2\n[open\n"},
        {"[s]\nk=" + longLine + "\n", "\n[s]\nk=" + longLine + "\n"},
        {std::string("[s]\nk=1\0 2\nl=3\n\0\n", 17), "\n[s]\nk=1\nl=3\n"},
        {"\xef\xbb\xbfk=1\n[s]\n", "\n[]\nk=1\n\n[s]\n"},
        {"\xff\xfe[\x80]\n\x01=\x02\n", "\n[\x80]\n\x01=\x02\n"}};
    for (const auto& [text, result] : cases) {
        EXPECT_EQ(written(text), result) << text;
        EXPECT_EQ(written(result), result) << "a second pass of " << text;
    }
}

TEST(PsIniFile, WriteKeepsValuesAndFillsEmptyComments) {
    psIniFile ini;
    ini.write("s", "a", "1");
    ini.write("s", "a", "2", "one|two");
    ini.write("s", "a", "3", "other");
    ini.write("t");
    ini.write("t", "flag", psIniFile::flagValue, "set");
    ini.write("s", "b");
    EXPECT_EQ(str(ini.writeText()), "\n[s]\na=1\t// one|two\nb=\n\n[t]\nflag\t// set\n");
    EXPECT_EQ(ini.read("t", "flag", "x"), "~~~");
    EXPECT_EQ(ini.read("t", "Flag", "x") + ini.read("T", "flag", "x"), "xx");
    EXPECT_TRUE(ini.sectionExist("t") && !ini.valueExist("t", "a"));

    EXPECT_TRUE(ini.deleteKey("s", "a") && !ini.deleteKey("s", "a"));
    EXPECT_TRUE(ini.eraseSection("t") && !ini.eraseSection("t"));
    EXPECT_EQ(str(ini.writeText()), "\n[s]\nb=\n");
}

TEST(PsIniFile, ClosedOnceAndFailuresNameThePath) {
    const TempDir dir;
    const psString path = dir.write("x.ini", "[s]\r\nk=old // gone\r\n");
    psIniFile ini;
    ASSERT_TRUE(ini.open(path, true));
    ini.write("s", "k", "new", "c");
    EXPECT_TRUE(ini.close());
    ini.write("s", "l", "1");
    EXPECT_TRUE(ini.close()) << "nothing is open any more";
    EXPECT_EQ(dir.read("x.ini"), "\n[s]\nk=old\t// c\n");

    MessageCapture messages(showErrors);
    const std::pair<psString, int> unusable[] = {{dir / "", EISDIR}, {path + "/x", ENOTDIR}};
    for (const auto& [bad, reason] : unusable) {
        for (const bool write : {false, true}) {
            EXPECT_FALSE(ini.open(bad, write) || ini.isWritten()) << str(bad);
            EXPECT_EQ(messages.take(), "-- Can't open file " + str(bad) + " to " +
                                           (write ? "write" : "read") + ": " +
                                           std::strerror(reason) + "\n");
        }
    }
}

// Permissions mean nothing to root: it takes another user's rights meanwhile.
class AsUser {
  public:
    AsUser() { EXPECT_EQ(seteuid(m_user == 0 ? 65534 : m_user), 0); }
    ~AsUser() { EXPECT_EQ(seteuid(m_user), 0); }

  private:
    uid_t m_user = geteuid();
};

TEST(PsIniFile, WritesOnlyIniFilesAndWhereItCan) {
    using std::filesystem::perms;
    const TempDir dir;
    const struct {
        std::string text;
        const char* refusal = nullptr;
        perms mode = perms(0666);
    } cases[] = {
        {"\xef\xbb\xbf \r\n"},
        {"a=1\n\t[s] // x\n"},
        {"a=1\n// [s]\nint b[3];\n", "is no ini-file: it has no [section]\n"},
        {std::string((16 << 20) + 1, '\n'), "is no ini-file: it is longer than 16777216 b"},
        {std::string("[s]\na=\0\n", 8), "is no ini-file: it has a NUL byte\n"},
        {"[s]\n", " to write: ", perms(0444)},
        {"[s]\n", " to read: ", perms(0222)}};
    std::filesystem::permissions(dir.path(), perms::all);
    for (const auto& [text, refusal, mode] : cases) {
        const psString path = dir.write("x.ini", text);
        std::filesystem::permissions(str(path), mode);
        MessageCapture messages(showErrors);
        psIniFile ini;
        {
            const AsUser user;
            EXPECT_EQ(ini.open(path, true), !refusal) << text;
            ini.close();
        }
        EXPECT_TRUE(has(messages.text(), refusal ? refusal : "")) << text;
        std::filesystem::permissions(str(path), perms(0666));
        EXPECT_EQ(dir.read("x.ini") == text, refusal != nullptr) << text;
    }
}

TEST(PsIniFile, AFullDiskIsReported) {
    const TempDir dir;
    std::filesystem::create_symlink("/dev/full", dir.path() + "/full");
    // /dev/full reads as endless zeros, so the file is exchanged after opening.
    dir.write("x.ini", "[s]\n");
    psIniFile ini;
    ASSERT_TRUE(ini.open(dir / "x.ini", true));
    std::filesystem::rename(dir.path() + "/full", dir.path() + "/x.ini");
    MessageCapture messages(showErrors);
    EXPECT_FALSE(ini.close());
    EXPECT_EQ(messages.text(), str("-- Can't write " + (dir / "x.ini") + ": " +
                                   std::strerror(ENOSPC) + "; no more output goes there\n"));
}

}  // namespace
