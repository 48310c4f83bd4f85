#include <algorithm>
#include <climits>

#include "zmocore.h"
#include "zmocore/cpuid.h"

namespace zmo {
namespace {

// Leaf 4 and leaf 0x8000001D describe one cache a subleaf, in the same layout.
long long largestDescribed(unsigned leaf) {
    constexpr unsigned dataCache = 1;
    constexpr unsigned unifiedCache = 3;
    constexpr unsigned mostCaches = 32;
    long long largest = 0;
    for (unsigned subleaf = 0; subleaf < mostCaches; ++subleaf) {
        const CpuidRegs regs = cpuid(leaf, subleaf);
        const unsigned type = regs.reg[eax] & 0x1f;
        if (type == 0) break;
        if (type != dataCache && type != unifiedCache) continue;
        const long long ways = (regs.reg[ebx] >> 22 & 0x3ff) + 1LL;
        const long long partitions = (regs.reg[ebx] >> 12 & 0x3ff) + 1LL;
        const long long lineBytes = (regs.reg[ebx] & 0xfff) + 1LL;
        const long long sets = regs.reg[ecx] + 1LL;
        largest = std::max(largest, ways * partitions * lineBytes * sets);
    }
    return largest;
}

// Leaf 0x80000006: second level in KB, third level in half megabytes.
long long largestOfOldLeaf() {
    const CpuidRegs regs = cpuid(0x80000006U, 0);
    const long long secondLevel = (regs.reg[ecx] >> 16) * 1024LL;
    const long long thirdLevel = (regs.reg[edx] >> 18) * 512LL * 1024LL;
    return std::max(secondLevel, thirdLevel);
}

// Leaf 0x8000001D is valid only when the topology extensions are announced.
bool hasTopologyExtensions() {
    return (cpuid(0x80000001U, 0).reg[ecx] >> 22 & 1U) != 0;
}

long long largestCache() {
    long long largest = largestDescribed(4);
    if (largest == 0 && hasTopologyExtensions()) largest = largestDescribed(0x8000001dU);
    return largest != 0 ? largest : largestOfOldLeaf();
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoGetMaxCacheSizeB(int* pSize) {
    if (pSize == nullptr) return zmoStsNullPtrErr;
    const long long bytes = zmo::largestCache();
    if (bytes > INT_MAX) return zmoStsTooLargeErr;
    *pSize = static_cast<int>(bytes);
    return bytes == 0 ? zmoStsUnavailable : zmoStsNoErr;
}
