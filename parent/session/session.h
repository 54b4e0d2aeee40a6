#pragma once

#include "parent/section/call_section.h"
#include "parent/session/helper_log.h"
#include "parent/session/helper_start.h"
#include "parent/session/request.h"
#include "parent/session/request_timer.h"

#include <set>

namespace kessil::parent {

/// One helper process and the one request under way with it. Helper and Adapter make their requests here. For one
/// thread at a time, except Cancel.
///
/// A request begins with Begin, sends and receives, and ends by one of the functions that return a Result. Those whose
/// names begin with End also end the helper and release everything kept for it: every later request returns the same
/// Result. A PipeStatus other than Done leaves only EndByPipe to call.
class Session
{
public:
    explicit Session(Options options);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Start and end of the helper, as Helper declares them.

    Result Start();
    Result Stop(std::chrono::milliseconds limit);
    void Cancel() noexcept;
    bool Running() const { return m_state == State::Running; }
    std::uint32_t ProcessId() const { return m_process.Id(); }

    // The request under way.

    /// Begins a request. If it can't be made: how it ended.
    std::optional<Result> Begin(const Request &request, const TimeLimit &limit);

    const Request &UnderWay() const { return m_request; }

    platform::PipeStatus Send(std::span<const unsigned char> bytes);

    /// Waits for exactly as many bytes as `place` has room for.
    platform::PipeStatus Receive(std::span<unsigned char> place);

    /// Waits for the next `size` bytes, which the next Receive returns again. `bytes` lives until then.
    platform::PipeStatus Peek(std::size_t size, std::span<const unsigned char> &bytes);

    /// Waits for a frame, which lives until the next one.
    platform::PipeStatus ReceiveFrame(Frame &frame);

    /// Whether bytes have been received that nothing has read so far.
    bool HasMore() const { return m_connection.HasMore(); }

    // How it ends.

    Result Answered() const;

    /// Nothing was sent, for this reason. For a helper that is gone: the Result with which it went.
    Result NotSent(std::string reason) const;

    /// The helper refused the request by a bare -1.
    Result Refused();

    /// The same where it takes the arguments of the request, which it left in the pipe, for requests.
    Result EndRefused();

    /// The pipe closed after what may have been a refusal: the helper's exit code decides.
    Result EndRefusedOrDead();

    Result EndByPipe(platform::PipeStatus status);
    Result EndDead(const std::string &reason);

    /// The helper sent this, which the protocol doesn't allow.
    Result EndBroken(const std::string &sent);

    /// The results of the last call are impossible, for this reason.
    Result EndByResults(std::string_view reason);

    // What is kept for the requests.

    const Options &Settings() const { return m_options; }
    const std::filesystem::path &LogFile() const { return m_log.Path(); }

    /// The memory in which every frame is built.
    FrameWriter &Writer() { return m_writer; }

    CallSection &Section() { return m_section; }
    InList &In() { return m_in; }
    OutList &Out() { return m_out; }

    /// The names of the libraries loaded for calls by command, which go to the first of them.
    std::set<WideString> &Adapters() { return m_adapters; }

    /// The name that calls by command go to; empty when none is loaded.
    std::u16string_view AdapterName() const;

    /// What the requests have counted so far.
    Statistics &Counts() { return m_counts; }

    /// The same with what the session counts itself.
    Statistics Figures() const;

private:
    enum class State
    {
        NotStarted,
        Running,
        Stopped,
        Over
    };

    template <class Read>
    platform::PipeStatus Await(Read read);
    std::string CountRefusal();
    Result End(Ending ending);
    std::string LogTail() const;

    const Options m_options;
    HelperLog m_log;
    Connection m_connection;
    HelperProcess m_process;
    std::atomic<bool> m_cancelled{false};
    std::atomic<int> m_cancellers{0}; ///< calls of Cancel that haven't returned; the members wait for them
    State m_state = State::NotStarted;
    Result m_end; ///< of a session that is over

    Request m_request{}; ///< begun last
    RequestTimer m_timer;

    FrameWriter m_writer;
    CallSection m_section;
    std::set<WideString> m_adapters;
    Statistics m_counts;
    InList m_in{*this};
    OutList m_out{*this};
};

} // namespace kessil::parent
