#include "kessilctl/console/interruption.h"

#include "kessilctl/console/exit_code.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace kessil::kessilctl {
namespace {

constexpr std::array signals = {
    SIGINT,
    SIGTERM,
#ifdef SIGHUP
    SIGHUP,
#endif
};

constexpr int none = 0;
constexpr int over = -1; // the object is being destroyed

std::atomic<parent::Helper *> g_helper{nullptr};
std::atomic<int> g_cancelling{0};
std::atomic<int> g_requests{none}; ///< how many there were, or `over`

static_assert(std::atomic<parent::Helper *>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

bool IsLossOfTerminal([[maybe_unused]] int signal)
{
#ifdef SIGHUP
    return signal == SIGHUP;
#else
    return false;
#endif
}

void Cancel()
{
    ++g_cancelling;
    if (parent::Helper *helper = g_helper.load())
        helper->Cancel();
    --g_cancelling;
}

extern "C" void EndAtOnce(int /*signal*/)
{
    std::_Exit(static_cast<int>(ExitCode::Interrupted));
}

extern "C" void OnInterruption(int signal)
{
    const int kept = errno;
    const bool first = g_requests.fetch_add(1) == none;
    const bool repeated = !first && !IsLossOfTerminal(signal);
    // Some systems reset the handler before they call it.
    std::signal(signal, OnInterruption);
    if (repeated) {
        for (const int any : signals)
            std::signal(any, EndAtOnce);
    }
    if (first)
        g_requests.notify_all();
    if (repeated)
        Cancel();
    errno = kept;
}

} // namespace

Interruption::Interruption(parent::Helper &helper, std::chrono::milliseconds grace) : m_helper(helper)
{
    g_requests = none;
    g_helper = &helper;
    m_watch = std::thread([this, grace] { Watch(grace); });
    for (const int signal : signals) {
        m_before.push_back(std::signal(signal, OnInterruption));
        if (m_before.back() == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
}

Interruption::~Interruption()
{
    for (std::size_t at = 0; at < signals.size(); ++at)
        std::signal(signals[at], m_before[at]);
    m_over.release();
    int requests = none;
    g_requests.compare_exchange_strong(requests, over);
    g_requests.notify_all();
    m_watch.join();
    g_helper = nullptr;
    // A handler on another thread may still be using the helper.
    while (g_cancelling.load() != 0)
        std::this_thread::yield();
}

void Interruption::Watch(std::chrono::milliseconds grace)
{
    g_requests.wait(none);
    if (!m_over.try_acquire_for(grace))
        m_helper.Cancel();
}

bool Interruption::Requested() const
{
    return g_requests > none;
}

void Interruption::Check() const
{
    if (Requested())
        throw Failure(ExitCode::Interrupted, "interrupted");
}

} // namespace kessil::kessilctl
