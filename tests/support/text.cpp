#include "text.h"

#include <array>
#include <regex>

namespace support {

std::vector<std::string> lines(std::string_view text) {
    std::vector<std::string> found;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        found.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    return found;
}

std::vector<Row> tableRows(std::string_view text) {
    std::vector<Row> rows;
    for (const std::string& line : lines(text)) {
        Row& row = rows.emplace_back();
        std::string_view rest = line;
        while (true) {
            const std::size_t comma = rest.find(',');
            row.emplace_back(rest.substr(0, comma));
            if (comma == std::string_view::npos) break;
            rest.remove_prefix(comma + 1);
        }
    }
    return rows;
}

std::size_t count(std::string_view text, std::string_view part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos;
         at = text.find(part, at + part.size())) {
        ++found;
    }
    return found;
}

std::string masked(std::string text, const std::vector<std::string>& directories) {
    for (const std::string& directory : directories) {
        for (std::size_t at = text.find(directory); at != std::string::npos;
             at = text.find(directory, at)) {
            text.replace(at, directory.size(), "<dir>");
        }
    }
    struct Mask {
        const char* pattern;
        const char* word;
    };
    static constexpr std::array<Mask, 6> masks{{
        {R"((Mon|Tue|Wed|Thu|Fri|Sat|Sun) [A-Z][a-z]{2} [ 0-9]\d \d\d:\d\d:\d\d \d{4})", "<date>"},
        {R"([A-Z][a-z]{2} [ 0-9]\d \d{4})", "<day>"},
        {R"(\d\d:\d\d:\d\d)", "<time>"},
        {R"([0-9.]+(e[+-]?\d+)? clocks per )", "<clocks> clocks per "},
        {R"(0x[0-9a-f]{6,})", "<pointer>"},
        {R"(((Computer|OS) *: )[^|\n]*)", "$1<host>"},
    }};
    for (const Mask& mask : masks) {
        text = std::regex_replace(text, std::regex(mask.pattern), mask.word);
    }
    return text;
}

}  // namespace support
