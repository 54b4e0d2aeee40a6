#include "families/ese/ese.h"

#include "families/ese/composites.h"
#include "marshal/row.h"

#include <cstdint>

namespace kessil {

// The target returns an array of records. In this row alone the result stands in front of the array.
void Process_HrESEBackupPrepare(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR server, annotation;
    if (!call.Read(server, annotation))
        return;

    std::uint32_t count = 0;
    const _INSTANCE_BACKUP_INFO *records = nullptr;
    Handle context;
    const auto target = AsTarget<std::uint32_t(const char16_t *, const char16_t *, std::uint32_t *,
                                               const _INSTANCE_BACKUP_INFO **, std::uint64_t *)>(function);
    const std::uint32_t result = target(server.Text(), annotation.Text(), &count, &records, &context.value);
    const std::uint32_t last_error = LastErrorAfter(result);

    INSTANCES instances;
    instances.Fill(records, count);
    call.Reply(server, annotation, context, U32(result), instances, U32(last_error));
}

void Process_HrESEBackupSetup(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, U64 instance_id, U32 backup_type)>::Run(channel, __func__, function,
                                                                                   OutList::EchoAndResults);
}

void Process_HrESEBackupOpenFile(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, WSTR file_name, U32 read_hint, Const<1> sections, Out<Handle> file,
                           Out<U64> file_size)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESEBackupReadFile(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, Handle file, BUF data, Length size, Out<U32> count)>::Run(
        channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESEBackupCloseFile(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, Handle file)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

// The target returns a list of files.
void Process_HrESEBackupGetLogAndPatchFiles(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    Handle context;
    if (!call.Read(context))
        return;

    // Not null, but an empty list: what the library finds there, and what the parent gets if the library sets none.
    const char16_t *list = u"\0";
    const auto target = AsTarget<std::uint32_t(std::uint64_t, const char16_t **)>(function);
    const std::uint32_t result = target(context.value, &list);
    const std::uint32_t last_error = LastErrorAfter(result);

    LIST files;
    files.Fill(list);
    call.Reply(context, files, U32(result), U32(last_error));
}

void Process_HrESEBackupTruncateLogs(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESEBackupInstanceEnd(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, U32 flags)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESEBackupEnd(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

// The target returns an array of records.
void Process_HrESEBackupRestoreGetRegistered(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR server, display_name;
    U32 flags;
    if (!call.Read(server, display_name, flags))
        return;

    std::uint32_t count = 0;
    const _ESE_REGISTERED_INFO *records = nullptr;
    const auto target = AsTarget<std::uint32_t(const char16_t *, const char16_t *, std::uint32_t, std::uint32_t *,
                                               const _ESE_REGISTERED_INFO **)>(function);
    // An empty display name is null for the library, an empty server an empty string.
    const char16_t *const name_or_null = display_name.text.empty() ? nullptr : display_name.Text();
    const std::uint32_t result = target(server.Text(), name_or_null, flags.value, &count, &records);
    const std::uint32_t last_error = LastErrorAfter(result);

    REGISTERED registered;
    registered.Fill(records, count);
    call.Reply(server, display_name, flags, registered, U32(result), U32(last_error));
}

} // namespace kessil
