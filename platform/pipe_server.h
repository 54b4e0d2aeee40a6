#pragma once

#include "platform/pipe.h"
#include "platform/text.h"

#include <chrono>
#include <cstdint>

namespace kessil::platform {

/// A pipe that this process serves: it listens until its one client has connected, then carries bytes both ways.
/// Owned by whoever called CreatePipeServer; DestroyPipeServer ends it. Not for use by two threads at once, except
/// that InterruptPipeServer may be called from any.
struct PipeServer;

/// How a bounded operation on a served pipe ended.
enum class PipeStatus
{
    Done,        ///< all bytes moved, or the client is connected
    TimedOut,    ///< the deadline passed first
    Closed,      ///< the other end is gone
    Interrupted, ///< InterruptPipeServer was called
    WrongClient, ///< a process other than the expected one connected; it was disconnected, and the pipe still listens
    Failed       ///< anything else; the last error has the reason
};

using Deadline = std::chrono::steady_clock::time_point;

/// A new pipe name that can't be guessed: 128 random bits. On Linux it lies in a directory that only this user can
/// enter (created here, removed with the server).
WideString RandomPipeName();

/// Creates the pipe for exactly one client, with access for this user only. Null on failure, also when the name is in
/// use.
PipeServer *CreatePipeServer(const WideString &name);

/// Waits for the client and checks that it is the process `client_process_id`.
PipeStatus AcceptPipeClient(PipeServer &server, std::uint32_t client_process_id, Deadline deadline);

/// Reads at least 1 and at most `size` bytes. `count` receives how many. Once the deadline has passed it reads nothing,
/// even if bytes are available.
PipeStatus ReadServedPipe(PipeServer &server, void *buffer, std::uint32_t size, std::uint32_t &count,
                          Deadline deadline);

/// Writes all of `size` bytes.
PipeStatus WriteServedPipe(PipeServer &server, const void *data, std::uint32_t size, Deadline deadline);

/// Makes the operation under way, or else the next one, end with Interrupted. After that, only DestroyPipeServer may be
/// called. May be called from any thread, and on Linux from a signal handler.
void InterruptPipeServer(PipeServer &server);

/// Closes the pipe and removes its name from the system. Accepts null. Keeps the last error.
void DestroyPipeServer(PipeServer *server);

} // namespace kessil::platform
