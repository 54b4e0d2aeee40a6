#include "platform/message_table.h"

#include "platform/windows/format_message.h"

namespace kessil::platform {

MessageTable OpenMessageTable(const WideString &file)
{
    return LoadLibraryW(Wide(file));
}

bool ReadMessage(MessageTable table, std::uint32_t number, WideString &text)
{
    auto message = FormatMessageText(FORMAT_MESSAGE_FROM_HMODULE, static_cast<HMODULE>(table), number);
    if (message)
        text = std::move(*message);
    return message.has_value();
}

void CloseMessageTable(MessageTable table)
{
    const LastErrorKeeper keeper;
    FreeLibrary(static_cast<HMODULE>(table));
}

} // namespace kessil::platform
