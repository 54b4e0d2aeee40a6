#pragma once

#include "bench/call.h"
#include "platform/pipe_server.h"
#include "platform/process.h"
#include "platform/text.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kessil::bench {

/// Who answers the calls.
enum class Contender
{
    Kessil,          ///< the helper, which hosts bench_target
    KessilByCommand, ///< the same in the second generation: commands, with everything on the pipe
    Bare,            ///< bare_child
    BareWithLibrary, ///< bare_child that loads bench_target first
    BareStream       ///< bare_child that takes and gives what a command does
};

/// The library that is hosted.
WideString LibraryPath();

/// For a section or a file that nobody else has.
WideString FreshName();

WideString Decimal(std::uint32_t number);

using Bytes = std::vector<unsigned char>;

/// Throws std::runtime_error, with the last error, when the condition doesn't hold.
void Require(bool condition, const char *failure);

/// A running child process that answers one call over and over, and the parent's end of its pipe. Contender and limit
/// are driven by the same code, so that this side's cost is the same for both. Everything throws std::runtime_error
/// when the child doesn't do as it should.
class Peer
{
public:
    virtual ~Peer();
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    /// Starts the process, waits for it to attach, and has one call answered. The library, if any, is loaded then.
    virtual void Start() = 0;

    /// One call, from the request to its answer.
    virtual void Call() = 0;

    /// Throws when the calls didn't leave on this side what they must.
    virtual void Check() const = 0;

    /// Where the call's block lies on this side.
    virtual unsigned char *Block() = 0;

    std::uint32_t ProcessId() const { return platform::ProcessId(*m_process); }

protected:
    /// Makes the pipe, but no process yet.
    Peer();

    /// Starts bare_child or the helper, with a log, and waits for it to attach. bare_child gets the call, the block's
    /// size, and these arguments.
    void Launch(bool helper, const bench::Call &call, std::uint32_t block_size,
                const std::vector<WideString> &arguments = {});

    void Send(const unsigned char *bytes, std::uint32_t size);

    /// One read of at most `size` bytes. Returns how many came, at least one.
    std::uint32_t Receive(unsigned char *bytes, std::uint32_t size);

private:
    WideString m_pipeName;
    platform::PipeServer *m_server = nullptr;
    platform::Process *m_process = nullptr;
};

std::unique_ptr<Peer> MakePeer(Contender contender, const Call &call, std::uint32_t block_size);

} // namespace kessil::bench
