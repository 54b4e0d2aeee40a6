#include "native.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kessil::test {

namespace {

constexpr std::uint64_t none = ~std::uint64_t{0};

int Native(std::uint64_t number)
{
    return static_cast<int>(number);
}

void CloseOnce(std::uint64_t &number)
{
    if (number != none)
        close(Native(number));
    number = none;
}

/// Moves a standard stream aside, out of the reach of children.
std::uint64_t PutAside(int stream)
{
    const int kept = fcntl(stream, F_DUPFD_CLOEXEC, 3);
    return kept < 0 ? none : static_cast<std::uint64_t>(kept);
}

void PutBack(std::uint64_t kept, int stream)
{
    if (kept == none)
        return;
    dup2(Native(kept), stream);
    close(Native(kept));
}

} // namespace

std::uint32_t OwnProcessId()
{
    return static_cast<std::uint32_t>(getpid());
}

InheritableHandle::InheritableHandle()
{
    const int descriptor = fcntl(STDOUT_FILENO, F_DUPFD, 100);
    EXPECT_GE(descriptor, 100);
    m_number = static_cast<std::uint64_t>(descriptor);
}

InheritableHandle::~InheritableHandle()
{
    close(Native(m_number));
}

bool IsOpen(std::uint64_t number)
{
    return fcntl(Native(number), F_GETFD) >= 0;
}

RedirectedOutput::RedirectedOutput(const std::string &path) : m_kept(PutAside(STDOUT_FILENO))
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    EXPECT_GE(file, 0);
    dup2(file, STDOUT_FILENO);
    close(file);
}

RedirectedOutput::~RedirectedOutput()
{
    PutBack(m_kept, STDOUT_FILENO);
}

NoInput::NoInput() : m_kept(PutAside(STDIN_FILENO))
{
    close(STDIN_FILENO);
}

NoInput::~NoInput()
{
    PutBack(m_kept, STDIN_FILENO);
}

RawServer::RawServer(const WideString &name) : m_name(name), m_client(none)
{
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = platform::ToUtf8(name);
    EXPECT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener, 1), 0);
    m_listener = static_cast<std::uint64_t>(listener);
}

RawServer::~RawServer()
{
    Close();
    const std::string path = platform::ToUtf8(m_name);
    unlink(path.c_str());
    rmdir(path.substr(0, path.rfind('/')).c_str());
}

void RawServer::Accept()
{
    const int client = accept4(Native(m_listener), nullptr, nullptr, SOCK_CLOEXEC);
    EXPECT_GE(client, 0);
    m_client = static_cast<std::uint64_t>(client);
}

void RawServer::Write(const std::string &bytes)
{
    EXPECT_EQ(send(Native(m_client), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

void RawServer::EndStream()
{
    EXPECT_EQ(shutdown(Native(m_client), SHUT_WR), 0);
}

void RawServer::Close()
{
    CloseOnce(m_client);
    CloseOnce(m_listener);
}

void SetVariable(const std::string &name, const std::string &value)
{
    EXPECT_EQ(setenv(name.c_str(), value.c_str(), 1), 0);
}

} // namespace kessil::test
