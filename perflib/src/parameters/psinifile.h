// The ini-file: sections of keys with values and comments, held in memory as a
// whole between reading and writing.
#pragma once

#include <cstddef>

#include "pslist.h"
#include "psstring.h"

struct psValueItem {
    psString key;
    psString value;
    psString comment;
};

using psValues = psList<psValueItem>;

struct psSectionItem {
    psString name;  // empty: the keys before the first header
    psValues values;
};

using psSections = psList<psSectionItem>;

// Names are compared exactly. Comments are not read back: a comment belongs to
// the run that writes it.
class psIniFile {
  public:
    // The value of a key that stands in the file without "=".
    static constexpr const char* flagValue = "~~~";

    // Reads the file, the name being used as given. With `write` a file that is not
    // there is created empty, and updateFile() writes it back; one that is there
    // must be an ini-file, or empty, and take what will be written. False, with a
    // message naming the path, when it was neither read nor created; it is as it
    // was then.
    bool open(const psString& name, bool write);
    // Adds the text of a file. Any bytes are taken: a line feed ends a line and a
    // NUL byte ends the text of its line.
    void readText(const char* text, std::size_t size);
    // The whole content as it stands in a file.
    psString writeText() const;

    // Rewrites the file when it was opened for writing. A failure is reported by a
    // message with the path.
    bool updateFile();
    // updateFile(), then forgets the content. Harmless when nothing is open.
    bool close();

    const psString& name() const { return m_name; }
    bool isWritten() const { return m_write; }
    const psSections& sections() const { return m_sections; }

    psString read(const psString& section, const psString& key,
                  const psString& defaultValue = {}) const;
    // Adds the section and the key where absent; a key that exists keeps its
    // value and takes the comment if it has none. An empty key adds the section.
    void write(const psString& section, const psString& key = {}, const psString& value = {},
               const psString& comment = {});

    bool sectionExist(const psString& section) const;
    bool valueExist(const psString& section, const psString& key) const;
    bool eraseSection(const psString& section);
    bool deleteKey(const psString& section, const psString& key);

    // True when the line is a section header: text in brackets anywhere in it.
    static bool getSection(const psString& line, psString& name);
    // Any other line that is not empty is a key line.
    static bool getValue(const psString& line, psString& key, psString& value);

  private:
    // REFUSED: there is a file, but none that could be an ini-file; it is not to be overwritten.
    enum class Reading { DONE, NO_FILE, REFUSED };
    Reading readFile(bool write);
    Reading refuse(const psString& reason) const;
    bool createFile() const;
    bool canAppend() const;
    void readLine(std::string_view line, psSectionItem*& current);
    psSectionItem& needSection(const psString& name);

    psString m_name;
    psSections m_sections;
    bool m_write = false;
};
