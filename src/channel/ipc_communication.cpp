#include "channel/ipc_communication.h"

#include "channel/big_endian.h"
#include "channel/format_system_error.h"
#include "channel/records.h"
#include "logging/log_manager.h"
#include "platform/last_error.h"
#include "platform/wipe.h"

#include <array>
#include <cstring>
#include <new>

namespace kessil {
namespace {

constexpr std::uint32_t attach_wait_milliseconds = 30000;
constexpr std::uint32_t first_buffer_size = 16384;
constexpr std::uint32_t header_size = 5;
constexpr const char16_t *memory_failure = u"Failed to allocate memory";

} // namespace

bool CIPCCommunication::Attach(const WideString &pipe_name, WideString &error)
{
    if (IsAttached()) {
        error = u"Communication channel already created";
        return false;
    }
    m_hNamedPipe = platform::ConnectPipe(pipe_name, attach_wait_milliseconds);
    if (!IsAttached()) {
        error = FormatSystemError(platform::LastError(), pipe_name);
        return false;
    }
    if (m_buffer.SetSize(first_buffer_size) != 0) {
        error = memory_failure;
        Close();
        return false;
    }
    return true;
}

void CIPCCommunication::Close()
{
    ReleaseView();
    ReleaseSection();
    if (IsAttached()) {
        KESSIL_LOG(log_debug, channel_component, "Closing handle m_hNamedPipe " << m_hNamedPipe);
        platform::ClosePipe(m_hNamedPipe);
        m_hNamedPipe = platform::invalid_pipe;
    }
    m_readAhead.Clear();
}

bool CIPCCommunication::ReadDataFromPipe(void *buffer, std::uint32_t size, bool &eof, WideString &error)
{
    auto *next = static_cast<unsigned char *>(buffer);
    std::uint32_t left = size;
    while (left > 0) {
        std::uint32_t count = 0;
        if (!m_readAhead.Read(m_hNamedPipe, next, left, count)) {
            const std::uint32_t code = platform::LastError();
            KESSIL_LOG(log_error, channel_component, "ReadFile() returns with error");
            error = FormatSystemError(code);
            Close();
            return false;
        }
        if (count == 0 && left == size) {
            eof = true;
            return true;
        }
        if (count == 0) {
            error = u"Failed to read data from named pipe";
            std::memset(next, 0xFF, left);
            Close();
            return true;
        }
        next += count;
        left -= count;
    }
    return true;
}

bool CIPCCommunication::WriteDataToPipe(const void *data, std::uint32_t size, WideString &error)
{
    std::uint32_t count = 0;
    if (!platform::WritePipe(m_hNamedPipe, data, size, count)) {
        const std::uint32_t code = platform::LastError();
        KESSIL_LOG(log_error, channel_component, "Failed on write");
        error = FormatSystemError(code);
        return false;
    }
    if (count == size)
        return true;
    KESSIL_LOG(log_error, channel_component, "Only wrote " << count << " out of " << size);
    error = serialise_data_failure;
    return false;
}

bool CIPCCommunication::GetNextRequest(char &type, unsigned char *&data, std::uint32_t &size, bool &eof,
                                       WideString &error)
{
    eof = false;
    for (;;) {
        size = 0;
        if (!BeginFrame(error) || !ReadHeader(0, eof, error))
            return false;
        if (eof)
            return true;
        const FrameState state = ReadPayload(type, data, size, eof, error);
        if (state == FrameState::Failed)
            KESSIL_LOG(log_error, channel_component, "Back (error) from ReadDataFromPipe() 1");
        if (state != FrameState::Absorbed)
            return state != FrameState::Failed && state != FrameState::Refused;
    }
}

bool CIPCCommunication::GetNextRequestCond(const char *unframed_types, char &type, unsigned char *&data,
                                           std::uint32_t &size, bool &eof, WideString &error)
{
    eof = false;
    for (;;) {
        size = 0;
        if (!BeginFrame(error))
            return false;
        unsigned char first = 0;
        if (!ReadDataFromPipe(&first, 1, eof, error)) {
            KESSIL_LOG(log_error, channel_component, "Back (error) from ReadDataFromPipe() mini");
            return false;
        }
        // A stream that ends here leaves a zero byte, which strchr always finds.
        if (std::strchr(unframed_types, first) != nullptr) {
            type = static_cast<char>(first);
            data = nullptr;
            return true;
        }
        m_buffer.Data()[0] = first;
        if (!ReadHeader(1, eof, error))
            return false;
        if (eof)
            return true;
        const FrameState state = ReadPayload(type, data, size, eof, error);
        if (state != FrameState::Absorbed)
            return state != FrameState::Failed && state != FrameState::Refused;
    }
}

void CIPCCommunication::WipeRequest()
{
    platform::Wipe(m_buffer.Data(), m_buffer.Size());
    m_readAhead.WipeDelivered();
}

bool CIPCCommunication::BeginFrame(WideString &error)
{
    if (m_buffer.SetSize(header_size) == 0)
        return true;
    error = memory_failure;
    return false;
}

bool CIPCCommunication::ReadHeader(std::uint32_t from, bool &eof, WideString &error)
{
    if (ReadDataFromPipe(m_buffer.Data() + from, header_size - from, eof, error))
        return true;
    KESSIL_LOG(log_error, channel_component, "Back (error) from ReadDataFromPipe() 0");
    return false;
}

CIPCCommunication::FrameState CIPCCommunication::ReadPayload(char &type, unsigned char *&data, std::uint32_t &size,
                                                             bool &eof, WideString &error)
{
    type = static_cast<char>(m_buffer.Data()[0]);
    size = LoadBigEndian<std::uint32_t>(m_buffer.Data() + 1);
    if (m_buffer.SetSize(size) != 0) {
        error = memory_failure;
        return FrameState::Refused;
    }
    if (!ReadDataFromPipe(m_buffer.Data(), size, eof, error))
        return FrameState::Failed;
    if (eof)
        return FrameState::Complete;
    data = m_buffer.Data();
    if (type != 'R')
        return FrameState::Complete;
    return TakeParentsSection(data, size, error) ? FrameState::Absorbed : FrameState::Refused;
}

bool CIPCCommunication::BeginMessage(char type, WideString &error)
{
    if (!BeginFrame(error))
        return false;
    m_buffer.Data()[0] = static_cast<unsigned char>(type);
    return true;
}

void CIPCCommunication::AppendNumber(const unsigned char *bytes, std::uint32_t count, WideString &error)
{
    const std::uint32_t end = m_buffer.Size();
    if (m_buffer.Resize(end + count) != 0) {
        error = memory_failure;
        throw std::bad_alloc();
    }
    std::memcpy(m_buffer.Data() + end, bytes, count);
}

bool CIPCCommunication::AppendUInt32(std::uint32_t value, WideString &error)
{
    std::array<unsigned char, sizeof value> bytes;
    StoreBigEndian(bytes.data(), value);
    AppendNumber(bytes.data(), sizeof value, error);
    return true;
}

bool CIPCCommunication::AppendUInt64(std::uint64_t value, WideString &error)
{
    std::array<unsigned char, sizeof value> bytes;
    StoreBigEndian(bytes.data(), value);
    AppendNumber(bytes.data(), sizeof value, error);
    return true;
}

bool CIPCCommunication::AppendString(const WideString &text, WideString &error)
{
    const std::uint32_t end = m_buffer.Size();
    const std::uint64_t bytes = 2 * (std::uint64_t{text.size()} + 1);
    if (end + bytes > UINT32_MAX || m_buffer.Resize(end + static_cast<std::uint32_t>(bytes)) != 0) {
        error = memory_failure;
        return false;
    }
    unsigned char *next = m_buffer.Data() + end;
    const auto put = [&next](char16_t unit) {
        *next++ = static_cast<unsigned char>(unit & 0xFF);
        *next++ = static_cast<unsigned char>(unit >> 8);
    };
    for (const char16_t unit : text)
        put(unit);
    put(0);
    return true;
}

bool CIPCCommunication::SendMessage(WideString &error)
{
    StoreBigEndian<std::uint32_t>(m_buffer.Data() + 1, m_buffer.Size() - header_size);
    return WriteDataToPipe(m_buffer.Data(), m_buffer.Size(), error);
}

bool CIPCCommunication::SendSuccess(WideString &error)
{
    return BeginMessage('S', error) && SendMessage(error);
}

} // namespace kessil
