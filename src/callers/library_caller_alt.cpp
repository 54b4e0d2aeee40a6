#include "callers/library_caller_alt.h"

#include "callers/library_caller.h"
#include "channel/ipc_communication.h"
#include "channel/pipe_primitives.h"
#include "logging/log_manager.h"
#include "platform/last_error.h"

namespace kessil {
namespace {

constexpr std::int32_t loaded = 1;
constexpr std::int32_t refused = -1;

// An answer that can't be written is logged.
void Answer(CIPCCommunication &channel, std::int32_t value, const char *write_failure)
{
    if (!WriteInt32ToPipe(channel, value))
        KESSIL_LOG(log_error, library_caller_component, write_failure);
}

} // namespace

CLibraryCallerAlt::CLibraryCallerAlt(std::span<const SignatureRow> rows, AfterLoadHook after_load)
    : m_rows(rows), m_afterLoad(after_load)
{}

void CLibraryCallerAlt::LoadLibraryW(const WideString &name, CIPCCommunication &channel)
{
    platform::ModuleHandle const module = m_libraries.Replace(name);
    if (module == nullptr) {
        const WideString reason = platform::LoadErrorText(platform::LastError());
        // The log gets the low byte of each unit.
        KESSIL_LOG(log_error, library_caller_component,
                   "Load library failure:  " << std::string(reason.begin(), reason.end()));
        Answer(channel, refused, "Failed to write failure result after loading library alt");
        return;
    }
    Answer(channel, loaded, "Failed to write success result after loading library alt");
    m_libraries.Enter(name, module);
    m_afterLoad(channel, name, module);
}

void CLibraryCallerAlt::CallFunction(const IPCStruct_FunctionCallAlt &request, CIPCCommunication &channel)
{
    platform::ModuleHandle const module = m_libraries.Find(request.library);
    if (module == nullptr) {
        KESSIL_LOG(log_error, library_caller_component, "Failed to find library...");
        Answer(channel, refused, "Failed to write error code.");
        return;
    }
    void *const function = platform::FindExport(module, request.function.c_str());
    if (function == nullptr) {
        KESSIL_LOG(log_error, library_caller_component, "func_ptr==NULL");
        Answer(channel, refused, "write failed");
        return;
    }
    const Handler handler = FindHandler(m_rows, request.signature, &SignatureRow::second);
    if (handler == nullptr) {
        KESSIL_LOG(log_error, library_caller_component, "Invalid signature");
        Answer(channel, refused, "Failed to write error code.");
        return;
    }
    handler(channel, function);
}

} // namespace kessil
