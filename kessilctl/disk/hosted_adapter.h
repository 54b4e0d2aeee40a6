#pragma once

#include "kessilctl/console/console.h"
#include "kessilctl/console/password.h"
#include "kessilctl/console/report.h"
#include "kessilctl/helper/running_helper.h"

#include <kessil/adapter.h>

#include <cstdint>
#include <string_view>

namespace kessil::kessilctl {

/// An adapter hosted by a helper. Every call throws Failure: LibraryFailed, with the adapter's own text, when the
/// adapter reports a failure. An interruption is a Failure, too: then only the calls that close what is open are still
/// made.
class HostedAdapter
{
public:
    /// Loads the adapter, and passes it the credentials if there are any; their password is then cleared. The adapter's
    /// log lines go to `console`, and to `report` if that keeps them. All references outlive the object.
    HostedAdapter(const AdapterOptions &options, const RunningHelper &running, Password &password, Console &console,
                  AdapterReport &report);

    /// Makes a call, unless the run was interrupted: `call` takes the parent::Adapter and returns its Answer.
    template <typename CallOfAdapter>
    void Call(const CallOfAdapter &call)
    {
        m_running.interruption.Check();
        CallUninterrupted(call);
    }

    /// For a call that closes something.
    template <typename CallOfAdapter>
    void CallUninterrupted(const CallOfAdapter &call)
    {
        Check(call(m_adapter));
    }

    /// For a call that closes something after an error: made if the helper still runs, its answer ignored.
    template <typename CallOfAdapter>
    void CloseAfterError(const CallOfAdapter &call)
    {
        if (m_running.helper.Running())
            call(m_adapter);
    }

private:
    void PassCredentials(const std::string &first, Password &password);
    void TakeLogLine(std::uint8_t level, std::string_view text);
    static void Check(const parent::Answer &answer);

    RunningHelper m_running;
    Console &m_console;
    AdapterReport &m_report;
    parent::Adapter m_adapter;
};

} // namespace kessil::kessilctl
