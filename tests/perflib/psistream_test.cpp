#include "psistream.h"

#include <gtest/gtest.h>

#include "message_capture.h"
#include "parameter_fixture.h"

namespace {

TEST(PsDataList, KeepsTheLastValueOfAnExactName) {
    psDataList data;
    for (const auto& [name, text] :
         {std::pair{"", "x"}, {"a", "1"}, {"A", "2"}, {"a", "3"}, {"e", ""}})
        data.set(name, text);
    psString value = "kept";
    EXPECT_FALSE(data.get("b", value) || data.find(""));
    EXPECT_EQ(str(value), "kept");
    EXPECT_TRUE(data.get("a", value) && data.find("e"));
    EXPECT_EQ(str(value), "3");
}

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
    for (const std::string value : {"default", "two words", "default", "default"}) {
        EXPECT_EQ(str(in.getItemValue("name", "default")), value);
        EXPECT_EQ(in.source() == psDataSource::DEFAULT, value == "default");
    }
    const std::string question = "\n name [default] = ";
    EXPECT_EQ(messages.text(), question + question + question + question);
}

}  // namespace
