#include "anycall.h"

#include <algorithm>

namespace kit {

// The descriptor is the part from "_C" and a digit on.
void Function::sortParameters(const std::vector<bool>& isInt) {
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
        if (m_parameters[i].stretched) region = i;
    }
    for (size_t i = 0; i < m_parameters.size(); ++i) {
        const bool pointer = m_parameters[i].pointer;
        if (pointer && i < region && isInt[i + 1]) {
            m_images.push_back(i++);
        } else if (m_parameters[i].stretched) {
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

AnyCall::AnyCall(const Function& function, ZmoiSize roi, Layout layout,
                 const std::function<ZmoiSize(size_t image)>& larger)
    : m_function(function),
      m_roi(roi),
      m_sizes(function.sizes().size(), roi),
      m_values(function.values().size()),
      m_results(function.results().size()) {
    for (size_t i = 0; i < function.images().size(); ++i) {
        const ZmoiSize more = larger ? larger(i) : ZmoiSize{0, 0};
        const int k = static_cast<int>(i);
        // No two images lie alike.
        const Layout own{layout.misalign * (2 * k + 1) % 64,
                         layout.padding == 0 ? 0 : layout.padding + k};
        m_images.push_back(
            function.makeImage(i, {roi.width + more.width, roi.height + more.height}, own));
        m_rows.push_back((roi.width + more.width) * function.channels(i));
        fill(i, [] { return 1; });
    }
}

double AnyCall::get(size_t image, int x, int y, int channel) const {
    return std::visit([&](const auto& i) -> double { return i.get(x, y, channel); },
                      m_images[image]);
}

void AnyCall::set(size_t image, int x, int y, int channel, double value) {
    std::visit(
        [&]<class T>(Image<T>& i) {
            i.set(x, y, channel, static_cast<T>(value));
            i.snapshot();
        },
        m_images[image]);
}

size_t AnyCall::maskAt() const {
    size_t last = 0;
    for (size_t i = 0; i < m_images.size(); ++i) {
        if (isConstant(i)) last = i;
    }
    return last;
}

void AnyCall::setValue(size_t i, double value) {
    m_values[i] = m_function.parameter(m_function.values()[i]).fromNumber(value);
}

Call AnyCall::call() {
    Call call{m_function.parameters(),
              {},
              {},
              Arguments(m_function.parameters().size()),
              [this](const Arguments& a) { return m_function(a); }};
    for (size_t i = 0; i < m_images.size(); ++i) {
        const size_t place = m_function.images()[i];
        std::visit(
            [&](auto& image) {
                call.good[place] = Slot::of(image.ptr());
                call.good[place + 1] = Slot::of(image.step());
                call.guards.push_back(
                    {&image, place, int64_t{m_rows[i]} * m_function.parameter(place).element});
            },
            m_images[i]);
    }
    const auto place = [&](const std::vector<size_t>& places, const auto& values) {
        for (size_t i = 0; i < places.size(); ++i) call.good[places[i]] = values(i);
    };
    place(m_function.sizes(), [&](size_t i) { return Slot::of(m_sizes[i]); });
    place(m_function.values(), [&](size_t i) { return m_values[i]; });
    place(m_function.results(), [&](size_t i) { return Slot::of(m_results[i].bytes.data()); });
    return call;
}

ZmoStatus AnyCall::run() {
    // Bytes beyond a result's own are 0, as in a slot made of its value.
    std::ranges::fill(m_results, Slot());
    return kit::run(call());
}

void AnyCall::expectTarget(size_t image,
                           const std::function<double(int, int, int)>& expected) const {
    std::visit([&](const auto& i) { expectPixels(i, expected); }, m_images[image]);
}

void AnyCall::expectBadArguments(std::vector<Wrong> wrong) {
    const std::vector<size_t>& own = m_function.values();
    std::erase_if(wrong, [&](const Wrong& w) { return w.arguments[0].place >= own.size(); });
    for (Wrong& w : wrong) {
        for (auto& argument : w.arguments) argument.place = own[argument.place];
    }
    kit::expectBadArguments(call(), wrong);
}

}  // namespace kit
