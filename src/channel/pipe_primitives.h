#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Bare values on the pipe, without a type byte or a frame: numbers big-endian; strings and blocks as a 32-bit length
// and that many bytes, without a terminator. Each operation returns only whether it succeeded; no reason is kept.

namespace kessil {

class CIPCCommunication;

/// Read one value. When the read fails or the stream ends, a number is 0, a string is unchanged, and a block is empty
/// or has its announced length with undefined content. A string of more than 1024 bytes is refused, and its bytes stay
/// in the pipe; a block has no limit but memory.
bool ReadUInt32FromPipe(CIPCCommunication &channel, std::uint32_t &value);
bool ReadUInt64FromPipe(CIPCCommunication &channel, std::uint64_t &value);
bool ReadStringFromPipe(CIPCCommunication &channel, std::string &text);
bool ReadBytesFromPipe(CIPCCommunication &channel, std::vector<unsigned char> &bytes);

/// Write one value; the length of a string or block is written separately.
bool WriteInt32ToPipe(CIPCCommunication &channel, std::int32_t value);
bool WriteUInt32ToPipe(CIPCCommunication &channel, std::uint32_t value);
bool WriteUInt64ToPipe(CIPCCommunication &channel, std::uint64_t value);
bool WriteStringToPipe(CIPCCommunication &channel, const std::string &text);
bool WriteBytesToPipe(CIPCCommunication &channel, const std::vector<unsigned char> &bytes);

} // namespace kessil
