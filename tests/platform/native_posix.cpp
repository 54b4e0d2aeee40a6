#include "native.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace kessil::test {

namespace {

constexpr std::uint64_t none = ~std::uint64_t{0};

int Native(std::uint64_t number)
{
    return static_cast<int>(number);
}

/// Moves a standard stream to a descriptor that children don't inherit.
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

NoInput::NoInput() : m_kept(PutAside(STDIN_FILENO))
{
    close(STDIN_FILENO);
}

NoInput::~NoInput()
{
    PutBack(m_kept, STDIN_FILENO);
}

bool InterruptOwnGroup()
{
    // Only a group of its own: another group would contain the tests.
    return getpgrp() == getpid() && std::signal(SIGINT, SIG_IGN) != SIG_ERR && kill(0, SIGINT) == 0;
}

} // namespace kessil::test
