#include "platform/posix/elf_needs.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace kessil::platform::posix {
namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Entry = ElfW(Dyn);
using Address = ElfW(Addr);

// Limits that no real library reaches; a file that exceeds them is malformed.
constexpr std::size_t most_segments = 256;
constexpr std::size_t most_entries = 4096;
constexpr std::size_t longest_text = 4096;

class File
{
public:
    explicit File(const std::string &name)
        : m_descriptor(open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
    {}
    ~File()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    bool IsRegular() const
    {
        struct stat status = {};
        return m_descriptor >= 0 && fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
    }

    // Returns the number of bytes read; the end of the file may limit it.
    std::size_t Read(Address offset, void *bytes, std::size_t size) const
    {
        const ssize_t count = pread(m_descriptor, bytes, size, static_cast<off_t>(offset));
        return count < 0 ? 0 : static_cast<std::size_t>(count);
    }

    // The records that are completely within the file.
    template <class Record>
    std::vector<Record> ReadRecords(Address offset, std::size_t count) const
    {
        std::vector<Record> records(count);
        records.resize(Read(offset, records.data(), count * sizeof(Record)) / sizeof(Record));
        return records;
    }

    // A text that ends in a zero byte; empty when it doesn't.
    std::string ReadText(Address offset) const
    {
        const std::vector<char> bytes = ReadRecords<char>(offset, longest_text);
        const auto end = std::ranges::find(bytes, '\0');
        return end == bytes.end() ? std::string() : std::string(bytes.begin(), end);
    }

private:
    int m_descriptor;
};

bool IsReadable(const Header &header)
{
    constexpr unsigned char native_class = sizeof(Address) == 8 ? ELFCLASS64 : ELFCLASS32;
    constexpr unsigned char native_order = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == native_class &&
           header.e_ident[EI_DATA] == native_order && header.e_phentsize == sizeof(Segment) &&
           header.e_phnum <= most_segments;
}

// The place in the file that an address of the loaded library comes from.
std::optional<Address> OffsetOf(const std::vector<Segment> &segments, Address address)
{
    for (const Segment &segment : segments) {
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr && address - segment.p_vaddr < segment.p_filesz)
            return segment.p_offset + (address - segment.p_vaddr);
    }
    return std::nullopt;
}

std::vector<Entry> ReadDynamicSection(const File &file, const std::vector<Segment> &segments)
{
    const auto segment = std::ranges::find(segments, PT_DYNAMIC, &Segment::p_type);
    if (segment == segments.end())
        return {};
    std::vector<Entry> entries = file.ReadRecords<Entry>(
        segment->p_offset, std::min<std::size_t>(segment->p_filesz / sizeof(Entry), most_entries));
    entries.erase(std::ranges::find(entries, DT_NULL, &Entry::d_tag), entries.end());
    return entries;
}

} // namespace

ElfNeeds ReadElfNeeds(const std::string &name)
{
    ElfNeeds needs;
    const File file(name);
    Header header = {};
    if (!file.IsRegular() || file.Read(0, &header, sizeof header) != sizeof header || !IsReadable(header))
        return needs;
    const std::vector<Segment> segments = file.ReadRecords<Segment>(header.e_phoff, header.e_phnum);
    const std::vector<Entry> entries = ReadDynamicSection(file, segments);
    const auto texts = std::ranges::find(entries, DT_STRTAB, &Entry::d_tag);
    const auto start = texts == entries.end() ? std::nullopt : OffsetOf(segments, texts->d_un.d_ptr);
    if (!start)
        return needs;
    for (const Entry &entry : entries) {
        if (entry.d_tag == DT_NEEDED)
            needs.libraries.push_back(file.ReadText(*start + entry.d_un.d_val));
        else if (entry.d_tag == DT_RPATH)
            needs.rpath = file.ReadText(*start + entry.d_un.d_val);
        else if (entry.d_tag == DT_RUNPATH)
            needs.runpath = file.ReadText(*start + entry.d_un.d_val);
    }
    return needs;
}

} // namespace kessil::platform::posix
