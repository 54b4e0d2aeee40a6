#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// A file's table of message texts by number; null when none. On Windows the message table of a library or program, on
/// Linux set 1 of an X/Open message catalogue.
using MessageTable = void *;

/// Opens the table of a file, found as the system finds libraries or catalogues. Null on failure.
MessageTable OpenMessageTable(const WideString &file);

/// The message of that number, with the line end that it has in the table, if any, and its inserts (`%1`) as they
/// stand. False, with `text` untouched, when the table has none.
bool ReadMessage(MessageTable table, std::uint32_t number, WideString &text);

/// Gives the table up. Keeps the last error.
void CloseMessageTable(MessageTable table);

} // namespace kessil::platform
