#include "families/vadp/vadp.h"

#include "channel/pipe_primitives.h"
#include "families/vadp/alt_call.h"
#include "families/vadp/handles.h"
#include "logging/log_manager.h"

#include <map>

namespace kessil {
namespace {

constexpr unsigned sector_shift = 9; // sectors of 512 bytes

// Answers a negative number ahead of the usual answer; the adapter is called all the same. The text is sent only if a
// value didn't come, else the answer is 1.
void ReportNegative(CIPCCommunication &channel, const AltCall &call, std::uint64_t start, std::uint64_t count)
{
    if (static_cast<std::int64_t>(start) < 0 || static_cast<std::int64_t>(count) < 0)
        sendErrMsgAlt(channel, call.ReadsOkay(), "Invalid input: negative numbers are not allowed.");
}

// Tries to read as many pairs as the count says; those that don't come are empty. The first value of a key stays.
std::map<std::string, std::string> ReadPairs(CIPCCommunication &channel, std::uint64_t count)
{
    std::map<std::string, std::string> pairs;
    for (auto left = static_cast<std::int64_t>(count); left > 0; --left) {
        std::string key;
        std::string value;
        static_cast<void>(ReadStringFromPipe(channel, key));
        static_cast<void>(ReadStringFromPipe(channel, value));
        pairs.emplace(key, value);
    }
    return pairs;
}

// A row that takes a machine's path and answers with its status.
void CallWithPath(CIPCCommunication &channel, const char *handler, void *function)
{
    AltCall call(channel, handler, OnFailedRead::Call);
    std::string path;
    bool okay = false;
    if (call.Read(path)) {
        KESSIL_LOG(log_debug, vadp_component, "path==" << path);
        const auto target = AsTarget<AdapterBool(const char *, void *, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

} // namespace

void ProcessAlt_VADPGetVMConfig(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    bool okay = false;
    AdapterListing *list = nullptr;
    if (call.Read(path)) {
        KESSIL_LOG(log_debug, vadp_component, "path==" << path);
        const auto target =
            AsTarget<AdapterBool(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, &list, &call.error) != 0;
    }
    call.ReplyList(okay, list, false);
}

void ProcessAlt_VADPSetVMConfig(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::uint32_t session = no_handle;
    std::vector<unsigned char> config;
    bool okay = false;
    if (call.Read(session, config)) {
        config.push_back(0);
        const auto target = AsTarget<AdapterBool(void *, const char *, VMLib_ErrorInfo **)>(function);
        okay = target(g_vRestoreSession[session], reinterpret_cast<const char *>(config.data()), &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPGetSnapshotConfig(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    std::uint32_t timestamp = 0;
    bool okay = false;
    AdapterListing *list = nullptr;
    if (call.Read(path, timestamp)) {
        KESSIL_LOG(log_debug, vadp_component, "path==" << path);
        KESSIL_LOG(log_debug, vadp_component, "timestamp==" << timestamp);
        const auto target =
            AsTarget<AdapterBool(const char *, std::uint32_t, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), timestamp, g_pCredentials, &list, &call.error) != 0;
    }
    call.ReplyList(okay, list, false);
}

void ProcessAlt_VADPOpenDisk(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string vmPath;
    std::string diskPath;
    std::uint32_t flag = 0;
    bool okay = false;
    if (call.Read(vmPath, diskPath, flag)) {
        KESSIL_LOG(log_debug, vadp_component, "vmPath==" << vmPath);
        KESSIL_LOG(log_debug, vadp_component, "diskPath==" << diskPath);
        const auto target =
            AsTarget<AdapterBool(const char *, const char *, bool, void *, void **, VMLib_ErrorInfo **)>(function);
        okay = target(vmPath.c_str(), diskPath.c_str(), flag != 0, g_pCredentials, &g_pDisk, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPCloseDisk(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__);
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&g_pDisk, &call.error) != 0;
    g_pDisk = nullptr;
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPReadSectors(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call, EntryLog::None);
    std::uint64_t start = 0;
    std::uint64_t count = 0;
    std::vector<unsigned char> data; // what the parent sends is replaced by what is read
    bool okay = false;
    if (call.Read(start, count, data)) {
        ReportNegative(channel, call, start, count);
        data.assign(count << sector_shift, 0);
        const auto target =
            AsTarget<AdapterBool(void *, std::uint64_t, std::uint64_t, void *, VMLib_ErrorInfo **)>(function);
        okay = target(g_pDisk, start, count, data.data(), &call.error) != 0;
    }
    call.SendLog();
    if (okay)
        static_cast<void>(WriteBytesToPipe(channel, data));
    else
        sendErrMsgAlt(channel, false, call.error);
}

void ProcessAlt_VADPWriteSectors(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call, EntryLog::None);
    std::uint64_t start = 0;
    std::uint64_t count = 0;
    std::vector<unsigned char> data;
    bool okay = false;
    if (call.Read(start, count, data)) {
        ReportNegative(channel, call, start, count);
        const auto target =
            AsTarget<AdapterBool(void *, std::uint64_t, std::uint64_t, const void *, VMLib_ErrorInfo **)>(function);
        okay = target(g_pDisk, start, count, data.data(), &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPCreateVM(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::uint64_t count = 0;
    std::string first;
    std::string second;
    std::string third;
    bool okay = false;
    if (call.Read(count, first, second, third)) {
        std::map<std::string, std::string> pairs = ReadPairs(channel, count);
        const auto target = AsTarget<AdapterBool(const char *, const char *, const char *, void *,
                                                 std::map<std::string, std::string> *, VMLib_ErrorInfo **)>(function);
        okay = target(first.c_str(), second.c_str(), third.c_str(), g_pCredentials, &pairs, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPReconfigVM(CIPCCommunication &, void *)
{
    LogEntry(__func__, EntryLog::Line);
}

void ProcessAlt_VADPPowerOnVaioVM(CIPCCommunication &channel, void *function)
{
    CallWithPath(channel, __func__, function);
}

void ProcessAlt_VADPPowerOffVaioVM(CIPCCommunication &channel, void *function)
{
    CallWithPath(channel, __func__, function);
}

void ProcessAlt_VADPDeleteVaioVM(CIPCCommunication &channel, void *function)
{
    CallWithPath(channel, __func__, function);
}

void ProcessAlt_VADPCloneVM(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string sourcePath;
    std::string second;
    std::string third;
    bool okay = false;
    if (call.Read(sourcePath, second, third)) {
        KESSIL_LOG(log_debug, vadp_component, "sourcePath==" << sourcePath);
        KESSIL_LOG(log_debug, vadp_component, "destinationPath==" << second);
        KESSIL_LOG(log_debug, vadp_component, "destinationPath==" << third);
        const auto target =
            AsTarget<AdapterBool(const char *, const char *, const char *, void *, VMLib_ErrorInfo **)>(function);
        okay = target(sourcePath.c_str(), second.c_str(), third.c_str(), g_pCredentials, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

void ProcessAlt_VADPAttachPolicy(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    std::string policyId;
    bool okay = false;
    if (call.Read(path, policyId)) {
        KESSIL_LOG(log_debug, vadp_component, "path==" << path);
        KESSIL_LOG(log_debug, vadp_component, "policyId==" << policyId);
        const auto target = AsTarget<AdapterBool(const char *, void *, std::string, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, policyId, &call.error) != 0;
    }
    call.ReplyStatus(okay);
}

} // namespace kessil
