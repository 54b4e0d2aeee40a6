/// An adapter that misbehaves. The name of the disk selects how: `dies` and `hangs` do so in the first call on the
/// second MiB, `forgets` accepts sectors and reads zeros, `stays open` fails to close. It has no error texts, and its
/// names contain control characters.

#include <kessil/adapter_interface.h>

#include <cstdlib>
#include <cstring>
#include <semaphore>

namespace {

AdapterLoggingCallBack g_log = nullptr;
std::string g_disk;
std::binary_semaphore g_never(0);

bool Misbehave(std::uint64_t start)
{
    if (start >= 2048 && g_disk == "dies")
        std::_Exit(3);
    if (start >= 2048 && g_disk == "hangs")
        g_never.acquire();
    return true;
}

} // namespace

void SetLoggingCallBack(AdapterLoggingCallBack callback)
{
    g_log = callback;
}

bool ListHosts(const char *, void *, AdapterListing **listing, VMLib_ErrorInfo **)
{
    *listing = new AdapterListing{{"\x1B[31m", -2147483647 - 1, 18446744073709551615u, 0}, {"\xFFx", 7, 0, 0}};
    g_log("two\r\x1B[2Jlines", 255);
    return true;
}

bool ListMachines(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)
{
    return false;
}

bool InitVixDiskLib(const char *config, const char *lib, VMLib_ErrorInfo **)
{
    g_log(config, 3);
    g_log(lib, 4);
    return true;
}

void ExitVixDiskLib() {}

bool OpenDisk(const char *, const char *diskPath, bool, void *, void **disk, VMLib_ErrorInfo **)
{
    g_disk = diskPath;
    *disk = &g_disk;
    return true;
}

bool CloseDisk(void **, VMLib_ErrorInfo **)
{
    return g_disk != "stays open";
}

bool ReadSectors(void *, std::uint64_t start, std::uint64_t count, void *data, VMLib_ErrorInfo **)
{
    std::memset(data, 0, count * 512);
    return Misbehave(start);
}

bool WriteSectors(void *, std::uint64_t start, std::uint64_t, const void *, VMLib_ErrorInfo **)
{
    return Misbehave(start);
}
