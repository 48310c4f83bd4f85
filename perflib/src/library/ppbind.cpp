#include "ppbind.h"

#include "ppobjects.h"
#include "ps.h"
#include "pscputick_gcc.h"
#include "psctrl87.h"
#include "pslib.h"
#include "zmocore.h"
#include "zmocv.h"
#include "zmoi.h"
#include "zmos.h"

ppEntryBase* ppEntryBase::s_first = nullptr;

namespace {

ppEntry<decltype(&zmoInit)> entryInit("zmoInit");
ppEntry<decltype(&zmoSetCpuFeatures)> entrySetCpuFeatures("zmoSetCpuFeatures");
ppEntry<decltype(&zmoGetCpuFeatures)> entryGetCpuFeatures("zmoGetCpuFeatures");
ppEntry<decltype(&zmoGetEnabledCpuFeatures)> entryGetEnabled("zmoGetEnabledCpuFeatures");
ppEntry<decltype(&zmoGetMaxCacheSizeB)> entryGetMaxCacheSizeB("zmoGetMaxCacheSizeB");
ppEntry<decltype(&zmoGetStatusString)> entryGetStatusString("zmoGetStatusString");
ppEntry<decltype(&zmoSetNumThreads)> entrySetNumThreads("zmoSetNumThreads");
ppEntry<decltype(&zmoGetNumThreads)> entryGetNumThreads("zmoGetNumThreads");
ppEntry<decltype(&zmoFpuSsx4TS)> entryFpuSsx4TS("zmoFpuSsx4TS");
ppEntry<decltype(&zmoStartTsc)> entryStartTsc("zmoStartTsc");
ppEntry<decltype(&zmoStopTsc)> entryStopTsc("zmoStopTsc");
ppEntry<decltype(&zmoStartTscp)> entryStartTscp("zmoStartTscp");
ppEntry<decltype(&zmoStopTscp)> entryStopTscp("zmoStopTscp");
ppEntry<decltype(&zmosGetVersion)> entryZmosVersion("zmosGetVersion");
ppEntry<decltype(&zmoiGetVersion)> entryZmoiVersion("zmoiGetVersion");
ppEntry<decltype(&zmocvGetVersion)> entryZmocvVersion("zmocvGetVersion");

// A pointer without a library function keeps the framework's fallback.
template <class Pointer, class Entry>
void install(Pointer& pointer, const Entry& entry) {
    if (entry.bound()) pointer = entry.call;
}

const ZmoLibraryVersion* zmosVersion() {
    return entryZmosVersion.call();
}
const ZmoLibraryVersion* zmoiVersion() {
    return entryZmoiVersion.call();
}
const ZmoLibraryVersion* zmocvVersion() {
    return entryZmocvVersion.call();
}

}  // namespace

ppEntryBase::ppEntryBase(const char* name) : m_name(name), m_next(s_first) {
    s_first = this;
}

void ppEntryBase::bindAll() {
    for (ppEntryBase* entry = s_first; entry; entry = entry->m_next) {
        void* address = ppFindSymbol(entry->m_name);
        entry->m_address = address;
        entry->set(address);
    }
}

const void* ppEntryBase::addressOf(const psString& name) {
    for (const ppEntryBase* entry = s_first; entry; entry = entry->m_next) {
        if (name == entry->m_name) return entry->m_address;
    }
    return nullptr;
}

void ppSetZmoEnvironment() {
    if (!psSession::libraryWanted()) return;
    ppOpenObjects();
    ppEntryBase::bindAll();
    install(zmo_Init, entryInit);
    install(zmo_SetCpuFeatures, entrySetCpuFeatures);
    install(zmo_GetCpuFeatures, entryGetCpuFeatures);
    install(zmo_GetEnabledCpuFeatures, entryGetEnabled);
    install(zmo_GetMaxCacheSizeB, entryGetMaxCacheSizeB);
    install(zmo_GetStatusString, entryGetStatusString);
    install(zmo_SetNumThreads, entrySetNumThreads);
    install(zmo_GetNumThreads, entryGetNumThreads);
    install(zmo_FpuSsx4TS, entryFpuSsx4TS);
    psSelectCpuClocks(entryStartTsc.bound() ? entryStartTsc.call : nullptr,
                      entryStopTsc.bound() ? entryStopTsc.call : nullptr,
                      entryStartTscp.bound() ? entryStartTscp.call : nullptr,
                      entryStopTscp.bound() ? entryStopTscp.call : nullptr);
}

bool ppRegLibrary() {
    psRegZmoEnvironment(ppSetZmoEnvironment);
    psRegZmoVersion(zmosVersion);
    psRegZmoVersion(zmoiVersion);
    return psRegZmoVersion(zmocvVersion);
}

void ppRegLibFunctions() {
    for (const psString& name : ppObjectFunctions("zmo")) psRegLibFunc(name);
}
