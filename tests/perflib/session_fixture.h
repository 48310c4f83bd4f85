// Runs sessions inside a test program.
#pragma once

#include <filesystem>

#include "ps.h"
#include "pscmdline.h"
#include "pscputick_gcc.h"
#include "psistream.h"
#include "pslib.h"
#include "pstest.h"
#include "pstool.h"
#include "unit.h"

using Words = std::vector<std::string>;

// Runs a session of a program bin/pscv in a directory of its own; every process-wide setting
// that a session changes is put back.
class SessionTest : public testing::Test {
  protected:
    SessionTest() {
        std::filesystem::current_path(m_dir.path());
        std::filesystem::create_directory("bin");
        psCpuTicker::m_freqMHz = 1000;
    }
    ~SessionTest() override {
        putBack();
        delete std::exchange(pTestList, nullptr);
        delete std::exchange(pCmdLine, nullptr);
        zmoEnvironment = nullptr;
        std::filesystem::current_path(m_old);
    }

    // The console's text of a whole run.
    std::string run(psSession& session, const Words& keys) {
        return console(keys,
                       [&](int count, char** words) { m_result = session.run(count, words); });
    }
    // The echo of the keys alone.
    std::string parse(psSession& session, const Words& keys) {
        return console(keys, [&](int count, char** words) {
            g_ostrm.push_back(&c_out);
            session.initSession();
            m_parsed = session.parseCommandLine(count, words);
        });
    }

    const TempDir m_dir;
    bool m_parsed = false;
    int m_result = -1;

  private:
    // What keys change outside the session, as before the first.
    static void putBack() {
        psPublish({});
        g_istrm.close();
        g_istrm.dataList().clear();
        for (psSinkList* stream :
             std::vector<psSinkList*>{&g_ostrm, &g_ustrm, &g_cstrm, &g_qstrm}) {
            stream->close();
            stream->clear();  // of the console
        }
        g_ostrm.setOutLevel(showErrors);
        psGlobalTool() = psTool();
    }
    static std::string console(Words words, const std::function<void(int, char**)>& session) {
        words.insert(words.begin(), "bin/pscv");
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        putBack();
        testing::internal::CaptureStdout();
        session(static_cast<int>(argv.size()), argv.data());
        g_ostrm.flush();
        return testing::internal::GetCapturedStdout();
    }

    const std::filesystem::path m_old = std::filesystem::current_path();
};
