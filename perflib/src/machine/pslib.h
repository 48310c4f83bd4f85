// The measured library's core functions as process-wide pointers, the choice of
// its code path, and the names of processor features.
#pragma once

#include <array>
#include <span>

#include "pslist.h"
#include "psstring.h"
#include "zmocore.h"

// Never null: each is preset to a fallback that does nothing and answers -2
// (the features 0, the status text "OK", "Note" or "Fail").
extern decltype(&zmoGetCpuFeatures) zmo_GetCpuFeatures;
extern decltype(&zmoGetEnabledCpuFeatures) zmo_GetEnabledCpuFeatures;
extern decltype(&zmoGetMaxCacheSizeB) zmo_GetMaxCacheSizeB;
extern decltype(&zmoGetStatusString) zmo_GetStatusString;
extern decltype(&zmoInit) zmo_Init;
extern decltype(&zmoSetCpuFeatures) zmo_SetCpuFeatures;
extern decltype(&zmoSetNumThreads) zmo_SetNumThreads;
extern decltype(&zmoGetNumThreads) zmo_GetNumThreads;

// Registered by the test modules before main.
using psZmoEnvironment = void (*)();
using psZmoVersion = const ZmoLibraryVersion* (*)();
extern psZmoEnvironment zmoEnvironment;          // null: no module registered one
extern psList<psZmoVersion>* zmoVersionList;     // created by the first registration
bool psRegZmoEnvironment(psZmoEnvironment set);  // the last call wins
bool psRegZmoVersion(psZmoVersion version);      // duplicates are normal

// Binds the pointers through the registered function, then gives those that are
// null their fallback.
void setZmoEnvironment();

// Initialises the library, with `haveMask` on the code path that `mask` selects,
// and binds again. Without a registered environment it only sets the fallbacks.
void psZmoCpuSetup(bool haveMask, Zmo64u mask);

// CPUID of one leaf (subleaf 0) through the library, or directly without it:
// EAX, EBX, ECX, EDX; zeros for a leaf that the processor lacks.
std::array<Zmo32u, 4> psCpuid(Zmo32u leaf);
Zmo64u psProcessorFeatures();

psString psProcessorName();  // the processor's own brand text, or empty
int psMaxCacheSize();        // bytes of the largest cache, 0 when unknown

class psCpuFeatures {
  public:
    struct Row {
        const char* label;
        Zmo64u mask;
        const char* description;
        bool isCodePath;
    };

    static std::span<const Row> rows();

    // The features of a list of labels, separated by ',' or '|'; labels are
    // matched exactly, P_ before that of a code path changes nothing, and unknown
    // ones add nothing.
    static Zmo64u cpuFeatures(const psString& list);
    // A line that names the unknown ones, or says that there is none at all;
    // empty when each label is known.
    static psString unknownText(const psString& list);
    // Lines on what the processor lacks of the wanted features, what it has
    // and which code paths it runs.
    static psString processorText(Zmo64u wanted);
    // The label, the description and the number of a code path; of another row, or
    // the number alone, when no code path has exactly that mask.
    static psString codePathText(Zmo64u mask);
    // "Undefined" and "Unknown processor" when no row has exactly that mask.
    static psString cpuLabel(Zmo64u mask);
    static psString cpuName(Zmo64u mask);
    // One line a code path of the library.
    static psString optimizedList();
    // Stores the words and their number; with null for words it only counts.
    static void split(psString* words, const psString& text, char separator, int& count);
};
