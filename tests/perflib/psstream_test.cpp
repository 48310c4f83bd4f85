#include "psstream.h"

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include "unit.h"

using enum MessageLevel;

namespace {

constexpr int readAsGiven = io_stream::READ | io_stream::NAME_AS_GIVEN;

// Which level shows what is seen in whole runs.
TEST(PsOStream, AMessageBeginsWhereItsLevelIsAskedForAndEndsWithTheLevelOfBefore) {
    const std::tuple<OutputLevel, MessageLevel, bool, bool> cases[] = {
        {1, PERF, false, false}, {71, MALLOC, false, true}, {71, DATA, true, true},
        {87, TRACE, true, true}, {0, ERR, false, false},    {8, ERR, false, true}};
    for (const auto& [out, level, shown, begins] : cases) {
        MessageCapture messages(out);
        g_ostrm << level << "one" << 2 << ' ' << 2.5 << psString("\n") << END;
        EXPECT_EQ(messages.text(), shown ? "one2 2.5\n" : "") << out;
        const MessageLevel before = g_ostrm.getMsgLevel();
        EXPECT_EQ(g_ostrm.beginMessage(level), begins) << out;
        if (g_ostrm.beginMessage(ERR)) g_ostrm.endMessage();  // a message inside the other
        EXPECT_EQ(g_ostrm.getMsgLevel(), begins ? level : before);
        if (begins) g_ostrm.endMessage();
        EXPECT_EQ(g_ostrm.getMsgLevel(), before);
    }
}

TEST(PsOStream, NamesWhatCannotBeOpened) {
    const TempDir dir;
    const psString file = dir.write("file", "") + "/x";
    MessageCapture messages(showErrors);
    psOStream stream;
    EXPECT_FALSE(stream.addStream("", false) || i_stream(file, readAsGiven, false).isOpen());
    EXPECT_TRUE(stream.empty() && !i_stream(file, readAsGiven).isOpen());
    EXPECT_EQ(messages.text(),
              "-- Can't open file. Wrong filename (NULL)  to write: it has no name\n-- Can't open "
              "file " +
                  str(file) + " to read: " + std::strerror(ENOTDIR) + "\n");
}

TEST(PsOStream, AFileIsWholeOnceItsStreamIsGone) {
    const TempDir dir;
    o_stream(dir / "file", io_stream::WRITE | io_stream::NAME_AS_GIVEN).write("text");
    EXPECT_EQ(dir.read("file"), "text");
}

// The limit of a file's size does what a full disk does.
TEST(PsSinkList, AFileThatFillsUpEndsWithItsLastWholeLineAndTheOthersGoOn) {
    // The file that is appended to, the text, and the file afterwards.
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"", "1234567\nabc\n", "1234567\n"},  // flushed in the middle of a line, too
        {"old\n", "12345\n67\n", "old\n12345\n"},
        {"half", "1234\n\n", "half\n1234\n"},
        {"1234567890", "a\n", "1234567890"},
        {"123456789", "a\n", "123456789\n"},
        {"", "123456789012", ""}};
    std::signal(SIGXFSZ, SIG_IGN);
    for (const auto& [before, text, kept] : cases) {
        const TempDir dir;
        MessageCapture messages(showErrors);
        psSinkList sinks;
        ASSERT_TRUE(sinks.addStream(dir.write("full", before), true));
        ASSERT_TRUE(sinks.addStream(dir / "other", false));
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit ten{10, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &ten);
        for (const char letter : text) {
            sinks.write(psString(letter));
            if (letter != '\n') sinks.front()->flush();
        }
        sinks.front()->flush();
        setrlimit(RLIMIT_FSIZE, &old);
        sinks.write("more\n");
        sinks.close();
        EXPECT_EQ(dir.read("full"), kept);
        EXPECT_EQ(dir.read("other"), text + "more\n");
        EXPECT_EQ(messages.text(), "-- Can't write " + str(dir / "full") + ": " +
                                       std::strerror(EFBIG) + "; no more output goes there\n");
    }
}

TEST(IStream, ReadsLinesOfAnyLength) {
    const TempDir dir;
    const std::string lines[] = {
        "", "x\r", std::string(511, 'a'), std::string(10'000, 'b'), std::string("nul\0byte", 8),
        "", "last"};
    std::string content;
    for (const std::string& line : lines) content += line + "\n";
    content.pop_back();
    i_stream file(dir.write("x.txt", content), readAsGiven);
    psString read = "old";
    for (const std::string& line : lines) {
        ASSERT_TRUE(file.getline(read));
        EXPECT_EQ(str(read), line);
    }
    EXPECT_FALSE(file.getline(read) || file.readError());
    EXPECT_TRUE(read.empty());
    EXPECT_FALSE(i_stream(dir / "missing", readAsGiven, false).getline(read));

    i_stream folder(dir / "", readAsGiven);
    EXPECT_TRUE(!folder.getline(read) && folder.readError());
}

TEST(Trace, IndentsByTheOpenNames) {
    psTrace::flush();
    MessageCapture messages(showResults | static_cast<int>(MessageLevel::TRACE));
    for (const char* name : {"a", "b"}) psTrace::traceIn(name);
    EXPECT_EQ(psTrace::getCurName(), "b");
    psTrace::traceOut("a");
    EXPECT_EQ(psTrace::getCurName(), "");
    for (int i = 0; i < 2; ++i) psTrace::traceOut("x");  // the prefix never ends below nothing
    psTrace::traceIn("a");
    EXPECT_EQ(psTrace::getCurName(), "a");
    EXPECT_EQ(messages.text(),
              "****** trace into   a\n******* trace into   b\n******* trace out of a\n"
              "***** trace out of x\n***** trace out of x\n****** trace into   a\n");
    EXPECT_EQ(str(psTrace::text()), messages.text());
    psTrace::flush();
    EXPECT_TRUE(psTrace::text().empty());
}

}  // namespace
