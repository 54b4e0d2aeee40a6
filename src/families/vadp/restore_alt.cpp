#include "families/vadp/vadp.h"

#include "families/vadp/alt_call.h"
#include "families/vadp/binding.h"
#include "families/vadp/handles.h"
#include "logging/log_manager.h"

namespace kessil {

void ProcessAlt_VADPPrepareVMRestore(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    std::uint32_t opt_flags = 0;
    std::string transport_mode;
    void *session = nullptr;
    KESSIL_LOG(log_debug, vadp_component, "About to read path etc.");
    const bool calls = call.Read(path, opt_flags, transport_mode);
    KESSIL_LOG(log_debug, vadp_component,
               "path==" << path << ", opt_flags==" << opt_flags << ", transport_mode==" << transport_mode);
    bool okay = false;
    if (calls) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, std::uint64_t, std::string, void **, VMLib_ErrorInfo **)>(
                function);
        okay = target(path.c_str(), g_pCredentials, opt_flags, transport_mode, &session, &call.error) != 0 &&
               call.ReadsOkay();
    }
    std::int32_t index = -1;
    if (okay) {
        index = storeRestoreSession(session);
        KESSIL_LOG(log_debug, vadp_component, "Added to g_vRestoreSession giving size of" << g_vRestoreSession.Size());
    }
    // The text is taken first, so that what the adapter logs meanwhile is sent with this answer.
    call.ReplyValue(okay, index, extractErrMsgAlt(okay, call.error));
}

void ProcessAlt_VADPPrepareVMRestoreIncremental(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string path;
    std::uint32_t opt_flags = 0;
    std::string transport_mode;
    bool okay = false;
    void *session = nullptr;
    if (call.Read(path, opt_flags, transport_mode)) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, std::uint64_t, std::string, void **, VMLib_ErrorInfo **)>(
                function);
        okay = target(path.c_str(), g_pCredentials, opt_flags, transport_mode, &session, &call.error) != 0;
    }
    call.ReplyValue(okay, okay ? storeRestoreSession(session) : -1);
}

void ProcessAlt_VADPSetOverrideValue(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::uint32_t session_handle = 0;
    std::string key, value;
    bool rez = false;
    std::string err_str;
    if (call.Read(session_handle, key, value)) {
        const auto number = static_cast<std::int32_t>(session_handle);
        if (call.ReadsOkay())
            KESSIL_LOG(log_debug, vadp_component,
                       "session_handle==" << number << ", key==" << key << ", value==" << value);
        KESSIL_LOG(log_debug, vadp_component, "g_vRestoreSession.size()==" << g_vRestoreSession.Size());
        void *const pRestoreSession = g_vRestoreSession[session_handle];
        KESSIL_LOG(log_debug, vadp_component,
                   "calling real_f with pRestoreSession==" << pRestoreSession << ", key==" << key
                                                           << ", value==" << value);
        const auto target = AsTarget<AdapterBool(void *, const char *, const char *, VMLib_ErrorInfo **)>(function);
        rez = target(pRestoreSession, key.c_str(), value.c_str(), &call.error) != 0;
        err_str = extractErrMsgAlt(rez, call.error);
        KESSIL_LOG(log_debug, vadp_component,
                   "after real_f for ProcessAlt_VADPSetOverrideValue:  rez==" << rez << " with err_str==(" << err_str
                                                                              << ")");
    }
    call.ReplyValue(call.ReadsOkay() && rez, static_cast<std::int32_t>(session_handle), err_str);
}

void ProcessAlt_VADPAddFolder(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::uint32_t elLen = 0;
    std::string elPath;
    const bool calls = call.Read(elLen, elPath);
    KESSIL_LOG(log_debug, vadp_component, "elLen==" << elLen);
    KESSIL_LOG(log_debug, vadp_component, "elPath==" << elPath);
    if (calls) {
        const auto target = AsTarget<AdapterBool(const char *, void *, void **, VMLib_ErrorInfo **)>(function);
        target(elPath.c_str(), g_pCredentials, &g_pListingCache, &call.error);
    }
    call.ReplyStatus(call.ReadsOkay());
}

void ProcessAlt_VADPOpenRestoreFile(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t session = 0;
    std::string path;
    bool okay = false;
    void *file = nullptr;
    if (call.Read(session, path)) {
        const auto target = AsTarget<AdapterBool(void *, const char *, void **, VMLib_ErrorInfo **)>(function);
        okay = target(g_vRestoreSession[session], path.c_str(), &file, &call.error) != 0;
    }
    const std::int32_t index = okay ? storeRestoreFile(file) : -1;
    // The text is taken first, so that what the adapter logs meanwhile is sent with this answer.
    call.ReplyValue(okay, index, extractErrMsgAlt(okay, call.error));
}

void ProcessAlt_VADPOpenRestoreFileIncremental(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t session = 0;
    std::string path;
    std::uint32_t third = 0;
    bool okay = false;
    void *file = nullptr;
    if (call.Read(session, path, third)) {
        const auto target =
            AsTarget<AdapterBool(void *, const char *, std::uint32_t, void **, VMLib_ErrorInfo **)>(function);
        okay = target(g_vRestoreSession[session], path.c_str(), third, &file, &call.error) != 0;
    }
    call.ReplyValue(okay, okay ? storeRestoreFile(file) : -1);
}

void ProcessAlt_VADPWriteRestoreFile(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip, EntryLog::None);
    std::uint32_t file = 0;
    std::vector<unsigned char> data;
    bool okay = false;
    if (call.Read(file, data)) {
        const auto target = AsTarget<AdapterBool(void *, const void *, std::uint32_t, VMLib_ErrorInfo **)>(function);
        okay = target(g_vRestoreFile[file], data.data(), static_cast<std::uint32_t>(data.size()), &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPWriteRestoreFileIncremental(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip, EntryLog::None);
    std::uint32_t file = 0;
    std::uint64_t offset = 0;
    std::vector<unsigned char> data;
    bool okay = false;
    if (call.Read(file, offset, data)) {
        const auto target =
            AsTarget<AdapterBool(void *, const void *, std::uint32_t, std::uint64_t, VMLib_ErrorInfo **)>(function);
        okay = target(g_vRestoreFile[file], data.data(), static_cast<std::uint32_t>(data.size()), offset,
                      &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPCloseRestoreFile(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t handle = 0;
    bool okay = false;
    if (call.Read(handle)) {
        void *file = g_vRestoreFile[handle];
        const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
        okay = target(&file, &call.error) != 0;
        if (okay)
            g_vRestoreFile.Clear(handle);
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPCloseRestoreFileIncremental(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t handle = 0;
    bool okay = false;
    if (call.Read(handle)) {
        void *file = g_vRestoreFile[handle]; // the table keeps it, even when the adapter has ended it
        const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
        okay = target(&file, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPEndVMRestore(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t handle = 0;
    std::uint32_t flag = 0;
    bool okay = false;
    if (call.Read(handle, flag)) {
        void *session = g_vRestoreSession[handle];
        const auto target = AsTarget<AdapterBool(void **, bool, VMLib_ErrorInfo **)>(function);
        okay = target(&session, flag != 0, &call.error) != 0;
        if (okay)
            g_vRestoreSession.Clear(handle);
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPEndVMRestoreIncremental(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t handle = 0;
    std::uint32_t flag = 0;
    bool okay = false;
    if (call.Read(handle, flag)) {
        void *session = g_vRestoreSession[handle]; // the table keeps it, even when the adapter has ended it
        const auto target = AsTarget<AdapterBool(void **, bool, VMLib_ErrorInfo **)>(function);
        okay = target(&session, flag != 0, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPWriteFileACL(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call, EntryLog::None);
    std::uint32_t file = 0;
    std::vector<unsigned char> data;
    if (call.Read(file, data)) {
        const auto target = AsTarget<AdapterBool(void *, const void *, std::uint32_t, VMLib_ErrorInfo **)>(function);
        target(g_vRestoreFile[file], data.data(), static_cast<std::uint32_t>(data.size()), &call.error);
    }
    call.ReplyStatus(call.ReadsOkay());
}

void ProcessAlt_VADPRenameMachine(CIPCCommunication &channel, void *function)
{
    // Logged under the first generation's name.
    AltCall call(channel, "Process_VADPRenameMachine", OnFailedRead::Skip);
    std::uint32_t session = 0;
    std::uint32_t second = 0;
    std::string name;
    bool okay = false;
    if (call.Read(session, second, name)) {
        void *object = g_vRestoreSession[session];
        const auto target = AsTarget<AdapterBool(void **, const char *, VMLib_ErrorInfo **)>(function);
        okay = target(&object, name.c_str(), &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPPowerOn(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::uint32_t session_handle = no_handle;
    bool okay = false;
    if (call.Read(session_handle)) {
        KESSIL_LOG(log_debug, vadp_component, "session_handle:" << static_cast<std::int32_t>(session_handle));
        void *session = g_vRestoreSession[session_handle];
        const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
        okay = target(&session, &call.error) != 0;
        KESSIL_LOG(log_debug, vadp_component, "okay:" << okay);
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPPowerOff(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::uint32_t session_handle = no_handle;
    bool okay = false;
    if (call.Read(session_handle)) {
        KESSIL_LOG(log_debug, vadp_component, "session_handle:" << static_cast<std::int32_t>(session_handle));
        void *session = g_vRestoreSession[session_handle];
        const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
        okay = target(&session, &call.error) != 0;
        KESSIL_LOG(log_debug, vadp_component, "okay:" << okay);
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPDeleteVM(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    std::uint32_t session = no_handle;
    bool okay = false;
    if (call.Read(path, session)) {
        const auto target = AsTarget<AdapterBool(void *, void *, const char *, VMLib_ErrorInfo **)>(function);
        okay = target(g_vRestoreSession[session], g_pCredentials, path.c_str(), &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

} // namespace kessil
