#include "text.h"

#include <regex>
#include <sstream>
#include <utility>

namespace support {

namespace {

// The pieces that end so; a last one without an end counts.
std::vector<std::string> pieces(const std::string& text, char end) {
    std::istringstream stream(text);
    std::vector<std::string> found;
    for (std::string piece; std::getline(stream, piece, end);) found.push_back(piece);
    return found;
}

}  // namespace

std::vector<std::string> lines(std::string_view text) {
    return pieces(std::string(text), '\n');
}

std::vector<Row> tableRows(std::string_view text) {
    std::vector<Row> rows;
    for (const std::string& line : lines(text)) rows.push_back(pieces(line + ",", ','));
    return rows;
}

bool has(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::size_t count(std::string_view text, std::string_view part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos;
         at = text.find(part, at + part.size())) {
        ++found;
    }
    return found;
}

std::string masked(std::string text) {
    const std::pair<const char*, const char*> masks[] = {
        {"[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}", "<date>"},
        {"[A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4}", "<day>"},
        {"[0-9]{2}:[0-9]{2}:[0-9]{2}", "<time>"},
        {"[0-9.]+(e[-+]?[0-9]+)? clocks per ", "<clocks> clocks per "},
        {"0x[0-9a-f]{6,}", "<pointer>"},
        {"(Computer|OS) *: [^|\n]*", "<host>"}};
    for (const auto& [pattern, word] : masks)
        text = std::regex_replace(text, std::regex(pattern), word);
    return text;
}

}  // namespace support
