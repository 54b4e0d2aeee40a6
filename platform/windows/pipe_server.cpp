#ifndef _CRT_RAND_S
#define _CRT_RAND_S // NOLINT(bugprone-reserved-identifier)
#endif
#include <stdlib.h>

#include "platform/pipe_server.h"

#include "platform/windows/handle.h"
#include "platform/windows/own_user_only.h"

#include <atomic>
#include <memory>

namespace kessil::platform {

struct PipeServer
{
    Handle pipe;
    Handle done = Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    Handle interrupt = Handle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    std::atomic<bool> interrupted{false};
};

namespace {

constexpr DWORD buffer_size = 64 * 1024;

bool TakeInterrupt(PipeServer &server)
{
    return server.interrupted.exchange(false);
}

PipeStatus FailureStatus()
{
    switch (GetLastError()) {
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
    case ERROR_PIPE_NOT_CONNECTED:
        return PipeStatus::Closed;
    default:
        return PipeStatus::Failed;
    }
}

/// Waits until the operation is over, the deadline has passed or an interrupt has come.
PipeStatus WaitForOperation(PipeServer &server, Deadline deadline)
{
    const HANDLE events[] = {server.done.Get(), server.interrupt.Get()};
    for (;;) {
        switch (WaitForMultipleObjects(2, events, FALSE, MillisecondsUntil(deadline))) {
        case WAIT_OBJECT_0:
            return PipeStatus::Done;
        case WAIT_OBJECT_0 + 1:
            // The event may be left over from an interrupt that an operation consumed before it waited.
            if (TakeInterrupt(server))
                return PipeStatus::Interrupted;
            break;
        case WAIT_TIMEOUT:
            if (HasPassed(deadline))
                return PipeStatus::TimedOut;
            break;
        default:
            return PipeStatus::Failed;
        }
    }
}

/// One operation on the pipe from start to end. The system writes into this object, so the operation never outlives it.
class Operation
{
public:
    explicit Operation(PipeServer &server) : m_server(server) { m_overlapped.hEvent = server.done.Get(); }
    Operation(const Operation &) = delete;
    Operation &operator=(const Operation &) = delete;

    OVERLAPPED *Native() { return &m_overlapped; }

    /// Waits for the operation to complete, or cancels it. `started` is the result of the system call that began it.
    PipeStatus Finish(bool started, Deadline deadline, DWORD &count)
    {
        PipeStatus status = PipeStatus::Done;
        if (!started) {
            if (GetLastError() != ERROR_IO_PENDING)
                return FailureStatus();
            status = WaitForOperation(m_server, deadline);
            if (status != PipeStatus::Done)
                CancelIoEx(m_server.pipe.Get(), &m_overlapped);
        }
        const bool completed = GetOverlappedResult(m_server.pipe.Get(), &m_overlapped, &count, TRUE) != 0;
        if (status == PipeStatus::Done)
            return completed ? PipeStatus::Done : FailureStatus();
        if (!completed)
            return status;
        // It completed before it could be cancelled. An interrupt then applies to the next operation.
        if (status == PipeStatus::Interrupted)
            m_server.interrupted = true;
        return PipeStatus::Done;
    }

private:
    PipeServer &m_server;
    OVERLAPPED m_overlapped = {};
};

PipeStatus Connect(PipeServer &server, Deadline deadline)
{
    Operation operation(server);
    DWORD none = 0;
    const bool started = ConnectNamedPipe(server.pipe.Get(), operation.Native()) != 0;
    const DWORD code = started ? ERROR_SUCCESS : GetLastError();
    // The client is connected already, or was: what it wrote can still be read.
    if (code == ERROR_PIPE_CONNECTED || code == ERROR_NO_DATA)
        return PipeStatus::Done;
    return operation.Finish(started, deadline, none);
}

} // namespace

WideString RandomPipeName()
{
    constexpr char16_t digits[] = u"0123456789abcdef";
    WideString name = uR"(\\.\pipe\kessil-)";
    for (int part = 0; part < 4; ++part) {
        unsigned int bits = 0;
        if (rand_s(&bits) != 0)
            return {};
        for (int shift = 28; shift >= 0; shift -= 4)
            name += digits[bits >> shift & 15];
    }
    return name;
}

PipeServer *CreatePipeServer(const WideString &name)
{
    OwnUserOnly security;
    auto server = std::make_unique<PipeServer>();
    if (!security.Get() || !server->done || !server->interrupt)
        return nullptr;
    constexpr DWORD open_mode = PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE | FILE_FLAG_OVERLAPPED;
    constexpr DWORD pipe_mode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;
    server->pipe =
        Handle(CreateNamedPipeW(Wide(name), open_mode, pipe_mode, 1, buffer_size, buffer_size, 0, security.Get()));
    return server->pipe ? server.release() : nullptr;
}

PipeStatus AcceptPipeClient(PipeServer &server, std::uint32_t client_process_id, Deadline deadline)
{
    if (TakeInterrupt(server))
        return PipeStatus::Interrupted;
    const PipeStatus status = Connect(server, deadline);
    if (status != PipeStatus::Done)
        return status;
    ULONG process_id = 0;
    if (!GetNamedPipeClientProcessId(server.pipe.Get(), &process_id))
        return PipeStatus::Failed;
    if (process_id == client_process_id)
        return PipeStatus::Done;
    DisconnectNamedPipe(server.pipe.Get());
    return PipeStatus::WrongClient;
}

PipeStatus ReadServedPipe(PipeServer &server, void *buffer, std::uint32_t size, std::uint32_t &count, Deadline deadline)
{
    DWORD moved = 0;
    PipeStatus status = PipeStatus::Done;
    count = 0;
    // A write of zero bytes at the other end completes a read with zero bytes.
    while (status == PipeStatus::Done && moved == 0) {
        if (TakeInterrupt(server))
            return PipeStatus::Interrupted;
        // Available bytes are read without a wait, so a client that keeps sending would never meet the deadline.
        if (HasPassed(deadline))
            return PipeStatus::TimedOut;
        Operation operation(server);
        const bool started = ReadFile(server.pipe.Get(), buffer, size, nullptr, operation.Native()) != 0;
        status = operation.Finish(started, deadline, moved);
    }
    count = moved;
    return status;
}

PipeStatus WriteServedPipe(PipeServer &server, const void *data, std::uint32_t size, Deadline deadline)
{
    const auto *rest = static_cast<const unsigned char *>(data);
    while (size > 0) {
        if (TakeInterrupt(server))
            return PipeStatus::Interrupted;
        DWORD moved = 0;
        Operation operation(server);
        const bool started = WriteFile(server.pipe.Get(), rest, size, nullptr, operation.Native()) != 0;
        const PipeStatus status = operation.Finish(started, deadline, moved);
        if (status != PipeStatus::Done)
            return status;
        rest += moved;
        size -= moved;
    }
    return PipeStatus::Done;
}

void InterruptPipeServer(PipeServer &server)
{
    server.interrupted = true;
    SetEvent(server.interrupt.Get());
}

void DestroyPipeServer(PipeServer *server)
{
    const LastErrorKeeper keeper;
    delete server;
}

} // namespace kessil::platform
