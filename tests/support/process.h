// Runs a program the way a shell would, and keeps everything that it said.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace support {

struct Command {
    std::string program;
    std::vector<std::string> arguments;
    // Added to the inherited environment; no value removes the variable.
    std::map<std::string, std::optional<std::string>> environment;
    // Terminal: the text is typed; a 4 in it is the end of the input.
    enum class Input { Text, Closed, Terminal } stdinFrom = Input::Text;
    std::string input;                // what standard input holds with Text and Terminal
    std::filesystem::path directory;  // working directory; empty: the caller's
    std::chrono::milliseconds timeout{60'000};
};

struct Outcome {
    int status = -1;  // exit status, -1 when a signal ended the program
    int signal = 0;   // the signal that ended it, 0 when it exited
    bool timedOut = false;
    std::string out;
    std::string err;

    bool clean() const { return status == 0 && signal == 0 && !timedOut; }
};

// A running program. It is killed and reaped when the object goes. One that cannot be started says
// why on its error output and ends with 127.
class Process {
  public:
    explicit Process(const Command& command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Waits until text stands in the output or the error output; false when the
    // program ends or its time runs out before.
    bool waitForText(const std::string& text);
    void send(int signal) const;
    // Waits for the end. A program that outlives its timeout is killed.
    Outcome finish();

  private:
    // Waits a little while for the end, and ends what outlives its timeout.
    bool isRunning();

    Outcome m_outcome;
    std::chrono::steady_clock::time_point m_end;
    int m_in;
    int m_out;
    int m_err;
    pid_t m_pid;
};

Outcome run(const Command& command);

// A directory of its own, removed with all it holds.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

  private:
    std::filesystem::path m_path;
};

// The whole file; throws std::runtime_error that names the path.
std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& text);

}  // namespace support
