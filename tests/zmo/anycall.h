// Library functions called by their prototypes alone: images with their steps, the mask behind the
// sources, the region, then the function's own values and pointers to its results. A family's test
// needs a table of functions and an oracle; pixels are told as doubles, which hold all types exactly.
#pragma once

#include <string_view>
#include <utility>
#include <variant>

#include "call.h"

namespace kit {

using AnyImage =
    std::variant<Image<Zmo8u>, Image<Zmo16u>, Image<Zmo32s>, Image<Zmo32f>, Image<Zmo64f>>;

// The largest value of an integer type, 0 for floats.
inline double mostOf(const AnyImage& image) {
    return std::visit(
        []<class T>(const Image<T>&) -> double {
            return std::is_integral_v<T> ? static_cast<double>(std::numeric_limits<T>::max()) : 0;
        },
        image);
}

inline std::ostream& operator<<(std::ostream& out, const Slot& slot) {
    return out << slot.as<double>() << " (64f), " << slot.as<float>() << " (32f), "
               << slot.as<ZmoiPoint>().x << ", " << slot.as<ZmoiPoint>().y << " (point)";
}

// How to make an image of what a parameter points to.
using MakeImage = AnyImage (*)(ZmoiSize, Layout, int channels);

template <class A>
MakeImage imageOf() {
    if constexpr (std::is_pointer_v<A>) {
        using Element = std::remove_const_t<std::remove_pointer_t<A>>;
        if constexpr (std::is_constructible_v<AnyImage, Image<Element>>) {
            return [](ZmoiSize size, Layout layout, int channels) -> AnyImage {
                return Image<Element>(size, layout, 0, channels);
            };
        }
    }
    return nullptr;
}

class Function {
  public:
    template <class... A>
    Function(const char* name, ZmoStatus (*run)(A...))
        : m_name(name),
          m_parameters{parameterOf<A>()...},
          m_makeImage{imageOf<A>()...},
          m_run(withArguments(run)) {
        sortParameters({std::is_same_v<A, int>...});
    }

    const char* name() const { return m_name; }
    bool isNamed(std::string_view part) const {
        return std::string_view(m_name).find(part) != std::string_view::npos;
    }
    bool masked() const { return m_masked; }
    bool inPlace() const { return m_inPlace; }
    const Parameter& parameter(size_t i) const { return m_parameters[i]; }
    const std::vector<Parameter>& parameters() const { return m_parameters; }
    AnyImage makeImage(size_t image, ZmoiSize size, Layout layout) const {
        return m_makeImage[m_images[image]](size, layout, channels(image));
    }
    // The places of arguments of one kind, in their order.
    const std::vector<size_t>& images() const { return m_images; }
    const std::vector<size_t>& sizes() const { return m_sizes; }
    const std::vector<size_t>& values() const { return m_values; }
    const std::vector<size_t>& results() const { return m_results; }
    // Of an image: the mask has one.
    int channels(size_t image) const;
    ZmoStatus operator()(const Arguments& arguments) const { return m_run(arguments); }

  private:
    void sortParameters(const std::vector<bool>& isInt);

    const char* m_name;
    std::vector<Parameter> m_parameters;
    std::vector<MakeImage> m_makeImage;
    std::function<ZmoStatus(const Arguments&)> m_run;
    bool m_masked = false;
    bool m_inPlace = false;
    int m_srcChannels = 1;
    int m_dstChannels = 1;
    std::vector<size_t> m_images;
    std::vector<size_t> m_sizes;
    std::vector<size_t> m_values;
    std::vector<size_t> m_results;
};

// A call with images of its own. Constant images are sources, the last the mask if there is one; the
// others are targets.
class AnyCall {
  public:
    // larger tells by how much an image's sides exceed the region's.
    AnyCall(const Function& function, ZmoiSize roi, Layout layout,
            const std::function<ZmoiSize(size_t image)>& larger = {});

    const Function& function() const { return m_function; }
    ZmoiSize roi() const { return m_roi; }
    const AnyImage& image(size_t i) const { return m_images[i]; }
    ZmoiSize sizeOf(size_t image) const {
        return std::visit([](const auto& i) { return i.size(); }, m_images[image]);
    }
    double get(size_t image, int x, int y, int channel = 0) const;
    void set(size_t image, int x, int y, int channel, double value);
    template <class Draw>
    void fill(size_t image, Draw draw) {
        std::visit([&](auto& i) { i.fill(draw); }, m_images[image]);
    }
    // Sources with the first, targets with the second; the mask stays.
    template <class Draw, class DrawTarget>
    void fillAll(Draw draw, DrawTarget drawTarget) {
        for (size_t i = 0; i < m_images.size(); ++i) {
            if (isMask(i)) continue;
            if (isConstant(i)) {
                fill(i, draw);
            } else {
                fill(i, drawTarget);
            }
        }
    }
    Image<Zmo8u>& mask() { return std::get<Image<Zmo8u>>(m_images[maskAt()]); }
    bool selects(int x, int y) const { return !m_function.masked() || get(maskAt(), x, y) != 0; }

    // The function's own values, and all sizes but the region.
    void setValue(size_t i, double value);
    template <class A>
    void setValueTo(size_t i, A value) {
        m_values[i] = Slot::of(value);
    }
    void setSize(size_t i, ZmoiSize size) { m_sizes[i] = size; }
    // Elements that an image's step must hold, if not a row of the image.
    void setRowNeeded(size_t image, int elements) { m_rows[image] = elements; }

    Call call();
    ZmoStatus run();
    // Places count the function's own values; what it does not have is passed over.
    void expectBadArguments(std::vector<Wrong> wrong);
    const std::vector<Slot>& results() const { return m_results; }
    // Every pixel of a target has the bits that expected(x, y, channel) tells.
    void expectTarget(size_t image, const std::function<double(int, int, int)>& expected) const;

  private:
    size_t maskAt() const;
    bool isMask(size_t image) const { return m_function.masked() && image == maskAt(); }
    bool isConstant(size_t image) const {
        return m_function.parameter(m_function.images()[image]).constant;
    }

    const Function& m_function;
    ZmoiSize m_roi;
    std::vector<AnyImage> m_images;
    std::vector<int> m_rows;
    std::vector<ZmoiSize> m_sizes;
    std::vector<Slot> m_values;
    std::vector<Slot> m_results;
};

// At each level, body(random, row) for all rows of a table of functions.
template <class Row, class Body>
void forEachRow(uint64_t stream, const std::vector<Row>& rows, Body body) {
    forEachLevel([&] {
        Random random(stream);
        for (const Row& row : rows) {
            SCOPED_TRACE(row.function.name());
            body(random, row);
        }
    });
}

// The same, body(random, row, size, layout, turn) for all sizes; each row meets them on other turns.
template <class Row, class Body>
void forEachRow(uint64_t stream, const std::vector<Row>& rows, const std::vector<ZmoiSize>& sizes,
                Body body) {
    const auto all = layouts();
    size_t turn = 0;
    forEachRow(stream, rows, [&](Random& random, const Row& row) {
        ++turn;
        for (const ZmoiSize size : sizes) {
            const Layout layout = all[turn % all.size()];
            SCOPED_TRACE(testing::Message() << size << " " << layout << " turn " << turn);
            body(random, row, size, layout, turn++);
        }
    });
}

}  // namespace kit
