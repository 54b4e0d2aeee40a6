#include "platform/module.h"

#include "platform/last_error.h"
#include "platform/windows/native.h"

namespace kessil::platform {

ModuleHandle LoadModule(const WideString &name)
{
    return LoadLibraryExW(Wide(name), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

WideString LoadErrorText(std::uint32_t code)
{
    return ErrorText(code);
}

void *FindExport(ModuleHandle module, const char *name)
{
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void FreeModule(ModuleHandle module)
{
    const LastErrorKeeper keeper;
    FreeLibrary(static_cast<HMODULE>(module));
}

} // namespace kessil::platform
