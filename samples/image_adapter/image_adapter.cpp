/// image_adapter: a small adapter that serves a directory as if it were a virtual machine host.
///
/// The root is the directory that CreateCredentials gets as its first text; the second one is ignored. It contains
///
///     hosts/ datacenters/ datastores/ folders/    the directories that ListHosts and so on list
///     machines/NAME/                              a machine: a directory, as ListMachines lists it
///     machines/NAME/DISK                          its disks: files of a multiple of 512 bytes
///
/// Each list takes a path below the directory of its kind, and lists the topmost ones for an empty path. ListDataStores
/// takes it as its first text and ignores the rest. OpenListing takes a path below the root and lists files as well;
/// listing_opts is ignored. served_root.h defines the numbers of an item.
///
/// OpenDisk takes the machine, the disk, and whether the disk is only to be read. InitVixDiskLib must be called first.
/// NextItem succeeds with an empty name at the end of a listing.
///
/// Text is UTF-8 (on Linux, names are any bytes). Each failure is logged with level 1; what is opened and closed, with
/// level 2.
///
/// An adapter needs only one header of kessil, kessil/adapter_interface.h, and has to be built with the compiler and
/// the C++ library that kessil was built with. This one is built by itself with
///
///     cmake -S samples/image_adapter -B /tmp/image_adapter && cmake --build /tmp/image_adapter
///
/// or, without CMake, in its directory, where INCLUDE is the directory with kessil/adapter_interface.h:
///
///     g++ -std=c++20 -O2 -shared -fPIC -fvisibility=hidden -I INCLUDE
///         -o image_tarnlink_windows_x64.dll.so disk_image.cpp image_adapter.cpp is_link_posix.cpp served_root.cpp
///     x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -shared -static -I INCLUDE
///         -o image_tarnlink_windows_x64.dll disk_image.cpp image_adapter.cpp is_link_windows.cpp served_root.cpp

#include "disk_image.h"
#include "served_root.h"

#include <kessil/adapter_interface.h>
#include <memory>
#include <utility>

using image_adapter::Below;
using image_adapter::DiskImage;
using image_adapter::Failure;
using image_adapter::ServedRoot;

struct VMLib_ErrorInfo
{
    std::string text;
};

namespace {

constexpr unsigned char failed = 1;
constexpr unsigned char done = 2;

AdapterLoggingCallBack g_log = nullptr;
bool g_initialised = false;
std::string g_item_name; ///< of the item that NextItem returned last

void Log(unsigned char level, const std::string &text)
{
    if (g_log)
        g_log(text.c_str(), level);
}

/// Runs the body of an exported function. An exception becomes a line of the log and a record.
template <typename Body>
bool Guarded(VMLib_ErrorInfo **error, Body body)
{
    try {
        body();
        return true;
    } catch (const std::exception &exception) {
        Log(failed, exception.what());
        *error = new VMLib_ErrorInfo{exception.what()};
        return false;
    }
}

const ServedRoot &Root(const void *credentials)
{
    if (!credentials)
        throw Failure("there are no credentials: call CreateCredentials first, with the directory to serve");
    return *static_cast<const ServedRoot *>(credentials);
}

DiskImage &Disk(void *disk)
{
    if (!disk)
        throw Failure("no disk is open");
    return *static_cast<DiskImage *>(disk);
}

bool ListKind(const char *kind, const char *path, const void *credentials, AdapterListing **listing,
              VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] {
        *listing = std::make_unique<AdapterListing>(Root(credentials).Directories(Below(kind, path))).release();
    });
}

} // namespace

const char *GetErrorMessage(VMLib_ErrorInfo *error)
{
    return error ? error->text.c_str() : "";
}

void FreeErrorInfo(VMLib_ErrorInfo **error)
{
    delete std::exchange(*error, nullptr);
}

void SetLoggingCallBack(AdapterLoggingCallBack callback)
{
    g_log = callback;
}

const char *GetLibraryVersion()
{
    return "image_adapter 1.0";
}

bool CreateCredentials(const char *first, const char * /*second*/, void **credentials, VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] {
        auto root = std::make_unique<ServedRoot>(first);
        FreeCredentials(credentials);
        Log(done, "serving " + root->Name());
        *credentials = root.release();
    });
}

void FreeCredentials(void **credentials)
{
    delete static_cast<ServedRoot *>(std::exchange(*credentials, nullptr));
}

bool OpenListing(const char *path, void *credentials, void ** /*cache*/, AdapterListing **listing,
                 VMLib_ErrorInfo **error, std::uint32_t /*listing_opts*/)
{
    return Guarded(error,
                   [&] { *listing = std::make_unique<AdapterListing>(Root(credentials).Everything(path)).release(); });
}

bool NextItem(AdapterListing *listing, const char **name, std::int32_t *number, std::uint64_t *value,
              std::int32_t *extra, VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] {
        if (!listing)
            throw Failure("there is no such listing");
        if (listing->empty())
            return;
        const tag_item_data item = std::move(listing->front());
        listing->pop_front();
        g_item_name = item.item_name;
        *name = g_item_name.c_str();
        *number = item.item_number;
        *value = item.item_value;
        *extra = item.item_extra;
    });
}

void FreeListing(AdapterListing **listing)
{
    delete std::exchange(*listing, nullptr);
}

bool ListDataStores(const char *first, void *credentials, void ** /*cache*/, AdapterListing **listing,
                    VMLib_ErrorInfo **error, const char * /*second*/, bool /*flag*/)
{
    return ListKind("datastores", first, credentials, listing, error);
}

bool ListFolders(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    return ListKind("folders", path, credentials, listing, error);
}

bool ListHosts(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    return ListKind("hosts", path, credentials, listing, error);
}

bool ListDatacenters(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    return ListKind("datacenters", path, credentials, listing, error);
}

bool ListMachines(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    return ListKind("machines", path, credentials, listing, error);
}

bool InitVixDiskLib(const char * /*config*/, const char * /*lib*/, VMLib_ErrorInfo ** /*error*/)
{
    g_initialised = true;
    Log(done, "disks can be opened");
    return true;
}

void ExitVixDiskLib()
{
    g_initialised = false;
    Log(done, "no more disks");
}

bool OpenDisk(const char *vmPath, const char *diskPath, bool flag, void *credentials, void **disk,
              VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] {
        if (!g_initialised)
            throw Failure("OpenDisk needs InitVixDiskLib first");
        if (*disk)
            throw Failure("a disk is open already: " + Disk(*disk).Name());
        const std::string name = Below(vmPath, diskPath);
        auto image = std::make_unique<DiskImage>(Root(credentials).Place(Below("machines", name)), name, flag);
        Log(done, "opened " + name + ", " + std::to_string(image->Sectors()) + " sectors");
        *disk = image.release();
    });
}

bool CloseDisk(void **disk, VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] {
        Disk(*disk);
        const std::unique_ptr<DiskImage> image(static_cast<DiskImage *>(std::exchange(*disk, nullptr)));
        image->Close();
        Log(done, "closed " + image->Name());
    });
}

bool ReadSectors(void *disk, std::uint64_t start, std::uint64_t count, void *data, VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] { Disk(disk).Read(start, count, data); });
}

bool WriteSectors(void *disk, std::uint64_t start, std::uint64_t count, const void *data, VMLib_ErrorInfo **error)
{
    return Guarded(error, [&] { Disk(disk).Write(start, count, data); });
}
