#pragma once

#include "parent/session/helper_process.h"
#include "parent/wire/connection.h"

#include <kessil/parent.h>

namespace kessil::parent {

/// Why a helper has to be ended, or has ended.
struct Ending
{
    Outcome outcome = Outcome::Answered;
    std::string message{};
    std::optional<std::uint32_t> exit_code{};
};

/// Runs the helper's program and waits until it has connected.
class HelperStart
{
public:
    HelperStart(const Options &options, const std::filesystem::path &log, Connection &connection,
                HelperProcess &process, const std::atomic<bool> &cancelled);

    /// Why there is no helper; empty when it has connected.
    std::optional<Ending> Run();

    /// How many processes other than the helper connected to the pipe.
    std::uint64_t RejectedClients() const { return m_rejected_clients; }

private:
    std::vector<WideString> Arguments() const;
    std::optional<Ending> Attach(platform::Deadline limit);

    const Options &m_options;
    const std::filesystem::path &m_log;
    Connection &m_connection;
    HelperProcess &m_process;
    const std::atomic<bool> &m_cancelled;
    std::string m_description; ///< the program and its arguments
    std::uint64_t m_rejected_clients = 0;
};

} // namespace kessil::parent
