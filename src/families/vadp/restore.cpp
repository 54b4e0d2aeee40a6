#include "families/vadp/vadp.h"

#include "families/vadp/adapter_call.h"
#include "families/vadp/handles.h"

namespace kessil {
namespace {

// Parents know these texts, in which a part of the handler's name is doubled.
constexpr AdapterTexts reconfigure_machine_texts = {u"Failed to serialise input (Process_VADPVADPReconfigureMachine)",
                                                    u"Failed to get error message (Process_VADPVADPReconfigureMachine)",
                                                    u"Failed to serialise output (Process_VADPVADPReconfigureMachine)"};

} // namespace

void Process_VADPPrepareVMRestore(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    U64 opt_flags;
    STR transport_mode;
    if (!call.Read(path, opt_flags, transport_mode))
        return;

    void *session = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, std::uint64_t, std::string, void **, VMLib_ErrorInfo **)>(function);
    const bool okay =
        target(path.Text(), g_pCredentials, opt_flags.value, transport_mode.text, &session, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeRestoreSession, session), call.ErrorText());
}

void Process_VADPPrepareVMRestoreIncremental(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    U64 opt_flags;
    STR transport_mode;
    if (!call.Read(path, opt_flags, transport_mode))
        return;

    void *session = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, std::uint64_t, std::string, void **, VMLib_ErrorInfo **)>(function);
    const bool okay =
        target(path.Text(), g_pCredentials, opt_flags.value, transport_mode.text, &session, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeRestoreSession, session), call.ErrorText());
}

void Process_VADPSetOverrideValue(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session_handle;
    STR key, value;
    if (!call.Read(session_handle, key, value))
        return;

    const auto target = AsTarget<AdapterBool(void *, const char *, const char *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreSession[session_handle.value], key.Text(), value.Text(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPAddFolder(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR elPath;
    if (!call.Read(elPath))
        return;

    const auto target = AsTarget<AdapterBool(const char *, void *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(elPath.Text(), g_pCredentials, &g_pListingCache, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPOpenRestoreFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR path;
    if (!call.Read(session, path))
        return;

    void *file = nullptr;
    const auto target = AsTarget<AdapterBool(void *, const char *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreSession[session.value], path.Text(), &file, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeRestoreFile, file), call.ErrorText());
}

void Process_VADPOpenRestoreFileIncremental(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR path;
    U32 third;
    if (!call.Read(session, path, third))
        return;

    void *file = nullptr;
    const auto target =
        AsTarget<AdapterBool(void *, const char *, std::uint32_t, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreSession[session.value], path.Text(), third.value, &file, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeRestoreFile, file), call.ErrorText());
}

void Process_VADPWriteRestoreFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__, EntryLog::None);
    U32 file;
    IN data;
    if (!call.Read(file, data))
        return;

    const auto target = AsTarget<AdapterBool(void *, const void *, std::uint32_t, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreFile[file.value], data.Data(), data.Size(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPWriteRestoreFileIncremental(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__, EntryLog::None);
    U32 file;
    IN data;
    U64 offset;
    if (!call.Read(file, data, offset))
        return;

    const auto target =
        AsTarget<AdapterBool(void *, const void *, std::uint32_t, std::uint64_t, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreFile[file.value], data.Data(), data.Size(), offset.value, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPCloseRestoreFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    void *file = g_vRestoreFile[handle.value];
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&file, &call.error) != 0;
    if (okay)
        g_vRestoreFile.Clear(handle.value);

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPCloseRestoreFileIncremental(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    void *file = g_vRestoreFile[handle.value];
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&file, &call.error) != 0;
    if (okay)
        g_vRestoreFile.Clear(handle.value);

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPEndVMRestore(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    U8 flag;
    if (!call.Read(handle, flag))
        return;

    void *session = g_vRestoreSession[handle.value];
    const auto target = AsTarget<AdapterBool(void **, bool, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&session, flag.value != 0, &call.error) != 0;
    if (okay)
        g_vRestoreSession.Clear(handle.value);

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPEndVMRestoreIncremental(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    U8 flag;
    if (!call.Read(handle, flag))
        return;

    void *session = g_vRestoreSession[handle.value];
    const auto target = AsTarget<AdapterBool(void **, bool, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&session, flag.value != 0, &call.error) != 0;
    if (okay)
        g_vRestoreSession.Clear(handle.value);

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPCreateACLInfo(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    BUF data;
    STR key, second;
    if (!call.Read(data, key, second))
        return;

    const auto cached = g_mACLInfoIndex.find(key.text);
    const bool found = cached != g_mACLInfoIndex.end() && cached->second < g_vACLInfo.Size();
    void *aclinfo = found ? g_vACLInfo[cached->second] : nullptr;
    const auto target =
        AsTarget<AdapterBool(std::uint32_t, const void *, const char *, const char *, void **, VMLib_ErrorInfo **)>(
            function);
    const bool okay = target(data.size, data.data, key.Text(), second.Text(), &aclinfo, &call.error) != 0;

    // An object that was found keeps its index. The parent has it already and gets -1.
    const bool made = okay && aclinfo != nullptr && !found;
    U32 index = IndexOf(made, storeACLInfo, aclinfo);
    if (made)
        g_mACLInfoIndex[key.text] = index.value;

    call.Conclude(okay);
    call.Reply(index, call.ErrorText());
}

void Process_VADPGetACLInfo(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    AdapterListing *listing = nullptr;
    const auto target = AsTarget<AdapterBool(void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
    target(g_vACLInfo[handle.value], &listing, &call.error);
    // The object is removed whatever the result; its key stays.
    g_vACLInfo.Clear(handle.value);

    call.FlushLog();
    call.Reply(U32(static_cast<std::uint32_t>(storeListing(listing))), STR());
}

void Process_VADPWriteFileACL(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 file;
    IN data;
    if (!call.Read(file, data))
        return;

    const auto target = AsTarget<AdapterBool(void *, const void *, std::uint32_t, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreFile[file.value], data.Data(), data.Size(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPRenameMachine(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR name;
    if (!call.Read(session, name))
        return;

    void *object = g_vRestoreSession[session.value];
    const auto target = AsTarget<AdapterBool(void **, const char *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&object, name.Text(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPReconfigureMachine(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__, reconfigure_machine_texts);
    U32 session;
    U8 flag;
    if (!call.Read(session, flag))
        return;

    void *object = g_vRestoreSession[session.value];
    const auto target = AsTarget<AdapterBool(void **, bool, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&object, flag.value != 0, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPPowerOn(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    if (!call.Read(session))
        return;

    void *object = g_vRestoreSession[session.value];
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&object, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPPowerOff(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    if (!call.Read(session))
        return;

    void *object = g_vRestoreSession[session.value];
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&object, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPDeleteVM(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    if (!call.Read(path))
        return;

    // The request names no session: this uses the first one.
    void *const session = g_vRestoreSession[0];
    const auto target = AsTarget<AdapterBool(void *, void *, const char *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(session, g_pCredentials, path.Text(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

} // namespace kessil
