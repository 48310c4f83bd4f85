#include "kit.h"

#include <xmmintrin.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <tuple>

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

int64_t Random::whole(int64_t low, int64_t high) {
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

Block::Block(int64_t bytes, int misalign, Own rows)
    : m_rows(rows), m_start(256 + misalign), m_storage(static_cast<size_t>(bytes) / 64 + 10) {
    // Fixed values that no function leaves behind by chance.
    unsigned char next = 0x5a;
    for (CacheLine& line : m_storage) {
        for (unsigned char& byte : line.bytes) {
            byte = next;
            next = static_cast<unsigned char>(next * 5 + 37);
        }
    }
    snapshot();
}

void Block::expectSurroundingsUntouched(const std::string& name) const {
    const unsigned char* const now = m_storage.front().bytes.data();
    const unsigned char* const before = m_before.front().bytes.data();
    for (int64_t i = 0; i < size(); ++i) {
        const int64_t byte = i - m_start - m_rows.first;
        if (now[i] == before[i]) continue;
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

// ---- Images

namespace {

// What body makes of a zero of the element type.
template <class Body>
double typed(ZmoDataType type, Body body) {
    double result = 0;
    const auto tried = [&](auto zero) {
        if (type == typeOf<decltype(zero)>) result = body(zero);
    };
    const std::tuple<Zmo8u, Zmo8s, Zmo16u, Zmo16s, Zmo32s, Zmo32f, Zmo64f> all;
    std::apply([&](auto... zeros) { (tried(zeros), ...); }, all);
    return result;
}

int bytesOf(ZmoDataType type) {
    return static_cast<int>(typed(type, [](auto zero) { return double{sizeof(zero)}; }));
}

// The limit of an integer type, 0 of floats.
template <class Limit>
double limitOf(ZmoDataType type, Limit limit) {
    return typed(type, [&]<class T>(T) {
        return std::is_integral_v<T> ? static_cast<double>(limit(std::numeric_limits<T>())) : 0;
    });
}

}  // namespace

Image::Image(ZmoDataType type, ZmoiSize size, Layout layout, int margin, int channels)
    : Image(type, size, layout.misalign, margin, channels,
            ((size.width + 2 * margin) * int64_t{channels} + layout.padding) * bytesOf(type)) {}

Image::Image(ZmoDataType type, ZmoiSize size, int misalign, int margin, int channels, int64_t step)
    : Block(step * (size.height + 2 * margin), misalign,
            {margin * (step + channels * bytesOf(type)), step,
             size.width * int64_t{channels} * bytesOf(type), size.height}),
      m_type(type),
      m_size(size),
      m_margin(margin),
      m_channels(channels),
      m_element(bytesOf(type)),
      m_step(step) {}

Image::Image(ZmoiSize size, const Pixels& numbers, int margin, int channels)
    : Image(zmo64f, size, {}, margin, channels) {
    fill(numbers);
}

double Image::most() const {
    return limitOf(m_type, [](auto limits) { return limits.max(); });
}
double Image::least() const {
    return limitOf(m_type, [](auto limits) { return limits.min(); });
}
double Image::stored(double value) const {
    return isWhole() ? std::clamp(std::nearbyint(value), least(), most()) : value;
}

double Image::read(ptrdiff_t offset) const {
    return typed(m_type, [&](auto value) {
        std::memcpy(&value, data() + offset, sizeof(value));
        return static_cast<double>(value);
    });
}

void Image::set(int x, int y, double value, int channel) {
    typed(m_type, [&]<class T>(T element) {
        if constexpr (std::is_integral_v<T>) {
            element = static_cast<T>(static_cast<int64_t>(value));
        } else {
            element = static_cast<T>(value);
        }
        std::memcpy(data() + offset(x, y, channel), &element, sizeof(T));
        return value;
    });
}

template <class Body>
void Image::forEachElement(int margin, Body body) const {
    for (int y = -margin; y < m_size.height + margin; ++y) {
        for (int x = -margin; x < m_size.width + margin; ++x) {
            for (int c = 0; c < m_channels; ++c) body(x, y, c);
        }
    }
}

Image& Image::fill(const Pixels& pixels) {
    forEachElement(m_margin, [&](int x, int y, int c) { set(x, y, pixels(x, y, c), c); });
    snapshot();
    return *this;
}

Image& Image::fillBits(Random& random) {
    forEachElement(m_margin, [&](int x, int y, int c) {
        const uint64_t bits = random.bits();
        std::memcpy(data() + offset(x, y, c), &bits, static_cast<size_t>(m_element));
    });
    snapshot();
    return *this;
}

Image Image::alikeOf(const Image& source, const std::function<ZmoiPoint(int, int)>& from) const {
    Image made = alike(0);
    forEachElement(0, [&](int x, int y, int c) {
        const ZmoiPoint at = from(x, y);
        std::memcpy(made.data() + made.offset(x, y, c),
                    source.data() + source.offset(at.x, at.y, c), static_cast<size_t>(m_element));
    });
    return made;
}

void Image::expect(const Image& want) const {
    bool same = true;
    forEachElement(0, [&](int x, int y, int c) {
        if (!same) return;
        same = std::memcmp(data() + offset(x, y, c), want.data() + want.offset(x, y, c),
                           static_cast<size_t>(m_element)) == 0;
        EXPECT_TRUE(same) << "pixel (" << x << ", " << y << ") of " << m_size << " channel " << c
                          << " is " << (*this)(x, y, c) << " instead of " << want(x, y, c)
                          << "; ZMO_TEST_SEED=" << runSeed();
    });
}

// ---- Calls

const std::vector<LevelInfo>& allLevels() {
    static const std::vector<LevelInfo> levels = {{"sse2", ZMO_LEVEL_SSE2},
                                                  {"sse42", ZMO_LEVEL_SSE42},
                                                  {"avx2", ZMO_LEVEL_AVX2},
                                                  {"avx512", ZMO_LEVEL_AVX512}};
    return levels;
}

void forEachLevel(const std::function<void()>& body) {
    static std::set<std::string> lacking;
    for (const LevelInfo& level : allLevels()) {
        const ZmoStatus status = zmoSetCpuFeatures(level.mask);
        if (status == zmoStsCpuFeaturesErr) {
            if (lacking.insert(level.name).second) {
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
    // The denormal flag, bit 1 of MXCSR, is unknown to fetestexcept.
    const unsigned denormal = _mm_getcsr() & 2U;
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW), 0);
    EXPECT_EQ(denormal, 0U);
    return status;
}

}  // namespace kit
