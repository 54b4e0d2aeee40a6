#include "families/vadp/error_messages.h"

#include "channel/pipe_primitives.h"
#include "families/vadp/binding.h"
#include "logging/log_manager.h"

namespace kessil {
namespace {

constexpr std::int32_t success_mark = 1;
constexpr std::int32_t failure_mark = -1;

void SendText(CIPCCommunication &channel, const std::string &text)
{
    if (!WriteStringToPipe(channel, text))
        KESSIL_LOG(log_error, vadp_component, "Failed to write error message.");
}

} // namespace

std::string TakeErrorMessage(VMLib_ErrorInfo *error)
{
    const char *const message = g_pfnGetErrorMessage(error);
    std::string text = message != nullptr ? message : "";
    if (g_pfnFreeErrorInfo != nullptr)
        g_pfnFreeErrorInfo(&error);
    return text;
}

std::string extractErrMsgAlt(bool okay, VMLib_ErrorInfo *error)
{
    if (okay)
        return {};
    if (g_pfnGetErrorMessage != nullptr)
        return TakeErrorMessage(error);
    std::string text = "Failed to get error message";
    KESSIL_LOG(log_debug, vadp_component, "Error:  " << text);
    return text;
}

void sendErrMsgAlt(CIPCCommunication &channel, bool okay, const std::string &text)
{
    static_cast<void>(WriteInt32ToPipe(channel, okay ? success_mark : failure_mark));
    if (!okay)
        SendText(channel, text);
}

void sendErrMsgAlt(CIPCCommunication &channel, bool okay, VMLib_ErrorInfo *error)
{
    sendErrMsgAlt(channel, okay, extractErrMsgAlt(okay, error));
}

void sendErrMsgAltValue(CIPCCommunication &channel, bool okay, std::int32_t value, const std::string &text)
{
    if (okay)
        static_cast<void>(WriteInt32ToPipe(channel, value));
    else
        SendText(channel, text);
}

void sendErrMsgAltValue(CIPCCommunication &channel, bool okay, std::int32_t value, VMLib_ErrorInfo *error)
{
    sendErrMsgAltValue(channel, okay, value, extractErrMsgAlt(okay, error));
}

} // namespace kessil
