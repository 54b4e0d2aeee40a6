#include "families/ese/ese.h"

#include "families/ese/composites.h"
#include "families/ese/ese_values.h"
#include "marshal/handler_call.h"

#include <cstdint>

namespace kessil {

void Process_HrESERestoreOpen(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR server, annotation, system_path, log_path;
    if (!call.Read(server, annotation, system_path, log_path))
        return;

    std::uint64_t context = 0;
    const auto target = AsTarget<std::uint32_t(const char16_t *, const char16_t *, const char16_t *, const char16_t *,
                                               std::uint64_t *)>(function);
    // Of the empty strings only the log path is null to the library.
    const std::uint32_t result =
        target(server.Text(), annotation.Text(), system_path.Text(), ese::TextOrNull(log_path.text), &context);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(server, annotation, system_path, log_path, U32(ese::Low32(context)), U32(result), U32(last_error));
}

void Process_HrESERestoreReopen(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR server, annotation, log_path;
    if (!call.Read(server, annotation, log_path))
        return;

    std::uint64_t context = 0;
    const auto target =
        AsTarget<std::uint32_t(const char16_t *, const char16_t *, const char16_t *, std::uint64_t *)>(function);
    // Of the empty strings only the log path is null to the library.
    const std::uint32_t result = target(server.Text(), annotation.Text(), ese::TextOrNull(log_path.text), &context);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(server, annotation, log_path, U32(ese::Low32(context)), U32(result), U32(last_error));
}

void Process_HrESERestoreAddDatabase(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    WSTR display_name;
    CGUIDWrapper database;
    LIST source_streams;
    if (!call.Read(context, display_name, database, source_streams))
        return;

    // What the library leaves here is read whatever its result.
    const char16_t *list = nullptr;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, EseGuid, const char16_t *, const char16_t **)>(
            function);
    const std::uint32_t result =
        target(context.value, display_name.Text(), database.value, source_streams.List(), &list);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    LIST target_streams;
    target_streams.Fill(list);
    call.Reply(context, display_name, database, source_streams, target_streams, U32(result), U32(last_error));
}

void Process_HrESERestoreOpenFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    WSTR file_name;
    if (!call.Read(context, file_name))
        return;

    std::uint64_t file = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, std::uint32_t, std::uint64_t *)>(function);
    // The number of sections is always 1.
    const std::uint32_t result = target(context.value, file_name.Text(), 1, &file);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, file_name, U32(ese::Low32(file)), U32(result), U32(last_error));
}

void Process_HrESERestoreSaveEnvironment(CIPCCommunication &channel, void *function)
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

void Process_HrESERestoreComplete(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context;
    WSTR checkpoint_path, log_path, target_instance_name;
    U32 flags;
    if (!call.Read(context, checkpoint_path, log_path, target_instance_name, flags))
        return;

    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, const char16_t *, const char16_t *, std::uint32_t)>(
            function);
    const std::uint32_t result =
        target(context.value, checkpoint_path.Text(), log_path.Text(), target_instance_name.Text(), flags.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, checkpoint_path, log_path, target_instance_name, flags, U32(result), U32(last_error));
}

void Process_HrESERestoreClose(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 context, close_mode;
    if (!call.Read(context, close_mode))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint32_t)>(function);
    const std::uint32_t result = target(context.value, close_mode.value);
    const std::uint32_t last_error = ese::LastErrorAfter(result);

    call.Reply(context, close_mode, U32(result), U32(last_error));
}

} // namespace kessil
