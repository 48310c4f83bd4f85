#include "pscmdline.h"

#include <algorithm>
#include <string_view>

#include "ps.h"
#include "psbase.h"
#include "psstream.h"

psCommandList* pCmdList = nullptr;

namespace {

bool isSign(char c) {
    return c == '+' || c == '-' || c == '=';
}

bool isLong(const psString& word) {
    return word[1] == '-';
}

// Unlike psParse, which takes a double quote among the separators as the wish
// for quoted words, this cuts at it.
psStringList splitWords(std::string_view text) {
    constexpr std::string_view delimiters = " \";\t\r\n";
    psStringList words;
    for (;;) {
        const std::size_t begin = text.find_first_not_of(delimiters);
        if (begin == std::string_view::npos) return words;
        text.remove_prefix(begin);
        const std::size_t length = std::min(text.find_first_of(delimiters), text.size());
        words.push_back(psString(text.substr(0, length)));
        text.remove_prefix(length);
    }
}

}  // namespace

bool psCommandKey::isKeyWord(const psString& word) {
    return word.length() >= 2 && (word[0] == '-' || word[0] == '/');
}

bool psCommandKey::takesNextWord(const psString& word) {
    if (isLong(word)) return !word.contains("=");
    if (word.length() <= 2) return true;
    return word.length() == 3 && isSign(word[2]);
}

bool psCommandKey::setArg(const psString& word, const psString& separateArg) {
    if (!isKeyWord(word)) return false;
    m_key = word[1];
    psString rest = word.substr(2);
    if (isLong(word)) {
        const bool stray = takesNextWord(word) && !separateArg.empty();
        m_arg = stray ? rest + " " + separateArg : rest;
        return true;
    }
    psString sign;
    if (!rest.empty() && isSign(rest[0])) {
        sign = psString(rest[0]);
        rest = rest.substr(1);
    }
    m_arg = sign + (rest.empty() ? separateArg : rest);
    return true;
}

bool psCommandKey::getArg(char key, psString& arg) const {
    if (key != m_key) return false;
    arg = m_arg;
    return true;
}

psCommandList::psCommandList() {
    push_back(psCommandKey());
}

psCommandList::iterator psCommandList::endMark() {
    iterator mark = end();
    return --mark;
}

void psCommandList::setArgs(int count, char** words) {
    psStringList all;
    for (int i = 0; i < count; ++i) all.push_back(words[i]);
    setArgs(all);
}

void psCommandList::setArgs(const char* text) {
    insertArgs(text, endMark());
}

void psCommandList::setArgs(const psStringList& words) {
    insertArgs(words, endMark());
}

void psCommandList::setArg(const psString& word, const psString& arg) {
    insertArg(word, arg, endMark());
}

void psCommandList::setArg(char key, const psString& arg) {
    setArg("-" + psString(key), arg);
}

void psCommandList::insertArgs(const char* text, iterator position) {
    insertArgs(splitWords(text), position);
}

void psCommandList::insertArgs(const psStringList& words, iterator position) {
    for (auto word = words.begin(); word != words.end();) {
        const psString& key = *word++;
        const bool separate = word != words.end() && !psCommandKey::isKeyWord(*word);
        insertArg(key, separate ? *word++ : psString(), position);
    }
}

void psCommandList::insertArg(const psString& word, const psString& separateArg,
                              iterator position) {
    psCommandKey key;
    if (!key.setArg(word, separateArg)) {
        remarkLost(word, {});
        remarkLost(separateArg, {});
        return;
    }
    key.setFromFile(m_fromFile);
    insert(position, key);
    if (!psCommandKey::takesNextWord(word)) remarkLost(separateArg, word);
}

void psCommandList::remarkLost(const psString& word, const psString& behind) {
    if (word.empty()) return;
    const psString place = behind.empty() ? psString() : " behind " + behind;
    m_remarks.push_back("'" + word + "'" + place + " is no key and was ignored");
}

bool psCommandList::insertFromFile(const psString& file, iterator position) {
    psString text;
    if (!readFile(file, text)) return false;
    m_fromFile = true;
    insertArgs(text.c_str(), position);
    m_fromFile = false;
    return true;
}

bool psCommandList::readFile(const psString& file, psString& text) {
    i_stream stream(file, io_stream::READ | io_stream::NAME_AS_GIVEN);
    if (!stream.isOpen()) return false;
    int number = 0;
    for (psString line; stream.getline(line);) {
        std::string_view words = line.view();
        if (++number == 1) words = psWithoutByteOrderMark(words);
        const std::size_t end = words.find('\0');
        if (end != std::string_view::npos)
            m_remarks.push_back(file + ", line " + number + " was cut at a NUL byte");
        text += psString(words.substr(0, end)) + " ";
    }
    if (!stream.readError()) return true;
    // A directory opens, but does not read.
    io_stream::reportOpenFailure(file, io_stream::READ, stream.error());
    return false;
}

bool psCommandList::readCfgFile(psString& line, psString& path) {
    constexpr std::size_t maxLength = 1023;
    constexpr const char* cfgRule =
        "only the first line is read, up to 1023 characters and no NUL byte";
    const psString name = g_settings.exePath.getFileTitle() + ".cfg";
    for (const psString& candidate : {name, psSession::genDirName("") + name}) {
        i_stream file(candidate, io_stream::READ | io_stream::NAME_AS_GIVEN, false);
        if (!file.isOpen()) continue;
        file.getline(line);
        if (file.readError()) continue;  // a directory
        line = psWithoutByteOrderMark(line.view());
        const auto end = std::min(line.view().find('\0'), maxLength);
        psString rest = line.view().substr(std::min(end, line.view().size()));
        line = line.view().substr(0, end);
        for (psString more; file.getline(more);) rest += more.trim();
        if (!rest.empty()) m_remarks.push_back(candidate + ": " + cfgRule);
        path = candidate;
        return true;
    }
    return false;
}

psString psCommandList::readKeys(int argc, char** argv) {
    const psString title("Command line options: ");
    psString line;
    psString path;
    if (argc > 1) {
        setArgs(argc - 1, argv + 1);
        return title + "\n";
    }
    if (readCfgFile(line, path)) {
        setArgs(line.c_str());
        return title + "read from " + path + " file\n";
    }
    if (!pCmdLine) return {};
    setArgs(pCmdLine->c_str());
    return title + "set by _FORCE_CMDLINE preprocessor definition\n";
}

int psCommandList::exitLevel() const {
    return isKey('?') || isKey('h') ? 2 : isKey('e') ? 1 : isKey('v') ? 3 : 0;
}

bool psCommandList::expandFiles() {
    bool read = true;
    for (iterator position = begin(); position != end();) {
        psString file;
        if (!position->getArg('@', file)) {
            ++position;
            continue;
        }
        position = erase(position);
        read = insertFromFile(file, position) && read;
    }
    return read;
}

bool psCommandList::isKey(char key) const {
    return std::ranges::any_of(*this, [=](const auto& entry) { return entry.key() == key; });
}

bool psCommandList::getArg(char key, psString& arg) const {
    bool found = false;
    for (const psCommandKey& entry : *this) found = entry.getArg(key, arg) || found;
    return found;
}
