#include "psdefault.h"

#include <cstdio>

#include "psctable.h"
#include "psdata.h"
#include "psexcept.h"
#include "psfaults.h"
#include "psistream.h"
#include "psstream.h"

using enum MessageLevel;

psString psText(const ZmoiSize& size) {
    return psFormat("%dx%d", size.width, size.height);
}

bool psFromText(const psString& text, ZmoiSize& size) {
    const auto cross = text.view().find_first_of("xX*");
    if (cross == std::string_view::npos) return false;
    const int at = static_cast<int>(cross);
    ZmoiSize read{};
    if (!psFromText(text.substr(0, at), read.width) ||
        !psFromText(text.substr(at + 1), read.height))
        return false;
    size = read;
    return true;
}

bool operator==(const ZmoiSize& a, const ZmoiSize& b) {
    return a.width == b.width && a.height == b.height;
}

psString psValueText(float value) {
    for (int digits = 6; digits < 9; ++digits) {
        psString text = psFormat("%.*g", digits, static_cast<double>(value));
        float read = 0;
        if (psFromText(text, read) && read == value) return text;
    }
    return psFormat("%.9g", static_cast<double>(value));
}

psString psValueText(double value) {
    for (int digits = 6; digits < 17; ++digits) {
        psString text = psFormat("%.*g", digits, value);
        double read = 0;
        if (psFromText(text, read) && read == value) return text;
    }
    return psFormat("%.17g", value);
}

void psInvalidValue(const psString& name, const psString& text) {
    throw psException("Invalid value of " + name + " = " + text);
}

psParameter::psParameter(const psString& name, const psString& title)
    : m_name(name), m_title(title.empty() ? name : title) {}

psParameter::~psParameter() = default;

void psParameter::reset() {
    m_iteration = false;
}

psString psParameter::valueString() const {
    return {};
}

psString psParameter::defaultString() const {
    return valueString();
}

psString psParameter::validString() const {
    return {};
}

psString psParameter::form() const {
    return {};
}

psString psParameter::description() const {
    return m_name + " = " + defaultString();
}

psString psParameter::prompt() const {
    const psString valid = validString();
    return valid.empty() ? m_title : m_title + " {" + valid + "}";
}

void psParameter::resetIterator() {
    m_iteration = false;
}

bool psParameter::firstValue() {
    resetIterator();
    return nextValue();
}

bool psParameter::nextValue() {
    m_iteration = !m_iteration;
    return m_iteration;
}

bool psParameter::isDeprecatedParm() const {
    return false;
}

bool psParameter::isDeprecatedValue() const {
    return false;
}

bool psParameter::setDeprecatedFlag(bool) {
    m_deprecated = false;
    return false;
}

void psParameter::toOStream(psOStream& stream) const {
    if (!m_name.empty()) stream << m_name + "=" + valueString() + " ";
}

int psParameter::colmIndex() const {
    return -1;
}

void psParameter::putColm(psCStream& table, const psString& text) const {
    const int index = colmIndex();
    if (index < 0)
        table.setNextColm(text);
    else
        table.setColm(index, text);
}

void psParameter::toCStream(psCStream& table) const {
    psString cell;
    if (m_deprecated)
        cell = m_deprecatedText;
    else
        cell = (m_display & QUOTED) ? " \"" + valueString() + "\"" : valueString();
    putColm(table, m_name.empty() ? psString() : cell);
}

void psParameter::nameToCStream(psCStream& table) const {
    putColm(table, m_name);
}

void psParameter::fromIStream() {
    if (m_name.empty()) return;
    psOutLevelGuard level;
    if (m_input) {
        if (g_istrm.hasConsole()) g_ostrm.setOutLevel(showResults);
        psString refusal = takeValue();
        while (!refusal.empty() && g_istrm.canAskAgain()) refusal = takeValue();
        if (!refusal.empty()) psFaults::countOnce(psFault::input, refusal);
    }
    g_ostrm << " " << description() << "\n";
    if (m_input && g_istrm.source() == psDataSource::CONSOLE) g_ostrm.flush();
}

psString psParameter::takeValue() {
    try {
        // The text is held out here: a signal drops what lies inside.
        const psString text =
            g_istrm.getItemValue(m_name, defaultString(), prompt(), validString());
        psGuarded([&] { translate(text); });
        return {};
    } catch (const psException& failure) {
        g_ostrm << ERR << "-" << failure.msg() << "\n";
        if (!form().empty()) g_ostrm << "-- " << form() << "\n";
        g_ostrm << END;
        return failure.msg();
    }
}

void psParameter::translate(const psString&) {}

void psParameter::saveDefinition() {}

void psParameter::restoreDefinition() {}

int DefaultAlign::validItem(const psString& text) const {
    return psDefault<int>::validItem(text) % PS_ALIGN_MAX;
}

int DefaultShift::validItem(const psString& text) const {
    return psDefault<int>::validItem(text) & -PS_ALIGN_MAX;
}
