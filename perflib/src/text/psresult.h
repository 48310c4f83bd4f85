// Result of a measurement, of a parameter set and of a test.
#pragma once

#include <array>
#include <cstddef>

// The larger value is the worse one, and the worst wins.
enum psResult : int {
    PS_UNDEFINED = 0,
    PS_OK = 1,
    PS_ACCURWRN = 2,
    PS_BADSTSWRN = 3,
    PS_DATAWRN = 4,
    PS_FUNCWRN = 5,
    PS_WRN = 6,
    PS_ACCURFAIL = 7,
    PS_DATAFAIL = 8,
    PS_FUNCFAIL = 9,
    PS_EXCPTFAIL = 10,
    PS_FAIL = 11,
};

constexpr bool isWarning(psResult result) {
    return result >= PS_ACCURWRN && result <= PS_WRN;
}

constexpr bool isFailure(psResult result) {
    return result >= PS_ACCURFAIL && result <= PS_FAIL;
}

struct psResultTexts {
    const char* name;  // short word, as the summary prints it
    const char* word;  // how the timing engine writes it
};

constexpr psResultTexts psTextsOf(psResult result) {
    constexpr std::array<psResultTexts, 12> table{{
        {"UNDEFINED", "was not run"},
        {"OK", "successfully"},
        {"ACCURWRN", "wrong measure accuracy"},
        {"BADSTSWRN", "modified control status"},
        {"DATAWRN", "test data note"},
        {"FUNCWRN", "lib function note"},
        {"WRN", "note"},
        {"ACCURFAIL", "accuracy fail"},
        {"DATAFAIL", "test data fail"},
        {"FUNCFAIL", "lib function fail"},
        {"EXCPTFAIL", "exception"},
        {"FAIL", "fail"},
    }};
    return result < PS_UNDEFINED || result > PS_FAIL ? psResultTexts{"UNKNOWN", "unknown result"}
                                                     : table[static_cast<std::size_t>(result)];
}

constexpr const char* psResultName(psResult result) {
    return psTextsOf(result).name;
}

constexpr const char* psResultWord(psResult result) {
    return psTextsOf(result).word;
}

// What became of the parameter sets of a test.
struct psSetCounts {
    int tried = 0;
    int unprepared = 0;
    int measured = 0;

    constexpr psSetCounts& operator+=(const psSetCounts& other) {
        tried += other.tried;
        unprepared += other.unprepared;
        measured += other.measured;
        return *this;
    }
};

// What is said about a warning or a failure; nothing about 0 and 1.
constexpr const char* psResultText(psResult result) {
    return result == PS_UNDEFINED || result == PS_OK ? "" : psTextsOf(result).word;
}
