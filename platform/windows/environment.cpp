#include "platform/environment.h"

#include "platform/windows/native.h"

#include <cstdlib>

namespace kessil::platform {

const char16_t search_path_separator = u';';

std::optional<WideString> ReadEnvironment(const WideString &name)
{
    const wchar_t *const value = _wgetenv(Wide(name));
    if (value == nullptr)
        return std::nullopt;
    return WideString(reinterpret_cast<const char16_t *>(value));
}

bool PutEnvironment(const WideString &assignment)
{
    return _wputenv(Wide(assignment)) == 0;
}

} // namespace kessil::platform
