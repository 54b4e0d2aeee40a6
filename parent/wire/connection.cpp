#include "parent/wire/connection.h"

#include "parent/wire/big_endian.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace kessil::parent {
namespace {

using platform::PipeStatus;

constexpr std::size_t usual_buffer = 4096;
constexpr std::size_t longest_read = 1 << 30;
constexpr std::uint32_t longest_text_frame = 1 << 20;
constexpr std::uint32_t longest_announcement = 1 << 16;

// The largest length of a payload from the helper; empty for a type that no helper sends.
std::optional<std::uint32_t> LongestPayload(char type)
{
    switch (type) {
    case 'S':
        return 0;
    case 'E':
    case 'M':
        return longest_text_frame;
    case 'R':
        return longest_announcement;
    default:
        return std::nullopt;
    }
}

} // namespace

Connection::Connection() : m_buffer(usual_buffer) {}

Connection::~Connection()
{
    Close();
}

bool Connection::Create()
{
    m_name = platform::RandomPipeName();
    m_server = m_name.empty() ? nullptr : platform::CreatePipeServer(m_name);
    return m_server != nullptr;
}

PipeStatus Connection::Accept(std::uint32_t process_id, platform::Deadline deadline)
{
    return platform::AcceptPipeClient(*m_server, process_id, deadline);
}

PipeStatus Connection::Write(std::span<const unsigned char> bytes, platform::Deadline deadline)
{
    const auto size = static_cast<std::uint32_t>(bytes.size());
    const PipeStatus status = platform::WriteServedPipe(*m_server, bytes.data(), size, deadline);
    if (status == PipeStatus::Done)
        m_sent += size;
    return status;
}

PipeStatus Connection::ReadFrame(Frame &frame, platform::Deadline deadline)
{
    PipeStatus status = Receive(1, deadline);
    if (status != PipeStatus::Done)
        return status;
    frame.type = static_cast<char>(m_buffer[m_begin]);
    const std::optional<std::uint32_t> longest = LongestPayload(frame.type);
    frame.allowed = longest.has_value();
    if (!frame.allowed)
        return PipeStatus::Done;

    status = Receive(frame_header_size, deadline);
    if (status != PipeStatus::Done)
        return status;
    frame.length = static_cast<std::uint32_t>(FromBigEndian(std::span(m_buffer).subspan(m_begin + 1, 4)));
    frame.allowed = frame.length <= *longest;
    if (!frame.allowed)
        return PipeStatus::Done;

    status = Receive(frame_header_size + frame.length, deadline);
    if (status != PipeStatus::Done)
        return status;
    frame.payload = std::span(m_buffer).subspan(m_begin + frame_header_size, frame.length);
    m_begin += frame_header_size + frame.length;
    return PipeStatus::Done;
}

PipeStatus Connection::ReadBytes(std::span<unsigned char> place, std::size_t &done, platform::Deadline deadline)
{
    while (done < place.size()) {
        const auto left = place.subspan(done);
        const std::size_t held = std::min(left.size(), m_end - m_begin);
        if (held != 0) {
            std::memcpy(left.data(), m_buffer.data() + m_begin, held);
            m_begin += held;
            done += held;
            continue;
        }
        if (place.size() < usual_buffer) {
            const PipeStatus status = Receive(left.size(), deadline);
            if (status != PipeStatus::Done)
                return status;
            continue;
        }
        std::uint32_t count = 0;
        const auto room = static_cast<std::uint32_t>(std::min(left.size(), longest_read));
        const PipeStatus status = platform::ReadServedPipe(*m_server, left.data(), room, count, deadline);
        if (status != PipeStatus::Done)
            return status;
        done += count;
        m_received += count;
    }
    return PipeStatus::Done;
}

PipeStatus Connection::Peek(std::size_t size, std::span<const unsigned char> &bytes, platform::Deadline deadline)
{
    const PipeStatus status = Receive(size, deadline);
    if (status == PipeStatus::Done)
        bytes = std::span(m_buffer).subspan(m_begin, size);
    return status;
}

// Reads until `wanted` bytes lie in the buffer from m_begin on.
PipeStatus Connection::Receive(std::size_t wanted, platform::Deadline deadline)
{
    if (m_end - m_begin >= wanted)
        return PipeStatus::Done;
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    m_buffer.resize(std::max(m_buffer.size(), wanted));
    while (m_end < wanted) {
        std::uint32_t count = 0;
        const auto room = static_cast<std::uint32_t>(m_buffer.size() - m_end);
        const PipeStatus status = platform::ReadServedPipe(*m_server, m_buffer.data() + m_end, room, count, deadline);
        if (status != PipeStatus::Done)
            return status;
        m_end += count;
        m_received += count;
    }
    return PipeStatus::Done;
}

void Connection::Interrupt() noexcept
{
    ++m_interrupters;
    if (platform::PipeServer *server = m_server)
        platform::InterruptPipeServer(*server);
    --m_interrupters;
}

void Connection::Close()
{
    platform::PipeServer *server = m_server.exchange(nullptr);
    while (m_interrupters != 0)
        std::this_thread::yield();
    platform::DestroyPipeServer(server);
}

} // namespace kessil::parent
