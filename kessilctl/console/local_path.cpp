#include "kessilctl/console/local_path.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <type_traits>

namespace kessil::kessilctl {
namespace {

constexpr bool wide_paths = !std::is_same_v<std::filesystem::path::value_type, char>;

bool IsDeviceName(std::string_view name)
{
    std::string stem(name.substr(0, name.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(), [](unsigned char byte) { return std::toupper(byte); });
    constexpr std::array devices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    if (std::find(devices.begin(), devices.end(), stem) != devices.end())
        return true;
    const std::string kind = stem.substr(0, 3);
    const std::string number = stem.size() > 3 ? stem.substr(3) : "";
    constexpr std::array numbers = {"0", "1", "2", "3",        "4",        "5",       "6",
                                    "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    return (kind == "COM" || kind == "LPT") && std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool IsControl(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x20 || value == 0x7F;
}

/// Of a name that isn't empty.
bool IsPlainOnWindows(std::string_view name)
{
    return name.find_first_of("\\:<>\"|?*") == std::string_view::npos && name.back() != '.' && name.back() != ' ' &&
           std::none_of(name.begin(), name.end(), IsControl) && !IsDeviceName(name);
}

} // namespace

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

bool IsPlainName(std::string_view name)
{
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string_view::npos ||
        name.find('\0') != std::string_view::npos)
        return false;
    return !wide_paths || IsPlainOnWindows(name);
}

std::string Join(std::string_view path, std::string_view name)
{
    std::string joined(path);
    if (!joined.empty())
        joined += '/';
    return joined.append(name);
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
