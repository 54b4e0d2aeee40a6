#include "platform/pipe.h"

#include "platform/posix/handles.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace kessil::platform {
namespace {

using posix::KeepErrno;
using posix::ToDescriptor;

// Fails when the path is longer than an address can hold: a truncated one would name another socket.
bool FillAddress(sockaddr_un &address, const std::string &path)
{
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        errno = path.empty() ? EINVAL : ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

// Uses a new socket for each attempt: one whose connection was refused may not be able to connect later.
int TryConnect(const sockaddr_un &address)
{
    const int descriptor = posix::AboveStandardStreams(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (descriptor < 0)
        return -1;
    const bool connected = connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    // Connects without blocking, so that the wait stays bounded, but blocks from here on.
    if (connected && fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK) == 0)
        return descriptor;
    const KeepErrno keep;
    close(descriptor);
    return -1;
}

bool MayAppearLater(int error)
{
    return error == ENOENT || error == ECONNREFUSED || error == EAGAIN;
}

} // namespace

PipeHandle ConnectPipe(const WideString &name, std::uint32_t wait_milliseconds)
{
    using std::chrono::milliseconds;

    sockaddr_un address = {};
    if (!FillAddress(address, ToUtf8(name)))
        return invalid_pipe;

    const auto deadline = std::chrono::steady_clock::now() + milliseconds(wait_milliseconds);
    for (milliseconds pause(1);; pause = std::min(pause * 2, milliseconds(20))) {
        const int descriptor = TryConnect(address);
        if (descriptor >= 0)
            return posix::ToHandle(descriptor);
        const KeepErrno keep;
        if (!MayAppearLater(errno) || std::chrono::steady_clock::now() + pause > deadline)
            return invalid_pipe;
        std::this_thread::sleep_for(pause);
    }
}

bool ReadPipe(PipeHandle pipe, void *buffer, std::uint32_t size, std::uint32_t &count)
{
    count = 0;
    ssize_t received = 0;
    do
        received = read(ToDescriptor(pipe), buffer, size);
    while (received < 0 && errno == EINTR);
    if (received < 0)
        return false;
    count = static_cast<std::uint32_t>(received);
    if (count > 0 || size == 0)
        return true;

    pollfd state = {ToDescriptor(pipe), POLLIN, 0};
    if (poll(&state, 1, 0) < 0 || (state.revents & POLLHUP) == 0)
        return true;
    errno = EPIPE;
    return false;
}

bool WritePipe(PipeHandle pipe, const void *data, std::uint32_t size, std::uint32_t &count)
{
    count = 0;
    while (count < size) {
        const auto *const rest = static_cast<const unsigned char *>(data) + count;
        const ssize_t sent = send(ToDescriptor(pipe), rest, size - count, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            return false;
        count += static_cast<std::uint32_t>(sent);
    }
    return true;
}

void ClosePipe(PipeHandle pipe)
{
    const KeepErrno keep;
    close(ToDescriptor(pipe));
}

} // namespace kessil::platform
