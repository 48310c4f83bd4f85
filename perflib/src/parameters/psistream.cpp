#include "psistream.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "psinterrupt.h"
#include "psstream.h"

using enum MessageLevel;

void psDataList::set(const psString& name, const psString& value) {
    if (name.empty()) return;
    for (psValueItem& item : m_items) {
        if (item.key == name) {
            item.value = value;
            return;
        }
    }
    m_items.push_back({name, value, {}});
}

bool psDataList::get(const psString& name, psString& value) const {
    const auto pos =
        std::ranges::find_if(m_items, [&](const psValueItem& item) { return item.key == name; });
    if (pos == m_items.end()) return false;
    value = pos->value;
    return true;
}

bool psDataList::find(const psString& name) const {
    psString value;
    return get(name, value);
}

bool psIStream::setIniFile(const psString& name, bool write) {
    m_hasIni = m_ini.open(name, write);
    return m_hasIni;
}

bool psIStream::close() {
    m_hasIni = false;
    m_asked.clear();
    return m_ini.close();
}

psString psIStream::getItemValue(const psString& name, const psString& defaultValue,
                                 const psString& prompt, const psString& comment) {
    psString value = lookUp(name, defaultValue, prompt.empty() ? name : prompt);
    if (isIniWritten()) m_ini.write(m_section, name, value, comment);
    return value;
}

psString psIStream::lookUp(const psString& name, const psString& defaultValue,
                           const psString& prompt) {
    psString value;
    if (!m_asked.contains(name)) m_asked.push_back(name);
    if (m_data.get(name, value)) {
        m_source = psDataSource::COMMAND_LINE;
        return value;
    }
    if (m_hasIni) value = m_ini.read(m_section, name);
    if (!value.empty()) {
        m_source = psDataSource::INI_FILE;
        return value;
    }
    if (m_console && !psInterrupted()) return getItemValue(*m_console, name, prompt, defaultValue);
    m_source = psDataSource::DEFAULT;
    return defaultValue;
}

psString psIStream::getItemValue(i_stream& console, const psString& name, const psString& prompt,
                                 const psString& defaultValue) {
    // ERR, so that the question shows whatever the output level is.
    g_ostrm << ERR << "\n " << (prompt.empty() ? name : prompt) << " [" << defaultValue
            << "] = " << END;
    g_ostrm.flush();
    psString answer;
    console.getline(answer);
    answer.trim();
    m_source = answer.empty() ? psDataSource::DEFAULT : psDataSource::CONSOLE;
    return answer.empty() ? defaultValue : answer;
}

bool psIStream::canAskAgain() const {
    return m_source == psDataSource::CONSOLE && m_console && !psInterrupted() &&
           isatty(fileno(m_console->handle())) != 0;
}

psStringList psIStream::unaskedNames() const {
    psStringList lines;
    for (const psValueItem& item : m_data.items()) {
        if (m_asked.contains(item.key)) continue;
        const psString nearest = psNearest(item.key, m_asked);
        lines.push_back("-d" + item.key + ": no such parameter" +
                        (nearest.empty() ? psString(" in this run") : "; " + nearest + "?"));
    }
    return lines;
}

psIStream& psValueStream() {
    static psIStream stream;
    return stream;
}
