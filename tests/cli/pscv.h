// pscv as a user runs it, with output files in a directory of its own.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "process.h"
#include "text.h"

using support::has;

// Whether both parts are in the text, the first before the second.
inline bool inOrder(const std::string& text, const std::string& first, const std::string& second) {
    const std::size_t at = text.find(first);
    return at != std::string::npos && text.find(second, at) != std::string::npos;
}

// Columns of the performance table.
enum Column {
    colBase,
    colType,
    colDescriptor,
    colSize,
    colParm1,
    colComment = 9,
    colClocks,
    colPer,
    colTime,
    colMFlops,
    numColumns
};

class Pscv {
  public:
    using Arguments = std::vector<std::string>;

    // One set a function, small enough to take no time.
    static Arguments smallCanny(const Arguments& more = {});

    // Runs pscv with -l naming the own directory. The processor's frequency is
    // preset, so that no run has to measure it.
    support::Command command(const Arguments& arguments, const Arguments& more = {}) const;
    support::Outcome run(const Arguments& arguments, const Arguments& more = {}) const;

    std::string file(const std::string& name) const { return m_dir.file(name); }
    std::string text(const std::string& name) const { return support::readFile(file(name)); }

    // The title line of the table written by -rtable, and the rows below it.
    // Both fail the running test when the file is not such a table.
    support::Row title() const;
    std::vector<support::Row> rows() const;
    // Those rows that have the text in the column.
    std::vector<support::Row> rows(Column column, const std::string& text) const;

    // The count behind a label of the closing box, -1 without such a line.
    static int summary(const std::string& out, const std::string& label);

    // The numbered lines of the list box that -e prints. A long line of the header goes on in a
    // line of its own, where a number may stand too, farther right.
    static std::vector<std::string> listed(const std::string& out);

    // The data lines of a summary, read as any CSV file.
    static std::vector<support::Row> summaryLines(const std::string& text);
    // A function's line in the summary written by -utests, and the result word in it.
    support::Row summaryOf(const std::string& function) const;
    std::string result(const std::string& function) const { return summaryOf(function)[9]; }

    std::map<std::string, std::optional<std::string>> environment;
    std::string program;  // empty: the built one
    std::string input;

  private:
    support::TempDir m_dir;
};
