#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>

namespace kessil::test {

/// Replaces platform/environment.h: a process with no environment variables but these. Directories are separated as the
/// platform does it. `fake_environment = FakeEnvironment()` resets it.
struct FakeEnvironment
{
    std::map<WideString, WideString> variables;
    std::uint32_t unset_code = 0; ///< the last error after reading a variable that isn't set; 0: unchanged
    std::uint32_t put_code = 0;   ///< when not 0, PutEnvironment fails with it
};

extern FakeEnvironment fake_environment;

} // namespace kessil::test
