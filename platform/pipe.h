#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// One end of a connected pipe: the operating system's own handle or descriptor, so that the log can print it.
using PipeHandle = void *;

/// All ones: no pipe.
inline const PipeHandle invalid_pipe = reinterpret_cast<PipeHandle>(~std::uintptr_t{0});

/// Waits up to `wait_milliseconds` for the pipe of that name to accept a client, then opens it for reading and writing.
/// The name is a full pipe path on Windows and a socket's file path on Linux (at most 107 bytes). Returns invalid_pipe
/// on failure.
PipeHandle ConnectPipe(const WideString &name, std::uint32_t wait_milliseconds);

/// One blocking read of at most `size` bytes. True with a count of 0 means that the other end has ended its stream but
/// still holds the pipe; when the other end is gone, the read fails.
bool ReadPipe(PipeHandle pipe, void *buffer, std::uint32_t size, std::uint32_t &count);

/// One blocking write. `count` receives the number of bytes written.
bool WritePipe(PipeHandle pipe, const void *data, std::uint32_t size, std::uint32_t &count);

/// Closes a pipe that ConnectPipe returned. Keeps the last error.
void ClosePipe(PipeHandle pipe);

} // namespace kessil::platform
