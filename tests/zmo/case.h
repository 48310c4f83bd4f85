// Calls of library functions by the names that the headers give their parameters. A case has what one
// call needs: guarded images for pointers with a step, memory for states and buffers, the function's own
// values, and room for its results; the oracle tells what the call must leave there.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "kit.h"

namespace kit {

// The bytes of an argument or of a result.
struct Slot {
    alignas(8) std::array<unsigned char, 32> bytes{};

    template <class A>
    static Slot of(A value) {
        const auto own = std::as_bytes(std::span<A, 1>(&value, 1));
        static_assert(own.extent <= 32);
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
std::ostream& operator<<(std::ostream& out, const Slot& slot);
using Arguments = std::vector<Slot>;

template <class... T>
using ImageOf = std::variant<Image<T>...>;
using SomeImage = ImageOf<Zmo8u, Zmo8s, Zmo16u, Zmo16s, Zmo32s, Zmo32f, Zmo64f>;

// An image of any element type; pixels are told as doubles, which hold all types exactly.
class AnyImage {
  public:
    template <class T>
    AnyImage(Image<T> image) : m_image(std::move(image)) {}

    ZmoiSize size() const {
        return std::visit([](const auto& i) { return i.size(); }, m_image);
    }
    int channels() const {
        return std::visit([](const auto& i) { return i.channels(); }, m_image);
    }
    int64_t step() const {
        return std::visit([](const auto& i) { return int64_t{i.step()}; }, m_image);
    }
    char* ptr(int y = 0) {
        return std::visit([](auto& i) { return reinterpret_cast<char*>(i.ptr()); }, m_image) +
               y * step();
    }
    ZmoDataType type() const {
        return std::visit([]<class T>(const Image<T>&) { return typeOf<T>; }, m_image);
    }
    // The largest and the smallest value of an integer type, 0 for floats.
    double most() const;
    double least() const;
    // As the type stores a value: integers rounded half to even and saturated.
    double stored(double value) const;
    // body(image of its type)
    template <class Body>
    void visit(Body body) const {
        std::visit(body, m_image);
    }
    Block& block() {
        return std::visit([](auto& i) -> Block& { return i; }, m_image);
    }
    template <class T>
    Image<T>& as() {
        return std::get<Image<T>>(m_image);
    }
    template <class T>
    const Image<T>& as() const {
        return std::get<Image<T>>(m_image);
    }

    double get(int x, int y, int channel = 0) const {
        return std::visit([&](const auto& i) -> double { return i.get(x, y, channel); }, m_image);
    }
    void set(int x, int y, int channel, double value) {
        std::visit([&]<class T>(Image<T>& i) { i.set(x, y, channel, static_cast<T>(value)); },
                   m_image);
    }
    template <class Draw>
    void fill(Draw draw) {
        std::visit([&](auto& i) { i.fill(draw); }, m_image);
    }
    // An image of this kind without surroundings.
    template <class Draw>
    AnyImage alike(Draw draw) const {
        return std::visit(
            [&]<class T>(const Image<T>& i) {
                return AnyImage(Image<T>(i.size(), {}, 0, i.channels()).fill(draw));
            },
            m_image);
    }
    // Each pixel, with its bits, that of another image at the point told.
    template <class From>
    void takeFrom(const AnyImage& other, From from) {
        std::visit(
            [&]<class T>(Image<T>& i) {
                i.fill([&](int x, int y, int c) {
                    return other.as<T>().get(from(x, y).x, from(x, y).y, c);
                });
            },
            m_image);
    }
    void expect(const AnyImage& want) const {
        std::visit([&]<class T>(const Image<T>& i) { expectPixels(i, want.as<T>()); }, m_image);
    }

  private:
    SomeImage m_image;
};

// What a prototype tells of one argument.
struct Parameter {
    std::string name = {};
    bool pointer = false;
    bool constant = false;                         // what it points to
    bool rows = false;                             // points to pointers to rows
    int element = 0;                               // bytes of what it points to, 0 if opaque
    Slot (*fromNumber)(double) = nullptr;          // of arithmetic types
    Slot (*fromSize)(int64_t, int64_t) = nullptr;  // of sizes
    AnyImage (*image)(ZmoiSize, Layout, int, int) = nullptr;  // of pixels
    int64_t most = 0;                                         // the largest side of a size
};

template <class A>
Parameter parameterOf() {
    Parameter p;
    if constexpr (std::is_pointer_v<A>) {
        using First = std::remove_pointer_t<A>;
        p.rows = std::is_pointer_v<First>;
        using Element =
            std::conditional_t<std::is_pointer_v<First>, std::remove_pointer_t<First>, First>;
        using Pixel = std::remove_const_t<Element>;
        p.pointer = true;
        p.constant = std::is_const_v<Element>;
        if constexpr (requires { sizeof(Element); }) p.element = sizeof(Element);
        if constexpr (std::is_constructible_v<SomeImage, Image<Pixel>>) {
            p.image = [](ZmoiSize size, Layout layout, int margin, int channels) {
                return AnyImage(Image<Pixel>(size, layout, margin, channels));
            };
        }
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

// A number for an argument of any arithmetic type, a size for one of either type of sizes, a pointer, or
// a record of the argument's own type.
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
    Slot as(const Parameter& p) const;
    std::string text(const Parameter& p) const;

  private:
    double m_number = 0;
    ZmoiSizeL m_size{};
    Slot m_slot;
};
using Named = std::map<std::string, Value, std::less<>>;

class Function {
  public:
    template <class... A>
    Function(const char* name, ZmoStatus (*run)(A...))
        : Function(
              name, {parameterOf<A>()...}, [&]<size_t... i>(std::index_sequence<i...>) {
                  return [run](const Arguments& a) { return run(a[i].template as<A>()...); };
              }(std::index_sequence_for<A...>())) {}

    const std::string& name() const { return m_own->name; }
    bool isNamed(std::string_view part) const { return name().find(part) != std::string::npos; }
    const std::vector<Parameter>& parameters() const { return m_own->parameters; }
    bool has(std::string_view parameter) const;
    // The names of numbers that are no steps.
    std::vector<std::string> values() const;
    size_t placeOf(std::string_view parameter) const;
    // Of pSrc and of pDst, from the descriptor: the part of the name from "_C" and a digit on.
    int srcChannels() const { return m_own->srcChannels; }
    int dstChannels() const { return m_own->dstChannels; }
    bool masked() const { return has("maskStep"); }
    bool large() const { return isNamed("_L"); }
    ZmoStatus operator()(const Arguments& arguments) const { return m_own->run(arguments); }

  private:
    struct Own {
        std::string name;
        std::vector<Parameter> parameters;
        std::function<ZmoStatus(const Arguments&)> run;
        int srcChannels = 1;
        int dstChannels = 1;
    };
    Function(const char* name, std::vector<Parameter> parameters,
             std::function<ZmoStatus(const Arguments&)> run);

    std::shared_ptr<const Own> m_own;
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

// An image that is not of the region's size, has readable pixels around it or other channels than the
// function's name tells, or that is given without a step.
struct Shape {
    const char* name;
    ZmoiSize size = {};
    int margin = 0;
    int channels = 0;
};

class Case {
  public:
    explicit Case(Function function, ZmoiSize roi = {9, 4}, Layout layout = {},
                  const std::vector<Shape>& shapes = {});

    const Function& function() const { return m_function; }
    ZmoiSize roi() const { return m_roi; }

    // Images in their order, constant ones first.
    AnyImage& image(std::string_view name);
    AnyImage& image(size_t i) { return m_images[i].image; }
    const AnyImage& image(size_t i) const { return m_images[i].image; }
    size_t imageCount() const { return m_images.size(); }
    AnyImage& src() { return image(0); }
    const AnyImage& src() const { return image(0); }
    AnyImage& dst() { return m_images.back().image; }
    const AnyImage& dst() const { return m_images.back().image; }
    const std::string& targetName() const { return m_images.back().name; }
    Image<Zmo8u>& mask() { return image("pMask").as<Zmo8u>(); }
    bool selects(int x, int y) const;
    // Sources with the first, targets with the second; the mask stays.
    template <class Draw, class DrawTarget>
    void fillAll(Draw draw, DrawTarget drawTarget) {
        for (Own& own : m_images) {
            if (own.name == "pMask" && own.constant) continue;
            own.constant ? own.image.fill(draw) : own.image.fill(drawTarget);
        }
    }
    AnyImage& borderValue() { return *m_border; }

    // The function's own values, and what only its services ask for.
    Case& with(std::string_view name, Value value);
    Case& with(const Named& values);
    // Guarded memory for a pointer.
    Case& give(std::string_view name, Buffer memory);
    Buffer& memory(std::string_view name) { return m_memory.find(name)->second; }
    // Null pointers are right there.
    void allowNull(const char* name) { m_nullable.push_back(name); }
    // The function does not look whether the region needs more memory than a query can tell.
    void allowAnySize() { m_takesAnySize = true; }
    // Elements that an image's step must hold, if not a row of the image.
    void setRowNeeded(std::string_view image, int elements);
    // The rows that pointers to rows tell; behind them stands a null pointer.
    void setRows(int first, int count) { m_firstRow = first, m_rowCount = count; }

    // State and buffer of the sizes that a query tells of what this call has.
    Case& sized(const Function& query);
    // The state is made by a service with what this call has.
    Case& prepared(const Function& init, ZmoStatus status = zmoStsNoErr);

    // What the call must leave: each pixel, a result, a note.
    template <class Expected>
    Case& want(std::string_view name, Expected expected) {
        Own& own = find(name);
        own.want = own.image.alike(expected);
        return *this;
    }
    // Each pixel is one of the source with its bits.
    template <class From>
    Case& wantCopy(std::string_view name, From from) {
        Own& own = find(name);
        own.want = own.image.alike([] { return 0; });
        own.want->takeFrom(src(), from);
        return *this;
    }
    template <class Result>
    Case& wantResult(std::string_view name, Result result) {
        m_want.insert_or_assign(std::string(name), Slot::of(result));
        return *this;
    }
    // A list that has room for some entries, whose number is the result pCount, and a note when
    // there are more.
    template <class Entry>
    Case& wantList(std::string_view name, const std::vector<Entry>& entries, int room) {
        const int all = static_cast<int>(entries.size());
        wantStatus(all > room ? zmoStsTruncated : zmoStsNoErr);
        wantResult("pCount", std::min(all, room));
        return wantEntries(name, std::as_bytes(std::span(entries)),
                           std::min(all, room) * sizeof(Entry));
    }
    Case& wantStatus(ZmoStatus status) {
        m_wantStatus = status;
        return *this;
    }

    // Constant blocks stay as they are; of the others, all but the rows.
    ZmoStatus runUnwatched();
    // The same, and no floating-point flag is raised.
    ZmoStatus run();
    // Runs, compares with what is wanted, which must be all that it writes, and puts everything back.
    void expect();
    // Not watched; what is not told is wanted as the first time made it.
    void expectSameBits();
    // What a call, not watched, makes of the destination, which is put back.
    AnyImage tried();
    // The call gives the same when rows lie more than 2^31 bytes apart.
    void expectWithFarRows(int times = 1);

    // The call succeeds; it refuses null pointers, empty regions, steps that are too short, negative or
    // no multiple of the element, unknown borders, channels and the like, and what else is wrong, and
    // writes nothing then. Of two faults the earlier decides: pointers, sizes, steps, then the function's
    // own values in the order told, state, and sizes beyond all bounds.
    void expectBadArguments(const std::vector<Wrong>& wrong = {});

    std::string text() const;

  private:
    friend class Faults;
    struct Own {
        std::string name;
        AnyImage image;
        bool constant;
        bool stepped;
        int row;
        std::optional<AnyImage> want;
    };
    struct Guard {
        std::string name;
        Block* block;
        bool constant;
    };
    static std::string stepOf(const std::string& image);
    Own& find(std::string_view name);
    std::vector<Guard> guards();
    Arguments arguments();
    std::optional<Slot> own(const Parameter& p);
    Slot told(const Parameter& p);
    Case& wantEntries(std::string_view name, std::span<const std::byte> entries, size_t count);
    void compare(ZmoStatus status);
    void putBack();

    Function m_function;
    ZmoiSize m_roi;
    std::vector<Own> m_images;
    std::optional<AnyImage> m_border;
    std::map<std::string, Buffer, std::less<>> m_memory;
    Named m_values;
    std::map<std::string, Slot, std::less<>> m_results;
    std::map<std::string, Slot, std::less<>> m_want;
    std::map<std::string, std::vector<std::byte>> m_wantEntries;
    std::vector<const char*> m_nullable;
    std::vector<char*> m_rows;
    bool m_takesAnySize = false;
    int m_firstRow = 0;
    int m_rowCount;
    ZmoStatus m_wantStatus = zmoStsNoErr;
};

// Each case at each level. Switching levels takes longer than a small call, so all cases run at one
// level before the next. Under the sanitizers the levels take turns.
void expectAtAllLevels(std::vector<Case>& cases);
inline void expectAtAllLevels(Case one) {
    forEachLevel([&] { one.expect(); });
}
// Not watched; whatever comes of it, it is the same at all levels.
inline void expectSameAtAllLevels(Case one) {
    forEachLevel([&] { one.expectSameBits(); });
}

// prepare(random, row, size, layout, turn) makes a case with its oracle's results for each row of a table
// of functions and each size, in several rounds; layouts and turns change.
struct Walk {
    uint64_t stream;
    int rounds = 1;
    std::vector<ZmoiSize> more = {};
};
template <class Row, class Prepare>
void forEachCase(const Walk& walk, const std::vector<Row>& rows, Prepare prepare) {
    Random random(walk.stream);
    auto all = sizes();
    all.insert(all.end(), walk.more.begin(), walk.more.end());
    size_t turn = 0;
    for (const Row& row : rows) {
        std::vector<Case> cases;
        for (int round = 0; round < (sanitized ? 1 : walk.rounds); ++round) {
            for (const ZmoiSize size : all) {
                cases.push_back(prepare(random, row, size, layouts()[turn % 4], turn));
                ++turn;
            }
        }
        expectAtAllLevels(cases);
        // The next row meets other turns.
        ++turn;
    }
}
template <class Prepare>
void forEachCase(const Walk& walk, const Function& function, Prepare prepare) {
    const auto one = [&](Random& random, const Function&, ZmoiSize size, Layout layout,
                         size_t turn) { return prepare(random, size, layout, turn); };
    forEachCase(walk, std::vector<Function>{function}, one);
}

}  // namespace kit
