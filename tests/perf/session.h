// Runs of pscv inside a test program.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "ps.h"
#include "psbase.h"

// The stems of the modules that are linked.
inline std::set<std::string> modules() {
    std::set<std::string> stems;
    for (psTest* const test : *pTestList) stems.emplace(test->fileName().getFileTitle().c_str());
    return stems;
}

// A session ends by destroying its tests, so that a process has only one: the parent keeps its own.
// Expectations of the body that fail are printed by the child and fail the parent's test.
template <class Body>
void inOwnProcess(Body body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        body();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "of the process that ran the session";
}

// The session's output is seen in a test that fails only.
inline void runSession(std::vector<std::string> words) {
    words.insert(words.begin(), "pscv");
    std::vector<char*> argv;
    argv.reserve(words.size());
    for (std::string& word : words) argv.push_back(word.data());
    setenv("PSCV_FREQ_MHZ", "1000", 1);
    testing::internal::CaptureStdout();
    const int result = pSession->run(static_cast<int>(argv.size()), argv.data());
    g_ostrm.flush();
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(result, 0) << output;
}
