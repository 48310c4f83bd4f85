// Reads and compares what pscv writes: lines, table rows, and texts from which
// everything that differs between two runs has been masked.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace support {

using Row = std::vector<std::string>;

// The lines without their line ends; a last line without one counts.
std::vector<std::string> lines(std::string_view text);
// The rows of a performance table: cells between commas, nothing is quoted.
std::vector<Row> tableRows(std::string_view text);
bool has(std::string_view text, std::string_view part);
std::size_t count(std::string_view text, std::string_view part);

// The text with times of day and durations (hh:mm:ss), dates of ctime and of
// compilation, clock figures before " clocks per ", host figures of the title
// box and pointers replaced by fixed words.
std::string masked(std::string text);

}  // namespace support
