#include "platform/program_path.h"

#include "platform/windows/native.h"

#include <string>

namespace kessil::platform {

std::filesystem::path ProgramPath()
{
    constexpr DWORD longest_path = 32768;
    std::wstring path(longest_path, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), longest_path));
    return path;
}

} // namespace kessil::platform
