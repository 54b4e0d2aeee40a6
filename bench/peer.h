#pragma once

#include "bench/call.h"
#include "platform/pipe_server.h"
#include "platform/process.h"
#include "platform/text.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kessil::bench {

/// The process that answers the calls.
enum class Contender
{
    Kessil,          ///< the helper, which hosts bench_target
    KessilByCommand, ///< the same in the second generation: commands, with everything on the pipe
    Bare,            ///< bare_child
    BareWithLibrary, ///< bare_child that loads bench_target first
    BareStream       ///< bare_child that receives and sends what a command does
};

/// The path of the hosted library.
WideString LibraryPath();

/// A name for a section or a file that nobody else uses.
WideString FreshName();

WideString Decimal(std::uint32_t number);

using Bytes = std::vector<unsigned char>;

/// Throws std::runtime_error, with the last error, when the condition doesn't hold.
void Require(bool condition, const char *failure);

/// A running child process that answers one call over and over, and the parent's end of its pipe. Contender and limit
/// are driven by the same code, so that this side's cost is the same for both. All members throw std::runtime_error
/// when the child doesn't do what it should.
class Peer
{
public:
    virtual ~Peer();
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    /// Starts the process, waits for it to attach, and makes one call. The library, if any, is loaded by then.
    virtual void Start() = 0;

    /// One call, from the request to its answer.
    virtual void Call() = 0;

    /// Throws when the calls didn't leave the expected result on this side.
    virtual void Check() const = 0;

    /// The call's block on this side.
    virtual unsigned char *Block() = 0;

    std::uint32_t ProcessId() const { return platform::ProcessId(*m_process); }

protected:
    /// Creates the pipe, but no process yet.
    Peer();

    /// Starts bare_child or the helper, with a log, and waits for it to attach. bare_child is passed the call, the
    /// block's size, and these arguments.
    void Launch(bool helper, const bench::Call &call, std::uint32_t block_size,
                const std::vector<WideString> &arguments = {});

    void Send(const unsigned char *bytes, std::uint32_t size);

    /// One read of at most `size` bytes. Returns the number of bytes read, at least one.
    std::uint32_t Receive(unsigned char *bytes, std::uint32_t size);

private:
    WideString m_pipeName;
    platform::PipeServer *m_server = nullptr;
    platform::Process *m_process = nullptr;
};

std::unique_ptr<Peer> MakePeer(Contender contender, const Call &call, std::uint32_t block_size);

} // namespace kessil::bench
