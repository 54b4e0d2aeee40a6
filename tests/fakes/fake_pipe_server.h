#pragma once

#include "platform/pipe_server.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kessil::test {

/// The client's end of a fake pipe. May be used by any thread, and by several.
class FakePipeClient
{
public:
    explicit FakePipeClient(std::uint32_t process_id) : m_process_id(process_id) {}

    /// Sends bytes, which the server can read from now on.
    void Send(std::string_view bytes);

    /// Sends these bytes when the server has written; one answer for each write, in order.
    void Answer(std::string_view bytes);

    /// Receives `size` bytes that the server has written. Waits for them; returns fewer when the server is gone.
    std::string Receive(std::size_t size);

    /// Closes this end.
    void Leave();

    /// Whether the server has closed its end.
    bool IsAlone() const;

    // What platform/pipe_server.h uses, under its lock.
    struct State
    {
        std::string to_server;
        std::string to_client;
        std::deque<std::string> answers;
        bool left = false;
        bool alone = false;
    };
    State &Shared() { return m_state; }
    std::uint32_t ProcessId() const { return m_process_id; }

private:
    std::uint32_t m_process_id;
    State m_state;
};

/// Replaces platform/pipe_server.h: pipes inside this process, with clients that the test drives. Operations wait as
/// long as they may, and an interrupt or a client on another thread ends the wait. A wait of more than a minute aborts.
/// `fake_pipe_server = FakePipeServer()` resets it; no server may be in use then.
struct FakePipeServer
{
    /// The result of an operation that has to fail.
    struct Fate
    {
        platform::PipeStatus status;
        std::uint32_t code; ///< the last error afterwards
    };

    /// Connects a client to the pipe of that name. False when nobody serves it, or when it already has its client.
    bool Connect(const WideString &name, const std::shared_ptr<FakePipeClient> &client);

    bool has_names = true;           ///< false: RandomPipeName fails
    std::uint32_t names_code = 24;   ///< its last error then
    std::uint32_t create_code = 0;   ///< when not 0, every CreatePipeServer fails with it
    std::uint32_t taken_code = 231;  ///< for a name that is in use
    std::uint32_t invalid_code = 87; ///< for an empty name
    std::size_t capacity = 65536;    ///< bytes that a client may leave unread before a write waits
    std::deque<Fate> accept_fates;   ///< the results of the next calls, ahead of everything else
    std::deque<Fate> read_fates;
    std::deque<Fate> write_fates;

    std::map<WideString, platform::PipeServer *> servers{}; ///< in use now
    std::uint64_t next_name = 1;
};

extern FakePipeServer fake_pipe_server;

} // namespace kessil::test
