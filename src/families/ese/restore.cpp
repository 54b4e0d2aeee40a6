#include "families/ese/ese.h"

#include "families/ese/composites.h"
#include "marshal/row.h"

#include <cstdint>

namespace kessil {

void Process_HrESERestoreOpen(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(WSTR server, WSTR annotation, WSTR system_path, OrNull<WSTR> log_path,
                           Out<Handle> context)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESERestoreReopen(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(WSTR server, WSTR annotation, OrNull<WSTR> log_path, Out<Handle> context)>::Run(
        channel, __func__, function, OutList::EchoAndResults);
}

// The target takes a GUID and a list, and returns a list.
void Process_HrESERestoreAddDatabase(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    Handle context;
    WSTR display_name;
    CGUIDWrapper database;
    LIST source_streams;
    if (!call.Read(context, display_name, database, source_streams))
        return;

    // Read after the call whatever the result.
    const char16_t *list = nullptr;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, EseGuid, const char16_t *, const char16_t **)>(
            function);
    const std::uint32_t result =
        target(context.value, display_name.Text(), database.value, source_streams.List(), &list);
    const std::uint32_t last_error = LastErrorAfter(result);

    LIST target_streams;
    target_streams.Fill(list);
    call.Reply(context, display_name, database, source_streams, target_streams, U32(result), U32(last_error));
}

void Process_HrESERestoreOpenFile(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, WSTR file_name, Const<1> sections, Out<Handle> file)>::Run(
        channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESERestoreSaveEnvironment(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESERestoreComplete(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, WSTR checkpoint_path, WSTR log_path, WSTR target_instance_name,
                           U32 flags)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_HrESERestoreClose(CIPCCommunication &channel, void *function)
{
    Row<WithLastError<U32>(Handle context, U32 close_mode)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

} // namespace kessil
