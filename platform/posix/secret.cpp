#include "platform/secret.h"

#include "platform/posix/handles.h"
#include "platform/secret_bytes.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace kessil::platform {
namespace {

volatile std::sig_atomic_t g_asked_to_end = 0;

extern "C" void NoteSignal(int)
{
    g_asked_to_end = 1;
}

// While it exists, the signals that ask the process to end are blocked, and are delivered only inside Wait.
class EndingSignals
{
public:
    EndingSignals()
    {
        g_asked_to_end = 0;
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : signals)
            sigaddset(&held, signal);
        pthread_sigmask(SIG_BLOCK, &held, &m_mask);
        struct sigaction noting
        {};
        noting.sa_handler = NoteSignal;
        for (std::size_t at = 0; at < signals.size(); ++at) {
            sigaction(signals[at], &noting, &m_before[at]);
            if (m_before[at].sa_handler == SIG_IGN)
                sigaction(signals[at], &m_before[at], nullptr);
        }
    }
    ~EndingSignals()
    {
        for (std::size_t at = 0; at < signals.size(); ++at)
            sigaction(signals[at], &m_before[at], nullptr);
        pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    }
    EndingSignals(const EndingSignals &) = delete;
    EndingSignals &operator=(const EndingSignals &) = delete;

    // Waits until there is something to read; false when a signal arrived first.
    bool Wait(int descriptor) const
    {
        pollfd readable{descriptor, POLLIN, 0};
        while (g_asked_to_end == 0) {
            if (ppoll(&readable, 1, nullptr, &m_mask) > 0)
                return true;
        }
        return false;
    }

private:
    static constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    sigset_t m_mask{};
    std::array<struct sigaction, signals.size()> m_before{};
};

// While it exists, the terminal doesn't echo what is typed, and can't be used to suspend the process.
class HiddenTyping
{
public:
    explicit HiddenTyping(int terminal) : m_terminal(terminal), m_known(tcgetattr(terminal, &m_before) == 0)
    {
        termios hidden = m_before;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
        hidden.c_lflag |= ICANON | ISIG;
        hidden.c_cc[VSUSP] = _POSIX_VDISABLE;
        m_hidden = m_known && tcsetattr(m_terminal, TCSAFLUSH, &hidden) == 0;
    }
    ~HiddenTyping()
    {
        if (m_known)
            tcsetattr(m_terminal, TCSAFLUSH, &m_before);
    }
    HiddenTyping(const HiddenTyping &) = delete;
    HiddenTyping &operator=(const HiddenTyping &) = delete;

    bool Works() const { return m_hidden; }

private:
    int m_terminal;
    termios m_before{};
    bool m_known;
    bool m_hidden = false;
};

class Terminal
{
public:
    Terminal() = default;
    ~Terminal()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    int Descriptor() const { return m_descriptor; }

    void Show(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t count = write(m_descriptor, text.data(), text.size());
            if (count < 0)
                return;
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

private:
    int m_descriptor = posix::AboveStandardStreams(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
};

// Reads one byte; false at the end of the input or on failure.
bool ReadByte(int descriptor, char *byte)
{
    ssize_t count = 0;
    do
        count = read(descriptor, byte, 1);
    while (count < 0 && errno == EINTR);
    return count > 0;
}

} // namespace

SecretStatus ReadHiddenLine(std::string_view prompt, WideString &line)
{
    const Terminal terminal;
    if (terminal.Descriptor() < 0)
        return SecretStatus::NoTerminal;
    const EndingSignals signals;
    const HiddenTyping hidden(terminal.Descriptor());
    if (!hidden.Works())
        return SecretStatus::NoTerminal;
    terminal.Show(prompt);
    SecretBytes bytes;
    bool asked_to_end = false;
    do
        asked_to_end = !signals.Wait(terminal.Descriptor());
    while (!asked_to_end && ReadByte(terminal.Descriptor(), bytes.Next()) && bytes.Take());
    terminal.Show("\n");
    return asked_to_end ? SecretStatus::Interrupted : bytes.Into(line);
}

SecretStatus ReadSecretLine(int descriptor, WideString &line)
{
    SecretBytes bytes;
    while (ReadByte(descriptor, bytes.Next()) && bytes.Take()) {
    }
    return bytes.Into(line);
}

} // namespace kessil::platform
