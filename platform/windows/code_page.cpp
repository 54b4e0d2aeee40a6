#include "platform/code_page.h"

#include "platform/windows/native.h"

#include <string>

namespace kessil::platform {

WideString FromThreadCodePage(std::string_view text)
{
    const auto size = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), size, wide.data(), units);
    return {wide.begin(), wide.end()};
}

} // namespace kessil::platform
