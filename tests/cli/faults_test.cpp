// Functions that fault, return errors or disturb the floating-point state, and
// shared objects that are missing, incomplete or somebody else's.
#include <elf.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>

#include "pscv.h"

namespace {

using support::Outcome;

constexpr const char* first = "zmoiCanny_16s8u_C1R";
const std::string noFunction = "-- No zmo shared object has the function ";
constexpr const char* integrated = "Morva ZMO core functions have been integrated into PS\n";
constexpr const char* second = "zmoiCanny_32f8u_C1R";

int ownPriority() {
    return getpriority(PRIO_PROCESS, 0);
}

class Faulty : public testing::Test {
  protected:
    Faulty() { pscv.environment["LD_LIBRARY_PATH"] = PSCV_FAULTY_DIR; }

    Outcome runWith(const std::string& fault, const Pscv::Arguments& more = {}) {
        pscv.environment["PSCV_FAULT"] = fault;
        return pscv.run(Pscv::smallCanny(more));
    }
    Pscv pscv;
};

constexpr const char* storage = "--ZMO. Signal: Illegal storage access. in ";
constexpr const char* arithmetic =
    "--ZMO. Signal: FP fail, such as overflow, division by zero, invalid operation. in ";

// The other function runs after the one that faults, on the state that a run begins with.
TEST_F(Faulty, FaultsEndTheirOwnTestOnly) {
    const struct {
        const char* fault;
        const char* result;
        const char* message;
        std::size_t rows;  // of the function that faults
    } cases[] = {
        {"none", "OK", "Command line options: \n", 1},
        {"null", "EXCPTFAIL", storage, 0},
        {"stack", "EXCPTFAIL", storage, 0},
        {"x87div", "EXCPTFAIL", arithmetic, 0},
        {"x87pending", "EXCPTFAIL", arithmetic, 0},
        {"ill", "EXCPTFAIL", "--ZMO. Signal: Illegal instruction. in ", 0},
        {"status", "FUNCFAIL", "--ZMO FAIL. status = -6 in zmoiCanny_16s8u_C1R: stand-in error\n",
         1},
        {"note", "FUNCWRN", "--ZMO NOTE. status = 1 in zmoiCanny_16s8u_C1R: stand-in note\n", 1},
        {"fpstate", "BADSTSWRN", "modified control status", 1},
        {"preparenull", "EXCPTFAIL", storage, 0},
        {"preparestatus", "FUNCFAIL",
         "--ZMO FAIL. status = -5 in zmoiFilterSobelVertBorder_8u16s_C1R: stand-in error\n", 0}};
    for (const auto& c : cases) {
        const Outcome outcome = runWith(c.fault, {"-LW"});
        EXPECT_TRUE(has(outcome.out, c.message)) << outcome.out;
        EXPECT_EQ(pscv.result(first), c.result) << outcome.out;
        EXPECT_EQ(pscv.result(second), "OK") << outcome.out;
        EXPECT_EQ(pscv.rows(colType, "16s8u").size(), c.rows) << c.fault;
        EXPECT_EQ(pscv.rows(colType, "32f8u").size(), 1U) << c.fault;
        EXPECT_EQ(outcome.err,
                  "faulty: cw=0x23b mxcsr=0x9fc0 nice=" + std::to_string(ownPriority()) + "\n")
            << c.fault;
        EXPECT_EQ(Pscv::summary(outcome.out, ".Number of tests"), 2) << outcome.out;
    }
    runWith("note", {"-LE"});
    EXPECT_EQ(pscv.result(first), "OK") << "what the level hides does not count";
}

TEST_F(Faulty, AFunctionThatNeverReturnsIsEndedByASignal) {
    pscv.environment["PSCV_FAULT"] = "hang";
    support::Process process(pscv.command(Pscv::smallCanny({"-YHIGH"})));
    ASSERT_TRUE(process.waitForText("faulty: hanging"));
    process.send(SIGSEGV);
    const Outcome outcome = process.finish();
    EXPECT_TRUE(outcome.clean()) << outcome.out;
    EXPECT_EQ(pscv.result(first), "EXCPTFAIL") << outcome.out;
    EXPECT_EQ(pscv.result(second), "OK") << outcome.out;
    EXPECT_EQ(pscv.rows().size(), 1U);
}

// Where the priority cannot be raised, not even by root, there is nothing to see.
TEST_F(Faulty, PriorityIsRaisedForTheMeasuredCalls) {
    support::Command raise;
    raise.program = "/bin/sh";
    raise.arguments = {"-c", "nice -n -39 nice"};
    const bool canRaise = geteuid() == 0 && support::run(raise).out == "-20\n";
    const Outcome outcome = runWith("null", {"-YHIGH"});
    EXPECT_TRUE(has(outcome.err, "nice=" + std::to_string(canRaise ? -20 : ownPriority()) + "\n"))
        << outcome.err;
}

TEST_F(Faulty, NamesTheObjectsThatAreMeasured) {
    const Outcome outcome = runWith("none");
    for (const char* name : {"zmocv", "zmoi", "zmos"}) {
        EXPECT_TRUE(
            has(outcome.out, std::string("Faulty ") + name + ", 7.7.0 (stand-in), some day"))
            << outcome.out;
    }
    EXPECT_FALSE(has(outcome.out, "come from different folders")) << outcome.out;
}

TEST_F(Faulty, InitialisationThatFailsIsReported) {
    const Outcome outcome = runWith("init", {"-TAVX2"});
    EXPECT_TRUE(has(outcome.out,
                    "--ZMO FAIL. status = -21: stand-in error\n--calling zmoInit()\n"
                    "--ZMO FAIL. status = -2: stand-in error\n"))
        << outcome.out;
    EXPECT_TRUE(has(outcome.out, std::string(integrated) + "-- but not zmoGetCpuFeatures, "))
        << outcome.out;
    EXPECT_EQ(pscv.rows().size(), 2U);
}

TEST(Objects, AMissingFunctionFailsItsOwnTest) {
    Pscv pscv;
    pscv.environment["LD_LIBRARY_PATH"] = PSCV_LACKING_DIR;
    const Outcome outcome = pscv.run(Pscv::smallCanny());
    EXPECT_TRUE(has(outcome.out, "come from different folders: ")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, noFunction + second + "\n")) << outcome.out;
    EXPECT_EQ(pscv.result(first), "OK") << outcome.out;
    EXPECT_EQ(pscv.result(second), "FUNCFAIL") << outcome.out;
    EXPECT_EQ(pscv.rows(colType, "16s8u").size(), 1U);
}

// What is open serves an object that has nothing beside it.
TEST(Objects, OneAloneTakesWhatItNeedsFromTheShippedOnes) {
    Pscv pscv;
    std::filesystem::copy(std::filesystem::path(PSCV_PROGRAM).parent_path() / "lib/libzmocv.so",
                          pscv.file("libzmocv.so"));
    pscv.environment["LD_LIBRARY_PATH"] = pscv.file("");
    const Outcome outcome = pscv.run(Pscv::smallCanny());
    EXPECT_TRUE(has(outcome.out, "| Library  : " + pscv.file("libzmocv.so"))) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "come from different folders: ")) << outcome.out;
    EXPECT_EQ(pscv.result(first), "OK") << outcome.out;
}

// An object of the user that does not load stays what it is: nothing takes its place.
TEST(Objects, WhatDoesNotLoadIsNamedAndHasNoSubstitute) {
    const std::filesystem::path shipped = std::filesystem::path(PSCV_PROGRAM).parent_path() / "lib";
    const auto text = [&](const char* name) { return support::readFile(shipped / name); };
    const std::string cv = text("libzmocv.so"), core = text("libzmocore.so");
    std::string foreign = core, otherProcessor = core, needsNoneSuch = cv;
    const std::string needed = "libzmocore.so";
    needsNoneSuch.replace(needsNoneSuch.find(needed), needed.size(), "libzmogone.so");
    foreign[EI_CLASS] = ELFCLASS32;
    otherProcessor[offsetof(Elf64_Ehdr, e_machine)] = static_cast<char>(EM_AARCH64);
    const std::string needy = "it needs libzmocore.so, which is not loaded";
    const struct {
        const char* name;  // of the one that is given in a folder of LD_LIBRARY_PATH
        std::string content;
        std::string message;
        std::string ofCv;  // what that means for libzmocv.so, when that is not the one
    } cases[] = {
        {"libzmocv.so", "hello\n", "file too short", ""},
        {"libzmocv.so", std::string(100, 'x'), "invalid ELF header", ""},
        {"libzmocv.so", foreign, "wrong ELF class: ELFCLASS32", ""},
        {"libzmocv.so", otherProcessor, "(it is an object for another processor)", ""},
        {"libzmocv.so", cv.substr(0, 100'000), "the file is cut short: it has 100000 bytes", ""},
        {"libzmocv.so", needsNoneSuch, "libzmogone.so: cannot open shared object file: ", ""},
        {"libzmocore.so", "hello\n", "file too short", needy},
        {"libzmocore.so", foreign, "wrong ELF class: ELFCLASS32", needy},
        {"libzmocore.so", core.substr(0, 9'000), "the file is cut short: ", needy},
        {"libzmocore.so", support::readFile(PSCV_FAULTY_DIR "/libzmocore.so"), "",
         "undefined symbol: zmoCpuLevel"}};
    for (const auto& c : cases) {
        Pscv pscv;
        const std::string path = pscv.file(c.name);
        support::writeFile(path, c.content);
        pscv.environment["LD_LIBRARY_PATH"] = pscv.file("");
        const Outcome outcome = pscv.run(Pscv::smallCanny());
        const auto complaints = [&](const std::string& part) {
            return support::count(outcome.out, "-- Can't open " + part);
        };
        if (!c.message.empty()) {
            EXPECT_EQ(complaints(c.name + (": " + path) + ": "), 1U) << outcome.out;
            EXPECT_EQ(support::count(outcome.out, c.message), 1U) << outcome.out;
        }
        const std::string other = "libzmocv.so: " + (shipped / "libzmocv.so: ").string();
        EXPECT_EQ(complaints(other + c.ofCv), c.ofCv.empty() ? 0U : 1U) << outcome.out;
        EXPECT_EQ(complaints("libzmocv.so: "), 1U) << outcome.out;
        EXPECT_TRUE(has(outcome.out, "| Library  : libzmocv.so: not loaded")) << outcome.out;
        EXPECT_EQ(has(outcome.out, integrated), c.ofCv != needy) << outcome.out;
        EXPECT_EQ(pscv.result(first), "FUNCFAIL") << outcome.out;
        EXPECT_TRUE(has(outcome.out, noFunction + first + "\n")) << outcome.out;
        EXPECT_TRUE(pscv.rows().empty());
    }
}

// The path is alone in its entry of the dynamic section: an empty part beside it would be the
// working folder.
TEST(Objects, AreLookedForInTheShippedFolderAndNowhereElse) {
    const std::pair<const char*, std::string> cases[] = {{"pscv", "$ORIGIN/lib"},
                                                         {"installed/pscv", "$ORIGIN/../lib"},
                                                         {"lib/libzmocv.so", "$ORIGIN"}};
    const std::filesystem::path folder = std::filesystem::path(PSCV_PROGRAM).parent_path();
    for (const auto& [file, path] : cases)
        EXPECT_TRUE(has(support::readFile(folder / file), '\0' + path + '\0')) << file;
}

class NoObjects : public testing::Test {
  protected:
    NoObjects() {
        pscv.program = pscv.file("pscv");
        std::filesystem::copy_file(PSCV_PROGRAM, pscv.program);
    }
    static std::size_t complaints(const std::string& out) {
        return support::count(out, "-- Can't open libzmo");
    }
    Pscv pscv;
};

TEST_F(NoObjects, AreNamedOnceInARun) {
    const Outcome outcome = pscv.run(Pscv::smallCanny());
    EXPECT_EQ(complaints(outcome.out), 5U) << outcome.out;
    for (const char* name : {"zmocore", "zmovm", "zmos", "zmoi", "zmocv"}) {
        EXPECT_EQ(support::count(outcome.out, std::string("-- Can't open lib") + name + ".so"), 1U)
            << outcome.out;
    }
    EXPECT_TRUE(inOrder(outcome.out, "-utests: ", "-- Can't open lib")) << outcome.out;
    for (const char* function : {first, second}) {
        EXPECT_EQ(pscv.result(function), "FUNCFAIL") << outcome.out;
        EXPECT_EQ(support::count(outcome.out, noFunction + function + "\n"), 1U) << outcome.out;
    }
    EXPECT_TRUE(pscv.rows().empty());
    EXPECT_EQ(Pscv::summary(outcome.out, ".Number of tests"), 2) << outcome.out;
}

TEST_F(NoObjects, HelpVersionAndListWork) {
    for (const char* key : {"-h", "-v", "-hh", "-?"}) {
        const Outcome outcome = pscv.run({key});
        EXPECT_EQ(complaints(outcome.out), 0U) << outcome.out;
        EXPECT_TRUE(has(outcome.out, "Performance System 2.0")) << outcome.out;
    }
    const Outcome outcome = pscv.run({"-e", "-m=p_ccanny"});
    EXPECT_EQ(complaints(outcome.out), 5U) << outcome.out;
    EXPECT_TRUE(has(outcome.out, first)) << outcome.out;
    EXPECT_TRUE(has(outcome.out, second)) << outcome.out;
}

}  // namespace
