#include "callers/library_caller.h"

#include "channel/ipc_communication.h"
#include "logging/log_manager.h"
#include "marshal/replies.h"
#include "platform/last_error.h"

namespace kessil {
namespace {

// Both codes are 0 for what isn't found; a failure of marshalling has -1.
void ReplyNotFound(CIPCCommunication &channel, const WideString &text)
{
    WideString dropped;
    static_cast<void>(IPCStruct_Error{0, 0, text}.Send(channel, dropped));
}

void ReplyLoadFailed(CIPCCommunication &channel)
{
    const std::uint32_t code = platform::LastError();
    const WideString text = platform::LoadErrorText(code);
    WideString dropped;
    static_cast<void>(IPCStruct_Error{0, static_cast<std::int32_t>(code), text}.Send(channel, dropped));
}

} // namespace

CLibraryCaller::CLibraryCaller(std::span<const SignatureRow> rows, AfterLoadHook after_load)
    : m_rows(rows), m_afterLoad(after_load)
{}

void CLibraryCaller::LoadLibraryW(const WideString &name, CIPCCommunication &channel)
{
    m_lastHandler = nullptr;
    platform::ModuleHandle const module = m_libraries.Replace(name);
    if (module == nullptr) {
        ReplyLoadFailed(channel);
        return;
    }
    SendSuccessReply(channel);
    m_libraries.Enter(name, module);
    m_afterLoad(channel, name, module);
}

void CLibraryCaller::CallFunction(const IPCStruct_FunctionCall &request, CIPCCommunication &channel)
{
    m_lastHandler = nullptr;
    platform::ModuleHandle const module = m_libraries.Find(request.library);
    if (module == nullptr) {
        KESSIL_LOG(log_error, library_caller_component, "Failed to find library...");
        ReplyNotFound(channel, u"Failed to find library...");
        return;
    }
    void *const function = platform::FindExport(module, request.function.c_str());
    if (function == nullptr) {
        ReplyNotFound(channel, u"Failed to get function address...");
        return;
    }
    const Handler handler = FindHandler(m_rows, request.signature, &SignatureRow::first);
    if (handler == nullptr) {
        SendFailureReply(channel, u"Invalid signature");
        KESSIL_LOG(log_error, library_caller_component, "Invalid signature:" << request.signature);
        return;
    }
    m_lastHandler = handler;
    m_lastFunction = function;
    handler(channel, function);
}

bool CLibraryCaller::RepeatCall(CIPCCommunication &channel)
{
    if (m_lastHandler == nullptr)
        return false;
    m_lastHandler(channel, m_lastFunction);
    return true;
}

void CLibraryCaller::ReleaseLibraries()
{
    m_lastHandler = nullptr;
    m_libraries.ReleaseAll();
}

} // namespace kessil
