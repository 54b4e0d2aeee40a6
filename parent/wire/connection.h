#pragma once

#include "parent/wire/frame.h"
#include "platform/pipe_server.h"

#include <atomic>
#include <vector>

namespace kessil::parent {

/// What ReadFrame found. `payload` lives until the next ReadFrame.
struct Frame
{
    char type = 0;
    std::uint32_t length = 0;
    bool allowed = true; ///< false: no helper sends a frame of this type, or of this length; the payload was not read
    std::span<const unsigned char> payload;
};

/// The pipe to one helper, and the frames on it. For one thread, except Interrupt.
class Connection
{
public:
    Connection();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /// Creates the pipe under a fresh random name. False on failure, with the reason in the last error.
    bool Create();
    const WideString &Name() const { return m_name; }

    /// Waits for the process of this id to connect. WrongClient: another one did, and was turned away.
    platform::PipeStatus Accept(std::uint32_t process_id, platform::Deadline deadline);

    /// Writes all of `bytes`.
    platform::PipeStatus Write(std::span<const unsigned char> bytes, platform::Deadline deadline);

    /// Waits for one whole frame. After TimedOut the next call continues where this one stopped.
    platform::PipeStatus ReadFrame(Frame &frame, platform::Deadline deadline);

    /// Waits for bare bytes until `place` is full; `done` of them are there already. Many bytes are read from the pipe
    /// straight into `place`. After TimedOut the next call continues where this one stopped.
    platform::PipeStatus ReadBytes(std::span<unsigned char> place, std::size_t &done, platform::Deadline deadline);

    /// Waits for the next `size` bytes and shows them; the next read returns them again. `bytes` lives until then.
    platform::PipeStatus Peek(std::size_t size, std::span<const unsigned char> &bytes, platform::Deadline deadline);

    /// Whether bytes have been received that nothing has read so far.
    bool HasMore() const { return m_begin != m_end; }

    /// Ends the operation under way, or the next one, and with it the connection. May be called from any thread, and on
    /// Linux from a signal handler.
    void Interrupt() noexcept;

    /// Closes the pipe and removes its name from the system. Does nothing when there is none.
    void Close();

    std::uint64_t BytesSent() const { return m_sent; }
    std::uint64_t BytesReceived() const { return m_received; }

private:
    platform::PipeStatus Receive(std::size_t wanted, platform::Deadline deadline);

    WideString m_name;
    std::atomic<platform::PipeServer *> m_server{nullptr};
    std::atomic<int> m_interrupters{0};
    std::vector<unsigned char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::uint64_t m_sent = 0;
    std::uint64_t m_received = 0;
};

} // namespace kessil::parent
