#pragma once

#include "bench/peer.h"
#include "bench/placed_bytes.h"

namespace kessil::bench {

/// Calls by command: the whole request with one write, the whole reply with as few reads as the pipe allows.
class StreamPeer final : public Peer
{
public:
    /// `call`, which has a command, has to live as long.
    StreamPeer(Contender contender, const bench::Call &call, std::uint32_t block_size);

    void Start() override;
    void Call() override;
    void Check() const override;
    unsigned char *Block() override;

private:
    void LoadLibrary();

    Contender m_contender;
    const bench::Call &m_call;
    std::uint32_t m_blockSize;
    PlacedBytes m_request;
    PlacedBytes m_reply;
    Bytes m_expectedHead;
};

} // namespace kessil::bench
