#include "ppargument.h"

#include "psdata.h"

namespace {

int sizeOf(const ppBuffer& buffer) {
    int size = 0;
    return psMallocInfo(buffer.get(), &size, nullptr) ? size : 0;
}

int channelsOf(const ppVector& vector) {
    const auto* const image = dynamic_cast<const ppImage*>(&vector);
    return image != nullptr && !image->isPlane() ? image->numChannels() : 1;
}

}  // namespace

ppArgument::ppArgument(ppRole role, const char* name, const ppVector& vector, double touched)
    : m_role(role),
      m_name(name),
      m_type(vector.type()),
      m_channels(channelsOf(vector)),
      m_rows(vector.getNumRows()),
      m_length(vector.getRowLen()),
      m_vector(&vector),
      m_touched(touched) {}

ppArgument::ppArgument(ppRole role, const char* name, ppType type, const void* data, int count)
    : m_role(role), m_name(name), m_type(type), m_length(count), m_data(data) {}

ppArgument::ppArgument(ppRole role, const char* name, const ppBuffer& buffer)
    : ppArgument(role, name, pp8u, buffer.get(), sizeOf(buffer)) {}

double ppArgument::trafficBytes() const {
    const double elements = m_touched < 0 ? static_cast<double>(m_rows) * m_length : m_touched;
    return elements * ppItem(m_type) * ((isRead() ? 1 : 0) + (isResult() ? 1 : 0));
}
