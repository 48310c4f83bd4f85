#include "ppsymbols.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>

namespace {

struct DynamicTables {
    const ElfW(Sym) * symbols = nullptr;
    const char* names = nullptr;
    const std::uint32_t* hash = nullptr;
    const std::uint32_t* gnuHash = nullptr;
};

DynamicTables tablesOf(const link_map& map) {
    DynamicTables tables;
    for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const auto* address = reinterpret_cast<const void*>(entry->d_un.d_ptr);
        switch (entry->d_tag) {
            case DT_SYMTAB:
                tables.symbols = static_cast<const ElfW(Sym)*>(address);
                break;
            case DT_STRTAB:
                tables.names = static_cast<const char*>(address);
                break;
            case DT_HASH:
                tables.hash = static_cast<const std::uint32_t*>(address);
                break;
            case DT_GNU_HASH:
                tables.gnuHash = static_cast<const std::uint32_t*>(address);
                break;
            default:
                break;
        }
    }
    return tables;
}

// The symbol table carries no length of its own; the hash tables give it: the
// older one as its number of chains, the GNU one as the end of its last chain.
std::uint32_t symbolCount(const DynamicTables& tables) {
    if (tables.hash) return tables.hash[1];
    if (!tables.gnuHash) return 0;
    const std::uint32_t buckets = tables.gnuHash[0];
    const std::uint32_t firstHashed = tables.gnuHash[1];
    const std::uint32_t bloomWords = tables.gnuHash[2];
    const auto* bloom = reinterpret_cast<const ElfW(Addr)*>(tables.gnuHash + 4);
    const auto* bucket = reinterpret_cast<const std::uint32_t*>(bloom + bloomWords);
    const std::uint32_t* chain = bucket + buckets;
    std::uint32_t last = 0;
    for (std::uint32_t i = 0; i < buckets; ++i) last = std::max(last, bucket[i]);
    if (last < firstHashed) return firstHashed;
    while ((chain[last - firstHashed] & 1) == 0) ++last;
    return last + 1;
}

}  // namespace

void ppExportedFunctions(void* handle, const psString& prefix, psStringList& names) {
    link_map* map = nullptr;
    if (!handle || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0 || !map) return;
    const DynamicTables tables = tablesOf(*map);
    if (!tables.symbols || !tables.names) return;
    const std::uint32_t count = symbolCount(tables);
    for (std::uint32_t i = 0; i < count; ++i) {
        const ElfW(Sym)& symbol = tables.symbols[i];
        if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_TYPE(symbol.st_info) != STT_FUNC) continue;
        const psString name = tables.names + symbol.st_name;
        if (name.startsWith(prefix)) names.push_back(name);
    }
}
