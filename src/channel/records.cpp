#include "channel/records.h"

#include "channel/big_endian.h"
#include "channel/ipc_communication.h"
#include "platform/wipe.h"

#include <cstring>

namespace kessil {
namespace {

// Reads the fields of a payload one after the other. A missing field consumes nothing, and the caller stops there.
class PayloadReader
{
public:
    PayloadReader(const unsigned char *payload, std::uint32_t size) : m_next(payload), m_left(size) {}

    bool Take(WideString &text) { return Advance(DeserialiseWideString(text, m_next, m_left)); }
    bool Take(std::string &text) { return Advance(DeserialiseString(text, m_next, m_left)); }

    template <class T>
    bool TakeNumber(T &number)
    {
        if (m_left < sizeof(T))
            return false;
        number = LoadBigEndian<T>(m_next);
        return Advance(sizeof(T));
    }

    bool TakeSigned(std::int32_t &number)
    {
        std::uint32_t bits = 0;
        const bool taken = TakeNumber(bits);
        number = static_cast<std::int32_t>(bits);
        return taken;
    }

private:
    bool Advance(std::uint32_t taken)
    {
        m_next += taken;
        m_left -= taken;
        return taken != 0;
    }

    const unsigned char *m_next;
    std::uint32_t m_left;
};

bool Parsed(bool complete, WideString &error)
{
    if (!complete)
        error = serialise_data_failure;
    return complete;
}

} // namespace

std::uint32_t DeserialiseWideString(WideString &target, const unsigned char *bytes, std::uint32_t count)
{
    const auto unit = [bytes](std::uint32_t i) {
        return static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
    };
    // In units, so that the count can't overflow; an odd last byte is no unit.
    const std::uint32_t units = count / 2;
    std::uint32_t length = 0;
    while (length < units && unit(length) != 0)
        ++length;
    target.resize(length);
    for (std::uint32_t i = 0; i < length; ++i)
        target[i] = unit(i);
    return length == units ? 0 : 2 * (length + 1);
}

std::uint32_t DeserialiseString(std::string &target, const unsigned char *bytes, std::uint32_t count)
{
    const auto *const text = reinterpret_cast<const char *>(bytes);
    const void *const end = count == 0 ? nullptr : std::memchr(text, 0, count);
    const auto length = end == nullptr ? count : static_cast<std::uint32_t>(static_cast<const char *>(end) - text);
    target.assign(text, length);
    return end == nullptr ? 0 : length + 1;
}

IPCStruct_Auth::~IPCStruct_Auth()
{
    platform::Wipe(password.data(), password.size() * sizeof(char16_t));
}

bool IPCStruct_Auth::Parse(const unsigned char *payload, std::uint32_t size, WideString &error)
{
    PayloadReader reader(payload, size);
    return Parsed(reader.Take(user) && reader.Take(domain) && reader.Take(password) && reader.Take(system_name) &&
                      reader.TakeNumber(logon_flag),
                  error);
}

bool IPCStruct_FunctionCall::Parse(const unsigned char *payload, std::uint32_t size, WideString &error)
{
    PayloadReader reader(payload, size);
    return Parsed(reader.Take(library) && reader.Take(function) && reader.Take(signature), error);
}

bool IPCStruct_FunctionCallAlt::ReadCommand(CIPCCommunication &channel, WideString &error)
{
    if (has_command)
        return false;
    unsigned char byte = 0;
    bool eof = false;
    if (!channel.ReadDataFromPipe(&byte, 1, eof, error) || eof)
        return false;
    has_command = true;
    command = byte;
    return true;
}

bool IPCStruct_ErrDLL::Parse(const unsigned char *payload, std::uint32_t size, WideString &error)
{
    PayloadReader reader(payload, size);
    return Parsed(reader.TakeNumber(message_number) && reader.Take(dll_name), error);
}

bool IPCStruct_Error::Parse(const unsigned char *payload, std::uint32_t size, WideString &error)
{
    PayloadReader reader(payload, size);
    return Parsed(reader.TakeSigned(return_code) && reader.TakeSigned(system_error) && reader.Take(text), error);
}

bool IPCStruct_Error::Send(CIPCCommunication &channel, WideString &error) const
{
    return channel.BeginMessage('E', error) && channel.AppendUInt32(static_cast<std::uint32_t>(return_code), error) &&
           channel.AppendUInt32(static_cast<std::uint32_t>(system_error), error) && channel.AppendString(text, error) &&
           channel.SendMessage(error);
}

bool IPCStruct_Resize::Parse(const unsigned char *payload, std::uint32_t size_of_payload, WideString &error)
{
    PayloadReader reader(payload, size_of_payload);
    return Parsed(reader.Take(name) && reader.TakeNumber(size), error);
}

bool IPCStruct_Resize::Send(CIPCCommunication &channel, WideString &error) const
{
    return channel.BeginMessage('R', error) && channel.AppendString(name, error) && channel.AppendUInt64(size, error) &&
           channel.SendMessage(error);
}

} // namespace kessil
