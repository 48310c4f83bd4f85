// Functions that change the data they read: every timed call has to start from the same bytes. The
// clock readers stand right before and right after a timed call, so a spy in their place sees them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include "pp.h"
#include "pscputick_gcc.h"
#include "psdata.h"
#include "pslib.h"
#include "session.h"
#include "temp_dir.h"

namespace {

// The modules with functions of this kind.
constexpr const char* modules[] = {"p_cadd",           "p_cbound", "p_cdist",         "p_cflood",
                                   "p_chaar",          "p_clabel", "p_cmarkspeckles", "p_cmh",
                                   "p_cvsegmentation", "p_gmm",    "p_optflow"};

enum class Data { none, asReserved, changed };

// The data of all vectors of which the test holds a copy, compared with it.
Data compareWithCopies() {
    Data found = Data::none;
    int size = 0;
    void* owner = nullptr;
    for (void* block = psMallocFirst(&size, &owner); block != nullptr;
         block = psMallocNext(&size, &owner)) {
        if (owner == nullptr || psIsBuffer(owner) || psIsSubObject(owner)) continue;
        const auto* const vector = dynamic_cast<ppVector*>(static_cast<psObject*>(owner));
        if (vector == nullptr || vector->getReservedData() == nullptr) continue;
        const bool same = std::memcmp(vector->data(), vector->getReservedData(),
                                      static_cast<std::size_t>(vector->size())) == 0;
        if (!same) return Data::changed;
        found = Data::asReserved;
    }
    return found;
}

Data before = Data::none;
long long ticks = 0;
std::map<std::string, int> restoredCalls;  // by function: began with the copy, ended otherwise

long long spyStart() {
    before = compareWithCopies();
    return ++ticks;
}

long long spyStop() {
    if (before == Data::asReserved && compareWithCopies() == Data::changed)
        ++restoredCalls[psTestList::m_pCurrentTest->funcName().c_str()];
    return ticks += 1000;
}

// After the library has been opened, whose readers would be taken otherwise.
void setEnvironment() {
    ppSetZmoEnvironment();
    zmo_StartCpuClocks = spyStart;
    zmo_StopCpuClocks = spyStop;
}

TEST(RestoredData, EveryTimedCallStartsFromTheSameBytes) {
    constexpr int timedCalls = 10;
    ASSERT_NE(pTestList, nullptr);
    std::vector<std::string> functions;
    for (psTest* const test : *pTestList) {
        const std::string stem = test->fileName().getFileTitle().c_str();
        const bool chosen = std::ranges::find(modules, stem) != std::end(modules);
        // The mask of a cascade changes too, though no name tells of it; a background is only read.
        const ppFunc function(test->funcName());
        const bool changes = function.inplace() || (test->info().kind.contains("REG_I") &&
                                                    function.baseName() != "FGMMBackground");
        if (chosen && changes) functions.emplace_back(test->funcName().c_str());
    }
    ASSERT_GE(functions.size(), std::size(modules));
    const TempDir dir;
    std::vector<std::string> words{"-B", "-l" + dir.path()};
    for (const char* parameter :
         {"Method=Manual", "NumLoops=10", "ImageSize=64x64", "Connectivity=4", "Threshold=2",
          "MaxSize=20", "Radius=8", "Distance=16", "Lines=1", "Stage=2", "Features=upright"})
        words.push_back(std::string("-d") + parameter);
    for (const char* module : modules) words.push_back(std::string("-m=") + module);
    psRegZmoEnvironment(setEnvironment);
    inOwnProcess([&] {
        runSession(words);
        for (const std::string& function : functions)
            EXPECT_GE(restoredCalls[function], timedCalls) << function;
    });
}

}  // namespace
