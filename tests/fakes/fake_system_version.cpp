#include "fakes/fake_system_version.h"

#include "platform/system_version.h"

namespace kessil {

test::FakeSystemVersion test::fake_system_version;

bool platform::ReadSystemVersion(std::uint32_t &major)
{
    if (test::fake_system_version.fails)
        return false;
    major = test::fake_system_version.major;
    return true;
}

} // namespace kessil
