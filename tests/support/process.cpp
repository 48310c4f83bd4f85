#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace support {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe {
    int read = -1;
    int write = -1;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
    return {ends[0], ends[1]};
}

Pipe makeTerminal() {
    Pipe ends;
    ends.write = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (ends.write < 0 || grantpt(ends.write) != 0 || unlockpt(ends.write) != 0) fail("openpt");
    ends.read = open(ptsname(ends.write), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (ends.read < 0) fail("ptsname");
    return ends;
}

Pipe makeInput(Command::Input from) {
    if (from == Command::Input::Text) return makePipe();
    if (from == Command::Input::Terminal) return makeTerminal();
    return {open("/dev/null", O_RDONLY | O_CLOEXEC), -1};
}

void closeEnd(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

std::vector<std::string> environmentOf(const Command& command) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!command.environment.contains(text.substr(0, text.find('=')))) entries.push_back(text);
    }
    for (const auto& [name, value] : command.environment) {
        if (value) entries.push_back(name + "=" + *value);
    }
    return entries;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Reads what is there; closes the end when the other side has.
void drain(int& descriptor, std::string& text) {
    std::array<char, 65536> piece{};
    const ssize_t count = read(descriptor, piece.data(), piece.size());
    if (count > 0) {
        text.append(piece.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
        closeEnd(descriptor);
    }
}

}  // namespace

Process::Process(Command command) : m_command(std::move(command)), m_start(Clock::now()) {
    // A program that closes its input early must not end the tests with SIGPIPE.
    std::signal(SIGPIPE, SIG_IGN);

    std::vector<std::string> words{m_command.program};
    words.insert(words.end(), m_command.arguments.begin(), m_command.arguments.end());
    std::vector<std::string> variables = environmentOf(m_command);
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> envp = pointersTo(variables);

    Pipe in = makeInput(m_command.stdinFrom);
    Pipe out = makePipe();
    Pipe err = makePipe();
    Pipe started = makePipe();  // closed by a successful exec, else carries errno

    m_pid = fork();
    if (m_pid < 0) fail("fork");
    if (m_pid == 0) {
        // As from a terminal, also where the tests run in the background.
        for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGHUP}) std::signal(number, SIG_DFL);
        dup2(in.read, STDIN_FILENO);
        dup2(out.write, STDOUT_FILENO);
        dup2(err.write, STDERR_FILENO);
        if (m_command.stdinFrom == Command::Input::Closed) close(STDIN_FILENO);
        if (m_command.directory.empty() || chdir(m_command.directory.c_str()) == 0) {
            execve(argv[0], argv.data(), envp.data());
        }
        const int reason = errno;
        [[maybe_unused]] const ssize_t sent = write(started.write, &reason, sizeof reason);
        _exit(127);
    }
    closeEnd(in.read);
    closeEnd(out.write);
    closeEnd(err.write);
    closeEnd(started.write);
    m_in = in.write;
    m_out = out.read;
    m_err = err.read;

    int reason = 0;
    const bool failed = read(started.read, &reason, sizeof reason) == sizeof reason;
    closeEnd(started.read);
    if (failed) {
        reap();
        errno = reason;
        fail("cannot start " + m_command.program);
    }
    if (m_in >= 0) fcntl(m_in, F_SETFL, O_NONBLOCK);
    feed();
}

Process::~Process() {
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        reap();
    }
    closeEnd(m_in);
    closeEnd(m_out);
    closeEnd(m_err);
}

void Process::feed() {
    while (m_in >= 0 && m_fed < m_command.input.size()) {
        const ssize_t count =
            write(m_in, m_command.input.data() + m_fed, m_command.input.size() - m_fed);
        if (count < 0) {
            if (errno == EAGAIN) return;
            break;
        }
        m_fed += static_cast<std::size_t>(count);
    }
    // A terminal that goes takes along what nobody has read yet.
    if (m_command.stdinFrom != Command::Input::Terminal) closeEnd(m_in);
}

// Moves what is ready, at the latest until the moment given; false when both
// outputs are closed or the moment has come.
bool Process::pump(Clock::time_point until) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now());
    if (left.count() <= 0 || (m_out < 0 && m_err < 0)) return false;
    const int in = m_fed < m_command.input.size() ? m_in : -1;
    std::array<pollfd, 3> waited{{{m_out, POLLIN, 0}, {m_err, POLLIN, 0}, {in, POLLOUT, 0}}};
    if (poll(waited.data(), waited.size(), static_cast<int>(left.count())) < 0) {
        return errno == EINTR;
    }
    if (waited[0].revents != 0) drain(m_out, m_outcome.out);
    if (waited[1].revents != 0) drain(m_err, m_outcome.err);
    if (waited[2].revents != 0) feed();
    return true;
}

bool Process::waitForText(const std::string& text) {
    const auto seen = [&] {
        return m_outcome.out.find(text) != std::string::npos ||
               m_outcome.err.find(text) != std::string::npos;
    };
    while (!seen()) {
        if (!pump(m_start + m_command.timeout)) return seen();
    }
    return true;
}

void Process::send(int signal) const {
    if (m_pid <= 0 || kill(m_pid, signal) != 0) fail("kill");
}

void Process::reap() {
    int how = 0;
    while (waitpid(m_pid, &how, 0) < 0 && errno == EINTR) {
    }
    m_pid = -1;
    if (WIFEXITED(how)) m_outcome.status = WEXITSTATUS(how);
    if (WIFSIGNALED(how)) m_outcome.signal = WTERMSIG(how);
}

Outcome Process::finish() {
    const Clock::time_point until = m_start + m_command.timeout;
    while (pump(until)) {
    }
    // A program may close its outputs and go on.
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(m_pid), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0) {
        if (Clock::now() >= until) {
            m_outcome.timedOut = true;
            kill(m_pid, SIGKILL);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    reap();
    m_outcome.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_start);
    return m_outcome;
}

Outcome run(const Command& command) {
    return Process(command).finish();
}

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "pscv-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) fail("mkdtemp " + pattern);
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << text).flush()) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace support
