#include "callers/library_caller.h"

#include "channel/ipc_communication.h"
#include "logging/log_manager.h"
#include "marshal/replies.h"
#include "platform/last_error.h"

namespace kessil {
namespace {

// What isn't found is told with both codes 0, unlike a failure of marshalling.
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

CLibraryCaller::CLibraryCaller(std::span<const SignatureRow> rows, AfterLoadHook after_load) : m_afterLoad(after_load)
{
    m_handlers.reserve(rows.size());
    for (const SignatureRow &row : rows) {
        if (row.first != nullptr)
            m_handlers.emplace(row.signature, row.first);
    }
}

CLibraryCaller::~CLibraryCaller()
{
    ReleaseLibraries();
}

void CLibraryCaller::LoadLibraryW(const WideString &name, CIPCCommunication &channel)
{
    m_lastHandler = nullptr;
    if (const auto loaded = m_libraries.find(name); loaded != m_libraries.end())
        Release(loaded);
    platform::ModuleHandle const module = platform::LoadModule(name);
    if (module == nullptr) {
        ReplyLoadFailed(channel);
        return;
    }
    SendSuccessReply(channel);
    m_libraries.emplace(name, module);
    m_afterLoad(channel, name, module);
}

void CLibraryCaller::CallFunction(const IPCStruct_FunctionCall &request, CIPCCommunication &channel)
{
    m_lastHandler = nullptr;
    platform::ModuleHandle const module = FindLibrary(request.library);
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
    const auto handler = m_handlers.find(request.signature);
    if (handler == m_handlers.end()) {
        SendFailureReply(channel, u"Invalid signature");
        KESSIL_LOG(log_error, library_caller_component, "Invalid signature:" << request.signature);
        return;
    }
    m_lastHandler = handler->second;
    m_lastFunction = function;
    handler->second(channel, function);
}

bool CLibraryCaller::RepeatCall(CIPCCommunication &channel)
{
    if (m_lastHandler == nullptr)
        return false;
    m_lastHandler(channel, m_lastFunction);
    return true;
}

platform::ModuleHandle CLibraryCaller::FindLibrary(const WideString &name) const
{
    const auto library = name.empty() ? m_libraries.begin() : m_libraries.find(name);
    return library == m_libraries.end() ? nullptr : library->second;
}

void CLibraryCaller::ReleaseLibraries()
{
    m_lastHandler = nullptr;
    while (!m_libraries.empty())
        Release(m_libraries.begin());
}

void CLibraryCaller::Release(std::map<WideString, platform::ModuleHandle>::iterator library)
{
    platform::ModuleHandle const module = library->second;
    m_libraries.erase(library);
    platform::FreeModule(module);
}

} // namespace kessil
