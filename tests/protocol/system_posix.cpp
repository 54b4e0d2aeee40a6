#include "protocol/system.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace kessil::test {
namespace {

[[noreturn]] void Fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_un AddressOf(const std::string &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::length_error(path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

void WaitUntil(int descriptor, short event)
{
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(WaitLimit() - std::chrono::steady_clock::now());
    pollfd state = {descriptor, event, 0};
    const int ready = poll(&state, 1, static_cast<int>(left.count()));
    if (ready == 0)
        throw std::runtime_error("the helper let the limit pass");
    if (ready < 0)
        Fail("poll");
}

bool IsGone(int error)
{
    return error == EPIPE || error == ECONNRESET;
}

std::string ObjectName(const WideString &section)
{
    return std::string("/").append(platform::ToUtf8(section));
}

void CloseOnce(int &descriptor)
{
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

} // namespace

struct PipeEnd::Native
{
    std::string path;
    int listener = -1;
    int client = -1;
    int occupant = -1;
};

PipeEnd::PipeEnd(const WideString &name) : m_native(new Native)
{
    m_native->path = platform::ToUtf8(name);
    const sockaddr_un address = AddressOf(m_native->path);
    m_native->listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(m_native->listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        Fail("bind");
    if (listen(m_native->listener, 0) != 0)
        Fail("listen");
}

PipeEnd::~PipeEnd()
{
    Close();
    delete m_native;
}

void PipeEnd::Accept()
{
    WaitUntil(m_native->listener, POLLIN);
    m_native->client = accept4(m_native->listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (m_native->client < 0)
        Fail("accept4");
}

void PipeEnd::Occupy()
{
    const sockaddr_un address = AddressOf(m_native->path);
    m_native->occupant = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(m_native->occupant, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        Fail("connect");
}

void PipeEnd::Vacate()
{
    Accept();
    CloseOnce(m_native->client);
    CloseOnce(m_native->occupant);
}

Bytes PipeEnd::Read(std::size_t size)
{
    Bytes bytes(size);
    WaitUntil(m_native->client, POLLIN);
    const ssize_t count = recv(m_native->client, bytes.data(), size, 0);
    if (count < 0 && !IsGone(errno))
        Fail("recv");
    bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return bytes;
}

bool PipeEnd::Write(const Bytes &bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        WaitUntil(m_native->client, POLLOUT);
        const ssize_t count =
            send(m_native->client, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && IsGone(errno))
            return false;
        if (count < 0)
            Fail("send");
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

void PipeEnd::EndStream()
{
    if (shutdown(m_native->client, SHUT_WR) != 0)
        Fail("shutdown");
}

void PipeEnd::Close()
{
    CloseOnce(m_native->client);
    CloseOnce(m_native->occupant);
    if (m_native->listener >= 0)
        unlink(m_native->path.c_str());
    CloseOnce(m_native->listener);
}

Holdings HoldingsOf(const platform::Process &process)
{
    namespace fs = std::filesystem;
    const fs::path place = "/proc/" + std::to_string(platform::ProcessId(process));
    Holdings holdings = {0, 0};
    std::ifstream status(place / "status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("RssAnon:"))
            holdings.private_bytes = std::strtoull(line.c_str() + 8, nullptr, 10) * 1024;
    }
    for ([[maybe_unused]] const fs::directory_entry &entry : fs::directory_iterator(place / "fd"))
        ++holdings.handles;
    return holdings;
}

RedirectedOutput::RedirectedOutput(const std::filesystem::path &file)
    : m_kept(static_cast<std::uint64_t>(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)))
{
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (opened < 0)
        Fail("open");
    dup2(opened, STDOUT_FILENO);
    close(opened);
}

RedirectedOutput::~RedirectedOutput()
{
    dup2(static_cast<int>(m_kept), STDOUT_FILENO);
    close(static_cast<int>(m_kept));
}

TakenName::TakenName(const WideString &name) : m_name(name)
{
    const int descriptor = shm_open(ObjectName(name).c_str(), O_CREAT | O_EXCL | O_RDWR, 0600);
    if (descriptor < 0)
        Fail("shm_open");
    m_object = static_cast<std::uintptr_t>(descriptor);
}

TakenName::~TakenName()
{
    close(static_cast<int>(m_object));
    shm_unlink(ObjectName(m_name).c_str());
}

bool ShrinkSection(const WideString &name)
{
    const int descriptor = shm_open(ObjectName(name).c_str(), O_RDWR, 0);
    if (descriptor < 0 || ftruncate(descriptor, 0) != 0)
        Fail("shrinking the section");
    close(descriptor);
    return true;
}

WideString NativePath(const std::string &path)
{
    return platform::FromUtf8(path);
}

} // namespace kessil::test
