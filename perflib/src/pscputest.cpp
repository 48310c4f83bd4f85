#include "pscputest.h"

#include <unistd.h>

#include <string_view>

#include "pslib.h"

using enum MessageLevel;

__psMorvaCpuTest::__psMorvaCpuTest()
    : psTest(static_cast<FuncOld>(nullptr), "__psMorvaCpu", "perflib/src/ps",
             "Morva CPU information") {}

psString __psMorvaCpuTest::featureLine() {
    const std::uint64_t features = psProcessorFeatures();
    const auto rows = psCpuFeatures::rows();
    psString line;
    for (std::size_t i = 0; i < rows.size() && !rows[i].isCodePath; ++i) {
        if ((rows[i].mask & features) != rows[i].mask) continue;
        line += line.empty() ? psString(rows[i].label) : psString(" ") + rows[i].label;
    }
    return line.empty() ? psString("none known") : line;
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
