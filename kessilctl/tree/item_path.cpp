#include "kessilctl/tree/item_path.h"

#include "kessilctl/console/local_path.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

namespace kessil::kessilctl {
namespace {

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

/// Of a name that isn't empty.
bool IsPlainOnWindows(std::string_view name)
{
    return name.find_first_of("\\:<>\"|?*") == std::string_view::npos && name.back() != '.' && name.back() != ' ' &&
           std::none_of(name.begin(), name.end(), IsControl) && !IsDeviceName(name);
}

} // namespace

bool IsPlainName(std::string_view name)
{
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string_view::npos ||
        name.find('\0') != std::string_view::npos)
        return false;
    constexpr bool on_windows = std::filesystem::path::preferred_separator != '/';
    return !on_windows || IsPlainOnWindows(name);
}

std::string Join(std::string_view path, std::string_view name)
{
    std::string joined(path);
    if (!joined.empty())
        joined += '/';
    return joined.append(name);
}

} // namespace kessil::kessilctl
