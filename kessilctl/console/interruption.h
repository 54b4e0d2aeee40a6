#pragma once

#include <kessil/parent.h>

#include <chrono>
#include <semaphore>
#include <thread>
#include <vector>

namespace kessil::kessilctl {

/// While it exists, a request to end (Ctrl-C, SIGTERM, SIGHUP, and the console events that
/// platform::TakeConsoleEventsAsSignals turns into one of these) doesn't end this process. The first one is recorded,
/// so that the run can stop in order. If it hasn't stopped within `grace`, or when a second request comes, the helper's
/// request under way is cancelled; a third one ends the process at once. A SIGHUP is never counted as a second request,
/// since the loss of a terminal may be signalled twice. A signal that the process was started to ignore stays ignored.
/// One object at a time.
class Interruption
{
public:
    static constexpr std::chrono::milliseconds usual_grace{2000};

    explicit Interruption(parent::Helper &helper, std::chrono::milliseconds grace = usual_grace);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool Requested() const;

    /// Throws Failure(Interrupted) when it was requested.
    void Check() const;

private:
    using Action = void (*)(int);

    void Watch(std::chrono::milliseconds grace);

    parent::Helper &m_helper;
    std::vector<Action> m_before; ///< one for each of the signals
    std::binary_semaphore m_over{0};
    std::thread m_watch;
};

} // namespace kessil::kessilctl
