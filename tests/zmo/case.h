// Calls of library functions by the names that the headers give their parameters. A case has what
// one call needs: guarded images for pointers with a step, memory for states and buffers, the
// function's own values, and room for its results; the oracle decides what the call must leave
// there.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

#include "kit.h"

namespace kit {

// The bytes of an argument or of a result.
struct Slot {
    alignas(8) std::array<unsigned char, 32> bytes{};

    static Slot from(const void* memory, size_t size) {
        Slot slot;
        std::memcpy(slot.bytes.data(), memory, std::min(size, slot.bytes.size()));
        return slot;
    }
    template <class A>
    static Slot of(A value) {
        static_assert(sizeof(A) <= 32);
        return from(&value, sizeof(A));
    }
    template <class A>
    A as() const {
        A value;
        std::memcpy(&value, bytes.data(), sizeof(A));
        return value;
    }
    bool operator==(const Slot&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Slot& slot);
using Arguments = std::vector<Slot>;

// One argument as the prototype has it.
struct Parameter {
    std::string name = {};
    bool pointer = false;
    bool constant = false;                         // what it points to
    bool rows = false;                             // points to pointers to rows
    int element = 0;                               // bytes of what it points to, 0 if opaque
    ZmoDataType pixels = {};                       // what it points to, 0 if no pixels
    Slot (*fromNumber)(double) = nullptr;          // of arithmetic types
    Slot (*fromSize)(int64_t, int64_t) = nullptr;  // of sizes
    int64_t most = 0;                              // the largest side of a size
};

template <class A>
Parameter parameterOf() {
    Parameter p;
    if constexpr (std::is_pointer_v<A>) {
        using First = std::remove_pointer_t<A>;
        using Element =
            std::conditional_t<std::is_pointer_v<First>, std::remove_pointer_t<First>, First>;
        p.pointer = true;
        p.rows = std::is_pointer_v<First>;
        p.constant = std::is_const_v<Element>;
        if constexpr (requires { sizeof(Element); }) p.element = sizeof(Element);
        p.pixels = typeOf<std::remove_const_t<Element>>;
    } else if constexpr (std::is_enum_v<A>) {
        p.fromNumber = [](double v) { return Slot::of(static_cast<A>(static_cast<int>(v))); };
    } else if constexpr (std::is_arithmetic_v<A>) {
        p.fromNumber = [](double v) { return Slot::of(static_cast<A>(v)); };
    } else if constexpr (std::is_same_v<A, ZmoiSize> || std::is_same_v<A, ZmoiSizeL>) {
        using Side = decltype(A::width);
        p.most = std::numeric_limits<Side>::max();
        p.fromSize = [](int64_t width, int64_t height) {
            return Slot::of(A{static_cast<Side>(width), static_cast<Side>(height)});
        };
    }
    return p;
}

// A number for an argument of any arithmetic type, a size for one of either type of sizes, a list
// of numbers of the type that is pointed to, a pointer, or a record of the argument's own type.
class Value {
  public:
    template <class V>
    Value(V value) {
        if constexpr (std::is_arithmetic_v<V> || std::is_enum_v<V>) {
            m_number = static_cast<double>(value);
        } else if constexpr (
            requires { value.width + value.height; } && !requires { value.x; }) {
            m_size = {value.width, value.height};
        } else if constexpr (!std::is_null_pointer_v<V>) {
            m_slot = Slot::of(value);
        }
    }
    Value(const std::vector<double>& list);

    Slot as(const Parameter& p) const;
    std::string text(const Parameter& p) const;
    bool is(double number) const { return m_number == number; }
    // The memory of a list.
    Block* block() const { return m_list ? &m_list->memory : nullptr; }

  private:
    double m_number = 0;
    ZmoiSizeL m_size{};
    Slot m_slot;
    struct List {
        Image numbers;
        Image memory;  // of the type that was asked for
    };
    std::shared_ptr<List> m_list;
};
using Named = std::map<std::string, Value, std::less<>>;

class Function {
  public:
    template <class... A>
    Function(const char* name, ZmoStatus (*run)(A...))
        : m_name(name),
          m_parameters{parameterOf<A>()...},
          m_run([&]<size_t... i>(std::index_sequence<i...>) {
              return [run](const Arguments& a) { return run(a[i].template as<A>()...); };
          }(std::index_sequence_for<A...>())) {
        readNames();
    }

    const std::string& name() const { return m_name; }
    bool isNamed(std::string_view part) const { return m_name.find(part) != std::string::npos; }
    const std::vector<Parameter>& parameters() const { return m_parameters; }
    bool has(std::string_view parameter) const;
    // The names of numbers that are no steps.
    std::vector<std::string> values() const;
    size_t placeOf(std::string_view parameter) const;
    // Of pSrc and of pDst, from the descriptor: the part of the name from "_C" and a digit on.
    int srcChannels() const { return m_srcChannels; }
    int dstChannels() const { return m_dstChannels; }
    bool masked() const { return has("maskStep"); }
    bool large() const { return m_name.ends_with("_L"); }
    ZmoStatus operator()(const Arguments& arguments) const { return m_run(arguments); }

  private:
    void readNames();

    std::string m_name;
    std::vector<Parameter> m_parameters;
    std::function<ZmoStatus(const Arguments&)> m_run;
    int m_srcChannels = 1;
    int m_dstChannels = 1;
};
#define ZMO(fn) kit::Function(#fn, fn)

// Arguments with values that the function must refuse: one value, one of several after another, or
// several arguments at once.
struct Wrong {
    struct Argument {
        const char* name;
        Value value;
    };
    Wrong(const char* name, Value value, ZmoStatus code) : arguments{{name, value}}, status(code) {}
    Wrong(std::vector<Argument> atOnce, ZmoStatus code)
        : arguments(std::move(atOnce)), status(code) {}
    Wrong(const char* name, std::initializer_list<Value> values, ZmoStatus code)
        : inTurn(true), status(code) {
        for (const Value& value : values) arguments.push_back({name, value});
    }

    std::vector<Argument> arguments;
    bool inTurn = false;
    ZmoStatus status;
};

// An image that is not of the region's size, has readable pixels around it or other channels than
// the function's name says, or that is given without a step.
struct Shape {
    const char* name;
    ZmoiSize size = {};
    int margin = 0;
    int channels = 0;
};

// What changes from one case to the next.
struct Turn : Random {
    explicit Turn(uint64_t stream, ZmoiSize s = {9, 4}, Layout l = {}, size_t n = 0)
        : Random(stream), size(s), layout(l), number(n) {}

    ZmoiSize size;
    Layout layout;
    size_t number;
};

// Integers of the whole range, its ends, or small ones; floats of an ordinary size, large ones, or
// small whole numbers.
enum class Draw { any, ends, few };
void draw(Random& random, Image& image, Draw how);
inline void draw(Turn& turn, Image& image) {
    draw(turn, image, static_cast<Draw>(turn.number % 3));
}

class Case {
  public:
    explicit Case(Function function, const Turn& turn = Turn(0),
                  const std::vector<Shape>& shapes = {});

    const Function& function() const { return m_function; }
    ZmoiSize roi() const { return m_roi; }

    // Images in their order, constant ones first.
    Image& image(std::string_view name);
    Image& image(size_t i) { return m_images[i].image; }
    const Image& image(size_t i) const { return m_images[i].image; }
    size_t imageCount() const { return m_images.size(); }
    Image& src() { return image(0); }
    const Image& src() const { return image(0); }
    Image& dst() { return m_images.back().image; }
    const Image& dst() const { return m_images.back().image; }
    Image& mask() { return image("pMask"); }
    bool selects(int x, int y) const { return !m_maskAt || image(*m_maskAt)(x, y) != 0; }
    // Sources with the first, targets with the second; the mask stays.
    void fillAll(const Pixels& sources, const Pixels& targets);
    Image& borderValue() { return *m_border; }
    // What lies around the source with a constant border, where the function takes that.
    double outside(int channel = 0) const { return m_border ? (*m_border)(0, 0, channel) : 0; }

    // The function's own values, and what only its services ask for.
    Case& with(std::string_view name, Value value);
    Case& with(const Named& values);
    // Guarded memory for a pointer.
    Case& give(std::string_view name, Buffer memory);
    Buffer& memory(std::string_view name) { return m_memory.find(name)->second; }
    // Null pointers are right there.
    void allowNull(const char* name) { m_nullable.insert(name); }
    // The function does not look whether the region needs more memory than a query can return.
    void allowAnySize() { m_takesAnySize = true; }
    // Elements that an image's step must hold, if not a row of the image.
    void setRowNeeded(std::string_view image, int elements);
    // Where pointers to rows point; behind them stands a null pointer.
    void setRows(int first, int count) { m_firstRow = first, m_rowCount = count; }

    // State and buffer of the sizes that a query gives for what this call has.
    Case& sized(const Function& query);
    // The state is made by a service with what this call has.
    Case& prepared(const Function& init, ZmoStatus status = zmoStsNoErr);

    // What the call must leave: each pixel of an image, or of the last one, a result, a status.
    Case& want(std::string_view name, const Pixels& pixels);
    Case& want(const Pixels& pixels) { return want(m_images.back().name, pixels); }
    // Each pixel of the last image is one of the source with its bits.
    Case& wantCopy(const std::function<ZmoiPoint(int, int)>& from);
    template <class Result>
    Case& wantResult(std::string_view name, Result result) {
        return wantEntries(name, std::vector<Result>{result});
    }
    // The entries of a list.
    template <class Entry>
    Case& wantEntries(std::string_view name, const std::vector<Entry>& entries) {
        m_wantMemory.insert_or_assign(std::string(name), Buffer(entries));
        return give(name, Buffer(static_cast<int64_t>(entries.size() * sizeof(Entry)), 0));
    }
    // The same of a list that has room for some of them, whose number is the result pCount; the
    // status says when there are more.
    template <class Entry>
    Case& wantList(std::string_view name, std::vector<Entry> entries, int room) {
        const int all = static_cast<int>(entries.size());
        entries.resize(static_cast<size_t>(std::min(all, room)));
        wantStatus(all > room ? zmoStsTruncated : zmoStsNoErr);
        return wantResult("pCount", std::min(all, room)).wantEntries(name, entries);
    }
    Case& wantStatus(ZmoStatus status) {
        m_wantStatus = status;
        return *this;
    }

    // Constant blocks stay as they are; of the others, all but the rows.
    ZmoStatus runUnwatched();
    // The same, and no floating-point flag is raised.
    ZmoStatus run();
    // Runs, compares with what is wanted, which must be all that it writes, and puts all back.
    void expect();
    // Not watched; what nobody wants otherwise is wanted as the first time made it.
    void expectSameBits();
    // What a call, not watched, makes of the destination, which is put back.
    Image tried();
    // The call gives the same when rows lie more than 2^31 bytes apart, two rows more than 2^33.
    void expectWithFarRows();
    // The function is one for large images, which here have few rows, or two, and nothing around.
    bool canHaveFarRows(bool two) const;

    // The call succeeds; it refuses null pointers, empty regions, steps that are too short,
    // negative or no multiple of the element, unknown borders, channels and the like, and what else
    // is wrong, and writes nothing then. Of two faults the earlier decides: pointers, sizes, steps,
    // then the function's own values in the order given, state, and sizes beyond all bounds.
    void expectBadArguments(const std::vector<Wrong>& wrong = {});

    std::string text() const;

  private:
    friend class Faults;
    struct Own {
        std::string name;
        Image image;
        bool constant;
        bool stepped;
        int row;
        std::optional<Image> want;
    };
    struct Guard {
        std::string name;
        Block* block;
        bool constant;
    };
    static std::string stepOf(const std::string& image);
    Own& find(std::string_view name);
    std::vector<Guard> guards();
    std::vector<std::string> results() const;
    Arguments arguments();
    std::optional<Slot> own(const Parameter& p);
    Slot slotOf(const Parameter& p);
    void compare(ZmoStatus status);
    void putBack();

    Function m_function;
    ZmoiSize m_roi;
    std::vector<Own> m_images;
    std::optional<size_t> m_maskAt;
    std::optional<Image> m_border;
    std::map<std::string, Buffer, std::less<>> m_memory;
    Named m_values;
    std::map<std::string, Buffer> m_wantMemory;
    std::set<std::string> m_nullable{"pBorderValue"};
    std::vector<char*> m_rows;
    bool m_takesAnySize = false;
    int m_firstRow = 0;
    int m_rowCount;
    ZmoStatus m_wantStatus = zmoStsNoErr;
};

// Each case at each level, and some with far rows. Switching levels takes longer than a small call,
// so all cases run at one level before the next. Under the sanitizers the levels take turns.
void expectAtAllLevels(std::vector<Case>& cases);
inline void expectAtAllLevels(Case one) {
    forEachLevel([&] { one.expect(); });
}
// Not watched; whatever comes of it, it is the same at all levels.
inline void expectSameAtAllLevels(Case one) {
    forEachLevel([&] { one.expectSameBits(); });
}

// For each row of a table of functions and each size, in several rounds, a case is prepared with
// its oracle's results; layouts and turns change.
struct Walk {
    uint64_t stream;
    int rounds = 1;
    std::vector<ZmoiSize> more = {};
};
void forEachCase(const Walk& walk, size_t rows,
                 const std::function<Case(Turn& turn, size_t row)>& prepare);
template <class Row, class Prepare>
void forEachCase(const Walk& walk, const std::vector<Row>& rows, Prepare prepare) {
    forEachCase(walk, rows.size(), [&](Turn& turn, size_t i) { return prepare(turn, rows[i]); });
}

}  // namespace kit
