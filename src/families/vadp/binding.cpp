#include "families/vadp/binding.h"

#include "channel/ipc_communication.h"
#include "families/vadp/adapter_log.h"

#include <algorithm>
#include <cwctype>

namespace kessil {

const char *(*g_pfnGetErrorMessage)(VMLib_ErrorInfo *error) = nullptr;
void (*g_pfnFreeErrorInfo)(VMLib_ErrorInfo **error) = nullptr;
void (*g_pfnFreeCredentials)(void **credentials) = nullptr;
void (*g_pfnSetLoggingCallBack)(AdapterLoggingCallBack callback) = nullptr;

namespace {

constexpr std::u16string_view adapter_name = u"tarnlink_windows_x64.dll";

WideString LowerCase(WideString text)
{
    std::ranges::transform(text, text.begin(),
                           [](char16_t unit) { return static_cast<char16_t>(std::towlower(unit)); });
    return text;
}

template <class Function>
void Bind(Function *&slot, platform::ModuleHandle module, const char *name)
{
    slot = reinterpret_cast<Function *>(platform::FindExport(module, name));
}

} // namespace

void bindAdapterFunctions(CIPCCommunication &channel, const WideString &library_name, platform::ModuleHandle module)
{
    if (LowerCase(library_name).find(adapter_name) == WideString::npos)
        return;
    Bind(g_pfnGetErrorMessage, module, "GetErrorMessage");
    Bind(g_pfnFreeErrorInfo, module, "FreeErrorInfo");
    Bind(g_pfnFreeCredentials, module, "FreeCredentials");
    Bind(g_pfnSetLoggingCallBack, module, "SetLoggingCallBack");
    if (g_pfnSetLoggingCallBack != nullptr)
        g_pfnSetLoggingCallBack(queueAdapterLogLine);
    channel.AdmitUsers();
}

} // namespace kessil
