#pragma once

#include "bench/call.h"
#include "platform/pipe_server.h"
#include "platform/process.h"
#include "platform/section.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace kessil::bench {

/// Who answers the calls.
enum class Contender
{
    Kessil,         ///< the helper, which hosts bench_target
    Bare,           ///< bare_child
    BareWithLibrary ///< bare_child that loads bench_target first
};

/// The library that is hosted.
WideString LibraryPath();

using Bytes = std::vector<unsigned char>;

/// A parent's section with the lists of one call.
class Section
{
public:
    /// `call` has to live as long.
    Section(const Call &call, std::uint32_t block_size);
    ~Section();
    Section(const Section &) = delete;
    Section &operator=(const Section &) = delete;

    const WideString &Name() const { return m_name; }
    const Call &Function() const { return m_call; }
    std::uint32_t BlockSize() const { return m_blockSize; }
    unsigned char *Block() { return m_view + BlockOffset(m_call); }

    /// Lays the in-list out, without the block's bytes.
    void LayInList();

    /// Throws std::runtime_error when the section doesn't hold what the call must have left there.
    void CheckOutList() const;

    /// Takes the name out of the system, once the child has opened the section.
    void RemoveName();

private:
    const Call &m_call;
    std::uint32_t m_blockSize;
    WideString m_name;
    platform::SectionHandle m_handle = nullptr;
    unsigned char *m_view = nullptr;
};

/// A running child process and the parent's end of its pipe. Both contenders are driven by the same code, with one
/// write and one read a call, so that this side's cost is the same for both. Everything throws std::runtime_error when
/// the child doesn't do as it should.
class Peer
{
public:
    /// Makes the pipe, but no process yet.
    Peer(Contender contender, Section &section);
    ~Peer();
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    /// Starts the process, waits for it to attach, and has one call answered. The section is the child's then, and the
    /// library, if any, is loaded.
    void Start();

    /// One call, from the request to its answer.
    void Call();

    std::uint32_t ProcessId() const { return platform::ProcessId(*m_process); }

private:
    void Send(const Bytes &frames);
    void ReceiveAnswers(std::uint32_t answers);

    Contender m_contender;
    Section &m_section;
    Bytes m_request;
    WideString m_pipeName;
    platform::PipeServer *m_server = nullptr;
    platform::Process *m_process = nullptr;
};

} // namespace kessil::bench
