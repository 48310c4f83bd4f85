#include "call.h"

#include <algorithm>

namespace kit {

namespace {

// What a result holds before a call.
const Slot unwritten = Slot::of(-12345.678);

}  // namespace

// The descriptor is the part from "_C" and a digit on.
void Function::sortParameters() {
    const std::string_view name = m_name;
    size_t at = name.find("_C");
    while (name[at + 2] < '1' || name[at + 2] > '4') at = name.find("_C", at + 1);
    const std::string_view descriptor = name.substr(at + 1, name.find('R', at) - at);
    m_masked = descriptor.find('M') != std::string_view::npos;
    m_inPlace = descriptor.find('I') != std::string_view::npos;
    m_srcChannels = m_dstChannels = descriptor[1] - '0';
    if (descriptor[2] == 'C' && descriptor[3] < 'A') m_dstChannels = descriptor[3] - '0';

    size_t region = 0;
    for (size_t i = 0; i < m_parameters.size(); ++i) {
        if (m_parameters[i].size) region = i;
    }
    for (size_t i = 0; i < m_parameters.size(); ++i) {
        const bool pointer = m_parameters[i].element != 0;
        if (pointer && i < region && m_parameters[i + 1].integer) {
            m_images.push_back(i++);
        } else if (m_parameters[i].size) {
            m_sizes.push_back(i);
        } else {
            (pointer ? m_results : m_values).push_back(i);
        }
    }
}

int Function::channels(size_t image) const {
    const Parameter& p = m_parameters[m_images[image]];
    if (!p.constant) return m_dstChannels;
    const bool last = image + 1 == m_images.size() || !m_parameters[m_images[image + 1]].constant;
    return m_masked && last ? 1 : m_srcChannels;
}

Fault<Arguments> Function::bad(size_t value, double with, ZmoStatus status) const {
    const size_t place = m_values[value];
    const Slot slot = m_parameters[place].fromDouble(with);
    return {"own value", status, [=](Arguments& a) { a[place] = slot; }};
}

Call::Call(const Function& function, ZmoiSize roi, Layout layout,
           const std::function<ZmoiSize(size_t image)>& larger)
    : m_function(function),
      m_roi(roi),
      m_sizes(function.sizes().size(), roi),
      m_values(function.values().size()),
      m_results(function.results().size(), unwritten) {
    for (size_t i = 0; i < function.images().size(); ++i) {
        const ZmoiSize more = larger ? larger(i) : ZmoiSize{0, 0};
        const int k = static_cast<int>(i);
        // No two images lie alike.
        const Layout own{layout.misalign * (2 * k + 1) % 64,
                         layout.padding == 0 ? 0 : layout.padding + k};
        m_images.push_back(function.parameter(function.images()[i])
                               .makeImage({roi.width + more.width, roi.height + more.height}, own,
                                          function.channels(i)));
        m_rows.push_back((roi.width + more.width) * function.channels(i));
        fill(i, [] { return 1; });
    }
}

double Call::get(size_t image, int x, int y, int channel) const {
    return std::visit([&](const auto& i) -> double { return i.get(x, y, channel); },
                      m_images[image]);
}

void Call::set(size_t image, int x, int y, int channel, double value) {
    std::visit(
        [&]<class T>(Image<T>& i) {
            i.set(x, y, channel, static_cast<T>(value));
            i.snapshot();
        },
        m_images[image]);
}

size_t Call::maskAt() const {
    size_t last = 0;
    for (size_t i = 0; i < m_images.size(); ++i) {
        if (isConstant(i)) last = i;
    }
    return last;
}

void Call::setValue(size_t i, double value) {
    m_values[i] = m_function.parameter(m_function.values()[i]).fromDouble(value);
}

Arguments Call::arguments() {
    Arguments a(m_function.parameters());
    for (size_t i = 0; i < m_images.size(); ++i) {
        const size_t place = m_function.images()[i];
        std::visit(
            [&](auto& image) {
                a[place] = Slot::of(static_cast<const void*>(image.ptr()));
                a[place + 1] = Slot::of(image.step());
            },
            m_images[i]);
    }
    for (size_t i = 0; i < m_sizes.size(); ++i) a[m_function.sizes()[i]] = Slot::of(m_sizes[i]);
    for (size_t i = 0; i < m_values.size(); ++i) a[m_function.values()[i]] = m_values[i];
    for (size_t i = 0; i < m_results.size(); ++i) {
        a[m_function.results()[i]] = Slot::of(static_cast<void*>(m_results[i].bytes.data()));
    }
    return a;
}

ZmoStatus Call::run() {
    // Bytes beyond a result's own are 0, as in a slot made of its value.
    std::ranges::fill(m_results, Slot());
    const Arguments a = arguments();
    const ZmoStatus status = watched([&] { return m_function(a); });
    for (size_t i = 0; i < m_images.size(); ++i) {
        std::visit(
            [&](const auto& image) {
                if (isConstant(i)) {
                    image.expectUntouched("source");
                } else {
                    image.expectSurroundingsUntouched("target");
                }
            },
            m_images[i]);
    }
    return status;
}

void Call::expectTarget(size_t image, const std::function<double(int, int, int)>& expected) const {
    std::visit([&](const auto& i) { expectPixels(i, expected); }, m_images[image]);
}

void Call::expectBadArguments(const std::vector<Fault<Arguments>>& own) {
    std::vector<Fault<Arguments>> faults;
    for (size_t i = 0; i < m_function.parameters(); ++i) {
        if (m_function.parameter(i).element == 0) continue;
        faults.push_back({"null", zmoStsNullPtrErr,
                          [i](Arguments& a) { a[i] = Slot::of(static_cast<void*>(nullptr)); }});
    }
    for (const size_t i : m_function.sizes()) {
        const auto resize = [i](Arguments& a, int width, int height) {
            const auto size = a[i].as<ZmoiSize>();
            a[i] = Slot::of(ZmoiSize{size.width * width, size.height * height});
        };
        faults.push_back({"width 0", zmoStsSizeErr, [=](Arguments& a) { resize(a, 0, 1); }});
        faults.push_back(
            {"height negative", zmoStsSizeErr, [=](Arguments& a) { resize(a, 1, -1); }});
    }
    for (size_t image = 0; image < m_images.size(); ++image) {
        const size_t i = m_function.images()[image];
        const int element = m_function.parameter(i).element;
        const auto add = [&](const char* name, int step) {
            faults.push_back(
                {name, zmoStsStepErr, [=](Arguments& a) { a[i + 1] = Slot::of(step); }});
        };
        add("step short", (m_rows[image] - 1) * element);
        add("step 0", 0);
        if (element > 1)
            add("step odd", sizeOf(image).width * m_function.channels(image) * element + 1);
    }
    faults.insert(faults.end(), own.begin(), own.end());
    std::ranges::fill(m_results, unwritten);
    expectFaults(
        arguments(), [this](const Arguments& a) { return m_function(a); }, faults,
        [this] {
            for (const AnyImage& i : m_images) {
                std::visit([](const auto& image) { image.expectUntouched("image"); }, i);
            }
            for (const Slot& result : m_results) EXPECT_EQ(result, unwritten);
        });
}

}  // namespace kit
