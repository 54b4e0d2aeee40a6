#include "adapter_record.h"

namespace {

std::string version;
std::string item_name;

// What the script has as `text`, or null.
const char *Version(const AdapterRecord &call)
{
    version = call.Script().text.value_or("");
    return call.Script().text ? version.c_str() : nullptr;
}

} // namespace

void FreeCredentials(void **credentials)
{
    AdapterRecord call("FreeCredentials");
    call.Objects("credentials", credentials).Done();
    call.OutObject("credentials", credentials);
}

const char *GetLibraryVersion()
{
    AdapterRecord call("GetLibraryVersion");
    call.Done();
    return Version(call);
}

const char *VADPVersion(const char *first, void *credentials, VMLib_ErrorInfo **error)
{
    AdapterRecord call("VADPVersion");
    call.Text("first", first).Object("credentials", credentials).Error(error).Done();
    call.OutError(error);
    return Version(call);
}

bool CreateCredentials(const char *first, const char *second, void **credentials, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CreateCredentials");
    call.Text("first", first).Text("second", second).Objects("credentials", credentials).Error(error).Done();
    call.OutObject("credentials", credentials).OutError(error);
    return call.Succeeds();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value is what the interface has
bool CreateBackupOptions(bool first, bool second, bool third, bool fourth, bool fifth, std::string sixth,
                         void **options, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CreateBackupOptions");
    call.Number("first", first)
        .Number("second", second)
        .Number("third", third)
        .Number("fourth", fourth)
        .Number("fifth", fifth)
        .Text("sixth", sixth.c_str())
        .Objects("options", options)
        .Error(error)
        .Done();
    call.OutObject("options", options).OutError(error);
    return call.Succeeds();
}

void FreeBackupOptions(void **options)
{
    AdapterRecord call("FreeBackupOptions");
    call.Objects("options", options).Done();
    call.OutObject("options", options);
}

bool OpenListing(const char *path, void *credentials, void **cache, AdapterListing **listing, VMLib_ErrorInfo **error,
                 std::uint32_t listing_opts)
{
    AdapterRecord call("OpenListing");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Objects("cache", cache)
        .Listing("listing", listing)
        .Error(error)
        .Number("listing_opts", listing_opts)
        .Done();
    call.OutObject("cache", cache).OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool NextItem(AdapterListing *listing, const char **name, std::int32_t *number, std::uint64_t *value,
              std::int32_t *extra, VMLib_ErrorInfo **error)
{
    AdapterRecord call("NextItem");
    call.Object("listing", listing)
        .Text("name", *name)
        .Number("number", static_cast<std::uint32_t>(*number))
        .Number("value", *value)
        .Number("extra", static_cast<std::uint32_t>(*extra))
        .Error(error)
        .Done();
    if (const auto text = call.Script().TextOf("name")) {
        item_name = *text;
        *name = item_name.c_str();
    }
    if (call.Script().NumberOf("no_name"))
        *name = nullptr;
    call.Out("number", number).Out("value", value).Out("extra", extra).OutError(error);
    return call.Succeeds();
}

void FreeListing(AdapterListing **listing)
{
    AdapterRecord call("FreeListing");
    call.Listing("listing", listing).Done();
    call.OutListing(listing);
}

bool ListDataStores(const char *first, void *credentials, void **cache, AdapterListing **listing,
                    VMLib_ErrorInfo **error, const char *second, bool flag)
{
    AdapterRecord call("ListDataStores");
    call.Text("first", first)
        .Object("credentials", credentials)
        .Objects("cache", cache)
        .Listing("listing", listing)
        .Error(error)
        .Text("second", second)
        .Number("flag", flag)
        .Done();
    call.OutObject("cache", cache).OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool ListFolders(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListFolders");
    call.Text("path", path).Object("credentials", credentials).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool ListHosts(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListHosts");
    call.Text("path", path).Object("credentials", credentials).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool ListMachineProperties(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListMachineProperties");
    call.Text("path", path).Object("credentials", credentials).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool ListDatacenters(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListDatacenters");
    call.Text("path", path).Object("credentials", credentials).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool ListMachines(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListMachines");
    call.Text("path", path).Object("credentials", credentials).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool ListResourcePools(const char *path, void *credentials, void **cache, AdapterListing **listing,
                       VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListResourcePools");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Objects("cache", cache)
        .Listing("listing", listing)
        .Error(error)
        .Done();
    call.OutObject("cache", cache).OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool OpenConfigRead(void *session, const char *path, void **reader, VMLib_ErrorInfo **error)
{
    AdapterRecord call("OpenConfigRead");
    call.Object("session", session).Text("path", path).Objects("reader", reader).Error(error).Done();
    call.OutObject("reader", reader).OutError(error);
    return call.Succeeds();
}

bool ListConfigItems(void *session, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ListConfigItems");
    call.Object("session", session).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool CreateListingCache(const char *path, void *credentials, bool *flag, void **cache, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CreateListingCache");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Number("flag", *flag)
        .Objects("cache", cache)
        .Error(error)
        .Done();
    call.Out("flag", flag).OutObject("cache", cache).OutError(error);
    return call.Succeeds();
}

void FreeListingCache(void **cache)
{
    AdapterRecord call("FreeListingCache");
    call.Objects("cache", cache).Done();
    call.OutObject("cache", cache);
}
