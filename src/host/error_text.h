#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil {

class CIPCCommunication;

/// Looks a message number up in the message table of a file and replies with the text: always an 'E' frame, with -1,
/// the number and the text. A file that can't be opened, or a number that it lacks, gives the system's text for the
/// reason, or for the number itself, with the file's name in brackets.
void ReadErrDLL(std::uint32_t message_number, const WideString &dll_name, CIPCCommunication &channel);

} // namespace kessil
