#include "adapter_record.h"

bool InitVixDiskLib(const char *config, const char *lib, VMLib_ErrorInfo **error)
{
    AdapterRecord call("InitVixDiskLib");
    call.Text("config", config).Text("lib", lib).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

void ExitVixDiskLib()
{
    AdapterRecord call("ExitVixDiskLib");
    call.Done();
}

bool SnapshotVM(const char *path, const char *name, const char *description, std::uint32_t *timestamp,
                void *credentials, void **cache, bool isCBT, bool isMemory, bool isQuiesce, VMLib_ErrorInfo **error)
{
    AdapterRecord call("SnapshotVM");
    call.Text("path", path)
        .Text("name", name)
        .Text("description", description)
        .Number("timestamp", *timestamp)
        .Object("credentials", credentials)
        .Objects("cache", cache)
        .Number("isCBT", isCBT)
        .Number("isMemory", isMemory)
        .Number("isQuiesce", isQuiesce)
        .Error(error)
        .Done();
    call.Out("timestamp", timestamp).OutObject("cache", cache).OutError(error);
    return call.Succeeds();
}

bool StartBackupSession(const char *path, void *credentials, void **session, void *options, void *aclinfo,
                        VMLib_ErrorInfo **error)
{
    AdapterRecord call("StartBackupSession");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Objects("session", session)
        .Object("options", options)
        .Object("aclinfo", aclinfo)
        .Error(error)
        .Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool EndBackupSession(void **session, VMLib_ErrorInfo **error)
{
    AdapterRecord call("EndBackupSession");
    call.Objects("session", session).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool GetBackupSessionFiles(void *session, const char *path, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetBackupSessionFiles");
    call.Object("session", session).Text("path", path).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

std::uint32_t OpenBackupFile(void *session, const char *path, void **file, VMLib_ErrorInfo **error)
{
    AdapterRecord call("OpenBackupFile");
    call.Object("session", session).Text("path", path).Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Result32();
}

bool ReOpenBackupFile(void *session, const char *path, void **file, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReOpenBackupFile");
    call.Object("session", session).Text("path", path).Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Succeeds();
}

std::int32_t ReadBackupFile(void *file, void *data, std::uint32_t length, std::uint64_t *count, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReadBackupFile");
    call.Object("file", file)
        .Data("data", data, length)
        .Number("length", length)
        .Number("count", *count)
        .Error(error)
        .Done();
    call.Fill("data", data).Out("count", count).OutError(error);
    return static_cast<std::int32_t>(call.Result32());
}

std::int32_t ReadFileACL(void *file, void *data, std::uint32_t length, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReadFileACL");
    call.Object("file", file).Data("data", data, length).Number("length", length).Error(error).Done();
    call.Fill("data", data).OutError(error);
    return static_cast<std::int32_t>(call.Result32());
}

std::int32_t ReadBlock(void *file, void *data, std::uint64_t block, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReadBlock");
    call.Object("file", file).Peek("data", data).Number("block", block).Error(error).Done();
    call.Fill("data", data).OutError(error);
    return static_cast<std::int32_t>(call.Result32());
}

std::int32_t ReadBlockSignature(void *file, void *data, std::uint64_t block, std::uint32_t kind,
                                VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReadBlockSignature");
    call.Object("file", file).Peek("data", data).Number("block", block).Number("kind", kind).Error(error).Done();
    call.Fill("data", data).OutError(error);
    return static_cast<std::int32_t>(call.Result32());
}

bool CloseBackupFile(void **file, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CloseBackupFile");
    call.Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Succeeds();
}

std::uint32_t GetReadBufferUse(void *file)
{
    AdapterRecord call("GetReadBufferUse");
    call.Object("file", file).Done();
    return call.Result32();
}

std::uint32_t getIndexBlocks(void *file)
{
    AdapterRecord call("getIndexBlocks");
    call.Object("file", file).Done();
    return call.Result32();
}

bool GetDiskChangeIDS(const char *path, void *credentials, void **session, AdapterListing **listing,
                      VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetDiskChangeIDS");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Objects("session", session)
        .Listing("listing", listing)
        .Error(error)
        .Done();
    call.OutObject("session", session).OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool GetDiskChangedSectorNum(void **session, std::uint32_t second, std::uint32_t *number, const char *third,
                             VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetDiskChangedSectorNum");
    call.Objects("session", session)
        .Number("second", second)
        .Number("number", *number)
        .Text("third", third)
        .Error(error)
        .Done();
    call.OutObject("session", session).Out("number", number).OutError(error);
    return call.Succeeds();
}
