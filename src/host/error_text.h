#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil {

class CIPCCommunication;

/// Looks a message number up in the message table of a file and replies with an 'E' frame in every case: return code
/// -1, the number as the system error, and the text. If the file can't be opened the text is the system's for the
/// reason; if the file has no such number it is the system's for the number. Both are followed by the file's name in
/// brackets.
void ReadErrDLL(std::uint32_t message_number, const WideString &dll_name, CIPCCommunication &channel);

} // namespace kessil
