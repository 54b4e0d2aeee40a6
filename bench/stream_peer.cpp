#include "bench/stream_peer.h"

#include "bench/work.h"
#include "channel/big_endian.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace kessil::bench {

StreamPeer::StreamPeer(Contender contender, const bench::Call &call, std::uint32_t block_size)
    : m_contender(contender), m_call(call), m_blockSize(block_size),
      m_request(request_head, RequestSize(call, block_size)), m_reply(reply_head, ReplySize(call, block_size)),
      m_expectedHead(reply_head)
{
    StoreRequestHead(m_request.Data(), call, block_size);
    StoreReplyHead(m_expectedHead.data(), call, block_size);
}

void StreamPeer::Start()
{
    const bool helper = m_contender == Contender::KessilByCommand;
    Launch(helper, m_call, m_blockSize);
    if (helper)
        LoadLibrary();
    Call();
}

// The name is converted byte by byte, one unit each.
void StreamPeer::LoadLibrary()
{
    const std::string name = platform::ToUtf8(LibraryPath());
    Bytes frame = {'l', 0, 0, 0, 0};
    StoreBigEndian(frame.data() + 1, static_cast<std::uint32_t>(name.size()));
    frame.insert(frame.end(), name.begin(), name.end());
    Send(frame.data(), static_cast<std::uint32_t>(frame.size()));

    constexpr unsigned char success[4] = {0, 0, 0, 1};
    unsigned char answer[sizeof success];
    const std::uint32_t count = Receive(answer, sizeof answer);
    Require(count == sizeof answer && std::memcmp(answer, success, count) == 0, "the helper didn't load the library");
}

// The head is checked as it arrives: the reply to a failed call is shorter.
void StreamPeer::Call()
{
    Send(m_request.Data(), m_request.Size());
    for (std::uint32_t count = 0; count < m_reply.Size();) {
        count += Receive(m_reply.Data() + count, m_reply.Size() - count);
        Require(std::memcmp(m_reply.Data(), m_expectedHead.data(), std::min(count, reply_head)) == 0,
                "a child process replied with something other than success");
    }
}

void StreamPeer::Check() const
{
    const unsigned char *const block = m_reply.Data() + reply_head;
    const unsigned char *const end = m_reply.Data() + m_reply.Size();
    Require(std::all_of(block, end, [](unsigned char byte) { return byte == source_byte; }),
            "a call delivered the wrong bytes");
}

unsigned char *StreamPeer::Block()
{
    return m_call.work == Work::Write ? m_request.Data() + request_head : m_reply.Data() + reply_head;
}

} // namespace kessil::bench
