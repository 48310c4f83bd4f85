#include "kit.h"

#include <xmmintrin.h>

#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>

#include "zmocore.h"

namespace kit {

uint64_t runSeed() {
    static const uint64_t seed = [] {
        const char* const given = std::getenv("ZMO_TEST_SEED");
        const uint64_t value =
            given != nullptr ? std::strtoull(given, nullptr, 10) : std::random_device{}();
        std::printf("ZMO_TEST_SEED=%llu\n", static_cast<unsigned long long>(value));
        return value;
    }();
    return seed;
}

// SplitMix64.
uint64_t Random::bits() {
    m_state += 0x9e3779b97f4a7c15U;
    uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31);
}

int64_t Random::between(int64_t low, int64_t high) {
    const uint64_t span = static_cast<uint64_t>(high) - static_cast<uint64_t>(low) + 1;
    const uint64_t drawn = span == 0 ? bits() : bits() % span;
    return static_cast<int64_t>(static_cast<uint64_t>(low) + drawn);
}

double Random::uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(bits() >> 11) * 0x1p-53);
}

std::vector<Layout> layouts() {
    return {{0, 0}, {1, 3}, {7, 16}, {62, 1}};
}

std::vector<ZmoiSize> sizes() {
    return {{1, 1},  {2, 1},  {1, 2},    {3, 3},   {5, 4},   {1, 17},  {33, 1}, {7, 9},
            {15, 3}, {16, 4}, {17, 5},   {31, 4},  {32, 32}, {63, 6},  {64, 2}, {65, 7},
            {95, 3}, {97, 8}, {100, 31}, {127, 3}, {129, 5}, {255, 2}, {257, 4}};
}

namespace {

constexpr size_t guardBytes = 256;

}  // namespace

Block::Block(int64_t bytes, int misalign, Own rows)
    : m_rows(rows),
      m_start(guardBytes + static_cast<size_t>(misalign)),
      m_storage(static_cast<size_t>(bytes) + 2 * guardBytes + 64) {
    // Fixed values that no function leaves behind by chance.
    unsigned char next = 0x5a;
    for (unsigned char& byte : m_storage) {
        byte = next;
        next = static_cast<unsigned char>(next * 5 + 37);
    }
    snapshot();
}

void Block::expectSurroundingsUntouched(const std::string& name) const {
    for (size_t i = 0; i < m_storage.size(); ++i) {
        if (m_storage[i] == m_before[i]) continue;
        const int64_t byte = static_cast<int64_t>(i) - static_cast<int64_t>(m_start) - m_rows.first;
        if (byte >= 0 && byte / m_rows.step < m_rows.count && byte % m_rows.step < m_rows.bytes) {
            continue;
        }
        ADD_FAILURE() << name << ": byte " << byte << " from the first was written";
        return;
    }
}

void Block::expectUntouched(const std::string& name) const {
    EXPECT_TRUE(m_storage == m_before) << name << " was written";
}

const std::vector<LevelInfo>& allLevels() {
    static const std::vector<LevelInfo> levels = {{"sse2", ZMO_LEVEL_SSE2},
                                                  {"sse42", ZMO_LEVEL_SSE42},
                                                  {"avx2", ZMO_LEVEL_AVX2},
                                                  {"avx512", ZMO_LEVEL_AVX512}};
    return levels;
}

size_t levelsHere() {
    static const size_t count = [] {
        size_t found = 0;
        forEachLevel([&] { ++found; });
        return found;
    }();
    return count;
}

void forEachLevel(const std::function<void()>& body) {
    static std::set<std::string> told;
    for (const LevelInfo& level : allLevels()) {
        const ZmoStatus status = zmoSetCpuFeatures(level.mask);
        if (status == zmoStsCpuFeaturesErr) {
            if (told.insert(level.name).second) {
                std::printf("level %s skipped: the processor lacks it\n", level.name);
            }
            continue;
        }
        ASSERT_EQ(status, zmoStsNoErr);
        SCOPED_TRACE(std::string("level ") + level.name);
        body();
    }
    zmoInit();
}

ZmoStatus watched(const std::function<ZmoStatus()>& call) {
    std::feclearexcept(FE_ALL_EXCEPT);
    _mm_setcsr(_mm_getcsr() & ~0x3fU);
    const ZmoStatus status = call();
    // fetestexcept does not tell the denormal flag, bit 1 of MXCSR.
    const unsigned denormal = _mm_getcsr() & 2U;
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW), 0);
    EXPECT_EQ(denormal, 0U);
    return status;
}

}  // namespace kit
