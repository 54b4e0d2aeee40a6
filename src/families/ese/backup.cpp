#include "families/ese/ese.h"

#include "families/ese/composites.h"
#include "families/ese/ese_values.h"
#include "marshal/handler_call.h"

#include <cstdint>

namespace kessil {

void Process_HrESEBackupPrepare(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR server, annotation;
    if (!call.Read(server, annotation))
        return;

    std::uint32_t count = 0;
    const _INSTANCE_BACKUP_INFO *records = nullptr;
    std::uint64_t context = 0;
    const auto target = AsTarget<std::uint32_t(const char16_t *, const char16_t *, std::uint32_t *,
                                               const _INSTANCE_BACKUP_INFO **, std::uint64_t *)>(function);
    const std::uint32_t result = target(server.Text(), annotation.Text(), &count, &records, &context);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    INSTANCES instances;
    instances.Fill(records, count);
    // Here alone the result stands in front of what the library returned.
    call.Reply(server, annotation, U32(ese::Low32(context)), U32(result), instances, U32(last_error));
}

void Process_HrESEBackupSetup(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    U64 instance_id;
    U32 backup_type;
    if (!call.Read(context, instance_id, backup_type))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, std::uint32_t)>(function);
    const std::uint32_t result = target(context.value, instance_id.value, backup_type.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, instance_id, backup_type, U32(result), U32(last_error));
}

void Process_HrESEBackupOpenFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    WSTR file_name;
    U32 read_hint;
    if (!call.Read(context, file_name, read_hint))
        return;

    std::uint64_t file = 0;
    std::uint64_t file_size = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, const char16_t *, std::uint32_t, std::uint32_t,
                                               std::uint64_t *, std::uint64_t *)>(function);
    // The number of sections is always 1.
    const std::uint32_t result = target(context.value, file_name.Text(), read_hint.value, 1, &file, &file_size);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, file_name, read_hint, U32(ese::Low32(file)), U64(file_size), U32(result), U32(last_error));
}

void Process_HrESEBackupReadFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context, file;
    BUF data;
    if (!call.Read(context, file, data))
        return;

    std::uint32_t count = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(context.value, file.value, data.data, data.size, &count);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, file, data, U32(count), U32(result), U32(last_error));
}

void Process_HrESEBackupCloseFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context, file;
    if (!call.Read(context, file))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t)>(function);
    const std::uint32_t result = target(context.value, file.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, file, U32(result), U32(last_error));
}

void Process_HrESEBackupGetLogAndPatchFiles(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    if (!call.Read(context))
        return;

    // Not null: the library may look at the list before it sets one, and leaving it alone means that there are no
    // files.
    const char16_t *list = u"\0";
    const auto target = AsTarget<std::uint32_t(std::uint64_t, const char16_t **)>(function);
    const std::uint32_t result = target(context.value, &list);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    LIST files;
    files.Fill(list);
    call.Reply(context, files, U32(result), U32(last_error));
}

void Process_HrESEBackupTruncateLogs(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    if (!call.Read(context))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(context.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, U32(result), U32(last_error));
}

void Process_HrESEBackupInstanceEnd(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context, flags;
    if (!call.Read(context, flags))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint32_t)>(function);
    const std::uint32_t result = target(context.value, flags.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, flags, U32(result), U32(last_error));
}

void Process_HrESEBackupEnd(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    if (!call.Read(context))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(context.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, U32(result), U32(last_error));
}

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
    // An empty display name is null to the library, an empty server a string.
    const std::uint32_t result =
        target(server.Text(), ese::TextOrNull(display_name.text), flags.value, &count, &records);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    REGISTERED registered;
    registered.Fill(records, count);
    call.Reply(server, display_name, flags, registered, U32(result), U32(last_error));
}

} // namespace kessil
