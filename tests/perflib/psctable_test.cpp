#include "psctable.h"

#include <gtest/gtest.h>

#include <string>

#include "message_capture.h"
#include "temp_dir.h"

namespace {

class Table : public testing::Test {
  protected:
    Table() { m_table.addStream(m_dir / "t.csv", false); }

    // Cells are separated by '|' here, as a cell may hold a comma.
    void fill(const std::string& cells) {
        psStringList words;
        psString(cells.c_str()).parse(words, "|");
        for (const psString& word : words) m_table << word;
    }
    std::string file() const { return m_dir.read("t.csv"); }

    const TempDir m_dir;
    psCStream m_table;
};

TEST_F(Table, WritesAsManyCellsAsAskedFor) {
    struct {
        const char* cells;
        int count;
        std::string line;
    } const cases[] = {
        {"a", 3, "a,-,-"}, {"a|b|c", 2, "a,b"},   {"a|b", 0, "a,b"},        {"", 0, ""},
        {"", 2, "-,-"},    {"a,b|c", 0, "a,b,c"}, {"\"q\" x", 0, "\"q\" x"}};
    std::string expected;
    for (const auto& c : cases) {
        fill(c.cells);
        m_table.lineOut(c.count);
        expected += c.line + "\n";
        EXPECT_EQ(file(), expected) << "each line is on disk at once";
    }
    fill("a");
    m_table.setNextColm("");
    m_table.tableOut(5);
    EXPECT_EQ(file(), expected += "a,-,-,-,-\n");
    m_table << "\n";
    EXPECT_EQ(file(), expected += "a,-\n") << "tableOut kept the line, an empty text is a cell";
    EXPECT_EQ(m_table.lineCount(), 8);
}

TEST_F(Table, PostponedLinesComeLaterInTheirOrder) {
    for (const char* line : {"a|1", "b"}) {
        fill(line);
        m_table.linePostpone();
    }
    fill("c|3");
    m_table << "\n";
    m_table.linePostponeOut(3);
    m_table.linePostponeOut(3);
    EXPECT_EQ(file(), "c,3\na,1,-\nb,-,-\n");
    EXPECT_EQ(m_table.lineCount(), 3);
    fill("d|4");
    m_table.linePostpone();
    m_table.linePostponeOut(0);
    EXPECT_EQ(file(), "c,3\na,1,-\nb,-,-\nd,4\n") << "0: the filled cells";
    fill("e");
    m_table.linePostpone();
    m_table.linePostponeDrop();
    m_table.linePostponeOut(0);
    EXPECT_EQ(m_table.lineCount(), 4);
}

TEST_F(Table, NamesTheFirstPairOfEqualLines) {
    MessageCapture messages(showWarnings);
    EXPECT_FALSE(m_table.identicalLinesStop()) << "never started";
    fill("title|title");
    m_table << "\n";

    m_table.identicalLinesStart(2);
    for (const char* line : {"f|1|10", "f|2|20", "f|3|30", "f|2|40", "f|1|50"}) {
        fill(line);
        m_table.lineOut(3);
    }
    EXPECT_TRUE(m_table.identicalLinesStop());
    EXPECT_EQ(messages.text(),
              " Performance table note:\n Lines 2 & 6 have identical parameters\n");
    EXPECT_FALSE(m_table.identicalLinesStop()) << "off again";

    m_table.identicalLinesStart(2);
    fill("f|1|10");
    m_table.lineOut(3);
    fill("f|2|10");
    m_table.lineOut(3);
    EXPECT_FALSE(m_table.identicalLinesStop()) << "lines of before do not count";
}

}  // namespace
