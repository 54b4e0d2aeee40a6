// The library that is hosted while the helper is measured. Its functions do as little as such a library can: a read
// copies the block once, or returns a pointer to it, and a write copies nothing. It needs no library but the C library,
// because the time to load others is not the helper's.
#include "bench/work.h"

#include <cstdint>
#include <cstring>

#ifdef _WIN32
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

using kessil::bench::sector_size;
using kessil::bench::written_byte;

namespace {

constexpr std::uint32_t largest = 4 << 20;

const unsigned char *Source()
{
    // Not created by the initialiser: the guard of a static initialiser comes from another library.
    static const unsigned char *source = nullptr;
    if (source == nullptr)
        source = kessil::bench::MakeSource(largest);
    return source;
}

std::uint32_t ReadBlock(void *block, std::uint32_t size, std::uint32_t *count)
{
    if (Source() == nullptr || size > largest)
        return 1;
    std::memcpy(block, Source(), size);
    *count = size;
    return 0;
}

} // namespace

EXPORT std::uint32_t GetBackupType()
{
    return kessil::bench::backup_type;
}

EXPORT std::uint32_t VornReadFile(std::uint64_t /*session*/, std::uint64_t /*file*/, void *block, std::uint32_t size,
                                  std::uint32_t *count)
{
    return ReadBlock(block, size, count);
}

EXPORT std::uint32_t HrESEBackupReadFile(std::uint64_t /*context*/, std::uint64_t /*file*/, void *data,
                                         std::uint32_t size, std::uint32_t *count)
{
    return ReadBlock(data, size, count);
}

EXPORT std::uint32_t MapiReadMail(std::uint64_t /*mapi*/, void *block, std::uint32_t length, std::uint32_t *count)
{
    return ReadBlock(block, length, count);
}

EXPORT std::uint32_t cwbDB_GetDataPointer(std::uint32_t /*data*/, const void **pointer, std::uint32_t /*errors*/)
{
    *pointer = Source();
    return Source() == nullptr ? 1 : 0;
}

EXPORT std::uint32_t VornWriteFile(std::uint64_t /*session*/, std::uint64_t /*file*/, void * /*block*/,
                                   std::uint32_t size, std::uint32_t *count)
{
    *count = size;
    return 0;
}

EXPORT bool ReadSectors(void * /*disk*/, std::uint64_t /*start*/, std::uint64_t count, void *data, void ** /*error*/)
{
    std::uint32_t delivered = 0;
    return count <= largest / sector_size &&
           ReadBlock(data, static_cast<std::uint32_t>(count) * sector_size, &delivered) == 0;
}

// Nothing in the answer would show that the data didn't arrive.
EXPORT bool WriteSectors(void * /*disk*/, std::uint64_t /*start*/, std::uint64_t count, const void *data,
                         void ** /*error*/)
{
    const auto *const bytes = static_cast<const unsigned char *>(data);
    return count > 0 && bytes[0] == written_byte && bytes[count * sector_size - 1] == written_byte;
}
