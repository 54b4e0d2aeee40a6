#pragma once

#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kessil::test {

/// In the place of platform/pipe.h: the far end of the pipe is a script. Reads take its steps in turn; what is written
/// is kept. There is one pipe, open from ConnectPipe to ClosePipe; every operation on another handle fails with
/// `bad_handle_code`. `fake_pipe = FakePipe()` begins anew.
class FakePipe
{
public:
    /// One arrival of bytes. A read that asks for fewer leaves the rest to the next one; no read gets bytes of two.
    void Deliver(std::vector<unsigned char> bytes);

    /// The same bytes in arrivals of `chunk` bytes.
    void DeliverInChunks(const std::vector<unsigned char> &bytes, std::size_t chunk);

    /// One successful read of no bytes.
    void DeliverNothing();

    /// One failed read.
    void FailRead(std::uint32_t code);

    /// Something that the far end does when a read comes to this step; the read goes on to the next one.
    void Do(std::function<void()> action);

    /// The next write that has no such fate yet fails, or takes only `count` bytes.
    void FailWrite(std::uint32_t code);
    void ShortenWrite(std::uint32_t count);

    /// Whether the whole script was read.
    bool IsReadOut() const { return m_next == m_steps.size(); }

    /// What happens once, as the next write comes in and before it is noted.
    std::function<void()> before_write;

    bool is_open = false;
    std::optional<WideString> name;     ///< the only one that a pipe is served under; none: every name is served
    std::uint32_t missing_code = 2;     ///< what ConnectPipe fails with for another name
    std::uint32_t connect_code = 0;     ///< when not 0, ConnectPipe fails with it
    std::uint32_t end_code = 109;       ///< what a read behind the last step fails with
    bool ends_quietly = false;          ///< such a read succeeds and brings nothing
    std::uint32_t bad_handle_code = 6;  ///< what use of a pipe that isn't open fails with
    std::size_t reads = 0;              ///< reads so far, failed ones included
    std::vector<std::uint32_t> sizes;   ///< what each of them asked for, while call_log records
    std::vector<unsigned char> written; ///< every byte that went out
    std::vector<std::size_t> writes;    ///< how many in each write that succeeded

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

/// The handle of the one pipe.
inline void *const fake_pipe_handle = reinterpret_cast<void *>(std::uintptr_t{0x71});

extern FakePipe fake_pipe;

} // namespace kessil::test
