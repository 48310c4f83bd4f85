#include "psstream.h"

#include <exception>
#include <memory>
#include <string>
#include <utility>

using enum MessageLevel;

io_stream::PathRule io_stream::inPathRule = nullptr;
io_stream::PathRule io_stream::outPathRule = nullptr;

namespace {

psString applyRule(const psString& name, int mode) {
    if (mode & io_stream::NAME_AS_GIVEN) return name;
    const auto rule = (mode & io_stream::READ) ? io_stream::inPathRule : io_stream::outPathRule;
    return rule ? rule(name) : name;
}

psString fopenMode(int mode) {
    psString text = (mode & io_stream::READ) ? "r" : (mode & io_stream::APPEND) ? "a" : "w";
    if (mode & io_stream::BINARY) text += "b";
    return text;
}

void reportOpenFailure(const psString& path, int mode) {
    g_ostrm << ERR;
    if (path.empty())
        g_ostrm << "-- Can't open file. Wrong filename (NULL) ";
    else
        g_ostrm << "-- Can't open file " << path;
    g_ostrm << ((mode & io_stream::READ) ? " to read" : " to write") << ": "
            << "\n"
            << END;
}

}  // namespace

io_stream::io_stream(const psString& name, int mode, bool report) : m_path(name) {
    if (!name.empty()) {
        m_path = applyRule(name, mode);
        m_file = std::fopen(m_path.c_str(), fopenMode(mode).c_str());
    }
    if (!m_file && report) reportOpenFailure(m_path, mode);
}

io_stream::~io_stream() {
    close();
}

void io_stream::close() {
    if (m_file && m_owned) std::fclose(m_file);
    m_file = nullptr;
}

void (*o_stream::beforeConsole)() = nullptr;

void o_stream::write(const psString& text) {
    if (!isConsole()) {
        if (m_file) std::fputs(text.c_str(), m_file);
        return;
    }
    if (beforeConsole) beforeConsole();
    std::printf("%s", text.c_str());
}

bool o_stream::flush() {
    std::FILE* file = isConsole() ? stdout : m_file;
    return !file || (std::fflush(file) == 0 && !std::ferror(file));
}

o_stream& operator<<(o_stream& stream, const psString& text) {
    stream.write(text);
    return stream;
}

bool i_stream::getline(psString& line) {
    line.free();
    if (!m_file) return false;
    // Not fgets: it hides where a line ends that holds a NUL byte.
    std::string text;
    int c = std::getc(m_file);
    const bool any = c != EOF;
    for (; c != EOF && c != '\n'; c = std::getc(m_file)) text.push_back(static_cast<char>(c));
    line = psString(std::string_view(text));
    return any;
}

namespace {

o_stream& consoleOut() {
    // Never destroyed: the lists of sinks may be destroyed later than this file's
    // objects and look at it.
    static auto* console = new o_stream(nullptr);
    return *console;
}

i_stream& consoleIn() {
    static i_stream console(stdin);
    return console;
}

}  // namespace

o_stream& c_out = consoleOut();
i_stream& c_in = consoleIn();

o_stream* createOStream(const psString& name, bool append) {
    const int mode = io_stream::WRITE | (append ? io_stream::APPEND : 0) | io_stream::NAME_AS_GIVEN;
    auto stream = std::make_unique<o_stream>(name, mode);
    return stream->isOpen() ? stream.release() : nullptr;
}

psSinkList::~psSinkList() {
    for (o_stream* sink : *this) {
        if (sink->isOwned()) delete sink;
    }
}

bool psSinkList::addStream(const psString& name, bool append) {
    o_stream* sink = createOStream(name, append);
    if (sink) push_back(sink);
    return sink != nullptr;
}

void psSinkList::write(const psString& text) {
    for (o_stream* sink : *this) sink->write(text);
}

void psSinkList::flush() {
    flushSinks(false);
}

void psSinkList::flushWithConsole() {
    flushSinks(true);
}

void psSinkList::flushSinks(bool console) {
    psStringList lost;
    for (auto pos = begin(); pos != end();) {
        o_stream* sink = *pos;
        if ((sink->isConsole() && !console) || sink->flush()) {
            ++pos;
            continue;
        }
        lost.push_back(sink->isConsole() ? psString("standard output") : sink->path());
        pos = erase(pos);
        if (sink->isOwned()) delete sink;
    }
    for (const psString& path : lost)
        g_ostrm << ERR << "-- Can't write " << path << ": no more output goes there\n" << END;
}

void psSinkList::close() {
    for (auto pos = begin(); pos != end();) {
        o_stream* sink = *pos;
        pos = sink->isConsole() ? std::next(pos) : erase(pos);
        if (sink->isOwned()) delete sink;
    }
}

void psOStream::setMsgLevel(MessageLevel level) {
    m_saved.push_front(m_msgLevel);
    m_msgLevel = level;
}

void psOStream::restoreMsgLevel() {
    if (m_saved.empty()) {
        m_msgLevel = ERR;
        return;
    }
    m_msgLevel = m_saved.front();
    m_saved.erase(m_saved.begin());
}

bool psOStream::beginMessage(MessageLevel level) {
    if (static_cast<int>(level) > m_outLevel) return false;
    setMsgLevel(level);
    return true;
}

void psOStream::endMessageFlush() {
    restoreMsgLevel();
    flush();
}

void psOStream::put(const psString& text) {
    if (!isShown(m_msgLevel)) return;
    if (m_msgLevel == ERR && m_errorPreface) std::exchange(m_errorPreface, nullptr)();
    write(text);
}

psErrorPreface::psErrorPreface(std::function<void()> tell) {
    g_ostrm.setErrorPreface(std::move(tell));
}

psErrorPreface::~psErrorPreface() {
    g_ostrm.setErrorPreface(nullptr);
}

psOStream& operator<<(psOStream& stream, MessageLevel level) {
    switch (level) {
        case END:
            stream.endMessage();
            break;
        case END_FLUSH:
            stream.endMessageFlush();
            break;
        default:
            stream.setMsgLevel(level);
    }
    return stream;
}

psOStream& operator<<(psOStream& stream, const psString& text) {
    stream.put(text);
    return stream;
}

psOStream& operator<<(psOStream& stream, const char* text) {
    return stream << psString(text);
}

psOStream& operator<<(psOStream& stream, char c) {
    return stream << psString(c);
}

psOStream& psMessageStream() {
    static psOStream stream;
    return stream;
}

psUStream& psSummaryStream() {
    static psUStream stream;
    return stream;
}

namespace {

struct TraceState {
    psStringList names;  // most recent first
    psString text;
    psString prefix;
};

TraceState& trace() {
    static TraceState state;
    return state;
}

void traceLine(const char* verb, const psString& name) {
    const psString line = trace().prefix + "*****" + verb + name + "\n";
    g_ostrm << TRACE << line;
    trace().text += line;
    if (static_cast<int>(TRACE) <= g_ostrm.getOutLevel()) g_ostrm.flush();
    g_ostrm << END;
}

}  // namespace

void psTrace::traceIn(const psString& name) {
    trace().prefix += "*";
    traceLine(" trace into   ", name);
    trace().names.push_front(name);
}

void psTrace::traceOut(const psString& name) {
    traceLine(" trace out of ", name);
    psStringList& names = trace().names;
    for (auto pos = names.begin(); pos != names.end(); ++pos) {
        trace().prefix.resize(trace().prefix.length() - 1);
        if (*pos != name) continue;
        while (names.begin() != pos) names.erase(names.begin());
        names.erase(pos);
        return;
    }
}

psString psTrace::getCurName() {
    return trace().names.empty() ? psString() : trace().names.front();
}

const psString& psTrace::text() {
    return trace().text;
}

void psTrace::flush() {
    trace().text.free();
}

psTraceScope::psTraceScope(const char* name)
    : m_name(name), m_exceptions(std::uncaught_exceptions()) {
    psTrace::traceIn(m_name);
}

psTraceScope::~psTraceScope() {
    if (std::uncaught_exceptions() == m_exceptions) psTrace::traceOut(m_name);
}
