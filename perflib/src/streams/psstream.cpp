#include "psstream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "psfaults.h"
#include "psinterrupt.h"
#include "psremarks.h"

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

// The terminal shows each line when it is complete; other sinks get their text
// in pieces of some size.
constexpr std::size_t pieceSize = 32768;

// False too where the last character cannot be seen: an empty line between two
// texts does less harm than a row glued to the rest of another one.
bool endsWithNewline(const psString& path) {
    std::error_code none;
    const auto size = std::filesystem::file_size(path.c_str(), none);
    if (none || size == 0) return true;
    std::ifstream file(path.c_str(), std::ios::binary);
    file.seekg(-1, std::ios::end);
    return file.get() == '\n';
}

}  // namespace

io_stream::io_stream(const psString& name, int mode, bool report) : m_path(name) {
    if (!name.empty()) {
        m_path = applyRule(name, mode);
        m_file = std::fopen(m_path.c_str(), fopenMode(mode).c_str());
        if (!m_file) m_error = errno;
    }
    if (!m_file && report) reportOpenFailure(m_path, mode, m_error);
}

io_stream::~io_stream() {
    close();
}

void io_stream::close() {
    if (m_file && m_owned) std::fclose(m_file);
    m_file = nullptr;
}

void io_stream::reportOpenFailure(const psString& path, int mode, int error) {
    psFaults::count((mode & READ) ? psFault::input : psFault::output);
    psAnnounce("-- Can't open file" +
               (path.empty() ? psString(". Wrong filename (NULL) ") : " " + path) +
               ((mode & READ) ? " to read: " : " to write: ") +
               (path.empty() ? "it has no name" : std::strerror(error)) + "\n");
}

void (*o_stream::beforeConsole)() = nullptr;

o_stream::o_stream(std::FILE* handle)
    : io_stream(handle),
      m_handle(handle ? fileno(handle) : STDOUT_FILENO),
      m_terminal(isConsole() && isatty(m_handle) != 0) {}

o_stream::o_stream(const psString& name, int mode, bool report) : io_stream(name, mode, report) {
    m_lossReported = !isOpen();
    if (!isOpen()) return;
    m_handle = fileno(m_file);
    m_startsLine = !(mode & APPEND) || endsWithNewline(m_path);
}

// Text that is lost here has no one left to report it to: close() was the place.
o_stream::~o_stream() {
    if (m_error == 0) writeOut(m_text.size());
}

void o_stream::write(const psString& text) {
    if (m_error != 0 || m_handle < 0 || text.empty()) return;
    if (isConsole() && beforeConsole) beforeConsole();
    if (!std::exchange(m_startsLine, true)) m_text += '\n';
    m_text += text.view();
    if (!m_terminal && m_text.size() < pieceSize) return;
    const std::size_t end = m_text.rfind('\n');
    if (end != std::string::npos) writeOut(end + 1);
}

// Writes the first `size` bytes of what is gathered.
void o_stream::writeOut(std::size_t size) {
    if (isConsole()) std::fflush(stdout);  // what a measured function has printed
    std::size_t written = 0;
    while (written < size && m_error == 0) {
        const ssize_t n = ::write(m_handle, m_text.data() + written, size - written);
        if (n >= 0)
            written += static_cast<std::size_t>(n);
        else if (errno != EINTR)
            m_error = errno;
    }
    const std::size_t newline = std::string_view(m_text).substr(0, written).rfind('\n');
    if (newline == std::string_view::npos)
        m_unfinished += written;
    else
        m_unfinished = written - newline - 1;
    if (m_error != 0) cutBack();
    m_text.erase(0, size);
}

// Takes the unfinished line off the file, unless another writer has gone on
// behind it.
void o_stream::cutBack() const {
    const off_t end = m_unfinished > 0 ? lseek(m_handle, 0, SEEK_CUR) : -1;
    struct stat file {};
    if (end < 0 || fstat(m_handle, &file) != 0 || file.st_size != end) return;
    if (ftruncate(m_handle, end - static_cast<off_t>(m_unfinished)) != 0) return;
}

bool o_stream::flush() {
    if (m_error == 0 && m_handle >= 0) writeOut(m_text.size());
    reportLoss();
    return m_error == 0;
}

bool o_stream::close() {
    const bool kept = flush();
    if (m_file && m_owned && std::fclose(std::exchange(m_file, nullptr)) != 0 && kept) {
        m_error = errno;
        reportLoss();
    }
    io_stream::close();
    m_handle = -1;
    return m_error == 0;
}

void o_stream::reportLoss() {
    if (m_error == 0 || std::exchange(m_lossReported, true)) return;
    const psString name = isConsole() ? psString("standard output") : m_path;
    const psString reason = std::strerror(m_error);
    psAnnounce("-- Can't write " + name + ": " + reason + "; no more output goes there\n");
    psFaults::count(psFault::output);
    psRemarks::add("Incomplete output: " + name + " (" + reason + ")");
    if (isConsole() && m_error == EPIPE) psNoteInterrupt(SIGPIPE);
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
    if (std::ferror(m_file)) m_error = errno;
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

// Moves on to the next one.
void psSinkList::drop(iterator& pos) {
    const o_stream* sink = *pos;
    pos = erase(pos);
    if (sink->isOwned()) delete sink;
}

void psSinkList::flush() {
    for (auto pos = begin(); pos != end();) {
        if ((*pos)->flush())
            ++pos;
        else
            drop(pos);
    }
}

void psSinkList::close() {
    for (auto pos = begin(); pos != end();) {
        if ((*pos)->isConsole()) {
            ++pos;
            continue;
        }
        (*pos)->close();
        drop(pos);
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

void psAnnounce(const psString& lines) {
    g_ostrm << ERR << lines << END;
    const int console = c_out.error();
    if (console != 0 && console != EPIPE) std::fputs(lines.c_str(), stderr);
}

void psHoldStandardStreams() {
    for (const int handle : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(handle, F_GETFD) != -1) continue;
        // The wrong way round: reading and writing fail as on a closed one.
        if (open("/dev/null", handle == STDIN_FILENO ? O_WRONLY : O_RDONLY) != handle) return;
    }
}

psErrorPreface::psErrorPreface(std::function<void()> preface) {
    g_ostrm.setErrorPreface(std::move(preface));
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
