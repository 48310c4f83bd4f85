#include "case.h"

#include <sys/mman.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "zmocore.h"

namespace kit {

// ---- Prototypes

namespace {

// The last word of a text, which may be followed by the bounds of an array.
std::string lastWord(std::string_view text) {
    constexpr std::string_view inWords =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    text = text.substr(0, text.find('['));
    text = text.substr(0, text.find_last_of(inWords) + 1);
    return std::string(text.substr(text.find_last_not_of(inWords) + 1));
}

using Prototypes = std::map<std::string, std::vector<std::string>, std::less<>>;

void addPrototypes(const std::filesystem::path& header, Prototypes& prototypes) {
    std::ostringstream text;
    text << std::ifstream(header).rdbuf();
    constexpr std::string_view mark = "\nZMO_API ";
    const std::string all = text.str();
    for (size_t at = all.find(mark); at != std::string::npos; at = all.find(mark, at + 1)) {
        const size_t open = all.find('(', at);
        std::istringstream list(all.substr(open + 1, all.find(");", open) - open - 1));
        auto& names = prototypes[lastWord(std::string_view(all).substr(at, open - at))];
        for (std::string one; std::getline(list, one, ',');) names.push_back(lastWord(one));
    }
}

const Prototypes& allPrototypes() {
    static const Prototypes prototypes = [] {
        Prototypes found;
        for (const auto& entry : std::filesystem::directory_iterator(ZMO_HEADERS)) {
            addPrototypes(entry.path(), found);
        }
        return found;
    }();
    return prototypes;
}

// The region that the steps and sizes of a call are about.
bool isRegion(const Parameter& p) {
    return p.fromSize != nullptr && (p.name == "roi" || p.name == "srcRoi");
}

}  // namespace

void Function::readNames() {
    const auto& names = allPrototypes().at(m_name);
    for (size_t i = 0; i < m_parameters.size(); ++i) m_parameters[i].name = names.at(i);
    for (size_t at = m_name.find("_C"); at != std::string::npos; at = m_name.find("_C", at + 1)) {
        const char digit = m_name[at + 2];
        if (digit < '1' || digit > '4') continue;
        m_srcChannels = m_dstChannels = digit - '0';
        if (m_name.substr(at + 3, 2) == "C1") m_dstChannels = 1;
    }
}

std::vector<std::string> Function::values() const {
    std::vector<std::string> names;
    for (const Parameter& p : parameters()) {
        if (p.fromNumber != nullptr && !p.name.ends_with("Step")) names.push_back(p.name);
    }
    return names;
}

bool Function::has(std::string_view parameter) const {
    return std::ranges::find(parameters(), parameter, &Parameter::name) != parameters().end();
}

size_t Function::placeOf(std::string_view parameter) const {
    const auto found = std::ranges::find(parameters(), parameter, &Parameter::name);
    if (found == parameters().end()) {
        throw std::invalid_argument(name() + " has no " + std::string(parameter));
    }
    return static_cast<size_t>(found - parameters().begin());
}

// ---- Values

std::ostream& operator<<(std::ostream& out, const Slot& slot) {
    return out << slot.as<double>() << " (64f), " << slot.as<float>() << " (32f), "
               << slot.as<ZmoiPoint>().x << ", " << slot.as<ZmoiPoint>().y << " (point)";
}

Value::Value(const std::vector<double>& list) {
    const ZmoiSize size{static_cast<int>(list.size()), 1};
    const Image numbers(size, [&](int x, int) { return list[static_cast<size_t>(x)]; });
    m_list = std::make_shared<List>(List{numbers, numbers});
}

Slot Value::as(const Parameter& p) const {
    if (p.fromNumber != nullptr) return p.fromNumber(m_number);
    if (p.fromSize != nullptr) return p.fromSize(m_size.width, m_size.height);
    if (!m_list) return m_slot;
    Image& memory = m_list->memory;
    if (memory.type() != p.pixels) memory = Image(p.pixels, memory.size()).fill(m_list->numbers);
    return Slot::of(memory.ptr());
}

std::string Value::text(const Parameter& p) const {
    std::ostringstream out;
    if (p.fromNumber != nullptr) {
        out << m_number;
    } else if (p.fromSize != nullptr) {
        out << m_size.width << "x" << m_size.height;
    } else if (m_list) {
        out << "list";
        const Image& all = m_list->numbers;
        for (int i = 0; i < all.size().width; ++i) out << " " << all(i, 0);
    } else if (p.pointer) {
        out << (as(p) == Slot() ? "null" : "pointer");
    } else {
        out << "record " << as(p);
    }
    return out.str();
}

void draw(Random& random, Image& image, Draw how) {
    const double low = image.least();
    const double high = image.most();
    const bool whole = image.isWhole();
    image.fill([&]() -> double {
        if (how == Draw::few) return random.between(low < 0 || !whole ? -6 : 0, 6);
        if (!whole) return random.uniform(-1, 1) * (how == Draw::any ? 1000 : 1e18);
        return how == Draw::any ? random.between(low, high) : random.between(0, 1) ? high : low;
    });
}

// ---- Cases

namespace {

// Memory for rows that lie more than 2^31 bytes apart, null when there is no address space; what is
// never touched costs nothing.
std::shared_ptr<char> farMemory(int64_t bytes) {
    const auto size = static_cast<size_t>(bytes);
    void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    return {static_cast<char*>(memory), [size](char* p) { munmap(p, size); }};
}

}  // namespace

Case::Case(Function function, const Turn& turn, const std::vector<Shape>& shapes)
    : m_function(std::move(function)), m_roi(turn.size), m_rowCount(m_roi.height) {
    const auto& all = m_function.parameters();
    for (size_t i = 0; i < all.size(); ++i) {
        const Parameter& p = all[i];
        if (isRegion(p)) m_values.try_emplace(p.name, m_roi);
        const auto shape = std::ranges::find(shapes, p.name, &Shape::name);
        const bool shaped = shape != shapes.end();
        const bool stepped = i + 1 < all.size() && all[i + 1].name.ends_with("Step");
        if (p.pixels == 0) continue;
        if (p.name == "pBorderValue") m_border.emplace(p.pixels, ZmoiSize{1, 1}, Layout(), 0, 4);
        if (!stepped && !shaped && !p.rows) continue;
        // No two images lie alike.
        const int k = static_cast<int>(m_images.size());
        const Layout own{turn.layout.misalign * (2 * k + 1) % 64,
                         turn.layout.padding == 0 ? 0 : turn.layout.padding + k};
        int channels = p.constant ? m_function.srcChannels() : m_function.dstChannels();
        if (p.name == "pMask") channels = 1;
        if (shaped && shape->channels != 0) channels = shape->channels;
        const ZmoiSize size = shaped && shape->size.width > 0 ? shape->size : m_roi;
        Image image(p.pixels, size, own, shaped ? shape->margin : 0, channels);
        image.fill(1);
        if (p.name == "pSrc" && m_function.has("srcRoi")) with("srcRoi", size);
        if (p.name == "pMask") m_maskAt = m_images.size();
        m_images.push_back(
            {p.name, std::move(image), p.constant, stepped, size.width * channels, {}});
    }
}

// "srcStep" of "pSrc".
std::string Case::stepOf(const std::string& image) {
    return static_cast<char>(std::tolower(image[1])) + image.substr(2) + "Step";
}

Case::Own& Case::find(std::string_view name) {
    const auto found = std::ranges::find(m_images, name, &Own::name);
    if (found == m_images.end()) throw std::invalid_argument("no image " + std::string(name));
    return *found;
}

Image& Case::image(std::string_view name) {
    return find(name).image;
}

void Case::fillAll(const Pixels& sources, const Pixels& targets) {
    for (Own& own : m_images) {
        if (own.name != "pMask" || !own.constant) own.image.fill(own.constant ? sources : targets);
    }
}

Case& Case::want(std::string_view name, const Pixels& pixels) {
    Own& own = find(name);
    own.want = own.image.alike(pixels);
    return *this;
}

Case& Case::wantCopy(const std::function<ZmoiPoint(int, int)>& from) {
    m_images.back().want = dst().alikeOf(src(), from);
    return *this;
}

Case& Case::with(std::string_view name, Value value) {
    m_values.insert_or_assign(std::string(name), value);
    return *this;
}

Case& Case::with(const Named& values) {
    for (const auto& [name, value] : values) with(name, value);
    return *this;
}

Case& Case::give(std::string_view name, Buffer memory) {
    m_memory.insert_or_assign(std::string(name), std::move(memory));
    return *this;
}

void Case::setRowNeeded(std::string_view image, int elements) {
    find(image).row = elements;
}

// What an argument of this name is here, whatever its type in another function.
std::optional<Slot> Case::own(const Parameter& p) {
    const auto value = m_values.find(p.name);
    if (value != m_values.end()) return value->second.as(p);
    const auto memory = m_memory.find(p.name);
    if (memory != m_memory.end()) return Slot::of(memory->second.ptr());
    if (p.name == "pBorderValue" && m_border) return Slot::of(m_border->ptr());
    if (m_images.empty()) return {};
    if (p.name == "type" || p.name == "srcType") return p.fromNumber(src().type());
    if (p.name == "dstType") return p.fromNumber(dst().type());
    if (p.name == "channels") return p.fromNumber(src().channels());
    return {};
}

Slot Case::slotOf(const Parameter& p) {
    const auto found = own(p);
    if (!found) throw std::invalid_argument("no value for " + p.name);
    return *found;
}

Case& Case::sized(const Function& query) {
    Arguments arguments;
    std::map<std::string, int64_t> sizes;
    for (const Parameter& p : query.parameters()) {
        const bool size = p.pointer && p.name.ends_with("ize");
        arguments.push_back(size ? Slot::of(&sizes[p.name]) : slotOf(p));
    }
    EXPECT_EQ(query(arguments), zmoStsNoErr) << query.name();
    for (const auto& [name, bytes] : sizes) {
        const bool state = name == "pStateSize" || (name == "pSize" && m_function.has("pState") &&
                                                    !m_function.has("pBuffer"));
        EXPECT_GE(bytes, 64) << query.name();
        give(state ? "pState" : "pBuffer", Buffer(bytes, state ? 3 : 1));
    }
    return *this;
}

Case& Case::prepared(const Function& init, ZmoStatus status) {
    Arguments arguments;
    for (const Parameter& p : init.parameters()) arguments.push_back(slotOf(p));
    Buffer& state = memory("pState");
    state.snapshot();
    EXPECT_EQ(watched([&] { return init(arguments); }), status) << init.name();
    state.expectSurroundingsUntouched("state");
    state.snapshot();
    return *this;
}

Arguments Case::arguments() {
    Arguments arguments;
    m_rows.clear();
    for (const Parameter& p : m_function.parameters()) {
        const auto image = std::ranges::find(m_images, p.name, &Own::name);
        if (image == m_images.end()) {
            // Room for a result.
            if (p.pointer && !p.constant && !own(p)) give(p.name, Buffer(32, 0));
            arguments.push_back(slotOf(p));
        } else if (p.rows) {
            for (int y = 0; y < m_rowCount; ++y) m_rows.push_back(image->image.ptr(m_firstRow + y));
            m_rows.push_back(nullptr);
            arguments.push_back(Slot::of(m_rows.data()));
        } else {
            arguments.push_back(Slot::of(image->image.ptr()));
            if (image->stepped) with(stepOf(p.name), image->image.step());
        }
    }
    return arguments;
}

std::vector<Case::Guard> Case::guards() {
    std::vector<Guard> guards;
    for (Own& own : m_images) guards.push_back({own.name, &own.image, own.constant});
    for (const Parameter& p : m_function.parameters()) {
        const auto memory = m_memory.find(p.name);
        if (memory != m_memory.end()) guards.push_back({p.name, &memory->second, p.constant});
        const auto value = m_values.find(p.name);
        if (value == m_values.end() || value->second.block() == nullptr) continue;
        guards.push_back({p.name, value->second.block(), true});
    }
    if (m_border) guards.push_back({"pBorderValue", &*m_border, true});
    return guards;
}

ZmoStatus Case::runUnwatched() {
    const Arguments all = arguments();
    const auto blocks = guards();
    for (const Guard& guard : blocks) guard.block->snapshot();
    const ZmoStatus status = m_function(all);
    for (const Guard& guard : blocks) {
        if (guard.constant) {
            guard.block->expectUntouched(guard.name);
        } else {
            guard.block->expectSurroundingsUntouched(guard.name);
        }
    }
    return status;
}

ZmoStatus Case::run() {
    return watched([this] { return runUnwatched(); });
}

void Case::putBack() {
    for (Own& own : m_images) {
        if (!own.constant) own.image.restore();
    }
    for (const auto& name : results()) memory(name).restore();
}

// What the call writes beside images, states and buffers.
std::vector<std::string> Case::results() const {
    std::vector<std::string> names;
    for (const Parameter& p : m_function.parameters()) {
        const bool writes = p.pointer && !p.constant && m_memory.contains(p.name);
        if (writes && p.name != "pState" && p.name != "pBuffer") names.push_back(p.name);
    }
    return names;
}

void Case::compare(ZmoStatus status) {
    EXPECT_EQ(status, m_wantStatus);
    for (const auto& [name, want] : m_wantMemory) {
        const size_t bytes = static_cast<size_t>(want.size());
        const Zmo8u* const made = memory(name).ptr();
        EXPECT_EQ(std::memcmp(made, want.ptr(), bytes), 0)
            << name << " is " << Slot::from(made, bytes) << " instead of "
            << Slot::from(want.ptr(), bytes);
    }
    for (const auto& name : results()) {
        EXPECT_TRUE(m_wantMemory.contains(name)) << "no " << name << " is wanted";
    }
    for (const Own& own : m_images) {
        SCOPED_TRACE(own.name);
        EXPECT_TRUE(own.constant || own.want) << "nothing is wanted";
        if (own.want) own.image.expect(*own.want);
    }
}

void Case::expect() {
    SCOPED_TRACE(text());
    compare(run());
    putBack();
}

void Case::expectSameBits() {
    SCOPED_TRACE(text());
    const ZmoStatus status = runUnwatched();
    for (Own& own : m_images) {
        if (!own.constant && !own.want) own.want = own.image;
    }
    for (const auto& name : results()) m_wantMemory.try_emplace(name, memory(name));
    compare(status);
    putBack();
}

Image Case::tried() {
    EXPECT_EQ(runUnwatched(), m_wantStatus);
    Image made = dst();
    putBack();
    return made;
}

bool Case::canHaveFarRows(bool two) const {
    const auto border = m_values.find("border");
    const bool inMemory = border != m_values.end() && border->second.is(zmoiBorderInMem);
    const auto fits = [two](const Own& own) { return own.image.size().height <= (two ? 2 : 8); };
    return m_function.large() && !inMemory && m_roi.height >= 2 && two == (m_roi.height == 2) &&
           std::ranges::all_of(m_images, fits);
}

void Case::expectWithFarRows() {
    SCOPED_TRACE(text());
    const int64_t step = (m_roi.height == 2 ? 4 : 1) * ((int64_t{1} << 31) + 4096);
    Arguments far = arguments();
    std::vector<std::shared_ptr<char>> memories;
    const auto forEachRow = [&](auto body) {
        for (size_t i = 0; i < m_images.size(); ++i) {
            Image& image = m_images[i].image;
            for (int y = 0; y < image.size().height; ++y) {
                body(memories[i].get() + y * step, image.ptr(y), image.rowBytes());
            }
        }
    };
    for (const Own& own : m_images) {
        memories.push_back(farMemory(own.image.size().height * step));
        if (!memories.back()) GTEST_SKIP() << "no address space for an image of 12 GB";
        const size_t place = m_function.placeOf(own.name);
        far[place] = Slot::of(memories.back().get());
        far[place + 1] = Slot::of(step);
    }
    forEachRow([](char* row, const char* near, size_t bytes) { std::memcpy(row, near, bytes); });
    EXPECT_EQ(run(), m_wantStatus);
    EXPECT_EQ(m_function(far), m_wantStatus);
    forEachRow([](const char* row, const char* near, size_t bytes) {
        EXPECT_EQ(std::memcmp(row, near, bytes), 0);
    });
    putBack();
}

std::string Case::text() const {
    std::ostringstream out;
    out << m_function.name() << " " << m_roi;
    for (const Parameter& p : m_function.parameters()) {
        const auto value = m_values.find(p.name);
        if (value == m_values.end() || p.name.ends_with("Step") || p.pointer) continue;
        out << " " << p.name << " " << value->second.text(p);
    }
    out << "; ZMO_TEST_SEED=" << runSeed();
    return out.str();
}

void expectAtAllLevels(std::vector<Case>& cases) {
    size_t levels = 0;
    forEachLevel([&] { ++levels; });
    size_t level = 0;
    forEachLevel([&] {
        for (size_t i = 0; i < cases.size(); ++i) {
            if (!sanitized || i % levels == level) cases[i].expect();
        }
        ++level;
    });
    for (const bool two : {true, false}) {
        const auto fits = [two](const Case& c) { return c.canHaveFarRows(two); };
        const auto far = std::ranges::find_if(cases, fits);
        if (far != cases.end()) far->expectWithFarRows();
        const bool needed = !two && !sanitized && cases.front().function().large();
        EXPECT_TRUE(far != cases.end() || !needed) << cases.front().function().name();
    }
}

void forEachCase(const Walk& walk, size_t rows,
                 const std::function<Case(Turn& turn, size_t row)>& prepare) {
    Turn turn(walk.stream);
    auto all = sizes();
    all.insert(all.end(), walk.more.begin(), walk.more.end());
    for (size_t row = 0; row < rows; ++row) {
        std::vector<Case> cases;
        for (int round = 0; round < (sanitized ? 1 : walk.rounds); ++round) {
            for (const ZmoiSize size : all) {
                turn.size = size;
                turn.layout = layouts()[turn.number % 4];
                cases.push_back(prepare(turn, row));
                ++turn.number;
            }
        }
        expectAtAllLevels(cases);
        // The next row meets other turns.
        ++turn.number;
    }
}

// ---- Bad arguments

// What can be wrong with the arguments of a case.
class Faults {
  public:
    explicit Faults(Case& c) : m_case(c), m_good(c.arguments()) {}

    void expect(const std::vector<Wrong>& wrong) {
        addUsual(wrong);
        for (const Wrong& one : wrong) {
            if (!one.inTurn) add(one.arguments, one.status);
            for (size_t i = 0; one.inTurn && i < one.arguments.size(); ++i) {
                add({one.arguments[i]}, one.status);
            }
        }
        placeUsual();
        for (const auto& guard : m_case.guards()) guard.block->snapshot();
        for (size_t i = 0; i < m_faults.size(); ++i) expectFault(i);
        EXPECT_EQ(statusWith({}), zmoStsNoErr);
        m_case.putBack();
    }

  private:
    struct Fault {
        std::string name;
        size_t place;  // of the last argument that it changes
        ZmoStatus status;
        std::vector<std::pair<size_t, Slot>> changes;
        bool usual;
    };

    const std::vector<Parameter>& parameters() const { return m_case.m_function.parameters(); }
    size_t placeOf(std::string_view name) const { return m_case.m_function.placeOf(name); }

    void add(const std::vector<Wrong::Argument>& arguments, ZmoStatus status, bool usual = false) {
        Fault fault{"", 0, status, {}, usual};
        for (const auto& [name, value] : arguments) {
            const size_t place = placeOf(name);
            fault.place = std::max(fault.place, place);
            fault.changes.push_back({place, value.as(parameters()[place])});
            fault.name += std::string(name) + " " + value.text(parameters()[place]) + ": ";
        }
        fault.name += zmoGetStatusString(status);
        m_faults.push_back(std::move(fault));
    }
    void addUsual(const char* name, std::initializer_list<Value> values, ZmoStatus status) {
        if (!m_case.m_function.has(name)) return;
        for (const Value& value : values) add({{name, value}}, status, true);
    }

    // What functions refuse by the names of their arguments.
    void addUsual(const std::vector<Wrong>& wrong) {
        const auto [width, height] = m_case.m_roi;
        for (const Parameter& p : parameters()) {
            const char* const name = p.name.c_str();
            if (p.pointer && !m_case.m_nullable.contains(p.name)) {
                addUsual(name, {nullptr}, zmoStsNullPtrErr);
            }
            if (!isRegion(p)) continue;
            addUsual(name, {ZmoiSize{0, height}, ZmoiSize{width, -height}}, zmoStsSizeErr);
        }
        for (const auto& own : m_case.m_images) {
            if (!own.stepped) continue;
            const int64_t element = parameters()[placeOf(own.name)].element;
            const int64_t row = own.row * element;
            const std::string step = Case::stepOf(own.name);
            addUsual(step.c_str(), {row - element, -row}, zmoStsStepErr);
            if (element > 1) addUsual(step.c_str(), {row + 1}, zmoStsStepErr);
        }
        if (m_case.m_function.has("pBorderValue")) {
            add({{"border", zmoiBorderConst}, {"pBorderValue", nullptr}}, zmoStsNullPtrErr, true);
        }
        addUsual("border", {4}, zmoStsBorderErr);
        addUsual("connectivity", {6, 0}, zmoStsConnectivityErr);
        addUsual("scaleFactor", {-32, 32}, zmoStsScaleErr);
        addUsual("coi", {0, m_case.m_function.srcChannels() + 1}, zmoStsCoiErr);
        addUsual("channels", {2}, zmoStsChannelsErr);
        // A state that nobody made.
        static const Zmo64u nothing[1000] = {};
        if (m_case.m_function.has("pState") && parameters()[placeOf("pState")].constant) {
            addUsual("pState", {&nothing[0]}, zmoStsStateErr);
        }
        if (std::ranges::count(wrong, ZmoStatus{zmoStsTooLargeErr}, &Wrong::status) == 0) {
            addUnbounded();
        }
    }

    // A region that needs more memory than a query can return, with steps that hold it.
    void addUnbounded() {
        const Function& function = m_case.m_function;
        if (function.isNamed("Size")) {
            addUsual("roi", {ZmoiSizeL{parameters()[0].most, 4}}, zmoStsTooLargeErr);
        }
        const bool bounded = !function.large() && !m_case.m_takesAnySize;
        if (!bounded || !function.has("pBuffer") || !function.has("roi")) return;
        constexpr int64_t most = std::numeric_limits<int>::max();
        int64_t width = most;
        std::vector<Wrong::Argument> arguments;
        for (const auto& own : m_case.m_images) {
            const int64_t pixel = parameters()[placeOf(own.name)].element * own.image.channels();
            width = std::min(width, most / 8 * 8 / pixel);
            arguments.push_back({parameters()[placeOf(own.name) + 1].name.c_str(), most / 8 * 8});
        }
        arguments.push_back({"roi", ZmoiSizeL{width, most}});
        add(arguments, zmoStsTooLargeErr, true);
    }

    // Pointers, sizes and steps first; a usual fault before the others of later arguments.
    void placeUsual() {
        std::vector<Fault> placed;
        for (const Fault& fault : m_faults) {
            auto place = placed.begin();
            for (auto at = place; at != placed.end(); ++at) {
                const bool own = !fault.usual && !at->usual;
                const bool after = fault.usual || own || at->place <= fault.place;
                if (rank(*at) < rank(fault) || (rank(*at) == rank(fault) && after)) place = at + 1;
            }
            placed.insert(place, fault);
        }
        m_faults = placed;
    }
    int rank(const Fault& fault) const {
        static constexpr ZmoStatus first[] = {zmoStsNullPtrErr, zmoStsSizeErr, zmoStsStepErr};
        const auto found = std::ranges::find(first, fault.status) - first;
        if (found < 3) return static_cast<int>(found);
        if (fault.status == zmoStsTooLargeErr) return 5;
        return parameters()[fault.place].name == "pState" ? 4 : 3;
    }

    ZmoStatus statusWith(const std::vector<const Fault*>& applied) const {
        Arguments bad = m_good;
        for (const Fault* fault : applied) {
            for (const auto& [place, slot] : fault->changes) bad[place] = slot;
        }
        return watched([&] { return m_case.m_function(bad); });
    }

    // Alone it gives its status; of two faults the earlier one decides; and nothing is written.
    void expectFault(size_t i) const {
        SCOPED_TRACE(m_case.m_function.name() + " " + m_faults[i].name);
        EXPECT_EQ(statusWith({&m_faults[i]}), m_faults[i].status);
        for (size_t j = i + 1; j < m_faults.size(); ++j) {
            EXPECT_EQ(statusWith({&m_faults[j], &m_faults[i]}), m_faults[i].status)
                << m_faults[j].name;
        }
        for (const auto& guard : m_case.guards()) guard.block->expectUntouched(guard.name);
    }

    Case& m_case;
    Arguments m_good;
    std::vector<Fault> m_faults;
};

void Case::expectBadArguments(const std::vector<Wrong>& wrong) {
    Faults(*this).expect(wrong);
}

}  // namespace kit
