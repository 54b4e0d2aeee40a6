#include "families/vadp/vadp.h"

#include "families/vadp/adapter_call.h"
#include "families/vadp/handles.h"

#include <stdexcept>

namespace kessil {
namespace {

// A row that takes a path and returns a listing.
void ListByPath(CIPCCommunication &channel, const char *handler, void *function)
{
    AdapterCall call(channel, handler);
    STR path;
    if (!call.Read(path))
        return;

    AdapterListing *listing = nullptr;
    const auto target = AsTarget<AdapterBool(const char *, void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &listing, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

} // namespace

void Process_VADPGetLibraryVersion(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);

    const auto target = AsTarget<const char *()>(function);
    const char *const version = target();

    call.FlushLog();
    call.Reply(STR(version != nullptr ? version : ""));
}

void Process_VADPVersion(CIPCCommunication &channel, void *function)
{
    // Parents know these texts, which name two other handlers.
    static constexpr AdapterTexts texts = {u"Failed to serialise input (Process_VADPReadBackupFile)",
                                           u"Failed to get error message (Process_VADPVersion)",
                                           u"Failed to serialise output (Process_VADPGetLibraryVersion)"};
    AdapterCall call(channel, __func__, texts, EntryLog::None);
    STR first;
    if (!call.Read(first))
        return;

    const auto target = AsTarget<const char *(const char *, void *, VMLib_ErrorInfo **)>(function);
    const char *const text = target(first.Text(), g_pCredentials, &call.error);
    const STR version(text != nullptr ? text : "");

    // Nothing shows whether this succeeded, and so the error text is taken each time, after the log lines were sent.
    call.FlushLog();
    call.TakeErrorText(false);
    call.Reply(STR(version), call.ErrorText());
}

void Process_VADPCreateCredentials(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR first;
    STR second;
    if (!call.Read(first, second))
        return;

    // Not null at first: the adapter finds the older credentials there.
    const auto target = AsTarget<AdapterBool(const char *, const char *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(first.Text(), second.Text(), &g_pCredentials, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPFreeCredentials(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);

    const auto target = AsTarget<void(void **)>(function);
    target(&g_pCredentials);
    g_pCredentials = nullptr;

    call.Succeed();
}

void Process_VADPCreateBackupOptions(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U16 first;
    U16 second;
    U16 third;
    U16 fourth;
    U16 fifth;
    STR sixth;
    if (!call.Read(first, second, third, fourth, fifth, sixth))
        return;

    void *options = nullptr;
    const auto target =
        AsTarget<AdapterBool(bool, bool, bool, bool, bool, std::string, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(first.value != 0, second.value != 0, third.value != 0, fourth.value != 0, fifth.value != 0,
                             sixth.text, &options, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeBackupOptions, options), call.ErrorText());
}

void Process_VADPFreeBackupOptions(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    void *options = g_vBackupOptions[handle.value];
    const auto target = AsTarget<void(void **)>(function);
    target(&options);
    g_vBackupOptions.Clear(handle.value);

    call.Succeed();
}

void Process_VADPOpenListing(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    U32 listing_opts;
    if (!call.Read(path, listing_opts))
        return;

    AdapterListing *listing = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **, std::uint32_t)>(
            function);
    const bool okay =
        target(path.Text(), g_pCredentials, &g_pListingCache, &listing, &call.error, listing_opts.value) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

void Process_VADPNextItem(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    auto *const listing = static_cast<AdapterListing *>(g_vListing[handle.value]);
    const char *text = "";
    std::int32_t number = 0;
    std::uint64_t value = 0;
    std::int32_t extra = 0;
    const auto target = AsTarget<AdapterBool(AdapterListing *, const char **, std::int32_t *, std::uint64_t *,
                                             std::int32_t *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(listing, &text, &number, &value, &extra, &call.error) != 0;
    if (text == nullptr)
        throw std::logic_error("an item without a name");
    const STR name(text);

    call.Conclude(okay);
    call.Reply(STR(name), U32(static_cast<std::uint32_t>(number)), U64(value), U32(static_cast<std::uint32_t>(extra)),
               call.ErrorText());
}

void Process_VADPFreeListing(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    auto *listing = static_cast<AdapterListing *>(g_vListing[handle.value]);
    const auto target = AsTarget<void(AdapterListing **)>(function);
    target(&listing);
    g_vListing.Clear(handle.value);

    call.Succeed();
}

void Process_VADPListDataStores(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR first;
    STR second;
    U16 flag;
    if (!call.Read(first, second, flag))
        return;

    AdapterListing *listing = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **, const char *, bool)>(
            function);
    const bool okay = target(first.Text(), g_pCredentials, &g_pListingCache, &listing, &call.error, second.Text(),
                             flag.value != 0) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

void Process_VADPListFolders(CIPCCommunication &channel, void *function)
{
    ListByPath(channel, __func__, function);
}

void Process_VADPListHosts(CIPCCommunication &channel, void *function)
{
    ListByPath(channel, __func__, function);
}

void Process_VADPListMachineProperties(CIPCCommunication &channel, void *function)
{
    ListByPath(channel, __func__, function);
}

void Process_VADPListDatacenters(CIPCCommunication &channel, void *function)
{
    ListByPath(channel, __func__, function);
}

void Process_VADPListMachines(CIPCCommunication &channel, void *function)
{
    ListByPath(channel, __func__, function);
}

void Process_VADPListResourcePools(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    if (!call.Read(path))
        return;

    AdapterListing *listing = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &g_pListingCache, &listing, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

void Process_VADPOpenConfigRead(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR path;
    if (!call.Read(session, path))
        return;

    void *reader = nullptr;
    const auto target = AsTarget<AdapterBool(void *, const char *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreSession[session.value], path.Text(), &reader, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeRestoreFile, reader), call.ErrorText());
}

void Process_VADPListConfigItems(CIPCCommunication &channel, void *function)
{
    // Parents know these texts; only the first names this handler.
    static constexpr AdapterTexts texts = {u"Failed to serialise input (Process_VADPListConfigItems)",
                                           u"Failed to get error message (Process_VADPOpenListing)",
                                           u"Failed to serialise output (Process_VADPOpenListing)"};
    AdapterCall call(channel, __func__, texts);
    U32 handle;
    if (!call.Read(handle))
        return;

    AdapterListing *listing = nullptr;
    const auto target = AsTarget<AdapterBool(void *, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vRestoreSession[handle.value], &listing, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

void Process_VADPCreateListingCache(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    if (!call.Read(path))
        return;

    std::uint8_t flag = 0;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, std::uint8_t *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &flag, &g_pListingCache, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(U16(flag), call.ErrorText());
}

void Process_VADPFreeListingCache(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);

    const auto target = AsTarget<void(void **)>(function);
    target(&g_pListingCache);
    g_pListingCache = nullptr;

    call.Succeed();
}

} // namespace kessil
