#pragma once

#include "bench/peer.h"
#include "platform/section.h"

namespace kessil::bench {

/// A parent's section that holds the lists of one call.
class Section
{
public:
    /// `call` has to live as long.
    Section(const Call &call, std::uint32_t block_size);
    ~Section();
    Section(const Section &) = delete;
    Section &operator=(const Section &) = delete;

    const WideString &Name() const { return m_name; }
    unsigned char *Block() { return m_view + BlockOffset(m_call); }

    /// Writes the in-list, without the block's bytes.
    void WriteInList();

    /// Throws std::runtime_error when the section doesn't hold what the call must have left there.
    void CheckOutList() const;

    /// Removes the name from the system, once the child has opened the section.
    void RemoveName();

private:
    void CheckValues(const Values &values, std::uint32_t offset, std::uint32_t block_size) const;

    const Call &m_call;
    std::uint32_t m_blockSize;
    WideString m_name;
    platform::SectionHandle m_handle = nullptr;
    unsigned char *m_view = nullptr;
};

/// Calls with frames, and with the block in a section: one write and one read for each call.
class SectionPeer final : public Peer
{
public:
    /// `call` has to live as long.
    SectionPeer(Contender contender, const bench::Call &call, std::uint32_t block_size);

    void Start() override;
    void Call() override;
    void Check() const override { m_section.CheckOutList(); }
    unsigned char *Block() override { return m_section.Block(); }

private:
    void StartBare();
    void StartHelper();
    void ReceiveSuccess(int answers);

    Contender m_contender;
    const bench::Call &m_call;
    std::uint32_t m_blockSize;
    Section m_section;
    Bytes m_request;
};

} // namespace kessil::bench
