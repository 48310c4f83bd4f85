// Library functions called with what a test has: among the arguments an image stands for its first pixel
// and its step, a buffer for its address. Both are guarded, and every call is checked for what it wrote.
#pragma once

#include <algorithm>
#include <span>

#include "kit.h"

namespace kit {

// The bytes of an argument or of a result.
struct Slot {
    alignas(8) std::array<unsigned char, 16> bytes{};

    template <class A>
    static Slot of(A value) {
        const auto own = std::as_bytes(std::span<A, 1>(&value, 1));
        static_assert(own.extent <= 16);
        Slot slot;
        std::memcpy(slot.bytes.data(), own.data(), own.size());
        return slot;
    }
    template <class A>
    A as() const {
        A value;
        const auto own = std::as_writable_bytes(std::span<A, 1>(&value, 1));
        std::memcpy(own.data(), bytes.data(), own.size());
        return value;
    }
    bool operator==(const Slot&) const = default;
};
using Arguments = std::vector<Slot>;

// What a prototype tells of one argument.
struct Parameter {
    bool pointer = false;
    bool constant = false;                                     // what it points to
    int element = 0;                                           // bytes of that, 0 if opaque
    Slot (*fromNumber)(double) = nullptr;                      // of arithmetic types
    Slot (*stretched)(Slot, int width, int height) = nullptr;  // of sizes
};

template <class A>
Parameter parameterOf() {
    Parameter p;
    if constexpr (std::is_pointer_v<A>) {
        using Element = std::remove_pointer_t<A>;
        p.pointer = true;
        p.constant = std::is_const_v<Element>;
        if constexpr (requires { sizeof(Element); }) p.element = sizeof(Element);
    } else if constexpr (std::is_enum_v<A>) {
        p.fromNumber = [](double value) {
            return Slot::of(static_cast<A>(static_cast<int>(value)));
        };
    } else if constexpr (std::is_arithmetic_v<A>) {
        p.fromNumber = [](double value) { return Slot::of(static_cast<A>(value)); };
    } else if constexpr (std::is_same_v<A, ZmoiSize> || std::is_same_v<A, ZmoiSizeL>) {
        p.stretched = [](Slot slot, int width, int height) {
            const A size = slot.as<A>();
            return Slot::of(A{size.width * width, size.height * height});
        };
    }
    return p;
}

// A number for an argument of any arithmetic type, a pointer, or a record of the argument's own type.
class Value {
  public:
    template <class V>
    Value(V value) {
        if constexpr (std::is_arithmetic_v<V> || std::is_enum_v<V>) {
            m_number = static_cast<double>(value);
        } else if constexpr (!std::is_null_pointer_v<V>) {
            m_slot = Slot::of(value);
        }
    }
    Slot as(const Parameter& p) const { return p.fromNumber ? p.fromNumber(m_number) : m_slot; }
    double number() const { return m_number; }

  private:
    double m_number = 0;
    Slot m_slot;
};

// Arguments, counted from 0 in the prototype, with values that the function must refuse: one value,
// several at once, or one of several after another.
struct Wrong {
    struct Argument {
        size_t place;
        Value value;
    };
    Wrong(size_t place, Value value, ZmoStatus code) : arguments{{place, value}}, status(code) {}
    Wrong(std::vector<Argument> atOnce, ZmoStatus code)
        : arguments(std::move(atOnce)), status(code) {}
    Wrong(size_t place, std::initializer_list<Value> values, ZmoStatus code)
        : inTurn(true), status(code) {
        for (const Value& value : values) arguments.push_back({place, value});
    }

    std::vector<Argument> arguments;
    bool inTurn = false;
    ZmoStatus status;
};

// A block whose address stands among the arguments; with a step behind it if the row has bytes.
struct Guard {
    const Block* block;
    size_t place;
    int64_t rowBytes;
};

// A call of which arguments can be exchanged.
struct Call {
    std::vector<Parameter> parameters;
    std::vector<size_t> exempt;  // places where null pointers and all sizes are right
    std::vector<Guard> guards;
    Arguments good;
    std::function<ZmoStatus(const Arguments&)> run;
};

// Constant blocks stay as they are; of the others, all but the rows.
ZmoStatus runUnwatched(const Call& call);
// The same, and no floating-point flag is raised.
ZmoStatus run(const Call& call);

// The call succeeds; it refuses null pointers, empty regions, steps that are too short, negative or no
// multiple of the element, and what else is wrong, and writes nothing then. Of two faults the earlier
// decides: pointers, sizes, steps, then the function's own values in the order told.
void expectBadArguments(const Call& call, std::vector<Wrong> wrong);

// ---- Calls by prototype

template <class... P>
std::function<ZmoStatus(const Arguments&)> withArguments(ZmoStatus (*function)(P...)) {
    return [&]<size_t... i>(std::index_sequence<i...>) {
        return [function](const Arguments& a) { return function(a[i].template as<P>()...); };
    }
    (std::index_sequence_for<P...>());
}

// A pointer that may be null, or a size that is no region's.
template <class T>
struct Exempt {
    static constexpr bool isExempt = true;
    T value;

    std::tuple<T> arguments() const { return {value}; }
};
template <class T>
Exempt<T> exempt(T value) {
    return {value};
}

// The arguments that a given thing stands for.
template <class G>
auto argumentsOf(G& given) {
    if constexpr (requires { given.arguments(); }) {
        return given.arguments();
    } else {
        return std::tuple<std::remove_cv_t<G>>(given);
    }
}

template <class... P, class... G>
Call callOf(ZmoStatus (*function)(P...), G&... given) {
    Call call{{parameterOf<P>()...}, {}, {}, {}, withArguments(function)};
    size_t place = 0;
    const auto add = [&]<class One>(One& one) {
        constexpr size_t count = std::tuple_size_v<decltype(argumentsOf(one))>;
        if constexpr (std::is_base_of_v<Block, One>) {
            call.guards.push_back({&one, place, count == 2 ? one.rowBytes() : 0});
        } else if constexpr (requires { one.block; }) {
            if (one.block != nullptr) call.guards.push_back({one.block, place, 0});
        } else if constexpr (requires { One::isExempt; }) {
            call.exempt.push_back(place);
        }
        place += count;
    };
    (add(given), ...);
    const std::tuple<P...> arguments = std::tuple_cat(argumentsOf(given)...);
    std::apply([&](const auto&... a) { call.good = {Slot::of(a)...}; }, arguments);
    return call;
}

template <class... P, class... G>
ZmoStatus runUnwatched(ZmoStatus (*function)(P...), G&&... given) {
    return runUnwatched(callOf(function, given...));
}
template <class... P, class... G>
ZmoStatus run(ZmoStatus (*function)(P...), G&&... given) {
    return run(callOf(function, given...));
}
template <class... P, class... G>
void succeed(ZmoStatus (*function)(P...), G&&... given) {
    EXPECT_EQ(run(callOf(function, given...)), zmoStsNoErr);
}
template <class... P, class... G>
void expectBadArguments(ZmoStatus (*function)(P...), std::vector<Wrong> wrong, G&&... given) {
    expectBadArguments(callOf(function, given...), std::move(wrong));
}

// A state or a work buffer for what query(..., &size) tells.
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
    const int count = std::min(room, all);
    Image<T> list({count, 1}, {1, 0});
    int found = -1;
    EXPECT_EQ(watched([&] { return call(list.ptr(), &found); }),
              all > room ? zmoStsTruncated : zmoStsNoErr);
    EXPECT_EQ(found, count);
    for (int i = 0; i < count; ++i) {
        EXPECT_TRUE(sameBits(list.get(i, 0), expected[static_cast<size_t>(i)])) << "entry " << i;
    }
    list.expectSurroundingsUntouched("list");
}

}  // namespace kit
