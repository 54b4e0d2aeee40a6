#include "platform/pipe_server.h"

#include "platform/posix/handles.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace kessil::platform {

struct PipeServer
{
    std::string path;
    std::atomic<int> listener{-1};
    std::atomic<int> client{-1};
    std::atomic<bool> interrupted{false};
    bool accept_limited = false;
    bool read_limited = false;
    bool write_limited = false;
};

namespace {

constexpr char directory_prefix[] = "kessil-";
constexpr std::size_t longest_path = sizeof(sockaddr_un{}.sun_path) - 1;

void CloseDescriptor(std::atomic<int> &descriptor)
{
    const posix::KeepErrno keep;
    const int old = descriptor.exchange(-1);
    if (old >= 0)
        close(old);
}

// Removes the socket's name and, when RandomPipeName made it, its directory.
void RemoveName(PipeServer &server)
{
    if (server.path.empty())
        return;
    const posix::KeepErrno keep;
    unlink(server.path.c_str());
    const std::string directory = server.path.substr(0, server.path.rfind('/'));
    const std::size_t start = directory.rfind('/') + 1;
    if (directory.compare(start, sizeof directory_prefix - 1, directory_prefix) == 0)
        rmdir(directory.c_str());
    server.path.clear();
}

std::string RandomHex()
{
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
        return {};
    std::string text;
    for (const unsigned char byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

// Limits how long a blocking call may take; `limited` is whether a limit is set, and is kept from call to call. Without
// a deadline this costs no system call, unlike waiting in poll. False when the deadline has passed.
bool SetTimeLimit(int descriptor, int option, Deadline deadline, bool &limited)
{
    const bool wanted = deadline != Deadline::max();
    if (!wanted && !limited)
        return true;
    timeval limit{};
    if (wanted) {
        const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        limit.tv_sec = left.count() / 1000000;
        limit.tv_usec = left.count() % 1000000;
    }
    setsockopt(descriptor, SOL_SOCKET, option, &limit, sizeof limit);
    limited = wanted;
    return true;
}

// The status for a socket call that failed with errno; Done means that the call must be repeated.
PipeStatus FailureStatus(const PipeServer &server)
{
    if (server.interrupted)
        return PipeStatus::Interrupted;
    if (errno == EINTR || errno == EAGAIN)
        return PipeStatus::Done;
    if (errno == EPIPE || errno == ECONNRESET)
        return PipeStatus::Closed;
    return PipeStatus::Failed;
}

bool IsExpectedClient(int descriptor, std::uint32_t process_id)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid() &&
           static_cast<std::uint32_t>(peer.pid) == process_id;
}

} // namespace

WideString RandomPipeName()
{
    const std::string file = RandomHex();
    if (file.empty())
        return {};
    const char *const bases[] = {std::getenv("XDG_RUNTIME_DIR"), std::getenv("TMPDIR"), "/tmp"};
    for (const char *base : bases) {
        if (base == nullptr || base[0] != '/')
            continue;
        std::string directory = std::string(base) + '/' + directory_prefix + "XXXXXX";
        if (directory.size() + 1 + file.size() > longest_path || mkdtemp(directory.data()) == nullptr)
            continue;
        return FromUtf8(directory.append("/").append(file));
    }
    return {};
}

PipeServer *CreatePipeServer(const WideString &name)
{
    const std::string path = ToUtf8(name);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() > longest_path || path.find('\0') != std::string::npos) {
        errno = path.empty() ? EINVAL : ENAMETOOLONG;
        return nullptr;
    }
    std::memcpy(address.sun_path, path.data(), path.size());

    auto server = std::make_unique<PipeServer>();
    const int listener = posix::AboveStandardStreams(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (listener < 0)
        return nullptr;
    server->listener = listener;
    // The socket's mode becomes the mode of the file that bind creates.
    const bool bound = fchmod(listener, 0600) == 0 &&
                       bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    if (bound)
        server->path = path;
    if (!bound || chmod(path.c_str(), 0600) != 0 || listen(listener, 1) != 0) {
        DestroyPipeServer(server.release());
        return nullptr;
    }
    return server.release();
}

PipeStatus AcceptPipeClient(PipeServer &server, std::uint32_t client_process_id, Deadline deadline)
{
    for (;;) {
        if (server.interrupted)
            return PipeStatus::Interrupted;
        if (!SetTimeLimit(server.listener, SO_RCVTIMEO, deadline, server.accept_limited))
            return PipeStatus::TimedOut;
        const int client = posix::AboveStandardStreams(accept4(server.listener, nullptr, nullptr, SOCK_CLOEXEC));
        if (client < 0) {
            const PipeStatus status = FailureStatus(server);
            if (status == PipeStatus::Done)
                continue;
            return status;
        }
        if (!IsExpectedClient(client, client_process_id)) {
            close(client);
            return PipeStatus::WrongClient;
        }
        server.client = client;
        CloseDescriptor(server.listener);
        RemoveName(server);
        return server.interrupted ? PipeStatus::Interrupted : PipeStatus::Done;
    }
}

PipeStatus ReadServedPipe(PipeServer &server, void *buffer, std::uint32_t size, std::uint32_t &count, Deadline deadline)
{
    count = 0;
    for (;;) {
        if (server.interrupted)
            return PipeStatus::Interrupted;
        if (!SetTimeLimit(server.client, SO_RCVTIMEO, deadline, server.read_limited))
            return PipeStatus::TimedOut;
        const ssize_t received = recv(server.client, buffer, size, 0);
        if (received > 0) {
            count = static_cast<std::uint32_t>(received);
            return PipeStatus::Done;
        }
        if (received == 0)
            return server.interrupted ? PipeStatus::Interrupted : PipeStatus::Closed;
        const PipeStatus status = FailureStatus(server);
        if (status != PipeStatus::Done)
            return status;
    }
}

PipeStatus WriteServedPipe(PipeServer &server, const void *data, std::uint32_t size, Deadline deadline)
{
    const auto *bytes = static_cast<const char *>(data);
    int flags = MSG_NOSIGNAL | MSG_DONTWAIT;
    while (size > 0) {
        if (server.interrupted)
            return PipeStatus::Interrupted;
        const ssize_t sent = send(server.client, bytes, size, flags);
        if (sent >= 0) {
            bytes += sent;
            size -= static_cast<std::uint32_t>(sent);
            continue;
        }
        const PipeStatus status = FailureStatus(server);
        if (status != PipeStatus::Done)
            return status;
        if (!SetTimeLimit(server.client, SO_SNDTIMEO, deadline, server.write_limited))
            return PipeStatus::TimedOut;
        flags = MSG_NOSIGNAL;
    }
    return PipeStatus::Done;
}

void InterruptPipeServer(PipeServer &server)
{
    const posix::KeepErrno keep;
    server.interrupted = true;
    if (server.listener >= 0)
        shutdown(server.listener, SHUT_RDWR);
    if (server.client >= 0)
        shutdown(server.client, SHUT_RDWR);
}

void DestroyPipeServer(PipeServer *server)
{
    if (server == nullptr)
        return;
    CloseDescriptor(server->client);
    CloseDescriptor(server->listener);
    RemoveName(*server);
    const posix::KeepErrno keep;
    delete server;
}

} // namespace kessil::platform
