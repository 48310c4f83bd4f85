// Test kit of the zmo library: guarded images, seeded data, a loop over processor levels, calls that
// watch the floating-point flags, and checks of bad arguments. A family's test needs an oracle and
// one call of its function inside these loops.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "zmotypes.h"

inline bool operator==(ZmoiSize a, ZmoiSize b) {
    return a.width == b.width && a.height == b.height;
}
inline std::ostream& operator<<(std::ostream& out, ZmoiSize size) {
    return out << size.width << "x" << size.height;
}

namespace kit {

// The seed of this run: ZMO_TEST_SEED from the environment, or a fresh one. It is printed once.
uint64_t runSeed();

class Random {
  public:
    // stream tells apart the generators of one run.
    explicit Random(uint64_t stream = 0) : m_state(runSeed() + stream * 0x9e3779b97f4a7c15U) {}

    uint64_t bits();
    // Uniform, both ends included.
    int64_t between(int64_t low, int64_t high);
    double uniform(double low, double high);

  private:
    uint64_t m_state;
};

// Where an image lies: its first pixel `misalign` bytes off a 64-byte boundary, `padding` elements
// between the end of a row and the next row.
struct Layout {
    int misalign = 0;
    int padding = 0;
};
inline std::ostream& operator<<(std::ostream& out, Layout layout) {
    return out << "misalign " << layout.misalign << " padding " << layout.padding;
}

std::vector<Layout> layouts();

// Regions that are small, narrow, and just around the lengths of vectors.
std::vector<ZmoiSize> sizes();

// Memory with a fixed pattern on both sides of the part that belongs to the test.
class Memory {
  public:
    Memory(size_t bytes, int misalign);

    unsigned char* data() { return m_storage.data() + m_start; }
    const unsigned char* data() const { return m_storage.data() + m_start; }
    // Remembers the present content.
    void snapshot() { m_before = m_storage; }
    // Index, relative to data(), of the first byte that changed since the snapshot though `mine` does
    // not allow it; -1 when there is none.
    ptrdiff_t firstChange(const std::function<bool(ptrdiff_t)>& mine) const;

  private:
    size_t m_start;
    std::vector<unsigned char> m_storage;
    std::vector<unsigned char> m_before;
};

// An image in guarded memory, with `margin` readable pixels around the region.
template <class T>
class Image {
  public:
    explicit Image(ZmoiSize size, Layout layout = {}, int margin = 0, int channels = 1)
        : m_size(size),
          m_margin(margin),
          m_channels(channels),
          m_stepElements((size.width + 2 * margin) * channels + layout.padding),
          m_memory(static_cast<size_t>(m_stepElements) * sizeof(T) *
                       static_cast<size_t>(size.height + 2 * margin),
                   layout.misalign) {
        m_memory.snapshot();
    }

    ZmoiSize size() const { return m_size; }
    int channels() const { return m_channels; }
    int step() const { return m_stepElements * static_cast<int>(sizeof(T)); }
    T* ptr() { return reinterpret_cast<T*>(m_memory.data() + offset(0, 0, 0)); }
    const T* ptr() const { return reinterpret_cast<const T*>(m_memory.data() + offset(0, 0, 0)); }

    T get(int x, int y, int channel = 0) const {
        T value;
        std::memcpy(&value, m_memory.data() + offset(x, y, channel), sizeof(T));
        return value;
    }
    void set(int x, int y, T value) { set(x, y, 0, value); }
    void set(int x, int y, int channel, T value) {
        std::memcpy(m_memory.data() + offset(x, y, channel), &value, sizeof(T));
    }

    // Calls draw() for every element of the region and its margin.
    template <class Draw>
    Image& fill(Draw draw) {
        for (int y = -m_margin; y < m_size.height + m_margin; ++y) {
            for (int x = -m_margin; x < m_size.width + m_margin; ++x) {
                for (int c = 0; c < m_channels; ++c) set(x, y, c, static_cast<T>(draw()));
            }
        }
        m_memory.snapshot();
        return *this;
    }
    // Remembers the present content for the two checks below.
    void snapshot() { m_memory.snapshot(); }

    // No byte outside the region changed since the snapshot.
    void expectSurroundingsUntouched(const char* name) const {
        const ptrdiff_t rowBytes =
            static_cast<ptrdiff_t>(m_size.width) * m_channels * static_cast<ptrdiff_t>(sizeof(T));
        const ptrdiff_t first = offset(0, 0, 0);
        const ptrdiff_t change = m_memory.firstChange([&](ptrdiff_t byte) {
            const ptrdiff_t inRegion = byte - first;
            return inRegion >= 0 && inRegion / step() < m_size.height &&
                   inRegion % step() < rowBytes;
        });
        EXPECT_EQ(change, -1) << name << ": byte " << change - first
                              << " from the first pixel was written";
    }
    // No byte at all changed since the snapshot.
    void expectUntouched(const char* name) const {
        EXPECT_EQ(m_memory.firstChange([](ptrdiff_t) { return false; }), -1)
            << name << " was written";
    }

  private:
    ptrdiff_t offset(int x, int y, int channel) const {
        const ptrdiff_t row = static_cast<ptrdiff_t>(y + m_margin) * m_stepElements;
        return (row + static_cast<ptrdiff_t>(x + m_margin) * m_channels + channel) *
               static_cast<ptrdiff_t>(sizeof(T));
    }

    ZmoiSize m_size;
    int m_margin;
    int m_channels;
    int m_stepElements;
    Memory m_memory;
};

// A work buffer of exactly the size that a query told.
class Buffer {
  public:
    explicit Buffer(int size, int misalign = 1)
        : m_size(size), m_memory(static_cast<size_t>(size), misalign) {
        m_memory.snapshot();
    }
    Zmo8u* ptr() { return m_memory.data(); }
    int size() const { return m_size; }
    void expectSurroundingsUntouched() const {
        const int size = m_size;
        EXPECT_EQ(m_memory.firstChange([size](ptrdiff_t i) { return i >= 0 && i < size; }), -1)
            << "a byte outside the work buffer was written";
    }
    void expectUntouched() const {
        EXPECT_EQ(m_memory.firstChange([](ptrdiff_t) { return false; }), -1)
            << "the work buffer was written";
    }
    void snapshot() { m_memory.snapshot(); }

  private:
    int m_size;
    Memory m_memory;
};

// Rows more than 2^31 bytes apart; memory between them is never touched and costs nothing. False when
// there is no address space for them.
class FarRows {
  public:
    static constexpr int count = 6;
    static constexpr int64_t step = (int64_t{1} << 31) + 4096;
    static constexpr const char* whyNot = "no address space for images of 12 GB";

    FarRows();
    ~FarRows();
    FarRows(const FarRows&) = delete;
    FarRows& operator=(const FarRows&) = delete;
    explicit operator bool() const { return m_memory != nullptr; }

    template <class T>
    T* first() const {
        return reinterpret_cast<T*>(m_memory);
    }
    // Copies the region's rows.
    template <class T>
    void take(const Image<T>& image) {
        eachRow(image, [](char* far, const T* row, size_t bytes) { std::memcpy(far, row, bytes); });
    }
    // The rows are those of the region.
    template <class T>
    void expect(const Image<T>& image) const {
        eachRow(image, [](char* far, const T* row, size_t bytes) {
            EXPECT_EQ(std::memcmp(far, row, bytes), 0);
        });
    }

  private:
    template <class T, class Visit>
    void eachRow(const Image<T>& image, Visit visit) const {
        const char* const near = reinterpret_cast<const char*>(image.ptr());
        for (int y = 0; y < image.size().height; ++y) {
            visit(m_memory + y * step, reinterpret_cast<const T*>(near + y * image.step()),
                  static_cast<size_t>(image.size().width * image.channels()) * sizeof(T));
        }
    }

    char* m_memory;
};

// Runs body at every level that the processor has, and says which ones it lacks. The library is at
// its best level afterwards.
struct LevelInfo {
    const char* name;
    Zmo64u mask;
};
const std::vector<LevelInfo>& allLevels();
void forEachLevel(const std::function<void()>& body);

// Makes a call and checks that it raises no floating-point flag but "inexact".
ZmoStatus watched(const std::function<ZmoStatus()>& call);

// The same, for calls that must succeed.
inline void succeed(const std::function<ZmoStatus()>& call) {
    EXPECT_EQ(watched(call), zmoStsNoErr);
}

template <class T>
bool sameBits(T a, T b) {
    using Bytes = std::array<unsigned char, sizeof(T)>;
    return std::bit_cast<Bytes>(a) == std::bit_cast<Bytes>(b);
}

// Every element of the region has the bits that expected(x, y, channel), or expected(x, y) of an image
// of one channel, tells; prints the first that has not.
template <class T, class Expected>
void expectPixels(const Image<T>& image, Expected expected) {
    for (int y = 0; y < image.size().height; ++y) {
        for (int x = 0; x < image.size().width; ++x) {
            for (int c = 0; c < image.channels(); ++c) {
                T want;
                if constexpr (std::is_invocable_v<Expected, int, int, int>) {
                    want = static_cast<T>(expected(x, y, c));
                } else {
                    want = static_cast<T>(expected(x, y));
                }
                const T have = image.get(x, y, c);
                if (sameBits(want, have)) continue;
                ADD_FAILURE() << "pixel (" << x << ", " << y << ") of " << image.size()
                              << " channel " << c << " is " << +have << " instead of " << +want
                              << "; ZMO_TEST_SEED=" << runSeed();
                return;
            }
        }
    }
}

template <class T>
bool samePixels(const Image<T>& a, const Image<T>& b) {
    if (!(a.size() == b.size())) return false;
    for (int y = 0; y < a.size().height; ++y) {
        for (int x = 0; x < a.size().width; ++x) {
            if (a.get(x, y) != b.get(x, y)) return false;
        }
    }
    return true;
}

// One thing that can be wrong with the arguments of a call, in the order of the checks.
template <class Args>
struct Fault {
    const char* name;
    ZmoStatus status;
    std::function<void(Args&)> apply;
};

// `good` succeeds; each fault alone gives its status, and of two faults the earlier one decides.
// untouched checks that a failed call has written nothing.
template <class Args, class Call, class Untouched>
void expectFaults(const Args& good, Call call, const std::vector<Fault<Args>>& faults,
                  Untouched untouched) {
    for (size_t i = 0; i < faults.size(); ++i) {
        SCOPED_TRACE(faults[i].name);
        Args bad = good;
        faults[i].apply(bad);
        EXPECT_EQ(watched([&] { return call(bad); }), faults[i].status);
        for (size_t j = i + 1; j < faults.size(); ++j) {
            SCOPED_TRACE(faults[j].name);
            Args worse = good;
            faults[j].apply(worse);
            faults[i].apply(worse);
            EXPECT_EQ(watched([&] { return call(worse); }), faults[i].status);
        }
        untouched();
    }
    EXPECT_EQ(watched([&] { return call(good); }), zmoStsNoErr);
}

// A bad value of the index-th argument, for expectBadArguments.
template <size_t index, class Value>
struct Bad {
    Value value;
    ZmoStatus status;

    template <class Args>
    operator Fault<Args>() const {
        return {"argument", status, [v = value](Args& args) { std::get<index>(args) = v; }};
    }
};
template <size_t index, class Value>
Bad<index, Value> bad(Value value, ZmoStatus status) {
    return {value, status};
}

// expectFaults of a function with its arguments in order: every pointer null and every region empty,
// and then the faults of its own.
template <class... P>
void expectBadArguments(ZmoStatus (*function)(P...),
                        const std::type_identity_t<std::tuple<P...>>& good,
                        const std::type_identity_t<std::vector<Fault<std::tuple<P...>>>>& own,
                        const std::function<void()>& untouched) {
    using Args = std::tuple<P...>;
    std::vector<Fault<Args>> faults;
    const auto forEachArgument = [&](auto visit) {
        [&]<size_t... i>(std::index_sequence<i...>) {
            (visit(std::integral_constant<size_t, i>(), std::get<i>(good)), ...);
        }
        (std::index_sequence_for<P...>());
    };
    forEachArgument([&](auto index, const auto& value) {
        using Value = std::remove_cvref_t<decltype(value)>;
        if constexpr (std::is_pointer_v<Value>) {
            faults.push_back(bad<index, Value>(nullptr, zmoStsNullPtrErr));
        }
    });
    forEachArgument([&](auto index, const auto& value) {
        using Value = std::remove_cvref_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, ZmoiSize> || std::is_same_v<Value, ZmoiSizeL>) {
            faults.push_back(bad<index>(Value{0, value.height}, zmoStsSizeErr));
            faults.push_back(bad<index>(Value{value.width, -1}, zmoStsSizeErr));
        }
    });
    faults.insert(faults.end(), own.begin(), own.end());
    expectFaults(
        good, [function](const Args& args) { return std::apply(function, args); }, faults,
        untouched);
}

// A work buffer for what query(..., &size) tells.
template <class Query, class... Args>
Buffer bufferOf(Query query, Args... args) {
    int bytes = 0;
    EXPECT_EQ(query(args..., &bytes), zmoStsNoErr);
    return Buffer(bytes);
}

// Of a function that fills a list on any address: call(list, count) writes as many of the expected
// entries as there is room for, tells their number, and notes when that is not all.
template <class T, class Call>
void expectList(const std::vector<T>& expected, int room, Call call) {
    const int all = static_cast<int>(expected.size());
    const int count = room < all ? room : all;
    const size_t bytes = static_cast<size_t>(count) * sizeof(T);
    Memory list(bytes, 1);
    list.snapshot();
    int found = -1;
    EXPECT_EQ(watched([&] { return call(reinterpret_cast<T*>(list.data()), &found); }),
              all > room ? zmoStsTruncated : zmoStsNoErr);
    EXPECT_EQ(found, count);
    EXPECT_TRUE(bytes == 0 || std::memcmp(list.data(), expected.data(), bytes) == 0);
    const auto inList = [bytes](ptrdiff_t i) { return i >= 0 && static_cast<size_t>(i) < bytes; };
    EXPECT_EQ(list.firstChange(inList), -1);
}

// At each level, body(random, size, layout, turn) for all sizes and layouts; turn counts them.
template <class Body>
void forEachCase(uint64_t stream, Body body) {
    forEachLevel([&] {
        Random random(stream);
        size_t turn = 0;
        for (const ZmoiSize size : sizes()) {
            for (const Layout layout : layouts()) {
                SCOPED_TRACE(testing::Message() << size << " " << layout << " turn " << turn);
                body(random, size, layout, turn++);
            }
        }
    });
}

// The images that run(args) gives for good and with each of the changes alone differ from one another.
template <class Args, class Run>
void expectEachMatters(const Args& good, Run run,
                       const std::vector<std::function<void(Args&)>>& changes) {
    std::vector<decltype(run(good))> results = {run(good)};
    for (const auto& change : changes) {
        Args changed = good;
        change(changed);
        const auto result = run(changed);
        for (size_t i = 0; i < results.size(); ++i) {
            EXPECT_FALSE(samePixels(result, results[i])) << results.size() << " as " << i;
        }
        results.push_back(result);
    }
}

}  // namespace kit
