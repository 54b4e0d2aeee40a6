#include "tests/kessilctl/pseudo_terminal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace kessil::test {
namespace {

constexpr int wait_limit_ms = 30000;

[[noreturn]] void RunOnTerminal(int terminal, char *const *arguments)
{
    setsid();
    ioctl(terminal, TIOCSCTTY, 0);
    for (int stream = 0; stream < 3; ++stream)
        dup2(terminal, stream);
    execv(arguments[0], arguments);
    _exit(127);
}

} // namespace

PseudoTerminal::PseudoTerminal(const std::vector<std::string> &program_and_arguments)
{
    std::vector<std::string> texts = program_and_arguments;
    std::vector<char *> arguments(texts.size() + 1, nullptr);
    std::transform(texts.begin(), texts.end(), arguments.begin(), [](std::string &text) { return text.data(); });
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_TRUE(m_master >= 0 && grantpt(m_master) == 0 && unlockpt(m_master) == 0);
    m_terminal = ioctl(m_master, TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_GE(m_terminal, 0);
    m_program = fork();
    if (m_program == 0)
        RunOnTerminal(m_terminal, arguments.data());
}

PseudoTerminal::~PseudoTerminal()
{
    if (m_program > 0) {
        kill(m_program, SIGKILL);
        waitpid(m_program, nullptr, 0);
    }
    close(m_terminal);
    close(m_master);
}

bool PseudoTerminal::ReadMore()
{
    pollfd readable{m_master, POLLIN, 0};
    char bytes[4096];
    if (poll(&readable, 1, wait_limit_ms) <= 0)
        return false;
    const ssize_t count = read(m_master, bytes, sizeof bytes);
    m_shown.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}

void PseudoTerminal::Await(const std::string &text)
{
    while (m_shown.find(text) == std::string::npos)
        ASSERT_TRUE(ReadMore()) << "shown so far: " << m_shown;
}

void PseudoTerminal::Type(const std::string &text) const
{
    EXPECT_EQ(write(m_master, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void PseudoTerminal::Send(int signal) const
{
    EXPECT_EQ(kill(m_program, signal), 0);
}

bool PseudoTerminal::Echoes() const
{
    termios state = {};
    EXPECT_EQ(tcgetattr(m_terminal, &state), 0);
    return (state.c_lflag & ECHO) != 0;
}

int PseudoTerminal::AwaitEnd()
{
    const int ended = static_cast<int>(syscall(SYS_pidfd_open, m_program, 0));
    pollfd events[] = {{m_master, POLLIN, 0}, {ended, POLLIN, 0}};
    bool over = false;
    // What the program writes has to be read, or it blocks.
    while (!over) {
        if (poll(events, 2, wait_limit_ms) <= 0) {
            ADD_FAILURE() << "the program doesn't end; shown so far: " << m_shown;
            kill(m_program, SIGKILL);
        }
        over = (events[0].revents & POLLIN) == 0 && events[1].revents != 0;
        if ((events[0].revents & POLLIN) != 0)
            ReadMore();
    }
    close(ended);
    int status = 0;
    EXPECT_EQ(waitpid(m_program, &status, 0), m_program);
    m_program = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace kessil::test
