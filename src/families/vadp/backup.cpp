#include "families/vadp/vadp.h"

#include "families/vadp/adapter_call.h"
#include "families/vadp/handles.h"
#include "families/vadp/item_list.h"

#include <memory>

namespace kessil {
namespace {

constexpr std::uint64_t no_count = 0xFFFFFFFFFFFFFFFF;
constexpr std::uint32_t first_session = 0;

// The adapter doesn't get this length.
constexpr std::uint32_t block_length = 65536;

U32 ResultOf(std::int32_t result)
{
    return U32(static_cast<std::uint32_t>(result));
}

} // namespace

void Process_VADPInitVixDiskLib(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR config, lib;
    if (!call.Read(config, lib))
        return;

    const auto target = AsTarget<AdapterBool(const char *, const char *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(config.Text(), lib.Text(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

// Sends no log lines: those of this call are sent with a later answer.
void Process_VADPExitVixDiskLib(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    const auto target = AsTarget<void()>(function);
    target();
    call.Succeed();
}

void Process_VADPSnapshotVM(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path, name, description;
    U16 isCBT, isMemory, isQuiesce;
    if (!call.Read(path, name, description, isCBT, isMemory, isQuiesce))
        return;

    std::uint32_t timestamp = 0;
    const auto target = AsTarget<AdapterBool(const char *, const char *, const char *, std::uint32_t *, void *, void **,
                                             bool, bool, bool, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), name.Text(), description.Text(), &timestamp, g_pCredentials, &g_pListingCache,
                             isCBT.value != 0, isMemory.value != 0, isQuiesce.value != 0, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(U32(timestamp), call.ErrorText());
}

void Process_VADPStartBackupSession(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    U32 options, acl;
    if (!call.Read(path, options, acl))
        return;

    void *session = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, void **, void *, void *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &session, g_vBackupOptions[options.value],
                             g_vACLInfo[acl.value], &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeBackupSession, session), call.ErrorText());
}

void Process_VADPEndBackupSession(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    void *session = g_vBackupSession[handle.value];
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&session, &call.error) != 0;
    if (okay)
        g_vBackupSession.Clear(handle.value);

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPGetBackupSessionFiles(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR path;
    if (!call.Read(session, path))
        return;

    AdapterListing *listing = nullptr;
    const auto target = AsTarget<AdapterBool(void *, const char *, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vBackupSession[session.value], path.Text(), &listing, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeListing, listing), call.ErrorText());
}

// The target returns a number, which is a result beside the index.
void Process_VADPOpenBackupFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR path;
    if (!call.Read(session, path))
        return;

    void *file = nullptr;
    const auto target = AsTarget<std::uint32_t(void *, const char *, void **, VMLib_ErrorInfo **)>(function);
    const std::uint32_t result = target(g_vBackupSession[session.value], path.Text(), &file, &call.error);
    const bool okay = result != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeBackupFile, file), U32(result), call.ErrorText());
}

void Process_VADPReOpenBackupFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 session;
    STR path;
    if (!call.Read(session, path))
        return;

    void *file = nullptr;
    const auto target = AsTarget<AdapterBool(void *, const char *, void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(g_vBackupSession[session.value], path.Text(), &file, &call.error) != 0;

    call.Conclude(okay);
    call.Reply(IndexOf(okay, storeBackupFile, file), call.ErrorText());
}

void Process_VADPReadBackupFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__, EntryLog::None);
    U32 file;
    BUF block;
    if (!call.Read(file, block))
        return;

    std::uint64_t count = no_count;
    const auto target =
        AsTarget<std::int32_t(void *, void *, std::uint32_t, std::uint64_t *, VMLib_ErrorInfo **)>(function);
    const std::int32_t result = target(g_vBackupFile[file.value], block.data, block.size, &count, &call.error);

    call.Conclude(result >= 0);
    call.Reply(block, ResultOf(result), U64(count), call.ErrorText());
}

void Process_VADPReadFileACL(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 file;
    BUF block;
    if (!call.Read(file, block))
        return;

    const auto target = AsTarget<std::int32_t(void *, void *, std::uint32_t, VMLib_ErrorInfo **)>(function);
    const std::int32_t result = target(g_vBackupFile[file.value], block.data, block.size, &call.error);

    call.Conclude(result >= 0);
    call.Reply(block, ResultOf(result), call.ErrorText());
}

void Process_VADPCloseBackupFile(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 handle;
    if (!call.Read(handle))
        return;

    void *file = g_vBackupFile[handle.value];
    const auto target = AsTarget<AdapterBool(void **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&file, &call.error) != 0;
    if (okay)
        g_vBackupFile.Clear(handle.value);

    call.Conclude(okay);
    call.Reply(call.ErrorText());
}

void Process_VADPGetReadBufferUse(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 file;
    if (!call.Read(file))
        return;

    const auto target = AsTarget<std::uint32_t(void *)>(function);
    const std::uint32_t result = target(g_vBackupFile[file.value]);

    call.FlushLog();
    call.Reply(U32(result));
}

void Process_VADPgetIndexBlocks(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 file;
    if (!call.Read(file))
        return;

    const auto target = AsTarget<std::uint32_t(void *)>(function);
    const std::uint32_t result = target(g_vBackupFile[file.value]);

    call.FlushLog();
    call.Reply(U32(result));
}

void Process_VADPReadBlock(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__, EntryLog::None);
    U32 file;
    BUF data(block_length);
    U64 block;
    if (!call.Read(file, data, block))
        return;

    const auto target = AsTarget<std::int32_t(void *, void *, std::uint64_t, VMLib_ErrorInfo **)>(function);
    const std::int32_t result = target(g_vBackupFile[file.value], data.data, block.value, &call.error);

    call.Conclude(result >= 0);
    call.Reply(data, ResultOf(result), call.ErrorText());
}

void Process_VADPReadBlockSignature(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__, EntryLog::None);
    U32 file;
    BUF data(block_length);
    U64 block;
    U32 kind;
    if (!call.Read(file, data, block, kind))
        return;

    const auto target =
        AsTarget<std::int32_t(void *, void *, std::uint64_t, std::uint32_t, VMLib_ErrorInfo **)>(function);
    const std::int32_t result = target(g_vBackupFile[file.value], data.data, block.value, kind.value, &call.error);

    call.Conclude(result >= 0);
    call.Reply(data, ResultOf(result), call.ErrorText());
}

// The listing is sent as bare values ahead of the success frame. Each result overwrites the one before it: in the end
// the section holds the index, or the error text, alone.
void Process_VADPGetDiskChangeIDS(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    STR path;
    if (!call.Read(path))
        return;

    void *session = nullptr;
    AdapterListing *listing = nullptr;
    const auto target =
        AsTarget<AdapterBool(const char *, void *, void **, AdapterListing **, VMLib_ErrorInfo **)>(function);
    const bool okay = target(path.Text(), g_pCredentials, &session, &listing, &call.error) != 0;
    std::unique_ptr<const AdapterListing> owned(listing);

    call.TakeErrorText(okay);
    const U32 index = IndexOf(okay, storeBackupSession, session);
    call.FlushLog();
    if (!call.Write(U32(okay ? 1 : 0)))
        return;
    if (okay) {
        const AdapterListing none;
        static_cast<void>(writeItemList(channel, listing != nullptr ? *listing : none, true, true));
    }
    if (!(okay ? call.Write(U32(index)) : call.Write(call.ErrorText())))
        return;
    owned.reset();
    call.Succeed();
}

// Uses the first session, whichever the parent names.
void Process_VADPGetDiskChangedSectorNum(CIPCCommunication &channel, void *function)
{
    AdapterCall call(channel, __func__);
    U32 first, second;
    STR third;
    if (!call.Read(first, second, third))
        return;

    void *session = g_vBackupSession[first_session];
    std::uint32_t number = 0;
    const auto target =
        AsTarget<AdapterBool(void **, std::uint32_t, std::uint32_t *, const char *, VMLib_ErrorInfo **)>(function);
    const bool okay = target(&session, second.value, &number, third.Text(), &call.error) != 0;

    call.Conclude(okay);
    call.Reply(U32(number), call.ErrorText());
}

} // namespace kessil
