#include "adapter_record.h"

namespace {

// As key=value;key=value;
std::string Joined(const std::map<std::string, std::string> &pairs)
{
    std::string text;
    for (const auto &[key, value] : pairs)
        text.append(key).append("=").append(value).append(";");
    return text;
}

} // namespace

bool GetVMConfig(const char *path, void *credentials, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetVMConfig");
    call.Text("path", path).Object("credentials", credentials).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool SetVMConfig(void *session, const char *config, VMLib_ErrorInfo **error)
{
    AdapterRecord call("SetVMConfig");
    call.Object("session", session).Text("config", config).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool GetSnapshotConfig(const char *path, std::uint32_t timestamp, void *credentials, AdapterListing **listing,
                       VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetSnapshotConfig");
    call.Text("path", path)
        .Number("timestamp", timestamp)
        .Object("credentials", credentials)
        .Listing("listing", listing)
        .Error(error)
        .Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool OpenDisk(const char *vmPath, const char *diskPath, bool flag, void *credentials, void **disk,
              VMLib_ErrorInfo **error)
{
    AdapterRecord call("OpenDisk");
    call.Text("vmPath", vmPath)
        .Text("diskPath", diskPath)
        .Number("flag", flag)
        .Object("credentials", credentials)
        .Objects("disk", disk)
        .Error(error)
        .Done();
    call.OutObject("disk", disk).OutError(error);
    return call.Succeeds();
}

bool CloseDisk(void **disk, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CloseDisk");
    call.Objects("disk", disk).Error(error).Done();
    call.OutObject("disk", disk).OutError(error);
    return call.Succeeds();
}

bool ReadSectors(void *disk, std::uint64_t start, std::uint64_t count, void *data, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReadSectors");
    call.Object("disk", disk).Number("start", start).Number("count", count).Peek("data", data).Error(error).Done();
    call.Fill("data", data).OutError(error);
    return call.Succeeds();
}

bool WriteSectors(void *disk, std::uint64_t start, std::uint64_t count, const void *data, VMLib_ErrorInfo **error)
{
    AdapterRecord call("WriteSectors");
    call.Object("disk", disk).Number("start", start).Number("count", count).Peek("data", data).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool CreateVM(const char *first, const char *second, const char *third, void *credentials,
              std::map<std::string, std::string> *pairs, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CreateVM");
    call.Text("first", first)
        .Text("second", second)
        .Text("third", third)
        .Object("credentials", credentials)
        .Text("pairs", Joined(*pairs).c_str())
        .Error(error)
        .Done();
    call.OutError(error);
    return call.Succeeds();
}

void ReconfigVM()
{
    AdapterRecord call("ReconfigVM");
    call.Done();
}

bool PowerOnVaioVM(const char *path, void *credentials, VMLib_ErrorInfo **error)
{
    AdapterRecord call("PowerOnVaioVM");
    call.Text("path", path).Object("credentials", credentials).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool PowerOffVaioVM(const char *path, void *credentials, VMLib_ErrorInfo **error)
{
    AdapterRecord call("PowerOffVaioVM");
    call.Text("path", path).Object("credentials", credentials).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool DeleteVaioVM(const char *path, void *credentials, VMLib_ErrorInfo **error)
{
    AdapterRecord call("DeleteVaioVM");
    call.Text("path", path).Object("credentials", credentials).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool CloneVM(const char *sourcePath, const char *second, const char *third, void *credentials, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CloneVM");
    call.Text("sourcePath", sourcePath)
        .Text("second", second)
        .Text("third", third)
        .Object("credentials", credentials)
        .Error(error)
        .Done();
    call.OutError(error);
    return call.Succeeds();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value is what the interface has
bool AttachPolicy(const char *path, void *credentials, std::string policyId, VMLib_ErrorInfo **error)
{
    AdapterRecord call("AttachPolicy");
    call.Text("path", path).Object("credentials", credentials).Text("policyId", policyId.c_str()).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool GetHostCpus(const char *path, void *credentials, std::uint32_t *number, VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetHostCpus");
    call.Text("path", path).Object("credentials", credentials).Number("number", *number).Error(error).Done();
    call.Out("number", number).OutError(error);
    return call.Succeeds();
}
