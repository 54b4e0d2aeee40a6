#include "kessilctl/console/local_path.h"

#include "platform/text.h"

#include <type_traits>

namespace kessil::kessilctl {
namespace {

constexpr bool wide_paths = !std::is_same_v<std::filesystem::path::value_type, char>;

} // namespace

bool IsControl(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x20 || value == 0x7F;
}

std::filesystem::path ToPath(std::string_view text)
{
    if constexpr (wide_paths) {
        const WideString wide = platform::FromUtf8(text);
        return std::filesystem::path::string_type(wide.begin(), wide.end());
    } else {
        return text;
    }
}

std::string ToText(const std::filesystem::path &path)
{
    if constexpr (wide_paths) {
        const auto &native = path.native();
        return platform::ToUtf8(WideString(native.begin(), native.end()));
    } else {
        return path.string();
    }
}

std::string Printable(std::string_view text)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string shown;
    for (const char byte : text) {
        if (!IsControl(byte)) {
            shown += byte;
            continue;
        }
        const auto value = static_cast<unsigned char>(byte);
        shown.append("\\x").append(1, digits[value >> 4]).append(1, digits[value & 15]);
    }
    return shown;
}

} // namespace kessil::kessilctl
