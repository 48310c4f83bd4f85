#include "ppobjects.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

#include "ppelf.h"
#include "ppsymbols.h"
#include "psbase.h"
#include "psstream.h"

using enum MessageLevel;

namespace {

struct Object {
    const char* name;
    enum class State { Closed, Opening, Done } state = State::Closed;
    void* handle = nullptr;
    psString path = {};   // the real one of an open object, else the file that does not load
    psString error = {};  // why it is not open
};

// In the order in which a name is looked up.
std::array<Object, 5>& objects() {
    static std::array<Object, 5> list{
        {{"libzmocv.so"}, {"libzmoi.so"}, {"libzmos.so"}, {"libzmovm.so"}, {"libzmocore.so"}}};
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

// The folders in which the loader looks for what the object of the handle names,
// in its order; its cache is not among them. The loader expands LD_LIBRARY_PATH
// itself and keeps what that was at the start.
psStringList foldersOf(void* handle) {
    psStringList folders;
    Dl_serinfo size{};
    if (!handle || dlinfo(handle, RTLD_DI_SERINFOSIZE, &size) != 0) return folders;
    std::vector<std::max_align_t> memory(size.dls_size / sizeof(std::max_align_t) + 1);
    auto* info = reinterpret_cast<Dl_serinfo*>(memory.data());
    if (dlinfo(handle, RTLD_DI_SERINFOSIZE, info) != 0 ||
        dlinfo(handle, RTLD_DI_SERINFO, info) != 0)
        return folders;
    const Dl_serpath* path = info->dls_serpath;
    for (unsigned i = 0; i < info->dls_cnt; ++i) folders.push_back(path[i].dls_name);
    return folders;
}

const psStringList& ownFolders() {
    static const psStringList folders = foldersOf(dlopen(nullptr, RTLD_NOW));
    return folders;
}

// The C library has no RUNPATH: what is left is where the loader looks for
// everybody.
const psStringList& commonFolders() {
    static const psStringList folders = foldersOf(dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD));
    return folders;
}

// The first of the folders that has an entry of that name, a link to nowhere
// included.
psString findIn(const psStringList& folders, const psString& name) {
    for (const psString& folder : folders) {
        psString path = folder + "/" + name;
        struct stat status {};
        if (lstat(path.c_str(), &status) == 0) return path;
    }
    return {};
}

bool open(Object& object);

Object* objectNamed(const psString& name) {
    auto* const found =
        std::ranges::find_if(objects(), [&](const Object& object) { return name == object.name; });
    return found == objects().end() ? nullptr : found;
}

psString obstacle(const psString& path, const ppElfFile& file, psStringList& seen);

// What keeps the loader from what a file needs. An object of the library that it
// would find where pscv finds it is opened first, so that its own message says why;
// so is one that it would not find at all, since what is open serves: a user's
// object may lie alone in its folder.
psString obstacleInNeeded(const psString& name, const psString& folder, psStringList& seen) {
    psStringList folders = commonFolders();
    folders.push_back(folder);
    const psString path = findIn(folders, name);
    Object* object = objectNamed(name);
    if (object && (path.empty() || path == findIn(ownFolders(), name)))
        return open(*object) || object->state == Object::State::Opening
                   ? psString()
                   : "it needs " + name + ", which is not loaded";
    if (path.empty() || seen.contains(path)) return {};
    const psString why = obstacle(path, ppElfFile::read(path), seen);
    return why.empty() ? why : "it needs " + path + ": " + why;
}

// What would end the process inside the loader, or make it take another file.
psString obstacle(const psString& path, const ppElfFile& file, psStringList& seen) {
    seen.push_back(path);
    if (!file.cutShort.empty()) return file.cutShort;
    for (const psString& name : file.needed) {
        psString why = obstacleInNeeded(name, path.getFileDir(), seen);
        if (!why.empty()) return why;
    }
    return {};
}

// The plain name leaves the choice to the loader, which may prefer a variant for
// the processor in a folder below.
bool openAs(Object& object, const psString& name) {
    object.handle = dlopen(name.c_str(), RTLD_NOW);
    if (!object.handle) object.error = dlerror();
    return object.handle != nullptr;
}

// A message that begins with the plain name says that there is no such file: all
// others begin with the path of one.
bool isNowhere(const Object& object) {
    return object.error.startsWith(psString(object.name) + ":");
}

// The message names the file that does not load; of a needed one that is missing the
// loader does not say who needs it.
void nameFile(Object& object, const psString& why) {
    if (!object.error.startsWith(object.path)) object.error = object.path + ": " + object.error;
    if (!object.error.contains(why)) object.error += " (" + why + ")";
}

void load(Object& object, const psString& path) {
    object.path = path;
    const ppElfFile file = ppElfFile::read(path);
    psStringList seen;
    object.error = obstacle(path, file, seen);
    if (object.error.empty()) {
        // A sanitizer's dlopen does not know of the RUNPATH.
        const bool mayChoose = file.passedOver.empty();
        if (mayChoose && openAs(object, object.name)) return;
        if ((!mayChoose || isNowhere(object)) && openAs(object, path)) return;
    }
    nameFile(object, file.passedOver);
}

// Where the shipped objects can lie beside a program whose RUNPATH is for another
// place: one of the build tree that was copied, or an installed one.
void loadShipped(Object& object) {
    const psString dir = executableDir();
    psStringList places;
    for (const char* place : {"/lib", "/../lib"}) places.push_back(dir + place);
    const psString path = findIn(places, object.name);
    if (!path.empty()) load(object, path);
}

void find(Object& object) {
    object.handle = dlopen(object.name, RTLD_NOW | RTLD_NOLOAD);
    if (object.handle) return;
    const psString path = findIn(ownFolders(), object.name);
    if (!path.empty()) return load(object, path);
    // What is left is the loader's cache.
    if (!openAs(object, object.name) && isNowhere(object)) loadShipped(object);
}

bool open(Object& object) {
    if (object.state != Object::State::Closed) return object.handle != nullptr;
    object.state = Object::State::Opening;
    find(object);
    object.state = Object::State::Done;
    if (object.handle) object.path = realPath(object.handle);
    return object.handle != nullptr;
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

psString headerText(const Object& object) {
    if (object.handle) return object.path;
    const psString text = psString(object.name) + ": not loaded";
    return object.path.empty() ? text : text + " (" + object.path + ")";
}

void report(const Object& object) {
    if (!object.handle)
        g_ostrm << ERR << "-- Can't open " << object.name << ": " << object.error << "\n" << END;
    if (!g_pLibPathList) g_pLibPathList = new psStringList;
    g_pLibPathList->push_back(headerText(object));
}

}  // namespace

void ppOpenObjects() {
    static bool opened = false;
    if (opened) return;
    opened = true;
    for (Object& object : objects()) open(object);
    for (const Object& object : objects()) report(object);
    warnOfDifferentFolders();
}

void* ppFindSymbol(const char* name) {
    for (const Object& object : objects()) {
        if (!object.handle) continue;
        if (void* address = dlsym(object.handle, name)) return address;
    }
    return nullptr;
}

psStringList ppObjectFunctions(const psString& prefix) {
    psStringList names;
    for (const Object& object : objects()) ppExportedFunctions(object.handle, prefix, names);
    return names;
}
