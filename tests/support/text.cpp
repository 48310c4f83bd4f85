#include "text.h"

#include <regex.h>

#include <array>
#include <memory>
#include <stdexcept>

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

namespace {

struct Mask {
    const char* pattern;  // POSIX extended: std::regex does not compile cleanly under sanitizers
    const char* word;
};

std::string replaced(const std::string& text, const Mask& mask) {
    regex_t compiled;
    if (regcomp(&compiled, mask.pattern, REG_EXTENDED) != 0) throw std::logic_error(mask.pattern);
    const std::unique_ptr<regex_t, decltype(&regfree)> owner(&compiled, &regfree);
    std::string result;
    const char* rest = text.c_str();
    regmatch_t match{};
    while (regexec(&compiled, rest, 1, &match, 0) == 0) {
        result.append(rest, static_cast<std::size_t>(match.rm_so)).append(mask.word);
        rest += match.rm_eo;
    }
    return result + rest;
}

}  // namespace

std::string masked(std::string text) {
    static constexpr std::array<Mask, 6> masks{{
        {"(Mon|Tue|Wed|Thu|Fri|Sat|Sun) [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} "
         "[0-9]{4}",
         "<date>"},
        {"[A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4}", "<day>"},
        {"[0-9]{2}:[0-9]{2}:[0-9]{2}", "<time>"},
        {"[0-9.]+(e[-+]?[0-9]+)? clocks per ", "<clocks> clocks per "},
        {"0x[0-9a-f]{6,}", "<pointer>"},
        {"(Computer|OS) *: [^|\n]*", "<host>"},
    }};
    for (const Mask& mask : masks) text = replaced(text, mask);
    return text;
}

}  // namespace support
