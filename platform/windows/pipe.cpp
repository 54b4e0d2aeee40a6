#include "platform/pipe.h"

#include "platform/windows/native.h"

namespace kessil::platform {

PipeHandle ConnectPipe(const WideString &name, std::uint32_t wait_milliseconds)
{
    if (!WaitNamedPipeW(Wide(name), wait_milliseconds))
        return invalid_pipe;
    return CreateFileW(Wide(name), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

bool ReadPipe(PipeHandle pipe, void *buffer, std::uint32_t size, std::uint32_t &count)
{
    DWORD moved = 0;
    const bool done = ReadFile(pipe, buffer, size, &moved, nullptr) != 0;
    count = moved;
    return done;
}

bool WritePipe(PipeHandle pipe, const void *data, std::uint32_t size, std::uint32_t &count)
{
    DWORD moved = 0;
    const bool done = WriteFile(pipe, data, size, &moved, nullptr) != 0;
    count = moved;
    return done;
}

void ClosePipe(PipeHandle pipe)
{
    CloseKeepingLastError(pipe);
}

} // namespace kessil::platform
