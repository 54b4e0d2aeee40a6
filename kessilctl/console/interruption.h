#pragma once

#include <kessil/parent.h>

#include <chrono>
#include <semaphore>
#include <thread>
#include <vector>

namespace kessil::kessilctl {

/// While it lives, a request to end (Ctrl-C, a request to terminate, a terminal that went away, and what
/// platform::TakeConsoleEventsAsSignals turns into one of these) doesn't end this process. The first one is taken note
/// of, so that the run can stop in order; when it hasn't within `grace`, or when a second one comes, what the helper is
/// doing is cancelled; a third one ends the process at once. The loss of the terminal, which may be told more than
/// once, is no second request. What the process was started to ignore stays ignored. One at a time.
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
