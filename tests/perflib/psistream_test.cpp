#include "psistream.h"

#include <gtest/gtest.h>

#include "message_capture.h"
#include "temp_dir.h"

namespace {

// The file stands in for the console.
TEST(PsIStream, LooksInTheSourcesInTheirOrder) {
    const TempDir dir;
    const psString path = dir.write("x.ini", "[s]\ndata=ini\nini=ini\nempty=\n[t]\nask=other\n");
    i_stream console(dir.write("console", "  typed words \r\n\n"),
                     io_stream::READ | io_stream::NAME_AS_GIVEN);
    MessageCapture messages(1);
    psIStream in;
    for (const auto& [name, text] :
         {std::pair{"", "x"}, {"data", "old"}, {"data", "d"}, {"Data", "other"}, {"none", ""}})
        in.dataList().set(name, text);
    EXPECT_FALSE(in.dataList().find(""));
    ASSERT_TRUE(in.setIniFile(path, false));
    in.setIniSection("s");

    using enum psDataSource;
    const std::tuple<const char*, const char*, psDataSource> cases[] = {
        {"data", "d", COMMAND_LINE},
        {"none", "", COMMAND_LINE},
        {"ini", "ini", INI_FILE},
        {"empty", "default", DEFAULT},
        {"absent", "default", DEFAULT}};
    for (const auto& [name, value, source] : cases) {
        EXPECT_EQ(str(in.getItemValue(name, "default")), value) << name;
        EXPECT_EQ(in.source(), source) << name;
    }
    EXPECT_EQ(messages.take(), "") << "without a console nothing is asked";

    in.setIStream(&console);
    const std::tuple<const char*, const char*, psDataSource> asked[] = {
        {"ini", "ini", INI_FILE},
        {"ask", "typed words", CONSOLE},
        {"ask", "default", DEFAULT},   // an empty answer
        {"ask", "default", DEFAULT}};  // the end of the input
    for (const auto& [name, value, source] : asked) {
        EXPECT_EQ(str(in.getItemValue(name, "default", "Prompt {a|b}")), value);
        EXPECT_EQ(in.source(), source);
        EXPECT_EQ(messages.take(), source == INI_FILE ? "" : "\n Prompt {a|b} [default] = ");
    }
    EXPECT_TRUE(in.close());
    EXPECT_EQ(dir.read("x.ini").find("absent"), std::string::npos) << "opened to read only";
}

}  // namespace
