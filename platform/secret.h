#pragma once

#include "platform/text.h"

#include <cstddef>
#include <string_view>

namespace kessil::platform {

/// How reading a secret ended.
enum class SecretStatus
{
    Read,
    Interrupted, ///< this process was asked to end
    NoTerminal,  ///< this process has no terminal
    Nothing,     ///< the input can't be read, or has ended
    TooLong      ///< longer than longest_secret
};

/// In bytes of UTF-8, or in 16-bit units where those are typed.
inline constexpr std::size_t longest_secret = 1024;

/// Shows `prompt` (UTF-8) on the process's terminal, even when the standard streams are redirected, and reads one line
/// from there without echo. The terminal is restored on return, and also when the process is asked to end: on Linux
/// this function consumes the signal; on Windows it consumes Ctrl-C, and anything else ends the process as usual. For
/// one thread, and while no other thread handles signals.
///
/// This function and ReadSecretLine leave no copy of the secret in this process's memory but `line`.
SecretStatus ReadHiddenLine(std::string_view prompt, WideString &line);

/// Reads the first line, UTF-8, from an open descriptor of the process, and not a byte beyond it. The end of the input
/// also ends the line.
SecretStatus ReadSecretLine(int descriptor, WideString &line);

} // namespace kessil::platform
