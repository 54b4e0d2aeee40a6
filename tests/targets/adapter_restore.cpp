#include "adapter_record.h"

// NOLINTBEGIN(performance-unnecessary-value-param): by value is what the interface has
bool PrepareVMRestore(const char *path, void *credentials, std::uint64_t opt_flags, std::string transport_mode,
                      void **session, VMLib_ErrorInfo **error)
{
    AdapterRecord call("PrepareVMRestore");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Number("opt_flags", opt_flags)
        .Text("transport_mode", transport_mode.c_str())
        .Objects("session", session)
        .Error(error)
        .Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool PrepareVMRestoreIncremental(const char *path, void *credentials, std::uint64_t opt_flags,
                                 std::string transport_mode, void **session, VMLib_ErrorInfo **error)
{
    AdapterRecord call("PrepareVMRestoreIncremental");
    call.Text("path", path)
        .Object("credentials", credentials)
        .Number("opt_flags", opt_flags)
        .Text("transport_mode", transport_mode.c_str())
        .Objects("session", session)
        .Error(error)
        .Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}
// NOLINTEND(performance-unnecessary-value-param)

bool SetOverrideValue(void *session, const char *key, const char *value, VMLib_ErrorInfo **error)
{
    AdapterRecord call("SetOverrideValue");
    call.Object("session", session).Text("key", key).Text("value", value).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool AddFolder(const char *path, void *credentials, void **cache, VMLib_ErrorInfo **error)
{
    AdapterRecord call("AddFolder");
    call.Text("path", path).Object("credentials", credentials).Objects("cache", cache).Error(error).Done();
    call.OutObject("cache", cache).OutError(error);
    return call.Succeeds();
}

bool OpenRestoreFile(void *session, const char *path, void **file, VMLib_ErrorInfo **error)
{
    AdapterRecord call("OpenRestoreFile");
    call.Object("session", session).Text("path", path).Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Succeeds();
}

bool OpenRestoreFileIncremental(void *session, const char *path, std::uint32_t third, void **file,
                                VMLib_ErrorInfo **error)
{
    AdapterRecord call("OpenRestoreFileIncremental");
    call.Object("session", session).Text("path", path).Number("third", third).Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Succeeds();
}

bool WriteRestoreFile(void *file, const void *data, std::uint32_t length, VMLib_ErrorInfo **error)
{
    AdapterRecord call("WriteRestoreFile");
    call.Object("file", file).Data("data", data, length).Number("length", length).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool WriteRestoreFileIncremental(void *file, const void *data, std::uint32_t length, std::uint64_t offset,
                                 VMLib_ErrorInfo **error)
{
    AdapterRecord call("WriteRestoreFileIncremental");
    call.Object("file", file)
        .Data("data", data, length)
        .Number("length", length)
        .Number("offset", offset)
        .Error(error)
        .Done();
    call.OutError(error);
    return call.Succeeds();
}

bool CloseRestoreFile(void **file, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CloseRestoreFile");
    call.Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Succeeds();
}

bool CloseRestoreFileIncremental(void **file, VMLib_ErrorInfo **error)
{
    AdapterRecord call("CloseRestoreFileIncremental");
    call.Objects("file", file).Error(error).Done();
    call.OutObject("file", file).OutError(error);
    return call.Succeeds();
}

bool EndVMRestore(void **session, bool flag, VMLib_ErrorInfo **error)
{
    AdapterRecord call("EndVMRestore");
    call.Objects("session", session).Number("flag", flag).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool EndVMRestoreIncremental(void **session, bool flag, VMLib_ErrorInfo **error)
{
    AdapterRecord call("EndVMRestoreIncremental");
    call.Objects("session", session).Number("flag", flag).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool CreateACLInfo(std::uint32_t length, const void *data, const char *key, const char *second, void **aclinfo,
                   VMLib_ErrorInfo **error)
{
    AdapterRecord call("CreateACLInfo");
    call.Number("length", length)
        .Data("data", data, length)
        .Text("key", key)
        .Text("second", second)
        .Objects("aclinfo", aclinfo)
        .Error(error)
        .Done();
    call.OutObject("aclinfo", aclinfo).OutError(error);
    return call.Succeeds();
}

bool GetACLInfo(void *aclinfo, AdapterListing **listing, VMLib_ErrorInfo **error)
{
    AdapterRecord call("GetACLInfo");
    call.Object("aclinfo", aclinfo).Listing("listing", listing).Error(error).Done();
    call.OutListing(listing).OutError(error);
    return call.Succeeds();
}

bool WriteFileACL(void *file, const void *data, std::uint32_t length, VMLib_ErrorInfo **error)
{
    AdapterRecord call("WriteFileACL");
    call.Object("file", file).Data("data", data, length).Number("length", length).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}

bool RenameMachine(void **session, const char *name, VMLib_ErrorInfo **error)
{
    AdapterRecord call("RenameMachine");
    call.Objects("session", session).Text("name", name).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool ReconfigureMachine(void **session, bool flag, VMLib_ErrorInfo **error)
{
    AdapterRecord call("ReconfigureMachine");
    call.Objects("session", session).Number("flag", flag).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool PowerOnVDR(void **session, VMLib_ErrorInfo **error)
{
    AdapterRecord call("PowerOnVDR");
    call.Objects("session", session).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool PowerOffVDR(void **session, VMLib_ErrorInfo **error)
{
    AdapterRecord call("PowerOffVDR");
    call.Objects("session", session).Error(error).Done();
    call.OutObject("session", session).OutError(error);
    return call.Succeeds();
}

bool DeleteVM(void *session, void *credentials, const char *path, VMLib_ErrorInfo **error)
{
    AdapterRecord call("DeleteVM");
    call.Object("session", session).Object("credentials", credentials).Text("path", path).Error(error).Done();
    call.OutError(error);
    return call.Succeeds();
}
