#include "ppbind.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "ppsymbols.h"
#include "ps.h"
#include "pscputick_gcc.h"
#include "psctrl87.h"
#include "pslib.h"
#include "zmocore.h"
#include "zmocv.h"
#include "zmoi.h"
#include "zmos.h"

using enum MessageLevel;

ppEntryBase* ppEntryBase::s_first = nullptr;

namespace {

struct Object {
    const char* name;
    void* handle = nullptr;
    psString path;
};

// In the order in which a name is looked up.
std::array<Object, 5>& objects() {
    static std::array<Object, 5> list{{{"libzmocv.so", nullptr, {}},
                                       {"libzmoi.so", nullptr, {}},
                                       {"libzmos.so", nullptr, {}},
                                       {"libzmovm.so", nullptr, {}},
                                       {"libzmocore.so", nullptr, {}}}};
    return list;
}

psString executableDir() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0) return "";
    return psString(std::string_view(path, static_cast<std::size_t>(length))).getFileDir();
}

psString realPath(void* handle) {
    link_map* map = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0 || !map) return "";
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(map->l_name, nullptr),
                                                           &std::free);
    return path ? path.get() : map->l_name;
}

// The loader's rules first (LD_LIBRARY_PATH, then the RUNPATH of pscv, which
// names the shipped folder); a sanitizer's dlopen ignores RUNPATH, so the two
// places where the shipped objects can lie follow.
void* openObject(const char* name, psString& error) {
    if (void* handle = dlopen(name, RTLD_NOW)) return handle;
    error = dlerror();
    const psString dir = executableDir();
    for (const char* place : {"/lib/", "/../lib/"}) {
        const psString path = dir + place + name;
        if (access(path.c_str(), F_OK) != 0) continue;
        if (void* handle = dlopen(path.c_str(), RTLD_NOW)) return handle;
        error = dlerror();
    }
    return nullptr;
}

void warnOfDifferentFolders() {
    psString folder;
    for (const Object& object : objects()) {
        if (!object.handle) continue;
        const psString own = object.path.getFileDir();
        if (folder.empty()) folder = own;
        if (own == folder) continue;
        g_ostrm << ERR
                << "-- WARNING: the zmo shared objects come from different folders: " << folder
                << " and " << own << "\n"
                << END;
        return;
    }
}

void openObjects() {
    static bool opened = false;
    if (opened) return;
    opened = true;
    for (Object& object : objects()) {
        psString error;
        object.handle = openObject(object.name, error);
        if (!object.handle) {
            g_ostrm << ERR << "-- Can't open " << object.name << ": " << error << "\n" << END;
            continue;
        }
        object.path = realPath(object.handle);
        if (!g_pLibPathList) g_pLibPathList = new psStringList;
        g_pLibPathList->push_back(object.path);
    }
    warnOfDifferentFolders();
}

void* findSymbol(const char* name) {
    for (const Object& object : objects()) {
        if (!object.handle) continue;
        if (void* address = dlsym(object.handle, name)) return address;
    }
    return nullptr;
}

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
        void* address = findSymbol(entry->m_name);
        entry->m_bound = address != nullptr;
        entry->set(address);
    }
}

bool ppEntryBase::isBound(const psString& name) {
    for (const ppEntryBase* entry = s_first; entry; entry = entry->m_next) {
        if (name == entry->m_name) return entry->m_bound;
    }
    return false;
}

void ppSetZmoEnvironment() {
    if (!psSession::libraryWanted()) return;
    openObjects();
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
    psStringList names;
    for (const Object& object : objects()) ppExportedFunctions(object.handle, "zmo", names);
    for (const psString& name : names) psRegLibFunc(name);
}
