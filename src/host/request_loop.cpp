#include "host/request_loop.h"

#include "callers/library_caller.h"
#include "channel/ipc_communication.h"
#include "host/report.h"
#include "logging/log_manager.h"

#include <algorithm>

namespace kessil {
namespace {

constexpr std::uint32_t orderly_stop = 1;

// No more than this is kept of a call; a longer one is never seen as repeated.
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
    case 'L':
        return ServeLoadLibrary(data, size);
    case 'F':
        return ServeFunctionCall(data, size);
    case 'f':
        return ServeCommand();
    default:
        return RefuseType(type);
    }
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

std::optional<int> RequestLoop::ServeFunctionCall(const unsigned char *data, std::uint32_t size)
{
    // A parent that moves a file makes the same call over and over, with other data in the section.
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
    return std::nullopt;
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
