#include "psdata.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "psstream.h"

#if defined(__SANITIZE_ADDRESS__)
#define PS_LEAK_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PS_LEAK_CHECKED 1
#endif
#endif
#ifdef PS_LEAK_CHECKED
#include <sanitizer/lsan_interface.h>
#endif

using enum MessageLevel;

int PS_ALIGN_MAX = PS_ALIGN_DEF;

namespace {

int ALIGN_BYTES = PS_ALIGN_DEF;
int ALIGN_MASK = -PS_ALIGN_DEF;
int VectorShift = 512;
int VectorAlign = 0;
bool AlignSrc = true;
bool AlignByByte = true;

// The raw address of a block is kept this far before its base.
constexpr std::uintptr_t rawDistance = 128;
// Room for that distance and for what the masks move a pointer.
constexpr unsigned slack = 256;

constexpr std::uintptr_t subObjectTag = 1;
constexpr std::uintptr_t bufferTag = 2;
constexpr std::uintptr_t tagMask = subObjectTag | bufferTag;

// Created by the first allocation. It is never destroyed at exit: data objects
// of static storage are destroyed later than anything here.
AddressList* registry = nullptr;

std::uintptr_t bits(const void* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}

void* pointerOf(std::uintptr_t address) {
    return reinterpret_cast<void*>(address);  // NOLINT(performance-no-int-to-ptr)
}

// A signed mask widens with its sign.
std::uintptr_t maskOf(int mask) {
    return static_cast<std::uintptr_t>(static_cast<std::intptr_t>(mask));
}

// Wraps as int arithmetic on the machine would.
int rawSize(int size, int offset, int misalignment) {
    return static_cast<int>(static_cast<unsigned>(size) + static_cast<unsigned>(offset) +
                            static_cast<unsigned>(misalignment) +
                            2U * static_cast<unsigned>(PS_ALIGN_MAX) + slack);
}

void* rawBlock(const Address& block) {
    void* raw = nullptr;
    std::memcpy(&raw, pointerOf(bits(block.base) - rawDistance), sizeof raw);
    return raw;
}

void traceBlock(const char* call, void* p) {
    if (g_ostrm.isShown(MALLOC)) g_ostrm << MALLOC << call << registry->memInfo(p) << "\n" << END;
}

void* report(const Address* block, int* size, void** owner) {
    if (!block) return nullptr;
    if (size) *size = block->size;
    if (owner) *owner = block->owner;
    return block->pointer;
}

template <class Visit>
void visitOwners(Visit visit) {
    if (!registry) return;
    for (const Address* block = registry->first(); block; block = registry->next()) {
        if (block->owner && (bits(block->owner) & tagMask) == 0)
            visit(*static_cast<psObject*>(block->owner));
    }
}

}  // namespace

void psSetAlignMax(int n) {
    PS_ALIGN_MAX = ALIGN_BYTES = n;
    ALIGN_MASK = -n;
}

int psGetVectorShift() {
    return VectorShift;
}

void psSetVectorShift(int bytes) {
    VectorShift = bytes;
}

int psGetVectorAlign() {
    return VectorAlign;
}

int psSetVectorAlign(int misalignment) {
    VectorAlign = misalignment % PS_ALIGN_MAX;
    return misalignment / PS_ALIGN_MAX;
}

bool psGetAlignSrc() {
    return AlignSrc;
}

void psSetAlignSrc(bool firstOnly) {
    AlignSrc = firstOnly;
}

bool psGetAlignByByte() {
    return AlignByByte;
}

void psSetAlignByByte(bool bytes) {
    AlignByByte = bytes;
}

void* psSubObjectOwner(void* owner) {
    return pointerOf(bits(owner) | subObjectTag);
}

void* psBufferOwner(void* owner) {
    return pointerOf(bits(owner) | bufferTag);
}

bool psIsSubObject(const void* owner) {
    return (bits(owner) & subObjectTag) != 0;
}

bool psIsBuffer(const void* owner) {
    return (bits(owner) & bufferTag) != 0;
}

void* psUntaggedOwner(void* owner) {
    return pointerOf(bits(owner) & ~tagMask);
}

void* psMalloc(int size, int shift, int offset, void* owner) {
    const int misalignment = shift % PS_ALIGN_MAX;
    const int bytes = rawSize(size, offset, misalignment);
    void* raw = bytes < 0 ? nullptr : std::malloc(static_cast<std::size_t>(bytes));
    if (!raw) {
        g_ostrm << ERR << "-- Memory fault: can't allocate " << size << " bytes\n" << END;
        return nullptr;
    }
    const std::uintptr_t base =
        (bits(raw) + static_cast<std::uintptr_t>(ALIGN_BYTES) + rawDistance) & maskOf(ALIGN_MASK);
    std::memcpy(pointerOf(base - rawDistance), &raw, sizeof raw);
    // For an offset that is a multiple of the boundary and a misalignment that is
    // not negative this is base + offset + misalignment.
    void* pointer = pointerOf((base + maskOf(offset) + maskOf(PS_ALIGN_MAX - 1)) &
                              maskOf(misalignment - PS_ALIGN_MAX));
    if (!registry) registry = new AddressList;
    registry->push_back({pointerOf(base), pointer, size, owner});
    traceBlock(" - psMalloc: ", pointer);
    return pointer;
}

void* psMalloc(void*& p, int size, int shift, int offset) {
    return p = psMalloc(size, shift, offset, nullptr);
}

void psFree(void* p) {
    if (!registry) return;
    if (p) traceBlock(" - psFree: ", p);
    const auto block = registry->findBlock(p);
    if (block == registry->end()) return;
    void* raw = rawBlock(*block);
    registry->erase(block);
    std::free(raw);
}

bool psMallocInfo(void* p, int* size, void** owner) {
    if (!registry) return false;
    const auto block = registry->findBlock(p);
    return block != registry->end() && report(&*block, size, owner);
}

void* psMallocFirst(int* size, void** owner) {
    return report(registry ? registry->first() : nullptr, size, owner);
}

void* psMallocNext(int* size, void** owner) {
    return report(registry ? registry->next() : nullptr, size, owner);
}

long long psMallocTotal() {
    long long total = 0;
    if (registry) {
        for (const Address& block : *registry) total += block.size;
    }
    return total;
}

bool psMallocHasData() {
    return registry && std::ranges::any_of(*registry, [](const Address& block) {
               return block.owner && !psIsBuffer(block.owner);
           });
}

int psFreeAll() {
#ifdef PS_LEAK_CHECKED
    if (registry) {
        for (const Address& block : *registry) __lsan_ignore_object(rawBlock(block));
    }
#endif
    delete registry;
    registry = nullptr;
    return 0;
}

void psReserveAllVectors() {
    visitOwners([](psObject& object) { object.reserveCopy(); });
}

void psResetAllVectors() {
    visitOwners([](psObject& object) { object.setReservedCopy(); });
}

const Address* AddressList::first() {
    m_next = begin();
    return next();
}

const Address* AddressList::next() {
    return m_next == end() ? nullptr : &*m_next++;
}

void AddressList::erase(iterator block) {
    if (m_next == block) ++m_next;
    psList<Address>::erase(block);
}

AddressList::iterator AddressList::findBlock(const void* p) {
    return std::find_if(begin(), end(), [p](const Address& block) { return block.pointer == p; });
}

psString AddressList::memInfo(const void* p) {
    const auto block = findBlock(p);
    if (block == end()) return {};
    return psFormat("size:%d  address:%p  alignedPointer:%p", block->size, block->base,
                    block->pointer);
}
