// Message streams: one text fans out to the console and any number of listing
// files and is filtered by a detail level; and the tracer that writes into it.
#pragma once

#include <concepts>
#include <cstdio>
#include <functional>
#include <string>

#include "pslist.h"
#include "psstring.h"

// The level of a message, and (as bits) the levels that may pass. END and
// END_FLUSH are no levels: they end the message that a level has begun.
enum class MessageLevel : int {
    ERR = 1,
    WARN = 2,
    PERF = 4,
    INFO = 8,
    TRACE = 16,
    MALLOC = 32,
    DATA = 64,
    END = -10,
    END_FLUSH = -11,
};

// A set of MessageLevel bits.
using OutputLevel = int;

// What is shown: errors; warnings too; results too.
constexpr OutputLevel showErrors = static_cast<int>(MessageLevel::ERR);
constexpr OutputLevel showWarnings = showErrors | static_cast<int>(MessageLevel::WARN);
constexpr OutputLevel showResults = showWarnings | static_cast<int>(MessageLevel::PERF);

// One open file, or the console. A file that could not be opened, or is closed,
// takes no output and gives no input.
class io_stream {
  public:
    enum Mode { READ = 1, WRITE = 2, APPEND = 4, BINARY = 8, NAME_AS_GIVEN = 256 };

    // Where a relative name that is not NAME_AS_GIVEN lies; set by the session,
    // unset the name is used as it is.
    using PathRule = psString (*)(const psString& name);
    static PathRule inPathRule;
    static PathRule outPathRule;

    // A handle that the stream does not close; null is the console, that is
    // standard output.
    explicit io_stream(std::FILE* handle)
        : m_file(handle), m_owned(false), m_console(handle == nullptr) {}
    // Opens a file; a failure leaves isOpen() false and, with `report`, names
    // the path at level ERR.
    io_stream(const psString& name, int mode, bool report = true);
    io_stream(const io_stream&) = delete;
    io_stream& operator=(const io_stream&) = delete;
    virtual ~io_stream();

    bool isOpen() const { return m_file != nullptr; }
    bool isConsole() const { return m_console; }
    bool isOwned() const { return m_owned; }
    std::FILE* handle() const { return m_file; }
    const psString& path() const { return m_path; }
    // errno of the first operation that failed, 0 while none has.
    int error() const { return m_error; }
    void close();

    // Reports at level ERR that a file cannot be opened, and why (an errno); a fault.
    static void reportOpenFailure(const psString& path, int mode, int error);

  protected:
    std::FILE* m_file = nullptr;
    bool m_owned = true;
    bool m_console = false;
    int m_error = 0;
    psString m_path;
};

// Text is gathered, and written by the system's own calls: after a failed one
// it is known how much has arrived, and the file is cut back to its last whole
// line. Appended text starts on a line of its own whatever the file ends with.
// The console is not made to wait for a flush where it is a terminal.
class o_stream : public io_stream {
  public:
    explicit o_stream(std::FILE* handle);
    o_stream(const psString& name, int mode, bool report = true);
    ~o_stream() override;

    // Called before text goes to the console: a progress line on the same
    // terminal makes room for it. Unset by default.
    static void (*beforeConsole)();

    // A loss shows at the next flush: text is written in the middle of lines.
    void write(const psString& text);
    // False when this or an earlier write has lost text. That is reported once, with
    // the path and the reason, then and at the end of the run; nothing more is
    // written. Where the console's reader has gone, the run is interrupted.
    bool flush();
    // Flushes and closes, with the same answer.
    bool close();

  private:
    void writeOut(std::size_t size);
    void cutBack() const;
    void reportLoss();

    int m_handle = -1;  // the system's
    bool m_terminal = false;
    bool m_startsLine = true;
    bool m_lossReported = false;
    std::size_t m_unfinished = 0;  // bytes of the last line that are written
    std::string m_text;
};

o_stream& operator<<(o_stream& stream, const psString& text);

class i_stream : public io_stream {
  public:
    using io_stream::io_stream;

    // One line of any length without its line feed; false at the end of the file.
    bool getline(psString& line);
    // True when reading has failed for another reason than the end of the file;
    // after getline() error() says which.
    bool readError() const { return m_file && std::ferror(m_file) != 0; }
};

extern o_stream& c_out;
extern i_stream& c_in;

// Opens a listing exactly under the name given; null when that fails.
o_stream* createOStream(const psString& name, bool append);

// The sinks of a stream, in the order in which they were added. The list owns
// the files it opened, not the console.
class psSinkList : public psList<o_stream*> {
  public:
    psSinkList() = default;
    psSinkList(const psSinkList&) = delete;
    psSinkList& operator=(const psSinkList&) = delete;
    ~psSinkList() override;

    bool addStream(const psString& name, bool append);
    void write(const psString& text);
    // Drops the sinks that have lost text.
    void flush();
    // Closes the files and drops them; the console stays.
    void close();

  private:
    void drop(iterator& pos);
};

class psOStream : public psSinkList {
  public:
    using psSinkList::flush;

    OutputLevel getOutLevel() const { return m_outLevel; }
    void setOutLevel(OutputLevel level) { m_outLevel = level; }
    bool isShown(MessageLevel level) const { return (static_cast<int>(level) & m_outLevel) != 0; }

    MessageLevel getMsgLevel() const { return m_msgLevel; }
    void setMsgLevel(MessageLevel level);
    void restoreMsgLevel();  // an empty stack gives ERR

    // Brackets optional, expensive output. The test is numeric, not by bits;
    // the text itself is filtered by bits.
    bool beginMessage(MessageLevel level);
    void endMessage() { restoreMsgLevel(); }
    void endMessageFlush();

    void put(const psString& text);
    void setErrorPreface(std::function<void()> preface) { m_errorPreface = std::move(preface); }

  private:
    OutputLevel m_outLevel = static_cast<int>(MessageLevel::ERR);
    MessageLevel m_msgLevel = MessageLevel::PERF;
    psList<MessageLevel> m_saved;  // most recent first
    std::function<void()> m_errorPreface;
};

psOStream& operator<<(psOStream& stream, MessageLevel level);
psOStream& operator<<(psOStream& stream, const psString& text);
psOStream& operator<<(psOStream& stream, const char* text);
psOStream& operator<<(psOStream& stream, char c);

template <class T>
requires(std::integral<T> || std::floating_point<T>) psOStream& operator<<(psOStream& stream,
                                                                           T value) {
    return stream << psText(value);
}

// The stream of the summary report.
class psUStream : public psOStream {};

// The process-wide streams, reached through function-local statics so that
// registration before main never meets an unbuilt one.
psOStream& psMessageStream();
psUStream& psSummaryStream();
inline psOStream& g_ostrm = psMessageStream();
inline psUStream& g_ustrm = psSummaryStream();

// Writes lines at level ERR, and to standard error when the console has failed.
void psAnnounce(const psString& lines);

// Puts something in the place of standard streams that are closed: a file opened
// later must not get the console's number, and with it the console's text.
void psHoldStandardStreams();

// While it lives, `preface` is called once before the first message at level ERR:
// it writes what the message is about.
class psErrorPreface {
  public:
    explicit psErrorPreface(std::function<void()> preface);
    psErrorPreface(const psErrorPreface&) = delete;
    psErrorPreface& operator=(const psErrorPreface&) = delete;
    ~psErrorPreface();
};

// Sets the output level of g_ostrm and puts the old one back at the end of the
// scope, also when an exception passes.
class psOutLevelGuard {
  public:
    psOutLevelGuard() : m_saved(g_ostrm.getOutLevel()) {}
    explicit psOutLevelGuard(OutputLevel level) : psOutLevelGuard() { g_ostrm.setOutLevel(level); }
    psOutLevelGuard(const psOutLevelGuard&) = delete;
    psOutLevelGuard& operator=(const psOutLevelGuard&) = delete;
    ~psOutLevelGuard() { restore(); }
    void restore() { g_ostrm.setOutLevel(m_saved); }
    OutputLevel saved() const { return m_saved; }

  private:
    OutputLevel m_saved;
};

// Indented "trace into"/"trace out of" lines at level TRACE, and the name of
// the operation that is running. Never call it inside a timed interval.
class psTrace {
  public:
    static void traceIn(const psString& name);
    // Removes `name` and all names above it; one "*" goes for each name visited.
    static void traceOut(const psString& name);
    static psString getCurName();   // the innermost traced name, or empty
    static const psString& text();  // all lines since the last flush
    static void flush();
};

// Traces a scope; an exception that leaves it keeps the name in the record, so
// that a report can still say where it came from.
class psTraceScope {
  public:
    explicit psTraceScope(const char* name);
    psTraceScope(const psTraceScope&) = delete;
    psTraceScope& operator=(const psTraceScope&) = delete;
    ~psTraceScope();

  private:
    const char* m_name;
    int m_exceptions;
};
