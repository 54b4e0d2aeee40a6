#include "host/error_text.h"

#include "channel/format_system_error.h"
#include "channel/ipc_communication.h"
#include "channel/records.h"
#include "platform/last_error.h"
#include "platform/message_table.h"

namespace kessil {
namespace {

WideString FindText(std::uint32_t message_number, const WideString &dll_name)
{
    platform::MessageTable const table = platform::OpenMessageTable(dll_name);
    if (table == nullptr)
        return FormatSystemError(platform::LastError(), dll_name);
    WideString text;
    const bool found = platform::ReadMessage(table, message_number, text);
    if (!found)
        text = FormatSystemError(message_number, dll_name);
    platform::CloseMessageTable(table);
    return text;
}

} // namespace

void ReadErrDLL(std::uint32_t message_number, const WideString &dll_name, CIPCCommunication &channel)
{
    const IPCStruct_Error answer{-1, static_cast<std::int32_t>(message_number), FindText(message_number, dll_name)};
    WideString dropped;
    static_cast<void>(answer.Send(channel, dropped));
}

} // namespace kessil
