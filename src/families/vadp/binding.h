#pragma once

#include "platform/module.h"
#include "platform/text.h"

#include <kessil/adapter_interface.h>

#include <cstdint>

namespace kessil {

class CIPCCommunication;

/// The component's name in the log.
inline constexpr const char *vadp_component = "VMwareVADP_function_wrapper";

/// What the adapter returns for success or failure: one byte, 0 for a failure. The rest of the register is undefined.
using AdapterBool = std::uint8_t;

/// The adapter's functions that the helper itself calls; null while no adapter is bound, or when it has none.
extern const char *(*g_pfnGetErrorMessage)(VMLib_ErrorInfo *error);
extern void (*g_pfnFreeErrorInfo)(VMLib_ErrorInfo **error);
extern void (*g_pfnFreeCredentials)(void **credentials);
extern void (*g_pfnSetLoggingCallBack)(AdapterLoggingCallBack callback);

/// Runs after every load. If the library's name contains the adapter's, finds the functions above, has the adapter log
/// to the queue (adapter_log.h), and from then on admits ordinary users to the sections that the helper creates.
void bindAdapterFunctions(CIPCCommunication &channel, const WideString &library_name, platform::ModuleHandle module);

} // namespace kessil
