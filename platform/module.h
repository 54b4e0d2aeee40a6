#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// A loaded library; null means none.
using ModuleHandle = void *;

/// Loads a library by name or path. On Windows the libraries that it needs are searched for in its own directory. On
/// Linux a name with a `/` is used as given; a bare name is searched for along PATH and then where the dynamic linker
/// looks. Null on failure.
ModuleHandle LoadModule(const WideString &name);

/// The system's text for the failed load that `code` came from. Valid only right after LoadModule failed.
WideString LoadErrorText(std::uint32_t code);

/// The address of an export of this library itself, not of one that it needs; null when there is none.
void *FindExport(ModuleHandle module, const char *name);

/// Releases one load. The library's own termination code may run here. Keeps the last error.
void FreeModule(ModuleHandle module);

} // namespace kessil::platform
