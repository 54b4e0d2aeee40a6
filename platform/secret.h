#pragma once

#include "platform/text.h"

#include <cstddef>
#include <string_view>

namespace kessil::platform {

/// How the reading of a secret ended.
enum class SecretStatus
{
    Read,
    Interrupted, ///< somebody asked this process to end
    NoTerminal,  ///< this process has no terminal
    Nothing,     ///< the input can't be read, or has ended
    TooLong      ///< longer than longest_secret
};

/// In bytes of UTF-8, or in 16-bit units where those are typed.
inline constexpr std::size_t longest_secret = 1024;

/// Shows `prompt` (UTF-8) on the process's terminal, wherever the standard streams lead, and reads one line from there
/// without showing it. The terminal is as before when this returns, and also when the process is asked to end: on Linux
/// the signal is taken note of here and goes no further; on Windows Ctrl-C is, and everything else ends the process as
/// always. For one thread, and while no other thread takes signals.
///
/// No copy of the secret but `line` is left in this process's memory, neither by this function nor by ReadSecretLine.
SecretStatus ReadHiddenLine(std::string_view prompt, WideString &line);

/// Reads the first line, UTF-8, from an open descriptor of the process, and not one byte more. The end of the input
/// ends the line, too.
SecretStatus ReadSecretLine(int descriptor, WideString &line);

} // namespace kessil::platform
