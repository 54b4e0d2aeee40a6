#include "interruption.h"

#include <atomic>
#include <csignal>
#include <thread>

namespace kessil::driver {
namespace {

std::atomic<parent::Helper *> g_helper{nullptr};
std::atomic<int> g_cancelling{0};
std::atomic<bool> g_requested{false};

static_assert(std::atomic<parent::Helper *>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

extern "C" void OnInterruption(int signal)
{
    std::signal(signal, SIG_DFL);
    g_requested = true;
    ++g_cancelling;
    if (parent::Helper *helper = g_helper.load())
        helper->Cancel();
    --g_cancelling;
}

} // namespace

Interruption::Interruption(parent::Helper &helper)
{
    g_requested = false;
    g_helper = &helper;
    m_before_interrupt = std::signal(SIGINT, OnInterruption);
    m_before_terminate = std::signal(SIGTERM, OnInterruption);
}

Interruption::~Interruption()
{
    std::signal(SIGINT, m_before_interrupt);
    std::signal(SIGTERM, m_before_terminate);
    g_helper = nullptr;
    // The signal may have come on another thread, which must be done with the helper.
    while (g_cancelling.load() != 0)
        std::this_thread::yield();
}

bool Interruption::Requested() const
{
    return g_requested;
}

} // namespace kessil::driver
