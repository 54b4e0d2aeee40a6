#include "families/vadp/vadp.h"

#include "families/vadp/adapter_call.h"
#include "families/vadp/handles.h"

#include <map>

namespace kessil {
namespace {

constexpr std::uint32_t usual_block = 65536;

} // namespace

void Process_VADPGetVMConfig(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPGetVMConfig)", nullptr,
                                  u"Failed to serialize output (Process_VADPGetVMConfig)"});
    STR path;
    if (!call.Read(path))
        return;

    AdapterListing *listing = nullptr;
    const auto target = AsTarget<AdapterBool(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &listing, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

void Process_VADPSetVMConfig(CIPCCommunication &channel, void *function)
{
    // Parents know these texts, which name the handler above.
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPGetVMConfig)", nullptr,
                                  u"Failed to serialize output (Process_VADPGetVMConfig)"});
    U32 session;
    STR config;
    if (!call.Read(session, config))
        return;

    const auto target = AsTarget<AdapterBool(void *, const char *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreSession[session.value], config.Text(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPGetSnapshotConfig(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPGetSnapshotConfig)", nullptr,
                                  u"Failed to serialize output (Process_VADPGetSnapshotConfig)"});
    STR path;
    U32 timestamp;
    if (!call.Read(path, timestamp))
        return;

    AdapterListing *listing = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, std::uint32_t, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), timestamp.value, g_pCredentials, &listing, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

void Process_VADPOpenDisk(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPOpenDisk)", nullptr,
                                  u"Failed to serialize output (Process_VADPOpenDisk)"});
    STR vmPath;
    STR diskPath;
    U16 flag;
    if (!call.Read(vmPath, diskPath, flag))
        return;

    const auto target =
        AsTarget<AdapterBool(const char *, const char *, bool, void *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay =
        target(vmPath.Text(), diskPath.Text(), flag.value != 0, g_pCredentials, &g_pDisk, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPCloseDisk(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{nullptr, nullptr, u"Failed to serialize output (Process_VADPCloseDisk)"});
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&g_pDisk, &call.error) != 0;

    call.Conclude(okay);
    if (!call.Write(call.ErrorText()))
        return;
    g_pCredentials = nullptr; // not freed; the disk stays as the adapter left it
    call.Succeed();
}

void Process_VADPReadSectors(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPReadSectors)", nullptr,
                                  u"Failed to serialize output (Process_VADPReadSectors)"},
                     EntryLog::None);
    U32 start;
    U32 count;
    BUF block(usual_block);
    if (!call.Read(start, count, block))
        return;

    const auto target =
        AsTarget<AdapterBool(void *, std::uint64_t, std::uint64_t, void *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_pDisk, start.value, count.value, block.data, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(block, call.ErrorText());
}

void Process_VADPWriteSectors(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPWriteSectors)", nullptr,
                                  u"Failed to serialize output (Process_VADPWriteSectors)"},
                     EntryLog::None);
    U32 start;
    U32 count;
    BUF block(usual_block);
    if (!call.Read(start, count, block))
        return;

    const auto target =
        AsTarget<AdapterBool(void *, std::uint64_t, std::uint64_t, const void *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_pDisk, start.value, count.value, block.data, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPCreateVM(CIPCCommunication &channel, void *function)
{
    // Only the first text has a z.
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPCreateVM)", nullptr,
                                  u"Failed to serialise output (Process_VADPCreateVM)"});
    STR first;
    STR second;
    STR third;
    U32 count;
    std::map<std::string, std::string> pairs; // stay empty: the section has none, whatever the count
    if (!call.Read(first, second, third, count))
        return;

    const auto target = AsTarget<AdapterBool(const char *, const char *, const char *, void *,
                                             std::map<std::string, std::string> *, VMLib_ErrorInfo **)>(function);
    target(first.Text(), second.Text(), third.Text(), g_pCredentials, &pairs, &call.error);

    call.TakeErrorText(false); // whatever the result
    call.Reply(call.ErrorText());
}

void Process_VADPReconfigVM(CIPCCommunication &, void *)
{
    LogEntry(__func__, EntryLog::Line);
}

void Process_VADPPowerOnVaioVM(CIPCCommunication &channel, void *function)
{
    // Parents know the first text, which has another name.
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPPowerOnVM)", nullptr,
                                  u"Failed to serialize output (Process_VADPPowerOnVaioVM)"});
    STR path;
    if (!call.Read(path))
        return;

    const auto target = AsTarget<AdapterBool(const char *, void *, VMLib_ErrorInfo **)>(function);
    target(path.Text(), g_pCredentials, &call.error);

    call.Conclude(false); // whatever the result
    call.Reply(call.ErrorText());
}

void Process_VADPPowerOffVaioVM(CIPCCommunication &channel, void *function)
{
    // Parents know the first text, which names the opposite.
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPPowerOnVM)", nullptr,
                                  u"Failed to serialize output (Process_VADPPowerOffVaioVM)"});
    STR path;
    if (!call.Read(path))
        return;

    const auto target = AsTarget<AdapterBool(const char *, void *, VMLib_ErrorInfo **)>(function);
    target(path.Text(), g_pCredentials, &call.error);

    call.Conclude(false); // whatever the result
    call.Reply(call.ErrorText());
}

void Process_VADPAttachPolicy(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__,
                     AdapterTexts{u"Failed to serialize input (Process_VADPAttachPolicy)", nullptr,
                                  u"Failed to serialize output (Process_VADPAttachPolicy)"});
    STR path;
    STR policyId;
    if (!call.Read(path, policyId))
        return;

    const auto target = AsTarget<AdapterBool(const char *, void *, std::string, VMLib_ErrorInfo **)>(function);
    target(path.Text(), g_pCredentials, policyId.text, &call.error);

    call.Conclude(false); // whatever the result
    call.Reply(call.ErrorText());
}

void Process_VADPGetHostCpus(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    if (!call.Read(path))
        return;

    std::uint32_t number = 0;
    const auto target = AsTarget<AdapterBool(const char *, void *, std::uint32_t *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &number, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(U32(number), call.ErrorText());
}

} // namespace kessil
