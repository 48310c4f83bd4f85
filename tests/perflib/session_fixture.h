// Runs sessions inside a test program.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "process.h"
#include "ps.h"
#include "pscputick_gcc.h"
#include "psistream.h"
#include "pslib.h"
#include "pstest.h"
#include "pstool.h"

using Words = std::vector<std::string>;

// Closes what a session opened.
inline void release(psSinkList& stream) {
    for (o_stream* sink : stream) {
        if (sink != &c_out) delete sink;
    }
    stream.clear();
}

// Runs a session in a directory of its own; every process-wide setting that a
// session changes is put back.
class SessionTest : public testing::Test {
  protected:
    SessionTest() : m_old(std::filesystem::current_path()) {
        std::filesystem::remove_all(m_dir);
        std::filesystem::create_directories(m_dir + "/bin");
        std::filesystem::current_path(m_dir);
        psCpuTicker::m_freqMHz = 1000;
    }
    ~SessionTest() override {
        putBack();
        delete std::exchange(pTestList, nullptr);
        delete std::exchange(pCmdLine, nullptr);
        zmoEnvironment = nullptr;
        std::filesystem::current_path(m_old);
        std::filesystem::remove_all(m_dir);
    }

    // What keys change outside the session, as before the first.
    static void putBack() {
        psPublish({});
        g_istrm.close();
        g_istrm.dataList().clear();
        for (psSinkList* stream : std::vector<psSinkList*>{&g_ostrm, &g_ustrm, &g_cstrm, &g_qstrm})
            release(*stream);
        g_ostrm.setOutLevel(showErrors);
        psGlobalTool() = psTool();
    }

    // Hands the words to the operation as main's are.
    template <class Operation>
    static auto withWords(Words words, Operation operation) {
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        return operation(static_cast<int>(argv.size()), argv.data());
    }
    // The console's text of a whole run; what the run before left is put back.
    std::string run(psSession& session, Words keys) {
        keys.insert(keys.begin(), "bin/pscv");
        putBack();
        testing::internal::CaptureStdout();
        m_result = withWords(keys, [&](int n, char** words) { return session.run(n, words); });
        g_ostrm.flush();
        return testing::internal::GetCapturedStdout();
    }
    // The echo of the keys alone.
    std::string parse(psSession& session, Words keys) {
        keys.insert(keys.begin(), "bin/pscv");
        putBack();
        g_ostrm.push_back(&c_out);
        session.initSession();
        testing::internal::CaptureStdout();
        m_parsed = withWords(
            keys, [&](int n, char** words) { return session.parseCommandLine(n, words); });
        g_ostrm.flush();
        return testing::internal::GetCapturedStdout();
    }
    void file(const std::string& name, const std::string& content) const {
        support::writeFile(m_dir + "/" + name, content);
    }

    std::string m_dir = testing::TempDir() + "ps_test_" + std::to_string(getpid());
    std::filesystem::path m_old;
    int m_result = -1;
    bool m_parsed = false;
};
