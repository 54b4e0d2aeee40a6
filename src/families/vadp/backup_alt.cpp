#include "families/vadp/vadp.h"

#include "channel/pipe_primitives.h"
#include "families/vadp/alt_call.h"
#include "families/vadp/handles.h"
#include "families/vadp/item_list.h"
#include "logging/log_manager.h"

#include <memory>

namespace kessil {
namespace {

constexpr std::int32_t failure = -1;
constexpr std::uint32_t first_options = 0;
constexpr std::uint32_t no_number = 0xFFFFFFFF;

} // namespace

// The answer has no log block.
void ProcessAlt_VADPInitVixDiskLib(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string config;
    std::string lib;
    bool okay = false;
    const bool reads = call.Read(config, lib);
    KESSIL_LOG(log_debug, vadp_component, "config==" << config << ", lib==" << lib);
    if (reads) {
        const auto target = AsTarget<AdapterBool(const char *, const char *, VMLib_ErrorInfo **)>(function);
        okay = target(config.c_str(), lib.c_str(), &call.error) != 0;
    }
    sendErrMsgAlt(channel, okay, call.error);
}

// The log block is the whole answer.
void ProcessAlt_VADPExitVixDiskLib(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__);
    const auto target = AsTarget<void()>(function);
    target();
    call.SendLog();
}

// Calls the adapter in any case, but succeeds only if all values came. The timestamp is sent after a failure too.
void ProcessAlt_VADPSnapshotVM(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    std::string name;
    std::string description;
    std::uint32_t isCBT = 0;
    std::uint32_t isMemory = 0;
    std::uint32_t isQuiesce = 0;
    std::uint32_t timestamp = 0;
    bool okay = false;
    KESSIL_LOG(log_debug, vadp_component, "About to read path etc.");
    if (call.Read(path, name, description, isCBT, isMemory, isQuiesce)) {
        KESSIL_LOG(log_debug, vadp_component,
                   "path==" << path << ", name==" << name << ", description==" << description << ", isCBT==" << isCBT
                            << ", isMemory==" << isMemory << ", isQuiesce==" << isQuiesce);
        const auto target = AsTarget<AdapterBool(const char *, const char *, const char *, std::uint32_t *, void *,
                                                 void **, bool, bool, bool, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), name.c_str(), description.c_str(), &timestamp, g_pCredentials, &g_pListingCache,
                      isCBT != 0, isMemory != 0, isQuiesce != 0, &call.error) != 0;
    }
    call.ReplyStatus(okay && call.ReadsOkay());
    if (!WriteUInt32ToPipe(channel, timestamp))
        KESSIL_LOG(log_error, vadp_component, "Failed to get snapshot timestamp (ProcessAlt_VADPSnapshotVM)");
}

// Uses the first options: no value names others. The answer is the index, or -1 and the error text.
void ProcessAlt_VADPStartBackupSession(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string path;
    std::uint32_t acl = no_handle;
    bool okay = false;
    void *session = nullptr;
    if (call.Read(path, acl)) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, void **, void *, void *, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, &session, g_vBackupOptions[first_options], g_vACLInfo[acl],
                      &call.error) != 0;
    }
    const std::int32_t mark = okay ? storeBackupSession(session) : failure;
    call.SendLog();
    static_cast<void>(WriteInt32ToPipe(channel, mark));
    if (!okay)
        static_cast<void>(WriteStringToPipe(channel, extractErrMsgAlt(false, call.error)));
}

// The table keeps the session.
void ProcessAlt_VADPEndBackupSession(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t handle = no_handle;
    bool okay = false;
    if (call.Read(handle)) {
        void *session = g_vBackupSession[handle];
        const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
        okay = target(&session, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

// The answer is 1, the listing and the index, or -1 and the error text.
void ProcessAlt_VADPGetDiskChangeIDS(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string path;
    bool okay = false;
    void *session = nullptr;
    AdapterListing *list = nullptr;
    if (call.Read(path)) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, &session, &list, &call.error) != 0;
    }
    const std::unique_ptr<const AdapterListing> owned(list);
    const AdapterListing none;
    const std::int32_t index = okay ? storeBackupSession(session) : failure;
    call.ReplyStatus(okay);
    if (!okay)
        return;
    static_cast<void>(writeItemList(channel, list != nullptr ? *list : none, true, false));
    static_cast<void>(WriteInt32ToPipe(channel, index));
}

void ProcessAlt_VADPGetDiskChangedSectorNum(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t session = no_handle;
    std::uint32_t second = no_number;
    std::string third;
    bool okay = false;
    std::uint32_t number = 0;
    if (call.Read(session, second, third)) {
        void *object = g_vBackupSession[session];
        const auto target =
            AsTarget<AdapterBool(void **, std::uint32_t, std::uint32_t *, const char *, VMLib_ErrorInfo **)>(function);
        okay = target(&object, second, &number, third.c_str(), &call.error) != 0;
    }
    call.ReplyStatus(okay);
    if (okay)
        static_cast<void>(WriteInt32ToPipe(channel, static_cast<std::int32_t>(number)));
}

} // namespace kessil
