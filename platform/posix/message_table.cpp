#include "platform/message_table.h"

#include "platform/posix/handles.h"

#include <cerrno>
#include <limits>
#include <nl_types.h>

namespace kessil::platform {

MessageTable OpenMessageTable(const WideString &file)
{
    errno = 0;
    const nl_catd catalogue = catopen(ToUtf8(file).c_str(), NL_CAT_LOCALE);
    if (catalogue != reinterpret_cast<nl_catd>(-1))
        return catalogue;
    // For a file that exists but isn't a catalogue, catopen leaves no code.
    if (errno == 0)
        errno = EINVAL;
    return nullptr;
}

bool ReadMessage(MessageTable table, std::uint32_t number, WideString &text)
{
    constexpr int messages = 1;
    static const char none[] = "";
    if (number > static_cast<std::uint32_t>(std::numeric_limits<int>::max()))
        return false;
    const char *const message = catgets(static_cast<nl_catd>(table), messages, static_cast<int>(number), none);
    if (message == none)
        return false;
    text = FromUtf8(message);
    return true;
}

void CloseMessageTable(MessageTable table)
{
    const posix::KeepErrno keep;
    catclose(static_cast<nl_catd>(table));
}

} // namespace kessil::platform
