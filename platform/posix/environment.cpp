#include "platform/environment.h"

#include <cerrno>
#include <cstdlib>
#include <string>

namespace kessil::platform {

const char16_t search_path_separator = u':';

std::optional<WideString> ReadEnvironment(const WideString &name)
{
    const char *const value = std::getenv(ToUtf8(name).c_str());
    if (value != nullptr)
        return FromUtf8(value);
    errno = ENOENT;
    return std::nullopt;
}

bool PutEnvironment(const WideString &assignment)
{
    const std::string text = ToUtf8(assignment);
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        errno = EINVAL;
        return false;
    }
    return setenv(text.substr(0, equals).c_str(), text.c_str() + equals + 1, 1) == 0;
}

} // namespace kessil::platform
