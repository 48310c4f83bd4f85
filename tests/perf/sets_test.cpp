// What the sets of all modules work on and leave behind, seen by spies in the place of the clock
// readers, which stand right before and right after a timed call.
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "pp.h"
#include "pscputick_gcc.h"
#include "psdata.h"
#include "pslib.h"
#include "session.h"
#include "temp_dir.h"

namespace {

// What a vector holds.
struct Content {
    long long bytes;
    std::size_t hash;
    bool changed;  // not the copy that the test has reserved
};
using Contents = std::map<const void*, Content>;  // by vector

std::size_t hashOf(const ppVector& vector) {
    const auto* const data = static_cast<const char*>(vector.data());
    return std::hash<std::string_view>()({data, static_cast<std::size_t>(vector.size())});
}

// Work buffers have no owner that describes them: what is in them may be addresses.
Contents liveVectors() {
    Contents contents;
    void* owner = nullptr;
    for (void* block = psMallocFirst(nullptr, &owner); block != nullptr;
         block = psMallocNext(nullptr, &owner)) {
        if (owner == nullptr || psIsBuffer(owner) || psIsSubObject(owner)) continue;
        const auto* const vector = dynamic_cast<ppVector*>(static_cast<psObject*>(owner));
        if (vector == nullptr) continue;
        const void* const copy = vector->getReservedData();
        const bool changed =
            copy != nullptr &&
            std::memcmp(vector->data(), copy, static_cast<std::size_t>(vector->size())) != 0;
        contents[owner] = {vector->size(), hashOf(*vector), changed};
    }
    return contents;
}

// The values of the running test's parameters, by their names.
using Values = std::map<std::string, std::string>;

Values currentValues() {
    Values values;
    for (const psParameter* parm : psTestList::m_pCurrentTest->parms())
        values[parm->name().c_str()] = parm->valueString().c_str();
    return values;
}

// How many units a call works on.
double currentDivisor() {
    struct Divisor : psTest {
        static double of(psTest& test) { return (test.*&Divisor::getDivisor)(); }
    };
    return Divisor::of(*psTestList::m_pCurrentTest);
}

struct Call {
    Contents before;
    Contents after;
    int restored = 0;  // calls that began with the copies and changed them
    double divisor = 0;
    int printedVectors = 0;
};
using Sets = std::map<Values, Call>;
std::map<std::string, Sets> calls;  // by function
long long ticks = 0;

Call& currentCall() {
    return calls[psTestList::m_pCurrentTest->funcName().c_str()][currentValues()];
}

long long spyStart() {
    if (psTestList::m_pCurrentTest != nullptr) currentCall().before = liveVectors();
    return ++ticks;
}

long long spyStop() {
    if (psTestList::m_pCurrentTest != nullptr) {
        Call& call = currentCall();
        call.after = liveVectors();
        const auto isChanged = [](const auto& vector) { return vector.second.changed; };
        if (std::ranges::none_of(call.before, isChanged) &&
            std::ranges::any_of(call.after, isChanged))
            ++call.restored;
        call.divisor = currentDivisor();
        call.printedVectors = psTest::m_vectorNum;
    }
    return ticks += 1000;
}

// What stands in the place of the readers.
psCpuClocks startSpy = spyStart;
psCpuClocks stopSpy = spyStop;

// After the library has been opened, whose readers would be taken otherwise.
void setEnvironment() {
    ppSetZmoEnvironment();
    zmo_StartCpuClocks = startSpy;
    zmo_StopCpuClocks = stopSpy;
}

void measureSets(std::vector<std::string> words) {
    const TempDir dir;
    psRegZmoEnvironment(setEnvironment);
    words.insert(words.end(), {"-B", "-l" + dir.path()});
    runSession(words);
}

// So many timed calls of each set.
void measureSets(std::vector<std::string> words, int loops) {
    words.insert(words.end(), {"-dMethod=Manual", "-dNumLoops=" + std::to_string(loops)});
    measureSets(words);
}

// One module's sets.
class OfModule : public testing::TestWithParam<std::string> {
  protected:
    static std::ptrdiff_t functionsOfModule() {
        return std::ranges::count_if(*pTestList, [](const psTest* test) {
            return GetParam() == test->fileName().getFileTitle().c_str();
        });
    }
    static void measure(const std::string& sizes) {
        const std::ptrdiff_t functions = functionsOfModule();
        measureSets({"-m=" + GetParam(), "-dImageSize=" + sizes}, 1);
        EXPECT_EQ(std::ssize(calls), functions);
    }
};
INSTANTIATE_TEST_SUITE_P(Modules, OfModule, testing::ValuesIn(modules()),
                         [](const auto& module) { return module.param; });

std::string textOf(const Values& values) {
    std::string text;
    for (const auto& [name, value] : values)
        text.append(" ").append(name).append("=").append(value);
    return text;
}

// ---- values that change nothing ---------------------------------------------------

// Vectors that only one of the two calls has, or that differ in size, do not count: a state grows
// with a value that need not change anything else.
bool doTheSame(const Call& a, const Call& b) {
    return a.divisor == b.divisor && std::ranges::all_of(a.after, [&](const auto& vector) {
               const auto other = b.after.find(vector.first);
               return other == b.after.end() || other->second.bytes != vector.second.bytes ||
                      other->second.hash == vector.second.hash;
           });
}

struct Alike {
    const char* functions;  // a part of their names
    const char* parameter;
    const char* why;
};
constexpr Alike alike[] = {
    {"Erode", "Border", "a mirror shows nothing that an even mask does not see inside"},
    {"Dilate", "Border", "as Erode"},
    {"Morph", "Border", "as Erode"},
    {"CannyBorder", "Kernel", "thresholds are fitted to the mask, so both find the same outlines"},
    {"CannyBorder", "Norm",
     "the sums differ, the outlines above the thresholds only here and there"},
};

bool mayBeAlike(const std::string& function, const std::string& parameter) {
    return std::ranges::any_of(alike, [&](const Alike& a) {
        return function.find(a.functions) != std::string::npos && parameter == a.parameter;
    });
}

// The one parameter in which two sets differ, or nothing.
std::string onlyDifference(const Values& a, const Values& b) {
    std::string name;
    for (const auto& [parameter, value] : a) {
        if (b.at(parameter) == value) continue;
        if (!name.empty()) return {};
        name = parameter;
    }
    return name;
}

TEST_P(OfModule, DefaultValuesChangeWhatACallDoes) {
    inOwnProcess([] {
        measure(SANITIZED ? "64x64" : "64x64;160x120");
        for (const auto& [function, sets] : calls) {
            for (auto one = sets.begin(); one != sets.end(); ++one) {
                for (auto other = std::next(one); other != sets.end(); ++other) {
                    const std::string parameter = onlyDifference(one->first, other->first);
                    if (parameter.empty() || mayBeAlike(function, parameter)) continue;
                    EXPECT_FALSE(doTheSame(one->second, other->second))
                        << function << textOf(one->first) << ": so does " << parameter << "="
                        << other->first.at(parameter);
                }
            }
        }
    });
}

// ---- one set alone ------------------------------------------------------------------

// A line for each set of which the last size is one, with the data that it begins with.
std::string dataOf(const std::string& size) {
    std::ostringstream lines;
    for (const auto& [function, sets] : calls) {
        for (const auto& [values, call] : sets) {
            if (values.at("ImageSize") != size) continue;
            lines << function << textOf(values) << ":";
            for (const auto& [vector, content] : call.before) lines << " " << content.hash;
            lines << "\n";
        }
    }
    return lines.str();
}

TEST_P(OfModule, SetsSeeTheSameBytesAloneAndInAList) {
    const TempDir dir;
    const std::string size = SANITIZED ? "64x48" : "96x80";
    for (const std::string& sizes : {size, "64x64;" + size}) {
        inOwnProcess([&] {
            measure(sizes);
            support::writeFile(dir.file(sizes), dataOf(size));
        });
    }
    const std::string alone = support::readFile(dir.file(size));
    EXPECT_FALSE(alone.empty());
    EXPECT_EQ(alone, support::readFile(dir.file("64x64;" + size)));
}

TEST(Sets, CountThePrintedVectors) {
    inOwnProcess([] {
        measureSets(
            {"-f=zmoiCanny_16s8u_C1R", "-LDATA", "-dImageSize=12x8;8x12", "-dnumFigures=2x2"}, 1);
        const Sets& sets = calls["zmoiCanny_16s8u_C1R"];
        EXPECT_EQ(sets.size(), 2U);
        for (const auto& [values, call] : sets)
            EXPECT_EQ(call.printedVectors, 3) << "two sources and the result, no buffer";
    });
}

// ---- functions that change the data they read ---------------------------------------

TEST(RestoredData, EveryTimedCallStartsFromTheSameBytes) {
    constexpr int timedCalls = 10;
    std::vector<std::string> functions;
    std::vector<std::string> words{"-dImageSize=64x64"};
    for (psTest* const test : *pTestList) {
        const ppFunc function(test->funcName());
        // A background is only read; a reconstruction begins with a copy of its own.
        const bool changes =
            (function.inplace() && !function.contains("_Copy")) ||
            (test->info().kind.contains("REG_I") && function.baseName() != "FGMMBackground");
        if (!changes) continue;
        functions.emplace_back(test->funcName().c_str());
        words.push_back("-f=" + functions.back());
    }
    EXPECT_GT(functions.size(), 50U);
    for (const char* parameter : {"Connectivity=4", "Threshold=2", "MaxSize=20", "Radius=8",
                                  "Distance=16", "Lines=1", "Stage=2", "Features=upright"})
        words.push_back(std::string("-d") + parameter);
    inOwnProcess([&] {
        measureSets(words, timedCalls);
        for (const std::string& function : functions) {
            for (const auto& [values, call] : calls[function])
                EXPECT_GE(call.restored, timedCalls) << function << textOf(values);
            EXPECT_FALSE(calls[function].empty()) << function;
        }
    });
}

// ---- what a call reads and brings back ---------------------------------------------------
// Not under the sanitizers, whose own variables change with each call.

#if !SANITIZED

// Memory that a call might change: a block of test data, or the variables of all modules.
struct Region {
    const char* data;
    std::vector<char> before;
    std::vector<char> after;

    std::vector<char> copy() const { return {data, data + before.size()}; }

    // Whether a call has changed the bytes. What is named is no longer a change afterwards.
    bool takeChange(const void* bytes, long long size) {
        const auto first = static_cast<const char*>(bytes) - data;
        const char* const now = after.data() + first;
        const auto count = static_cast<std::size_t>(size);
        const bool changed = std::memcmp(before.data() + first, now, count) != 0;
        std::memcpy(before.data() + first, now, count);
        return changed;
    }
};

// Not among the variables that are watched.
struct Watch {
    std::vector<Region> regions;
    std::map<std::string, bool> results;  // named ones, by function: whether a call changed them
    std::string faults;                   // shown after the run, which keeps its output to itself
    long long ticks = 0;

    void add(const void* data, std::size_t size) {
        regions.push_back({static_cast<const char*>(data), std::vector<char>(size), {}});
        regions.back().before = regions.back().copy();
    }
    Region* find(const void* bytes) {
        const auto holds = [&](const Region& r) {
            return bytes >= r.data && bytes < r.data + r.before.size();
        };
        const auto found = std::ranges::find_if(regions, holds);
        return found == regions.end() ? nullptr : &*found;
    }
};
Watch& watch = *new Watch;

int addVariables(dl_phdr_info* program, std::size_t, void*) {
    for (int i = 0; i < program->dlpi_phnum; ++i) {
        const auto& part = program->dlpi_phdr[i];
        if (part.p_type == PT_LOAD && (part.p_flags & PF_W) != 0)
            watch.add(reinterpret_cast<const void*>(program->dlpi_addr + part.p_vaddr),
                      part.p_memsz);
    }
    return 1;  // the program is the first object
}

// An earlier function may have left the same number. That of a list's elements becomes negative,
// and the list is not there until the call.
void disturb(const ppArgument& argument) {
    if (argument.role() != ppRole::out || watch.find(argument.row(0)) != nullptr) return;
    auto* const bytes = static_cast<char*>(const_cast<void*>(argument.row(0)));
    std::transform(bytes, bytes + argument.rowBytes(), bytes, [](char c) { return ~c; });
}

long long watchStart() {
    watch.regions.clear();
    int size = 0;
    for (void* block = psMallocFirst(&size, nullptr); block != nullptr;
         block = psMallocNext(&size, nullptr))
        watch.add(block, static_cast<std::size_t>(size));
    if (auto* const test = dynamic_cast<ppTest*>(psTestList::m_pCurrentTest)) {
        for (const ppArgument& argument : test->arguments()) disturb(argument);
        dl_iterate_phdr(addVariables, nullptr);
    }
    return ++watch.ticks;
}

void takeNamed(const std::string& function, const ppArgument& argument) {
    if (argument.role() == ppRole::in) return;
    for (int y = 0; y < argument.rows(); ++y) {
        Region* const region = watch.find(argument.row(y));
        ASSERT_NE(region, nullptr) << function << " " << argument.name();
        const bool changed = region->takeChange(argument.row(y), argument.rowBytes());
        if (argument.isResult()) watch.results[function + " " + argument.name()] |= changed;
    }
}

long long watchStop() {
    for (Region& region : watch.regions) region.after = region.copy();
    auto* const test = dynamic_cast<ppTest*>(psTestList::m_pCurrentTest);
    if (test != nullptr) {
        const std::string function = test->funcName().c_str();
        for (const ppArgument& argument : test->arguments()) takeNamed(function, argument);
        for (const Region& region : watch.regions) {
            if (region.before == region.after) continue;
            const auto change = std::ranges::mismatch(region.before, region.after).in1;
            watch.faults += function + " changes byte " +
                            std::to_string(change - region.before.begin()) + " of a block of " +
                            std::to_string(region.before.size()) +
                            ", which no output and no scratch names\n";
        }
    }
    return watch.ticks += 1000;
}

TEST_P(OfModule, NamesWhatACallChanges) {
    inOwnProcess([] {
        const std::ptrdiff_t all = functionsOfModule();
        startSpy = watchStart;
        stopSpy = watchStop;
        // Calls without a warm-up: the first one is seen.
        measureSets({"-m=" + GetParam(), "-dImageSize=64x48", "-dMethod=Statistic", "-dNumCalls=1",
                     "-dTotalCpuClocks=0"});
        EXPECT_EQ(watch.faults, "");
        std::set<std::string> functions;
        for (const auto& [name, changed] : watch.results) {
            EXPECT_TRUE(changed) << name << " is named as an output, and no call changes it";
            functions.insert(name.substr(0, name.find(' ')));
        }
        EXPECT_EQ(std::ssize(functions), all);
    });
}

#endif

// ---- in the cache and out of it --------------------------------------------------------

// The cache is small for the sets that have to fit into it, and so large for the others that a call
// out of it would take minutes: they are named, not made.
TEST(Sets, OutOfTheCacheAreLeftOutWhenACallWouldTakeLong) {
    psCacheIterator::maxCacheSize = [](int* bytes) {
        const psCacheIterator* iterator = psTestList::m_pCurrentTest->cacheIter();
        *bytes = iterator->value() == psCacheIterator::IN_CACHE ? 1'000'000 : 1'500'000'000;
        return 0;
    };
    const TempDir dir;
    inOwnProcess([&] {
        runSession({"-B", "-C", "-l" + dir.path(), "-oall.txt", "-LPERF", "-f=zmoiInpaint_8u_C1R",
                    "-dMethod=Manual", "-dNumLoops=1"});
    });
    psCacheIterator::maxCacheSize = nullptr;
    const std::string listing = dir.read("all.txt");
    for (const char* radius : {"3", "8"}) {
        const std::string set = std::string("Radius=") + radius + " Damage=2 Flag=marching ";
        EXPECT_NE(listing.find("ImageSize=512x256 " + set), std::string::npos) << listing;
        EXPECT_NE(listing.find("-- outofCache " + set.substr(0, set.size() - 1) +
                               " is not measured: one call on 2147483648 bytes would take about "),
                  std::string::npos)
            << listing;
    }
    EXPECT_NE(listing.find("  Result   : OK "), std::string::npos) << listing;
}

}  // namespace
