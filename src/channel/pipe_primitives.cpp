#include "channel/pipe_primitives.h"

#include "channel/big_endian.h"
#include "channel/ipc_communication.h"

#include <array>

namespace kessil {
namespace {

constexpr std::uint32_t longest_string = 1024;

bool ReadExactly(CIPCCommunication &channel, void *bytes, std::uint32_t size)
{
    bool eof = false;
    WideString error;
    return channel.ReadDataFromPipe(bytes, size, eof, error) && !eof;
}

bool WriteExactly(CIPCCommunication &channel, const void *bytes, std::uint32_t size)
{
    WideString error;
    return channel.WriteDataToPipe(bytes, size, error);
}

template <class T>
bool ReadNumber(CIPCCommunication &channel, T &value)
{
    value = 0;
    std::array<unsigned char, sizeof(T)> bytes;
    if (!ReadExactly(channel, bytes.data(), sizeof(T)))
        return false;
    value = LoadBigEndian<T>(bytes.data());
    return true;
}

template <class T>
bool WriteNumber(CIPCCommunication &channel, T value)
{
    std::array<unsigned char, sizeof(T)> bytes;
    StoreBigEndian(bytes.data(), value);
    return WriteExactly(channel, bytes.data(), sizeof(T));
}

bool WriteBlock(CIPCCommunication &channel, const void *bytes, std::size_t size)
{
    const auto length = static_cast<std::uint32_t>(size);
    return WriteNumber(channel, length) && WriteExactly(channel, bytes, length);
}

} // namespace

bool ReadUInt32FromPipe(CIPCCommunication &channel, std::uint32_t &value)
{
    return ReadNumber(channel, value);
}

bool ReadUInt64FromPipe(CIPCCommunication &channel, std::uint64_t &value)
{
    return ReadNumber(channel, value);
}

bool ReadStringFromPipe(CIPCCommunication &channel, std::string &text)
{
    std::uint32_t length = 0;
    if (!ReadNumber(channel, length) || length > longest_string)
        return false;
    std::array<char, longest_string> bytes;
    if (!ReadExactly(channel, bytes.data(), length))
        return false;
    text.assign(bytes.data(), length);
    return true;
}

bool ReadBytesFromPipe(CIPCCommunication &channel, std::vector<unsigned char> &bytes)
{
    std::uint32_t length = 0;
    const bool known = ReadNumber(channel, length);
    bytes.clear();
    bytes.resize(length);
    return known && ReadExactly(channel, bytes.data(), length);
}

bool WriteInt32ToPipe(CIPCCommunication &channel, std::int32_t value)
{
    return WriteNumber(channel, static_cast<std::uint32_t>(value));
}

bool WriteUInt32ToPipe(CIPCCommunication &channel, std::uint32_t value)
{
    return WriteNumber(channel, value);
}

bool WriteUInt64ToPipe(CIPCCommunication &channel, std::uint64_t value)
{
    return WriteNumber(channel, value);
}

bool WriteStringToPipe(CIPCCommunication &channel, const std::string &text)
{
    return WriteBlock(channel, text.data(), text.size());
}

bool WriteBytesToPipe(CIPCCommunication &channel, const std::vector<unsigned char> &bytes)
{
    return WriteBlock(channel, bytes.data(), bytes.size());
}

} // namespace kessil
