#include "parent/session/message_text.h"

#include "parent/session/native_path.h"
#include "platform/last_error.h"

#include <cstdio>

namespace kessil::parent {

std::string SystemText(std::uint32_t code)
{
    std::string text = WithoutLineEnd(platform::ToUtf8(platform::ErrorText(code)));
    return text.empty() ? "error " + std::to_string(code) : text;
}

std::string Printed(std::chrono::microseconds time)
{
    char text[32];
    if (time < std::chrono::seconds(1))
        std::snprintf(text, sizeof text, "%.2f ms", static_cast<double>(time.count()) / 1e3);
    else
        std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(time.count()) / 1e6);
    return text;
}

std::string Printed(const std::filesystem::path &path)
{
    return platform::ToUtf8(WideFrom(path.native()));
}

std::string Quoted(const std::string &text)
{
    return '"' + text + '"';
}

std::string WithoutLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

} // namespace kessil::parent
