#include "psstream.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <string>

#include "message_capture.h"
#include "temp_dir.h"

using enum MessageLevel;

namespace {

constexpr int readAsGiven = io_stream::READ | io_stream::NAME_AS_GIVEN;

TEST(PsOStream, PassesLevelsByTheirBits) {
    struct {
        OutputLevel out;
        MessageLevel level;
        bool shown, begins;
    } const cases[] = {{1, PERF, false, false}, {1, ERR, true, true},      {7, PERF, true, true},
                       {7, INFO, false, false}, {71, MALLOC, false, true}, {71, DATA, true, true},
                       {87, TRACE, true, true}, {0, ERR, false, false},    {8, ERR, false, true}};
    for (const auto& c : cases) {
        MessageCapture messages(c.out);
        g_ostrm << c.level << "one" << 2 << ' ' << 2.5 << psString("\n") << END;
        EXPECT_EQ(messages.text(), c.shown ? "one2 2.5\n" : "") << c.out;
        const MessageLevel before = g_ostrm.getMsgLevel();
        EXPECT_EQ(g_ostrm.beginMessage(c.level), c.begins) << c.out;
        if (g_ostrm.beginMessage(ERR)) g_ostrm.endMessage();  // a message inside the other
        EXPECT_EQ(g_ostrm.getMsgLevel(), c.begins ? c.level : before);
        if (c.begins) g_ostrm.endMessage();
        EXPECT_EQ(g_ostrm.getMsgLevel(), before);
    }
}

TEST(PsOStream, TellsWhichFileCannotBeOpened) {
    const TempDir dir;
    const std::string file = str(dir.write("file", "")) + "/x";
    MessageCapture messages(showErrors);
    psOStream stream;
    EXPECT_FALSE(stream.addStream(file.c_str(), false) || stream.addStream("", false));
    EXPECT_TRUE(stream.empty());
    const i_stream missing(file.c_str(), readAsGiven), quiet(file.c_str(), readAsGiven, false);
    EXPECT_FALSE(missing.isOpen());
    const std::string reason = std::strerror(ENOTDIR);
    EXPECT_EQ(messages.text(),
              "-- Can't open file " + file + " to write: " + reason +
                  "\n"
                  "-- Can't open file. Wrong filename (NULL)  to write: it has no name\n"
                  "-- Can't open file " +
                  file + " to read: " + reason + "\n");
}

// The limit of a file's size does what a full disk does.
TEST(PsSinkList, AFileThatFillsUpEndsWithItsLastWholeLineAndTheOthersGoOn) {
    const struct {
        const char* before;  // in the file that is appended to
        const char* written;
        const char* file;
    } cases[] = {{"", "1234567\nabc\n", "1234567\n"},  // flushed in the middle of a line, too
                 {"old\n", "12345\n67\n", "old\n12345\n"},
                 {"half", "1234\n\n", "half\n1234\n"},
                 {"1234567890", "a\n", "1234567890"},
                 {"123456789", "a\n", "123456789\n"},
                 {"", "123456789012", ""}};
    std::signal(SIGXFSZ, SIG_IGN);
    for (const auto& c : cases) {
        const TempDir dir;
        MessageCapture messages(showErrors);
        psSinkList sinks;
        ASSERT_TRUE(sinks.addStream(dir.write("full", c.before), true));
        ASSERT_TRUE(sinks.addStream(dir / "other", false));
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        const rlimit ten{10, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &ten);
        for (const char* text = c.written; *text; ++text) {
            sinks.write(psString(*text));
            if (*text != '\n') sinks.front()->flush();
        }
        sinks.front()->flush();
        setrlimit(RLIMIT_FSIZE, &old);
        sinks.write("more\n");
        sinks.close();
        EXPECT_EQ(dir.read("full"), c.file);
        EXPECT_EQ(dir.read("other"), c.written + std::string("more\n"));
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
    psTrace::traceIn("a");
    psTrace::traceIn("b");
    EXPECT_EQ(str(psTrace::getCurName()), "b");
    psTrace::traceOut("a");
    EXPECT_EQ(str(psTrace::getCurName()), "");
    for (int i = 0; i < 2; ++i) psTrace::traceOut("x");  // the prefix never ends below nothing
    psTrace::traceIn("a");
    EXPECT_EQ(str(psTrace::getCurName()), "a");
    const std::string expected =
        "****** trace into   a\n******* trace into   b\n******* trace out of a\n"
        "***** trace out of x\n***** trace out of x\n****** trace into   a\n";
    EXPECT_EQ(messages.text(), expected);
    EXPECT_EQ(str(psTrace::text()), expected);
    psTrace::flush();
    EXPECT_TRUE(psTrace::text().empty());
}

}  // namespace
