// Where parameter values come from: the -d list, the ini-file, the console, the
// default, in that order.
#pragma once

#include "psinifile.h"
#include "pslist.h"
#include "psstring.h"

class i_stream;

// The values given as -d<name>=<value>.
class psDataList {
  public:
    // An empty name is ignored, an existing one takes the new value.
    void set(const psString& name, const psString& value);
    // By exact name; false leaves the value alone.
    bool get(const psString& name, psString& value) const;
    bool find(const psString& name) const;
    const psValues& items() const { return m_items; }
    void clear() { m_items.clear(); }

  private:
    psValues m_items;
};

enum class psDataSource { DEFAULT, CONSOLE, INI_FILE, COMMAND_LINE };

class psIStream {
  public:
    // The console is not owned; null detaches it, and nothing is asked any more.
    void setIStream(i_stream* console) { m_console = console; }
    bool hasConsole() const { return m_console != nullptr; }

    // Opens the ini-file; with `write` every value that is asked for is entered
    // into it. False when it could be neither read nor created.
    bool setIniFile(const psString& name, bool write);
    void setIniSection(const psString& name) { m_section = name; }
    const psString& iniSection() const { return m_section; }
    bool hasIniFile() const { return m_hasIni; }
    bool isIniWritten() const { return m_hasIni && m_ini.isWritten(); }
    psIniFile& iniFile() { return m_ini; }
    // Writes the ini-file if it is to be written and lets go of it; false when
    // that failed. May be called again.
    bool close();

    psDataList& dataList() { return m_data; }

    // The text of a parameter's value. `comment` goes into the ini-file.
    psString getItemValue(const psString& name, const psString& defaultValue,
                          const psString& prompt = {}, const psString& comment = {});
    // Asks at the console; an empty answer and the end of the input take the default.
    psString getItemValue(i_stream& console, const psString& name, const psString& prompt,
                          const psString& defaultValue);
    // Of the last value.
    psDataSource source() const { return m_source; }
    // True when somebody at a terminal has given the last value and can give another.
    bool canAskAgain() const;

    // A line for each -d name that no value was asked for by, with the name that
    // was probably meant.
    psStringList unaskedNames() const;

  private:
    psString lookUp(const psString& name, const psString& defaultValue, const psString& prompt);

    i_stream* m_console = nullptr;
    psIniFile m_ini;
    bool m_hasIni = false;
    psString m_section;
    psDataSource m_source = psDataSource::DEFAULT;
    psDataList m_data;
    psStringList m_asked;  // every name since the last close()
};

psIStream& psValueStream();
inline psIStream& g_istrm = psValueStream();
