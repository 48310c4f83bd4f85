// The texts of a key's help: its section of docs/KEYS.md, taken while compiling.
#pragma once

#include <algorithm>
#include <string_view>

// The heading says whom the key is for; of the block below it the first lines are
// the key's line (or lines) of the short help, and the indented ones its extended
// help. A key without a section does not compile.
struct psKeyText {
    std::string_view name;
    bool hidden = false;  // typed by -? only
    std::string_view help;
    std::string_view description;

    consteval explicit psKeyText(const char* key) : name(key) {
        std::string_view section = behind(page, heading);
        while (before(section, "`") != name) section = behind(section, heading);
        hidden = before(section, "\n").ends_with("` (for developers)");
        const std::string_view block = behind(section, "```text\n");
        help = block.substr(0, placeOf(block, "\n ") + 1);
        if (help.substr(1, name.size()) != name) throw "docs/KEYS.md lacks the block of a key";
        description = before(block.substr(help.size()), "```\n");
    }

    // How many keys the page has.
    static consteval std::size_t count() {
        std::size_t keys = 0;
        for (std::size_t at = 0; (at = page.find(heading, at)) != std::string_view::npos; ++at)
            ++keys;
        return keys;
    }

  private:
    static constexpr std::string_view heading = "\n## `-";
    static constexpr std::string_view page =
#include "keys.inc"
        ;

    static constexpr std::size_t placeOf(std::string_view text, std::string_view mark) {
        const std::size_t place = text.find(mark);
        if (place == std::string_view::npos) throw "docs/KEYS.md lacks this part of a key";
        return place;
    }
    static constexpr std::string_view before(std::string_view text, std::string_view mark) {
        return text.substr(0, placeOf(text, mark));
    }
    static constexpr std::string_view behind(std::string_view text, std::string_view mark) {
        return text.substr(placeOf(text, mark) + mark.size());
    }
};

template <std::size_t size>
struct psKeyName {
    char text[size];

    consteval psKeyName(const char (&name)[size]) { std::ranges::copy(name, text); }
};

// Each is a constant of its own, since compilers limit what one may take to evaluate.
template <psKeyName name>
inline constexpr psKeyText psTextOf{name.text};
