#include "ppelf.h"

#include <elf.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <vector>

namespace {

constexpr std::uint64_t longestName = 4096;

// Reads of parts that a damaged file may place anywhere.
class Bytes {
  public:
    explicit Bytes(const psString& path) : m_file(path.c_str(), std::ios::binary) {
        const std::streamoff size = m_file.seekg(0, std::ios::end).tellg();
        m_size = size < 0 ? 0 : static_cast<std::uint64_t>(size);
    }
    bool isOpen() const { return m_file.is_open(); }
    std::uint64_t size() const { return m_size; }
    bool holds(std::uint64_t offset, std::uint64_t length) const {
        return offset <= m_size && length <= m_size - offset;
    }

    template <class T>
    bool read(std::uint64_t offset, T* items, std::uint64_t count) {
        if (count > m_size / sizeof(T) || !holds(offset, count * sizeof(T))) return false;
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(offset));
        m_file.read(reinterpret_cast<char*>(items),
                    static_cast<std::streamsize>(count * sizeof(T)));
        return m_file.good();
    }

    psString text(std::uint64_t offset) {
        if (offset >= m_size) return {};
        std::vector<char> name(std::min(longestName, m_size - offset));
        if (!read(offset, name.data(), name.size())) return {};
        return std::string_view(name.data(), strnlen(name.data(), name.size()));
    }

  private:
    std::ifstream m_file;
    std::uint64_t m_size = 0;
};

psString otherMachine(const Elf64_Ehdr& header) {
    if (header.e_ident[EI_CLASS] != ELFCLASS64) return "wrong ELF class";
    return header.e_machine == EM_X86_64 ? "" : "it is an object for another processor";
}

psString missingPart(const std::vector<Elf64_Phdr>& segments, const Bytes& file) {
    for (const Elf64_Phdr& segment : segments) {
        if (segment.p_type != PT_LOAD || file.holds(segment.p_offset, segment.p_filesz)) continue;
        return psString("the file is cut short: it has ") + psText(file.size()) +
               " bytes, and a segment of " + psText(segment.p_filesz) + " bytes begins at byte " +
               psText(segment.p_offset);
    }
    return {};
}

std::optional<std::uint64_t> offsetOf(std::uint64_t address,
                                      const std::vector<Elf64_Phdr>& segments) {
    for (const Elf64_Phdr& segment : segments) {
        if (segment.p_type != PT_LOAD || address < segment.p_vaddr) continue;
        const std::uint64_t inside = address - segment.p_vaddr;
        if (inside < segment.p_filesz) return segment.p_offset + inside;
    }
    return {};
}

std::vector<Elf64_Dyn> dynamicEntries(const std::vector<Elf64_Phdr>& segments, Bytes& file) {
    for (const Elf64_Phdr& segment : segments) {
        if (segment.p_type != PT_DYNAMIC || !file.holds(segment.p_offset, segment.p_filesz))
            continue;
        std::vector<Elf64_Dyn> entries(segment.p_filesz / sizeof(Elf64_Dyn));
        if (file.read(segment.p_offset, entries.data(), entries.size())) return entries;
    }
    return {};
}

psStringList neededNames(const std::vector<Elf64_Phdr>& segments, Bytes& file) {
    const std::vector<Elf64_Dyn> entries = dynamicEntries(segments, file);
    std::optional<std::uint64_t> names;
    for (const Elf64_Dyn& entry : entries) {
        if (entry.d_tag == DT_STRTAB) names = offsetOf(entry.d_un.d_ptr, segments);
    }
    psStringList needed;
    for (const Elf64_Dyn& entry : entries) {
        if (entry.d_tag == DT_NULL) break;
        if (entry.d_tag == DT_NEEDED && names)
            needed.push_back(file.text(*names + entry.d_un.d_val));
    }
    return needed;
}

}  // namespace

ppElfFile ppElfFile::read(const psString& path) {
    ppElfFile elf;
    Bytes file(path);
    if (!file.isOpen()) {
        elf.passedOver = std::strerror(errno);
        return elf;
    }
    Elf64_Ehdr header;
    if (!file.read(0, &header, 1) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return elf;
    elf.passedOver = otherMachine(header);
    if (!elf.passedOver.empty()) return elf;

    std::vector<Elf64_Phdr> segments(header.e_phnum);
    if (!file.read(header.e_phoff, segments.data(), segments.size())) return elf;
    elf.cutShort = missingPart(segments, file);
    elf.needed = neededNames(segments, file);
    return elf;
}
