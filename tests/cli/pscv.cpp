#include "pscv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

Pscv::Arguments Pscv::smallCanny(const Arguments& more) {
    Arguments arguments{"-B", "-m=p_ccanny", "-rtable", "-utests"};
    arguments.insert(arguments.end(),
                     {"-dImageSize=64x64", "-dnumFigures=2x2", "-dMethod=Manual", "-dNumLoops=3"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

support::Command Pscv::command(const Arguments& arguments, const Arguments& more) const {
    support::Command command;
    command.program = program.empty() ? PSCV_PROGRAM : program;
    command.arguments = {"-l" + m_dir.path().string()};
    for (const Arguments* part : {&arguments, &more})
        command.arguments.insert(command.arguments.end(), part->begin(), part->end());
    command.environment = {{"PSCV_FREQ_MHZ", "2000"}, {"LD_LIBRARY_PATH", std::nullopt}};
    for (const auto& [name, value] : environment) command.environment[name] = value;
    command.input = input;
    return command;
}

support::Outcome Pscv::run(const Arguments& arguments, const Arguments& more) const {
    support::Outcome outcome = support::run(command(arguments, more));
    EXPECT_TRUE(outcome.clean()) << "status " << outcome.status << ", signal " << outcome.signal
                                 << ", timed out " << outcome.timedOut << "\n"
                                 << outcome.out << outcome.err;
    return outcome;
}

namespace {

std::vector<support::Row> tableFromTitle(const std::string& text) {
    std::vector<support::Row> table = support::tableRows(text);
    const auto title = std::ranges::find_if(table, [](const support::Row& row) {
        return row[colBase] == "funcBase" || row[colBase] == "function";
    });
    if (title == table.end()) ADD_FAILURE() << "no title line in\n" << text;
    table.erase(table.begin(), title);
    return table;
}

}  // namespace

support::Row Pscv::title() const {
    const std::vector<support::Row> table = tableFromTitle(text("table.csv"));
    return table.empty() ? support::Row(numColumns) : table.front();
}

std::vector<support::Row> Pscv::rows() const {
    std::vector<support::Row> table = tableFromTitle(text("table.csv"));
    if (!table.empty()) table.erase(table.begin());
    for (support::Row& row : table) {
        EXPECT_EQ(row.size(), std::size_t{numColumns}) << text("table.csv");
        row.resize(numColumns);
    }
    return table;
}

std::vector<support::Row> Pscv::rows(Column column, const std::string& text) const {
    std::vector<support::Row> found = rows();
    std::erase_if(found, [&](const support::Row& row) { return row[column] != text; });
    return found;
}

int Pscv::summary(const std::string& out, const std::string& label) {
    for (const std::string& line : support::lines(out)) {
        const std::size_t at = line.find("|" + label + " ");
        if (at == 0) return std::atoi(line.c_str() + label.size() + 1);
    }
    return -1;
}

std::vector<std::string> Pscv::listed(const std::string& out) {
    std::vector<std::string> lines = support::lines(out);
    std::erase_if(lines, [](const std::string& line) {
        return line.size() != 79 || line[0] != '|' || std::atoi(line.substr(1, 4).c_str()) == 0;
    });
    return lines;
}

std::vector<support::Row> Pscv::summaryLines(const std::string& text) {
    std::vector<support::Row> data;
    bool inside = false;
    for (const std::string& line : support::lines(text)) {
        if (line.starts_with("END_DATA")) inside = false;
        if (inside && !line.starts_with("--")) data.push_back(support::tableRows(line)[0]);
        if (line.starts_with("Function,Class,")) inside = true;
    }
    for (support::Row& row : data) {
        EXPECT_EQ(row.size(), 11U) << row[0];
        EXPECT_EQ(std::ranges::count(row, ""), 0) << row[0];
        row.resize(11);
    }
    return data;
}

support::Row Pscv::summaryOf(const std::string& function) const {
    for (const support::Row& row : summaryLines(text("tests_sum.csv")))
        if (row[0] == function) return row;
    ADD_FAILURE() << "no line for " << function << " in\n" << text("tests_sum.csv");
    return support::Row(11);
}
