#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>

namespace kessil::test {

/// In the place of platform/environment.h: variables of a process that has no others. Separates directories as the
/// platform does. `fake_environment = FakeEnvironment()` begins anew.
struct FakeEnvironment
{
    std::map<WideString, WideString> variables;
    std::uint32_t unset_code = 0; ///< what asking for a variable that isn't set leaves behind; 0: what was there
    std::uint32_t put_code = 0;   ///< when not 0, PutEnvironment fails with it
};

extern FakeEnvironment fake_environment;

} // namespace kessil::test
