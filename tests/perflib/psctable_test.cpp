#include "psctable.h"

#include "unit.h"

namespace {

class Table : public testing::Test {
  protected:
    Table() { m_table.addStream(m_dir / "t.csv", false); }

    // Cells are separated by '|' here, as a cell may hold a comma.
    psCStream& fill(const char* cells) {
        psStringList words;
        psString(cells).parse(words, "|");
        for (const psString& word : words) m_table << word;
        return m_table;
    }
    std::string file() const { return m_dir.read("t.csv"); }

    const TempDir m_dir;
    psCStream m_table;
};

TEST_F(Table, WritesAsManyCellsAsAskedFor) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"a", 3, "a,-,-"}, {"a|b|c", 2, "a,b"},   {"a|b", 0, "a,b"},        {"", 0, ""},
        {"", 2, "-,-"},    {"a,b|c", 0, "a,b,c"}, {"\"q\" x", 0, "\"q\" x"}};
    std::string expected;
    for (const auto& [cells, count, line] : cases) {
        fill(cells).lineOut(count);
        expected += line + std::string("\n");
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
    fill("a|1").linePostpone();
    fill("b").linePostpone();
    fill("c|3") << "\n";
    m_table.linePostponeOut(3);
    m_table.linePostponeOut(3);
    EXPECT_EQ(file(), "c,3\na,1,-\nb,-,-\n");
    EXPECT_EQ(m_table.lineCount(), 3);
    fill("d|4").linePostpone();
    m_table.linePostponeOut(0);
    EXPECT_EQ(file(), "c,3\na,1,-\nb,-,-\nd,4\n") << "0: the filled cells";
    fill("e").linePostpone();
    m_table.linePostponeDrop();
    m_table.linePostponeOut(0);
    EXPECT_EQ(m_table.lineCount(), 4);
}

TEST_F(Table, NamesTheFirstPairOfEqualLines) {
    MessageCapture messages(showWarnings);
    EXPECT_FALSE(m_table.identicalLinesStop()) << "never started";
    fill("title|title") << "\n";

    m_table.identicalLinesStart(2);
    for (const char* line : {"f|1|10", "f|2|20", "f|3|30", "f|2|40", "f|1|50"})
        fill(line).lineOut(3);
    EXPECT_TRUE(m_table.identicalLinesStop());
    EXPECT_EQ(messages.text(),
              " Performance table note:\n Lines 2 & 6 have identical parameters\n");
    EXPECT_FALSE(m_table.identicalLinesStop()) << "off again";

    m_table.identicalLinesStart(2);
    for (const char* line : {"f|1|10", "f|2|10"}) fill(line).lineOut(3);
    EXPECT_FALSE(m_table.identicalLinesStop()) << "lines of before do not count";
}

}  // namespace
