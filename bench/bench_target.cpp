// The library that is hosted while it is measured. Its calls do as little as such a library can: a read copies the
// block once, a write takes it as it is. It needs no library but the C library: the load of others is not the helper's
// affair.
#include "bench/work.h"

#include <cstdint>
#include <cstring>

#ifdef _WIN32
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

EXPORT std::uint32_t GetBackupType()
{
    return kessil::bench::backup_type;
}

EXPORT std::uint32_t VornReadFile(std::uint64_t /*session*/, std::uint64_t /*file*/, void *block, std::uint32_t size,
                                  std::uint32_t *count)
{
    constexpr std::uint32_t largest = 4 << 20;
    static const unsigned char *source = nullptr;
    if (source == nullptr)
        source = kessil::bench::MakeSource(largest);
    if (source == nullptr || size > largest)
        return 1;
    std::memcpy(block, source, size);
    *count = size;
    return 0;
}

EXPORT std::uint32_t VornWriteFile(std::uint64_t /*session*/, std::uint64_t /*file*/, void * /*block*/,
                                   std::uint32_t size, std::uint32_t *count)
{
    *count = size;
    return 0;
}
