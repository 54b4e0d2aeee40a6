#include "platform/posix/library_search.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace kessil::platform::posix {
namespace {

// The cache's layout, in the processor's byte order: a header, `count` entries, texts. An entry has the offsets of its
// texts, counted from the header.
constexpr std::string_view cache_magic = "glibc-ld.so.cache1.1";
struct CacheHeader
{
    char magic[20];
    std::uint32_t count;
    std::uint32_t unused[6];
};
struct CacheEntry
{
    std::uint32_t flags;
    std::uint32_t name;
    std::uint32_t path;
    std::uint32_t unused[3];
};

bool IsFile(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

std::string ReadWhole(const char *path)
{
    std::string bytes;
    std::FILE *const file = std::fopen(path, "rbe");
    if (file == nullptr)
        return bytes;
    char block[4096];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file))
        bytes.append(block, count);
    std::fclose(file);
    return bytes;
}

// False when it isn't completely within the file.
template <class Record>
bool ReadRecord(std::string_view bytes, std::size_t offset, Record &record)
{
    if (offset > bytes.size() || bytes.size() - offset < sizeof record)
        return false;
    std::memcpy(&record, bytes.data() + offset, sizeof record);
    return true;
}

std::string_view TextAt(std::string_view bytes, std::size_t offset)
{
    const std::string_view rest = bytes.substr(std::min(offset, bytes.size()));
    return rest.substr(0, rest.find('\0'));
}

} // namespace

std::string FindInDirectories(std::string_view directories, const std::string &name)
{
    while (!directories.empty()) {
        const std::string_view directory = directories.substr(0, directories.find(':'));
        directories.remove_prefix(std::min(directory.size() + 1, directories.size()));
        std::string candidate = std::string(directory) + "/" + name;
        if (!directory.empty() && IsFile(candidate))
            return candidate;
    }
    return {};
}

std::vector<std::string> FindInLoaderCache(const std::string &name)
{
    const std::string file = ReadWhole("/etc/ld.so.cache");
    // An older format may precede this one.
    const std::string_view cache = std::string_view(file).substr(std::min(file.find(cache_magic), file.size()));
    std::vector<std::string> paths;
    CacheHeader header = {};
    CacheEntry entry = {};
    ReadRecord(cache, 0, header);
    for (std::uint32_t i = 0; i < header.count; ++i) {
        if (!ReadRecord(cache, sizeof header + i * sizeof entry, entry))
            break;
        if (TextAt(cache, entry.name) == name)
            paths.emplace_back(TextAt(cache, entry.path));
    }
    return paths;
}

} // namespace kessil::platform::posix
