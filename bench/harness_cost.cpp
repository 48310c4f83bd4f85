// What pscv itself costs for one parameter set, outside of the measured calls:
// the wall time of a run of many equal sets of 64 x 64 Canny less that of a run
// of one, less the clocks of the calls themselves.
//
//   harness_cost <pscv> [sets]
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

struct RunCost {
    double seconds;
    double microsecondsOfCall;  // mean of the rows
};

// Manual method with one loop: each set makes two calls, one of them timed.
std::vector<std::string> keys(int sets, const std::string& dir) {
    std::string sizes = "64x64";
    for (int i = 1; i < sets; ++i) sizes += ";64x64";
    return {"-B",       "-f=zmoiCanny_16s8u_C1R", "-dMethod=Manual",  "-dNumLoops=2",  "-r",
            "-l" + dir, "-dImageSize=" + sizes,   "-dnumFigures=2x2", "-nharness_cost"};
}

void execute(const std::string& program, const std::vector<std::string>& arguments) {
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char*> argv{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        if (!std::freopen("/dev/null", "w", stdout)) _exit(1);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        std::cerr << "harness_cost: " << program << " did not run\n";
        std::exit(1);
    }
}

double meanTime(const std::string& table) {
    std::ifstream file(table);
    double sum = 0;
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("zmoiCanny,", 0) != 0) continue;
        std::size_t from = 0;
        for (int cell = 0; cell < 12; ++cell) from = line.find(',', from) + 1;
        sum += std::atof(line.c_str() + from);
        ++rows;
    }
    return rows > 0 ? sum / rows : 0;
}

RunCost run(const std::string& program, int sets, const std::string& dir) {
    const auto start = std::chrono::steady_clock::now();
    execute(program, keys(sets, dir));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return {elapsed.count(), meanTime(dir + "/harness_cost.csv")};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: harness_cost <pscv> [sets]\n";
        return 2;
    }
    const int sets = argc > 2 ? std::atoi(argv[2]) : 2000;
    setenv("PSCV_FREQ_MHZ", "2600", 0);
    char dir[] = "/tmp/harness_costXXXXXX";
    if (sets < 2 || !mkdtemp(dir)) {
        std::cerr << "harness_cost: sets must be at least 2, and /tmp writable\n";
        return 2;
    }
    const RunCost one = run(argv[1], 1, dir);
    const RunCost many = run(argv[1], sets, dir);
    constexpr int callsASet = 3;  // the warm-up and two loops
    const double perSet = (many.seconds - one.seconds) / (sets - 1) * 1e6;
    const double calls = callsASet * many.microsecondsOfCall;
    std::printf("one set of 64 x 64 Canny: %.1f us, of it %.1f us in %d calls, %.1f us harness\n",
                perSet, calls, callsASet, perSet - calls);
    std::remove((std::string(dir) + "/harness_cost.csv").c_str());
    rmdir(dir);
    return 0;
}
