#include "surroundings.h"

namespace kessil::test {

std::filesystem::path OwnProgram()
{
    // On Windows the build passes the name without a drive.
    return std::filesystem::absolute(KESSIL_TEST_PROGRAM);
}

} // namespace kessil::test
