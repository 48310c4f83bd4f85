#include "pscv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

Pscv::Arguments Pscv::smallCanny(const Arguments& more) {
    Arguments arguments{"-B",
                        "-m=p_ccanny",
                        "-dImageSize=64x64",
                        "-dnumFigures=2x2",
                        "-dMethod=Manual",
                        "-dNumLoops=3",
                        "-rtable",
                        "-utests"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

support::Command Pscv::command(const Arguments& arguments) const {
    support::Command command;
    command.program = program.empty() ? PSCV_PROGRAM : program;
    command.arguments = {"-l" + m_dir.path().string()};
    command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
    command.environment = {{"PSCV_FREQ_MHZ", "2000"}, {"LD_LIBRARY_PATH", std::nullopt}};
    for (const auto& [name, value] : environment) command.environment[name] = value;
    if (input) {
        command.stdinFrom = support::Command::Input::Text;
        command.input = *input;
    }
    return command;
}

support::Outcome Pscv::run(const Arguments& arguments) const {
    support::Outcome outcome = support::run(command(arguments));
    EXPECT_TRUE(outcome.clean()) << "status " << outcome.status << ", signal " << outcome.signal
                                 << ", timed out " << outcome.timedOut << "\n"
                                 << outcome.out << outcome.err;
    return outcome;
}

namespace {

std::vector<support::Row> tableFromTitle(const std::string& text) {
    std::vector<support::Row> table = support::tableRows(text);
    const auto title = std::ranges::find_if(
        table, [](const support::Row& row) { return row[colBase] == "funcBase"; });
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

std::vector<support::Row> Pscv::rows(const std::string& type) const {
    std::vector<support::Row> found = rows();
    std::erase_if(found, [&](const support::Row& row) { return row[colType] != type; });
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

std::string Pscv::result(const std::string& function) const {
    constexpr std::size_t resultField = 9;
    for (const support::Row& row : support::tableRows(text("tests_sum.csv"))) {
        if (row[0] == function && row.size() > resultField) return row[resultField];
    }
    ADD_FAILURE() << "no line for " << function << " in\n" << text("tests_sum.csv");
    return {};
}
