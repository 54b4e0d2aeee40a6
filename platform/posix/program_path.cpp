#include "platform/program_path.h"

namespace kessil::platform {

std::filesystem::path ProgramPath()
{
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/exe", failure);
}

} // namespace kessil::platform
