#include "families/vadp/vadp.h"

#include "channel/pipe_primitives.h"
#include "families/vadp/alt_call.h"
#include "families/vadp/binding.h"
#include "families/vadp/handles.h"
#include "logging/log_manager.h"

#include <stdexcept>

namespace kessil {
namespace {

void DropCredentials()
{
    if (g_pCredentials == nullptr)
        return;
    if (g_pfnFreeCredentials != nullptr)
        g_pfnFreeCredentials(&g_pCredentials);
    g_pCredentials = nullptr;
}

} // namespace

void ProcessAlt_VADPGetLibraryVersion(CIPCCommunication &channel, void *function)
{
    LogEntry(__func__, EntryLog::Line);
    const auto target = AsTarget<const char *()>(function);
    const char *const version = target();
    if (version == nullptr)
        throw std::logic_error("an adapter without a version");
    // The text alone: the adapter's log lines are sent with the next answer.
    if (!WriteStringToPipe(channel, version))
        KESSIL_LOG(log_error, vadp_component, "Failed to get version (ProcessAlt_VADPGetLibraryVersion)");
}

void ProcessAlt_VADPCreateCredentials(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string first;
    std::string second;
    const bool reads = call.Read(first, second);
    DropCredentials();
    if (reads) {
        const auto target = AsTarget<AdapterBool(const char *, const char *, void **, VMLib_ErrorInfo **)>(function);
        const bool okay = target(first.c_str(), second.c_str(), &g_pCredentials, &call.error) != 0;
        KESSIL_LOG(log_debug, vadp_component,
                   "back from real_f with rez==" << okay << ", g_pCredentials==" << g_pCredentials);
    }
    // The adapter's result is only logged.
    call.ReplyStatus(reads);
}

void ProcessAlt_VADPCreateBackupOptions(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint32_t third = 0;
    std::uint32_t fourth = 0;
    std::uint32_t fifth = 0;
    std::string sixth;
    std::int32_t index = -1;
    bool okay = false;
    if (call.Read(first, second, third, fourth, fifth, sixth)) {
        void *options = nullptr;
        const auto target =
            AsTarget<AdapterBool(bool, bool, bool, bool, bool, std::string, void **, VMLib_ErrorInfo **)>(function);
        okay = target(first != 0, second != 0, third != 0, fourth != 0, fifth != 0, sixth, &options, &call.error) != 0;
        if (okay)
            index = storeBackupOptions(options);
    }
    call.ReplyValue(okay, index);
}

void ProcessAlt_VADPOpenListing(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Call);
    std::string path;
    std::uint32_t listing_opts = 0;
    bool okay = false;
    AdapterListing *list = nullptr;
    if (call.Read(path, listing_opts)) {
        KESSIL_LOG(log_debug, vadp_component, "path==" << path << ", listing_opts==" << listing_opts);
        const auto target =
            AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **, std::uint32_t)>(
                function);
        okay = target(path.c_str(), g_pCredentials, &g_pListingCache, &list, &call.error, listing_opts) != 0;
    }
    call.ReplyList(okay, list, true);
}

void ProcessAlt_VADPListDataStores(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string first;
    std::string second;
    bool okay = false;
    AdapterListing *list = nullptr;
    if (call.Read(first, second)) {
        const auto target = AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **,
                                                 const char *, bool)>(function);
        okay = target(first.c_str(), g_pCredentials, &g_pListingCache, &list, &call.error, second.c_str(), false) != 0;
    }
    call.ReplyList(okay, list, false);
}

void ProcessAlt_VADPListFolders(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string path;
    bool okay = false;
    AdapterListing *list = nullptr;
    if (call.Read(path)) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, &list, &call.error) != 0;
    }
    call.ReplyList(okay, list, true);
}

void ProcessAlt_VADPListHosts(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string srv;
    bool okay = false;
    AdapterListing *list = nullptr;
    const bool reads = call.Read(srv);
    KESSIL_LOG(log_debug, vadp_component, "okay==" << reads << ", srv==" << srv);
    if (reads) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
        okay = target(srv.c_str(), g_pCredentials, &list, &call.error) != 0;
        if (!okay)
            KESSIL_LOG(log_error, vadp_component, "ListHosts operation failed.");
    }
    call.ReplyList(okay, list, false);
}

void ProcessAlt_VADPListMachines(CIPCCommunication &channel, void *function)
{
    AltCall call(channel, __func__, OnFailedRead::Skip);
    std::string path;
    bool okay = false;
    AdapterListing *list = nullptr;
    if (call.Read(path)) {
        const auto target =
            AsTarget<AdapterBool(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
        okay = target(path.c_str(), g_pCredentials, &list, &call.error) != 0;
    }
    call.ReplyList(okay, list, false);
}

void ProcessAlt_VADPListDatacenters(CIPCCommunication &channel, void *function)
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
    if (okay)
        KESSIL_LOG(log_debug, vadp_component, "Writing item list");
    call.ReplyList(okay, list, false);
    if (okay)
        KESSIL_LOG(log_debug, vadp_component, "Done writing item list");
}

} // namespace kessil
