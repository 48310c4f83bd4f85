#include "psinifile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>

#include "psfaults.h"
#include "psstream.h"

using enum MessageLevel;

namespace {

// Works for constant and changing lists; null when there is none.
template <class Sections>
auto findSection(Sections& sections, const psString& name) -> decltype(&sections.front()) {
    const auto pos =
        std::ranges::find_if(sections, [&](const auto& item) { return item.name == name; });
    return pos == sections.end() ? nullptr : &*pos;
}

template <class Values>
auto findValue(Values& values, const psString& key) -> decltype(&values.front()) {
    const auto pos =
        std::ranges::find_if(values, [&](const auto& item) { return item.key == key; });
    return pos == values.end() ? nullptr : &*pos;
}

// Far beyond any ini-file: a device or a wrong file is refused before it fills the memory.
constexpr std::size_t maxSize = 16 << 20;

// The first line of the rest, which it leaves.
std::string_view takeLine(std::string_view& rest) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return line;
}

// Without its comment and the blanks around it.
psString meaning(std::string_view line) {
    psString text(line.substr(0, line.find("//")));
    return text.trim();
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// A line that begins with one: brackets somewhere in a line stand in any source text.
bool hasHeader(std::string_view text) {
    psString name;
    while (!text.empty()) {
        const psString line = meaning(takeLine(text));
        if (line.startsWith("[") && psIniFile::getSection(line, name)) return true;
    }
    return false;
}

}  // namespace

bool psIniFile::open(const psString& name, bool write) {
    m_name = name;
    m_sections.clear();
    const Reading reading = readFile(write);
    m_write = write && (reading == Reading::DONE      ? canAppend()
                        : reading == Reading::NO_FILE ? createFile()
                                                      : false);
    return write ? m_write : reading == Reading::DONE;
}

psIniFile::Reading psIniFile::readFile(bool write) {
    // A file that is there and cannot be read may hold anything.
    const bool report = !write || access(m_name.c_str(), F_OK) == 0;
    i_stream file(m_name, io_stream::READ | io_stream::BINARY | io_stream::NAME_AS_GIVEN, report);
    if (!file.isOpen()) return report ? Reading::REFUSED : Reading::NO_FILE;
    std::vector<char> text;
    char piece[4096];
    while (const std::size_t n = std::fread(piece, 1, sizeof piece, file.handle())) {
        text.insert(text.end(), piece, piece + n);
        if (text.size() > maxSize)
            return refuse(psString("it is longer than ") + psText(maxSize) + " bytes");
    }
    if (file.readError()) {
        // A directory opens like a file and fails at the first read.
        if (!write) io_stream::reportOpenFailure(m_name, io_stream::READ, errno);
        return Reading::NO_FILE;
    }
    const std::string_view whole = psWithoutByteOrderMark({text.data(), text.size()});
    if (write && whole.find('\0') != std::string_view::npos) return refuse("it has a NUL byte");
    if (write && !isBlank(whole) && !hasHeader(whole)) return refuse("it has no [section]");
    readText(text.data(), text.size());
    return Reading::DONE;
}

psIniFile::Reading psIniFile::refuse(const psString& reason) const {
    g_ostrm << ERR << "-- File " << m_name << " is no ini-file: " << reason << "\n" << END;
    psFaults::count(psFault::input);
    return Reading::REFUSED;
}

bool psIniFile::createFile() const {
    return o_stream(m_name, io_stream::WRITE | io_stream::NAME_AS_GIVEN).isOpen();
}

bool psIniFile::canAppend() const {
    return o_stream(m_name, io_stream::WRITE | io_stream::APPEND | io_stream::NAME_AS_GIVEN)
        .isOpen();
}

void psIniFile::readText(const char* text, std::size_t size) {
    std::string_view rest = psWithoutByteOrderMark({text, size});
    psSectionItem* current = nullptr;
    while (!rest.empty()) readLine(takeLine(rest), current);
}

void psIniFile::readLine(std::string_view line, psSectionItem*& current) {
    line = line.substr(0, line.find('\0'));
    const psString text = meaning(line);
    psString name;
    psString value;
    if (getSection(text, name)) {
        current = &needSection(name);
    } else if (getValue(text, name, value)) {
        if (!current) current = &needSection({});
        if (psValueItem* item = findValue(current->values, name))
            item->value = value;
        else
            current->values.push_back({name, value, {}});
    }
}

bool psIniFile::getSection(const psString& line, psString& name) {
    const int open = line.find("[");
    const int end = open < 0 ? -1 : line.find("]", open);
    if (end < 0) return false;
    name = line.substr(open + 1, end - open - 1);
    name.trim();
    return true;
}

bool psIniFile::getValue(const psString& line, psString& key, psString& value) {
    if (line.empty()) return false;
    const int equals = line.find("=");
    if (equals < 0) {
        key = line;
        value = flagValue;
        return true;
    }
    key = line.substr(0, equals).trim();
    value = line.substr(equals + 1).trim();
    return true;
}

psString psIniFile::writeText() const {
    psString text;
    for (const psSectionItem& section : m_sections) {
        text += "\n[" + section.name + "]\n";
        for (const psValueItem& item : section.values) {
            text += item.key;
            if (item.value != flagValue) text += "=" + item.value;
            if (!item.comment.empty()) text += "\t// " + item.comment;
            text += "\n";
        }
    }
    return text;
}

bool psIniFile::updateFile() {
    if (!m_write) return true;
    o_stream file(m_name, io_stream::WRITE | io_stream::NAME_AS_GIVEN);
    if (!file.isOpen()) return false;
    file << writeText();
    return file.close();
}

bool psIniFile::close() {
    const bool written = updateFile();
    m_write = false;
    m_sections.clear();
    return written;
}

psString psIniFile::read(const psString& section, const psString& key,
                         const psString& defaultValue) const {
    const psSectionItem* found = findSection(m_sections, section);
    const psValueItem* item = found ? findValue(found->values, key) : nullptr;
    return item ? item->value : defaultValue;
}

void psIniFile::write(const psString& section, const psString& key, const psString& value,
                      const psString& comment) {
    psSectionItem& target = needSection(section);
    if (key.empty()) return;
    psValueItem* item = findValue(target.values, key);
    if (!item)
        target.values.push_back({key, value, comment});
    else if (item->comment.empty())
        item->comment = comment;
}

psSectionItem& psIniFile::needSection(const psString& name) {
    if (psSectionItem* found = findSection(m_sections, name)) return *found;
    m_sections.push_back({name, {}});
    return m_sections.back();
}

bool psIniFile::sectionExist(const psString& section) const {
    return findSection(m_sections, section) != nullptr;
}

bool psIniFile::valueExist(const psString& section, const psString& key) const {
    const psSectionItem* found = findSection(m_sections, section);
    return found && findValue(found->values, key);
}

bool psIniFile::eraseSection(const psString& section) {
    const auto pos = std::ranges::find_if(
        m_sections, [&](const psSectionItem& item) { return item.name == section; });
    if (pos == m_sections.end()) return false;
    m_sections.erase(pos);
    return true;
}

bool psIniFile::deleteKey(const psString& section, const psString& key) {
    psSectionItem* found = findSection(m_sections, section);
    if (!found) return false;
    const auto pos = std::ranges::find_if(found->values,
                                          [&](const psValueItem& item) { return item.key == key; });
    if (pos == found->values.end()) return false;
    found->values.erase(pos);
    return true;
}
