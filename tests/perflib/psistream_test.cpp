#include "psistream.h"

#include <gtest/gtest.h>

#include "message_capture.h"
#include "temp_dir.h"

namespace {

TEST(PsDataList, KeepsTheLastValueOfAnExactName) {
    psDataList data;
    data.set("", "x");
    data.set("a", "1");
    data.set("A", "2");
    data.set("a", "3");
    data.set("e", "");
    psString value = "kept";
    EXPECT_TRUE(data.get("a", value));
    EXPECT_EQ(str(value), "3");
    EXPECT_FALSE(data.get("b", value));
    EXPECT_EQ(str(value), "3");
    EXPECT_TRUE(data.find("e"));
    EXPECT_FALSE(data.find(""));
}

// A console whose input is a text.
class Console {
  public:
    explicit Console(const char* input) : m_file(std::tmpfile()), stream(m_file) {
        std::fputs(input, m_file);
        std::rewind(m_file);
    }
    ~Console() { std::fclose(m_file); }

  private:
    std::FILE* m_file;

  public:
    i_stream stream;
};

TEST(PsIStream, LooksInTheSourcesInTheirOrder) {
    const TempDir dir;
    const psString path = dir.write("x.ini", "[s]\ndata=ini\nini=ini\nempty=\n[t]\nask=other\n");
    MessageCapture messages(1);
    Console console("typed\n");
    psIStream in;
    in.dataList().set("data", "d");
    in.dataList().set("none", "");
    ASSERT_TRUE(in.setIniFile(path, false));
    in.setIniSection("s");

    struct {
        const char *name, *value;
        psDataSource source;
    } const cases[] = {
        {"data", "d", psDataSource::COMMAND_LINE},    {"none", "", psDataSource::COMMAND_LINE},
        {"ini", "ini", psDataSource::INI_FILE},       {"empty", "default", psDataSource::DEFAULT},
        {"absent", "default", psDataSource::DEFAULT},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(str(in.getItemValue(c.name, "default")), c.value) << c.name;
        EXPECT_EQ(in.source(), c.source) << c.name;
    }
    EXPECT_EQ(messages.text(), "") << "without a console nothing is asked";

    in.setIStream(&console.stream);
    EXPECT_EQ(str(in.getItemValue("ini", "default", "Prompt")), "ini");
    EXPECT_EQ(str(in.getItemValue("ask", "default", "Prompt {a|b}")), "typed");
    EXPECT_EQ(in.source(), psDataSource::CONSOLE);
    EXPECT_EQ(messages.text(), "\n Prompt {a|b} [default] = ");
    EXPECT_TRUE(in.close());
    EXPECT_EQ(dir.read("x.ini").find("absent"), std::string::npos) << "opened to read only";
}

TEST(PsIStream, AnEmptyAnswerAndTheEndOfInputTakeTheDefault) {
    MessageCapture messages(1);
    Console console("\n  two words \r\n");
    psIStream in;
    in.setIStream(&console.stream);
    struct {
        const char* value;
        psDataSource source;
    } const cases[] = {{"default", psDataSource::DEFAULT},
                       {"two words", psDataSource::CONSOLE},
                       {"default", psDataSource::DEFAULT},
                       {"default", psDataSource::DEFAULT}};
    for (const auto& c : cases) {
        EXPECT_EQ(str(in.getItemValue("name", "default")), c.value);
        EXPECT_EQ(in.source(), c.source);
    }
    const std::string question = "\n name [default] = ";
    EXPECT_EQ(messages.text(), question + question + question + question);
}

TEST(PsIStream, EntersValuesIntoTheIniFile) {
    const TempDir dir;
    const psString path = dir.write("x.ini", "[s]\nold=1\n");
    psIStream in;
    in.dataList().set("old", "2");
    in.dataList().set("data", "bad text");
    ASSERT_TRUE(in.setIniFile(path, true));
    EXPECT_TRUE(in.isIniWritten());
    in.setIniSection("s");
    EXPECT_EQ(str(in.getItemValue("old", "0")), "2") << "the command line goes before the file";
    in.getItemValue("data", "0", "Data", "a|b");
    in.setIniSection("t");
    in.getItemValue("len", "64");
    EXPECT_TRUE(in.close());
    EXPECT_EQ(dir.read("x.ini"), "\n[s]\nold=1\ndata=bad text\t// a|b\n\n[t]\nlen=64\n");
    EXPECT_FALSE(in.hasIniFile());
    EXPECT_TRUE(in.close());
    EXPECT_EQ(str(in.getItemValue("old", "0")), "2");
    EXPECT_EQ(str(in.getItemValue("len", "0")), "0");
}

}  // namespace
