#include "pscputest.h"

#include <unistd.h>

#include "pslib.h"

using enum MessageLevel;

__psMorvaCpuTest::__psMorvaCpuTest()
    : psTest(static_cast<FuncOld>(nullptr), "__psMorvaCpu", "perflib/src/ps",
             "Morva CPU information") {}

psString __psMorvaCpuTest::featureLine() {
    Zmo64u features = 0;
    if (zmo_GetCpuFeatures(&features, 0, nullptr) < 0) return "unknown without libzmocore";
    psString line;
    for (const psCpuFeatures::Row& row : psCpuFeatures::rows()) {
        if (row.isCodePath) break;  // the instruction sets come first
        if ((row.mask & features) != row.mask) continue;
        line += line.empty() ? psString(row.label) : psString(" ") + row.label;
    }
    return line.empty() ? psString("none") : line;
}

psString __psMorvaCpuTest::cacheLine() {
    const struct {
        int name;
        const char* label;
    } caches[] = {
        {_SC_LEVEL1_ICACHE_SIZE, "L1 code"},
        {_SC_LEVEL1_DCACHE_SIZE, "L1 data"},
        {_SC_LEVEL2_CACHE_SIZE, "L2"},
        {_SC_LEVEL3_CACHE_SIZE, "L3"},
    };
    psString line;
    for (const auto& cache : caches) {
        const long size = sysconf(cache.name);
        if (size <= 0) continue;
        line +=
            (line.empty() ? "" : ", ") + psString(cache.label) + " " + psText(size / 1024) + " K";
    }
    return line.empty() ? psString("unknown") : line;
}

psResult __psMorvaCpuTest::run() {
    const psString name = psProcessorName();
    g_ostrm << ERR << "CPU: " << (name.empty() ? psString("Unknown CPU") : name)
            << "; caches: " << cacheLine() << "\nCPU features: " << featureLine() << "\n"
            << END_FLUSH;
    return PS_OK;
}
