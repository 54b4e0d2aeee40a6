#pragma once

#include "platform/module.h"
#include "platform/text.h"

#include <kessil/adapter_interface.h>

#include <cstdint>

namespace kessil {

class CIPCCommunication;

/// The component's name in the log.
inline constexpr const char *vadp_component = "VMwareVADP_function_wrapper";

/// How the adapter tells success: in one byte, true when not 0. What stands in the rest of the register means nothing.
using AdapterBool = std::uint8_t;

/// The adapter's functions that the helper itself calls; null while no adapter is bound, or when it has none.
extern const char *(*g_pfnGetErrorMessage)(VMLib_ErrorInfo *error);
extern void (*g_pfnFreeErrorInfo)(VMLib_ErrorInfo **error);
extern void (*g_pfnFreeCredentials)(void **credentials);
extern void (*g_pfnSetLoggingCallBack)(AdapterLoggingCallBack callback);

/// Runs after every load. When the name has the adapter's name in it, finds the functions above, has the adapter log to
/// the queue (adapter_log.h), and from then on admits ordinary users to the sections that this side makes.
void bindAdapterFunctions(CIPCCommunication &channel, const WideString &library_name, platform::ModuleHandle module);

} // namespace kessil
