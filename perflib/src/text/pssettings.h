// What the keys of the command line ask for.
#pragma once

#include <vector>

#include "psstring.h"

// A file that is written beside the console.
struct psOutputFile {
    enum Content { listing, table, names, summary };

    Content content = listing;
    psString path;
    bool append = false;
};

// A value that was given to a parameter by its name.
struct psGivenValue {
    psString name;
    psString value;
};

// A pattern with its sign.
struct psGivenPattern {
    // The name of a test that it is held against: tested function, test class, source file.
    enum Target { function = 0, testClass = 1, source = 2 };

    Target target = function;
    psString text;
};

// Every field has the value that holds when no key sets it.
struct psSettings {
    // Bits of askMode: what the console is asked for. With askAll the tests ask for
    // their own parameters, too.
    enum Ask { askTiming = 1, askParams = 2, askMisalign = 4, askAll = 8 };
    // How conditions for functions, classes and sources are combined.
    enum Logic { logicAnd = 0, logicOr = 1 };
    static constexpr int runMode = 100;  // enumMode of a run that measures

    // What the console is asked for once -B is taken into account.
    int asked() const { return batMode ? 0 : askMode ? askMode : askTiming | askParams; }

    // Known before any key acts.
    psString exePath;   // argv[0]
    psString inDir;     // -p
    psString outDir;    // -l
    psString defName;   // -n: title of all files
    int exitLevel = 0;  // 1 with -e, 2 with -h or -?, 3 with -v

    // Questions and values.
    bool batMode = false;            // -B
    int askMode = 0;                 // -A
    std::vector<psGivenValue> data;  // -d
    psString iniName;                // -i, -I; empty: no ini-file
    bool iniWrite = false;           // -I
    bool pressing = false;           // -P

    // Output.
    std::vector<psOutputFile> files;  // -o, -O, -r, -R, -q, -u, -U
    int levelMode = 1;                // -L: bits of OutputLevel
    int nameMode = 0;                 // -q: 1 name lines into the tables, 2 into files of their own
    bool nameExit = false;            // -Q: no more of a test than its name line
    psString signalName;              // -g; empty: no signal file

    // Selection of tests.
    std::vector<psGivenPattern> patterns;  // -f, -t, -m
    Logic logic = logicAnd;                // -k
    psString startFunc;                    // -F; empty: start at the first test
    int hot = 0;                           // 0 none, 1 -H, 2 -HONLY
    bool cache = false;                    // -C
    bool noSort = false;                   // -s-

    // Measurement.
    int numExtLoops = 8;                 // -J
    int numMilliseconds = 100;           // -c
    int minNumLoops = 8;                 // -j
    int priority = 0;                    // -Y: 1 high, 2 normal, 3 low; 0 as it is
    bool unmask = false;                 // -W
    bool setAndUse = false;              // -S
    unsigned long long cpuFeatures = 0;  // -T; 0: none
    psString featureText;                // what -T did not understand

    bool exactFrequency = false;  // --frequency=exact
    int core = -1;                // --cpu; -1: any
    double loopSeconds = 0;       // --loop; 0: the calls are measured
    bool strict = false;          // --strict

    // Instead of a run.
    int enumMode = runMode;  // 0, 1 and -1 with -e, -e+ and -e-
    char helpArg = '\0';     // -h, -?: psShortHelp, 'h' or '?' for all of it, or a key
    bool hideHidden = true;  // false with -?
    bool version = false;    // -v
    bool listKeys = false;   // --help
    psString explainKey;     // --help=: the name of a key
    bool banner = false;     // --version
};

// Replaces what g_settings shows.
void psPublish(const psSettings& settings);

class psPublished {
  private:
    friend void psPublish(const psSettings& settings);
    static psSettings s_settings;

  public:
    static constexpr const psSettings& settings = s_settings;
};

// The settings of this process: the default ones until a session has read its keys.
inline constexpr const psSettings& g_settings = psPublished::settings;
