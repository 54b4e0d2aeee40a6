#include "surroundings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kessil::test {

namespace {

void CloseOnce(int &descriptor)
{
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

} // namespace

std::uint32_t OwnProcessId()
{
    return static_cast<std::uint32_t>(getpid());
}

RedirectedOutput::RedirectedOutput(const std::string &path)
{
    const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    EXPECT_GE(kept, 3);
    m_kept = static_cast<std::uint64_t>(kept);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    EXPECT_GE(file, 0);
    dup2(file, STDOUT_FILENO);
    close(file);
}

RedirectedOutput::~RedirectedOutput()
{
    dup2(static_cast<int>(m_kept), STDOUT_FILENO);
    close(static_cast<int>(m_kept));
}

// Such a small number of bytes fits into a pipe that nobody reads yet.
Input::Input(const std::string &bytes)
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(ends[1]);
    m_descriptor = ends[0];
}

Input::~Input()
{
    close(m_descriptor);
}

struct RawServer::Native
{
    std::string path;
    int listener = -1;
    int client = -1;
};

RawServer::RawServer(const WideString &name) : m_native(std::make_unique<Native>())
{
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    m_native->path = platform::ToUtf8(name);
    const std::string &path = m_native->path;
    EXPECT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener, 1), 0);
    m_native->listener = listener;
}

RawServer::~RawServer()
{
    Close();
    const std::string &path = m_native->path;
    unlink(path.c_str());
    rmdir(path.substr(0, path.rfind('/')).c_str());
}

void RawServer::Accept()
{
    m_native->client = accept4(m_native->listener, nullptr, nullptr, SOCK_CLOEXEC);
    EXPECT_GE(m_native->client, 0);
}

void RawServer::Write(const std::string &bytes)
{
    EXPECT_EQ(send(m_native->client, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

void RawServer::EndStream()
{
    EXPECT_EQ(shutdown(m_native->client, SHUT_WR), 0);
}

void RawServer::Close()
{
    CloseOnce(m_native->client);
    CloseOnce(m_native->listener);
}

} // namespace kessil::test
