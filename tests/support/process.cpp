#include "process.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "text.h"

namespace support {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// A file in memory: whatever a program writes finds room there, so nobody need read meanwhile.
int makeFile(const std::string& content) {
    const int file = memfd_create("standard", MFD_CLOEXEC);
    if (write(file, content.data(), content.size()) != std::ssize(content)) fail("memfd_create");
    lseek(file, 0, SEEK_SET);
    return file;
}

// The descriptor has its place in common with the program, so the file is opened anew.
std::string textOf(int file) {
    return readFile("/proc/self/fd/" + std::to_string(file));
}

int makeTerminal() {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (grantpt(terminal) != 0 || unlockpt(terminal) != 0) fail("posix_openpt");
    return terminal;
}

// The program's end of the terminal, where the text has been typed.
int typedAt(int terminal, const std::string& text) {
    const int end = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (write(terminal, text.data(), text.size()) != std::ssize(text)) std::perror("terminal");
    return end;
}

bool isTyped(const Command& command) {
    return command.stdinFrom == Command::Input::Terminal;
}

// Becomes the program.
[[noreturn]] void start(const Command& command, int in, int out, int err) {
    // As from a terminal, also where the tests run in the background.
    for (const int number : {SIGPIPE, SIGINT, SIGTERM, SIGHUP}) std::signal(number, SIG_DFL);
    dup2(isTyped(command) ? typedAt(in, command.input) : in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (command.stdinFrom == Command::Input::Closed) close(STDIN_FILENO);
    for (const auto& [name, value] : command.environment)
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    std::vector<char*> words{const_cast<char*>(command.program.c_str())};
    for (const std::string& argument : command.arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    if (command.directory.empty() || chdir(command.directory.c_str()) == 0)
        execv(words[0], words.data());
    std::perror(words[0]);
    _exit(127);
}

}  // namespace

Process::Process(const Command& command)
    : m_end(std::chrono::steady_clock::now() + command.timeout),
      m_in(isTyped(command) ? makeTerminal() : makeFile(command.input)),
      m_out(makeFile("")),
      m_err(makeFile("")),
      m_pid(fork()) {
    if (m_pid < 0) fail("fork");
    if (m_pid == 0) start(command, m_in, m_out, m_err);
}

Process::~Process() {
    m_end = {};
    while (isRunning()) {
    }
    for (const int file : {m_in, m_out, m_err}) close(file);
}

bool Process::waitForText(const std::string& text) {
    const auto seen = [&] { return has(textOf(m_out), text) || has(textOf(m_err), text); };
    while (!seen()) {
        if (!isRunning()) return seen();
    }
    return true;
}

void Process::send(int signal) const {
    if (m_pid <= 0 || kill(m_pid, signal) != 0) fail("kill");
}

bool Process::isRunning() {
    if (m_pid <= 0) return false;
    int how = 0;
    if (waitpid(m_pid, &how, WNOHANG) == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        m_outcome.timedOut = std::chrono::steady_clock::now() >= m_end;
        if (!m_outcome.timedOut) return true;
        kill(m_pid, SIGKILL);
        waitpid(m_pid, &how, 0);
    }
    m_pid = -1;
    if (WIFEXITED(how)) m_outcome.status = WEXITSTATUS(how);
    if (WIFSIGNALED(how)) m_outcome.signal = WTERMSIG(how);
    return false;
}

Outcome Process::finish() {
    while (isRunning()) {
    }
    m_outcome.out = textOf(m_out);
    m_outcome.err = textOf(m_err);
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
