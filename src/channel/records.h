#pragma once

#include "platform/text.h"

#include <cstdint>
#include <string>

// The payloads of the frames: fields in a fixed order, without tags or padding.
//   wide string   UTF-16 little-endian units, ending in a zero unit
//   8-bit string  bytes, ending in a zero byte
//   u32, u64      big-endian
// Bytes behind the last field are ignored. Every parser fails with the one text "Failed to serialise data".

namespace kessil {

class CIPCCommunication;

/// The text of every record that can't be parsed.
inline constexpr const char16_t *serialise_data_failure = u"Failed to serialise data";

/// Reads a wide string from at most `count` bytes. Returns the number of bytes read, terminator included, or 0 when
/// there is no terminator; `target` then holds what was read. Units are converted from the wire's byte order to the
/// host's.
std::uint32_t DeserialiseWideString(WideString &target, const unsigned char *bytes, std::uint32_t count);

/// The same for an 8-bit string.
std::uint32_t DeserialiseString(std::string &target, const unsigned char *bytes, std::uint32_t count);

/// Payload of 'A': the user to log on. Its password is wiped on destruction.
struct IPCStruct_Auth
{
    WideString user;
    WideString domain;
    WideString password;
    WideString system_name;       ///< the system on which privileges are looked up; empty for this system
    std::uint32_t logon_flag = 0; ///< 0 for a logon whose credentials are used for outgoing connections only

    IPCStruct_Auth() = default;
    ~IPCStruct_Auth();
    IPCStruct_Auth(const IPCStruct_Auth &) = delete;
    IPCStruct_Auth &operator=(const IPCStruct_Auth &) = delete;

    bool Parse(const unsigned char *payload, std::uint32_t size, WideString &error);
};

/// Payload of 'F': which export of which library to call, and the signature that names its marshalling.
struct IPCStruct_FunctionCall
{
    WideString library;    ///< as it was loaded; empty for the first library of the table
    std::string function;  ///< the export's name
    std::string signature; ///< selects the handler

    bool Parse(const unsigned char *payload, std::uint32_t size, WideString &error);
};

/// What an 'f' request asks for. Only its command byte is on the pipe.
struct IPCStruct_FunctionCallAlt
{
    WideString library; ///< stays empty
    std::string function;
    std::string signature;
    bool has_command = false;
    std::uint32_t command = 0;

    /// Reads the command byte. False when one has been read already, the read fails or the stream ends here.
    bool ReadCommand(CIPCCommunication &channel, WideString &error);
};

/// Payload of 'X': which message to look up in which file.
struct IPCStruct_ErrDLL
{
    std::uint32_t message_number = 0;
    WideString dll_name;

    bool Parse(const unsigned char *payload, std::uint32_t size, WideString &error);
};

/// Payload of 'E', in both directions.
struct IPCStruct_Error
{
    std::int32_t return_code = 0;
    std::int32_t system_error = 0;
    WideString text;

    bool Parse(const unsigned char *payload, std::uint32_t size, WideString &error);

    /// Sends it as an 'E' frame.
    bool Send(CIPCCommunication &channel, WideString &error) const;
};

/// Payload of 'R', in both directions: a section of that name replaces the old one.
struct IPCStruct_Resize
{
    WideString name;
    std::uint64_t size = 0; ///< u64 on the wire; this side uses the low 32 bits

    bool Parse(const unsigned char *payload, std::uint32_t size_of_payload, WideString &error);

    /// Sends it as an 'R' frame.
    bool Send(CIPCCommunication &channel, WideString &error) const;
};

} // namespace kessil
