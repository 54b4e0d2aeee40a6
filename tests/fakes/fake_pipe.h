#pragma once

#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kessil::test {

/// Replaces platform/pipe.h: the far end of the pipe is a script. Reads perform its steps in turn; what is written is
/// kept. There is one pipe, open from ConnectPipe to ClosePipe; every operation on another handle fails with
/// `bad_handle_code`. `fake_pipe = FakePipe()` resets it.
class FakePipe
{
public:
    /// Bytes that arrive together. A read for fewer leaves the rest to the next read; no read returns bytes of two
    /// arrivals.
    void Deliver(std::vector<unsigned char> bytes);

    /// The same bytes in arrivals of `chunk` bytes.
    void DeliverInChunks(const std::vector<unsigned char> &bytes, std::size_t chunk);

    /// One successful read of zero bytes.
    void DeliverNothing();

    /// One failed read.
    void FailRead(std::uint32_t code);

    /// Something that the far end does when a read reaches this step; the read continues with the next one.
    void Do(std::function<void()> action);

    /// Makes the next write without a fate fail, or accept only `count` bytes.
    void FailWrite(std::uint32_t code);
    void ShortenWrite(std::uint32_t count);

    /// Whether the whole script was read.
    bool IsReadOut() const { return m_next == m_steps.size(); }

    /// Runs once, when the next write comes in and before it is recorded.
    std::function<void()> before_write;

    bool is_open = false;
    std::optional<WideString> name;     ///< the only name that has a pipe; none: every name has one
    std::uint32_t missing_code = 2;     ///< the error of ConnectPipe for another name
    std::uint32_t connect_code = 0;     ///< when not 0, ConnectPipe fails with it
    std::uint32_t end_code = 109;       ///< the error of a read after the last step
    bool ends_with_nothing = false;     ///< such a read succeeds with zero bytes
    std::uint32_t bad_handle_code = 6;  ///< the error for using a pipe that isn't open
    std::size_t reads = 0;              ///< reads so far, failed ones included
    std::vector<std::uint32_t> sizes;   ///< how many bytes each of them requested, while call_log records
    std::vector<unsigned char> written; ///< every byte written
    std::vector<std::size_t> writes;    ///< the number of bytes in each write that succeeded

    // What platform/pipe.h calls.
    bool Read(void *buffer, std::uint32_t size, std::uint32_t &count);
    bool Write(const void *data, std::uint32_t size, std::uint32_t &count);

private:
    struct Step
    {
        std::vector<unsigned char> bytes;
        std::size_t taken = 0;
        std::uint32_t code = 0;
        std::function<void()> action;
    };
    struct Fate
    {
        std::uint32_t code;
        std::uint32_t count;
    };
    Step &AddStep();

    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    std::vector<Fate> m_fates;
    std::size_t m_nextFate = 0;
};

/// The handle of the only pipe.
inline void *const fake_pipe_handle = reinterpret_cast<void *>(std::uintptr_t{0x71});

extern FakePipe fake_pipe;

} // namespace kessil::test
