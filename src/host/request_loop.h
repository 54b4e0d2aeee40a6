#pragma once

#include "channel/records.h"
#include "marshal/command_row.h"
#include "platform/text.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kessil {

class CIPCCommunication;
class CLibraryCaller;
class CLibraryCallerAlt;

/// Reads one request after the other and serves it; exactly one answer is sent. A failed operation is answered and the
/// loop continues; a malformed request, an unknown one or a broken channel ends the process.
class RequestLoop
{
public:
    /// Everything must outlive the loop. `caller` serves 'L' and 'F', `caller_alt` serves 'l' and 'f'.
    RequestLoop(CIPCCommunication &channel, CLibraryCaller &caller, CLibraryCallerAlt &caller_alt,
                std::span<const CommandRow> commands, WideString &error)
        : m_channel(channel), m_caller(caller), m_callerAlt(caller_alt), m_commands(commands), m_error(error)
    {}

    /// Serves requests until one of them, or the channel, ends the process. Returns the exit code. Exceptions of the
    /// libraries and of the allocator pass through.
    int Run();

private:
    // Each serves one request. A value ends the loop and is the exit code.
    std::optional<int> Round();
    std::optional<int> Dispatch(char type, const unsigned char *data, std::uint32_t size);
    std::optional<int> ServeLogon(const unsigned char *data, std::uint32_t size);
    std::optional<int> ServeAddPath(const unsigned char *data, std::uint32_t size);
    std::optional<int> ServeLoadLibrary(const unsigned char *data, std::uint32_t size);
    std::optional<int> ServeLoadLibraryAlt(const unsigned char *data, std::uint32_t size);
    std::optional<int> ServeFunctionCall(const unsigned char *data, std::uint32_t size);
    bool IsLastCall(const unsigned char *data, std::uint32_t size) const;
    std::optional<int> ServeCommand();
    std::optional<int> ServeErrorText(const unsigned char *data, std::uint32_t size);
    std::optional<int> Answer(bool success);
    std::optional<int> RefuseType(char type);
    int RefuseRequest();

    CIPCCommunication &m_channel;
    CLibraryCaller &m_caller;
    CLibraryCallerAlt &m_callerAlt;
    std::span<const CommandRow> m_commands;
    WideString &m_error;
    IPCStruct_FunctionCall m_call;            // kept, so that repeated calls allocate nothing
    std::vector<unsigned char> m_lastPayload; // what m_call was parsed from; empty when that is too long to keep
};

} // namespace kessil
