#include "fakes/fake_program_path.h"

#include "platform/program_path.h"

namespace kessil {

std::filesystem::path test::fake_program_path;

std::filesystem::path platform::ProgramPath()
{
    return test::fake_program_path;
}

} // namespace kessil
