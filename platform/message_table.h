#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// A file's table of message texts by number; null means none. On Windows it is the message table of a library or
/// program, on Linux set 1 of an X/Open message catalogue.
using MessageTable = void *;

/// Opens the table of a file, which is found as the system finds libraries or catalogues. Null on failure.
MessageTable OpenMessageTable(const WideString &file);

/// The message with that number, including the line end that it has in the table, if any, and with its inserts (`%1`)
/// unexpanded. False, with `text` unchanged, when the table has no such message.
bool ReadMessage(MessageTable table, std::uint32_t number, WideString &text);

/// Closes the table. Keeps the last error.
void CloseMessageTable(MessageTable table);

} // namespace kessil::platform
