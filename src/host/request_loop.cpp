#include "host/request_loop.h"

#include "callers/library_caller.h"
#include "callers/library_caller_alt.h"
#include "channel/ipc_communication.h"
#include "host/error_text.h"
#include "host/logon.h"
#include "host/report.h"
#include "host/search_path.h"
#include "logging/log_manager.h"

#include <algorithm>

namespace kessil {
namespace {

constexpr std::uint32_t orderly_stop = 1;

// A call with a longer payload is not kept, and so never recognised as a repeated one.
constexpr std::uint32_t longest_repeated_payload = 4096;

} // namespace

int RequestLoop::Run()
{
    for (;;) {
        if (const std::optional<int> exit_code = Round())
            return *exit_code;
    }
}

std::optional<int> RequestLoop::Round()
{
    char type = 0;
    unsigned char *data = nullptr;
    std::uint32_t size = 0;
    bool eof = false;
    if (!m_channel.GetNextRequestCond("f", type, data, size, eof, m_error)) {
        PrintError(m_error);
        KESSIL_LOG(log_error, host_component, "Next request failed.");
        return 1;
    }
    if (eof) {
        KESSIL_LOG(log_debug, host_component, "Eof");
        return 0;
    }
    return Dispatch(type, data, size);
}

std::optional<int> RequestLoop::Dispatch(char type, const unsigned char *data, std::uint32_t size)
{
    switch (type) {
    case 'A':
        return ServeLogon(data, size);
    case 'P':
        return ServeAddPath(data, size);
    case 'L':
        return ServeLoadLibrary(data, size);
    case 'l':
        return ServeLoadLibraryAlt(data, size);
    case 'F':
        return ServeFunctionCall(data, size);
    case 'f':
        return ServeCommand();
    case 'X':
        return ServeErrorText(data, size);
    default:
        return RefuseType(type);
    }
}

std::optional<int> RequestLoop::ServeLogon(const unsigned char *data, std::uint32_t size)
{
    KESSIL_LOG(log_debug, host_component, "Working with Auth");
    IPCStruct_Auth auth;
    const bool parsed = auth.Parse(data, size, m_error);
    m_channel.WipeRequest();
    if (!parsed)
        return RefuseRequest();
    return Answer(Logon(auth.user, auth.domain, auth.password, auth.system_name, auth.logon_flag, m_error));
}

std::optional<int> RequestLoop::ServeAddPath(const unsigned char *data, std::uint32_t size)
{
    KESSIL_LOG(log_debug, host_component, "Working with AddPath");
    WideString directories;
    if (DeserialiseWideString(directories, data, size) == 0) {
        m_error = serialise_data_failure;
        return RefuseRequest();
    }
    return Answer(AddPath(directories, m_error));
}

std::optional<int> RequestLoop::ServeLoadLibrary(const unsigned char *data, std::uint32_t size)
{
    WideString name;
    if (DeserialiseWideString(name, data, size) == 0) {
        m_error = serialise_data_failure;
        return RefuseRequest();
    }
    KESSIL_LOG(log_debug, host_component, "Working with LoadLib:  load_lib_cmd==" << platform::ToUtf8(name));
    m_caller.LoadLibraryW(name, m_channel);
    return std::nullopt;
}

// The payload is the name, one unit for each byte; it ends at a zero byte.
std::optional<int> RequestLoop::ServeLoadLibraryAlt(const unsigned char *data, std::uint32_t size)
{
    const WideString name(data, std::find(data, data + size, 0));
    KESSIL_LOG(log_debug, host_component,
               "Working Alt with LoadLib:  load_lib_cmd==" << std::string(name.begin(), name.end()));
    m_callerAlt.LoadLibraryW(name, m_channel);
    return std::nullopt;
}

std::optional<int> RequestLoop::ServeFunctionCall(const unsigned char *data, std::uint32_t size)
{
    // A parent that transfers a file repeats one call, with other data in the section each time.
    if (IsLastCall(data, size) && m_caller.RepeatCall(m_channel))
        return std::nullopt;
    if (!m_call.Parse(data, size, m_error))
        return RefuseRequest();
    m_lastPayload.assign(data, data + (size <= longest_repeated_payload ? size : 0));
    m_caller.CallFunction(m_call, m_channel);
    return std::nullopt;
}

bool RequestLoop::IsLastCall(const unsigned char *data, std::uint32_t size) const
{
    return size != 0 && std::equal(m_lastPayload.begin(), m_lastPayload.end(), data, data + size);
}

// A command that names no call gets no answer.
std::optional<int> RequestLoop::ServeCommand()
{
    IPCStruct_FunctionCallAlt call;
    if (!call.ReadCommand(m_channel, m_error)) {
        KESSIL_LOG(log_error, host_component, "Failure to read command.");
        KESSIL_LOG(log_debug, host_component, "Exiting on account of command read failure.");
        return 1;
    }
    if (call.command == orderly_stop) {
        KESSIL_LOG(log_debug, host_component, "Exiting on account of command " << call.command);
        return 0;
    }
    if (SignatureNameOf(m_commands, call.command, call.signature) &&
        FunctionNameOf(m_commands, call.command, call.function))
        m_callerAlt.CallFunction(call, m_channel);
    return std::nullopt;
}

std::optional<int> RequestLoop::ServeErrorText(const unsigned char *data, std::uint32_t size)
{
    KESSIL_LOG(log_debug, host_component, "Working with ReadErrDLL");
    IPCStruct_ErrDLL request;
    if (!request.Parse(data, size, m_error))
        return RefuseRequest();
    ReadErrDLL(request.message_number, request.dll_name, m_channel);
    return std::nullopt;
}

// A failure is answered with the text of `m_error`. An answer that can't be sent ends the process.
std::optional<int> RequestLoop::Answer(bool success)
{
    const bool sent =
        success ? m_channel.SendSuccess(m_error) : IPCStruct_Error{-1, -1, m_error}.Send(m_channel, m_error);
    return sent ? std::nullopt : std::optional<int>(1);
}

std::optional<int> RequestLoop::RefuseType(char type)
{
    KESSIL_LOG(log_debug, host_component, "Working with fallback");
    PrintInvalidType(type);
    return 1;
}

int RequestLoop::RefuseRequest()
{
    PrintError(m_error);
    return 1;
}

} // namespace kessil
